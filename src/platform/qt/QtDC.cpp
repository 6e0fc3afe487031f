#include "platform/qt/QtDC.h"

#include "platform/qt/Conversions.h"
#include "platform/ui/CImageList.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

namespace tavrin::qt {

int QtDC::GetDeviceCaps(DeviceCap cap) const {
    const QScreen* screen = QGuiApplication::primaryScreen();
    switch (cap) {
    case DeviceCap::HorzRes:
        return screen->size().width();
    case DeviceCap::VertRes:
        return screen->size().height();
    case DeviceCap::LogPixelsX:
        return qRound(screen->logicalDotsPerInchX());
    case DeviceCap::LogPixelsY:
        return qRound(screen->logicalDotsPerInchY());
    case DeviceCap::PhysicalOffsetX:
    case DeviceCap::PhysicalOffsetY:
    case DeviceCap::PhysicalWidth:
    case DeviceCap::PhysicalHeight:
        return 0;
    }
    return 0;
}

const CFont* QtDC::SelectObject(const CFont* font) {
    const CFont* previous = font_ == &defaultFont_ ? nullptr : font_;
    font_ = font ? static_cast<const QtFont*>(font) : &defaultFont_;
    return previous;
}

void QtDC::SelectClipRect(const CRect& rect) {
    if (painter_)
        painter_->setClipRect(toQRect(rect));
}

void QtDC::TextOut(int x, int y, std::u16string_view text) {
    const std::optional<QRect> cells = cellsToDraw(x, y, text);
    if (!cells)
        return;
    if (const auto colour = backColour())
        painter_->fillRect(*cells, *colour);
    painter_->setPen(textColour());
    renderer().draw(*painter_, cells->x(), cells->y(), text);
}

std::optional<QRect> QtDC::cellsToDraw(int x, int y, std::u16string_view text) const {
    if (!painter_)
        return {};
    const QRect cells(x + origin_.x, y + origin_.y, renderer().width(text), renderer().metrics().tmHeight);
    return exposed_.intersects(cells) ? std::optional(cells) : std::nullopt;
}

QColor QtDC::textColour() const {
    return toQColor(textColour_);
}

std::optional<QColor> QtDC::backColour() const {
    return backMode_ == BackgroundMode::Opaque ? std::optional(toQColor(backColour_)) : std::nullopt;
}

void QtDC::DrawTextRight(std::u16string_view text, const CRect& rect) {
    TextOut(rect.right - renderer().width(text), rect.top, text);
}

void QtDC::FillSolidRect(const CRect& rect, COLORREF colour) {
    if (painter_ && !rect.IsRectEmpty())
        painter_->fillRect(toQRect(rect).translated(origin_.x, origin_.y), toQColor(colour));
}

void QtDC::DrawImage(const CImageList& images, int index, CPoint at) {
    if (!painter_)
        return;
    const bool wasSmooth = painter_->testRenderHint(QPainter::Antialiasing);
    painter_->setRenderHint(QPainter::Antialiasing);
    painter_->setPen(Qt::NoPen);
    for (const ImageShape& shape : images.GetImage(index)) {
        QPolygonF outline;
        for (const auto& [x, y] : shape.outline)
            outline << QPointF(origin_.x + at.x + x, origin_.y + at.y + y);
        painter_->setBrush(toQColor(shape.colour));
        painter_->drawPolygon(outline);
    }
    painter_->setRenderHint(QPainter::Antialiasing, wasSmooth);
}

CSize QtDC::GetTextExtent(std::u16string_view text) {
    return {renderer().width(text), renderer().metrics().tmHeight};
}

void QtDC::GetTextExtentExPoint(std::u16string_view text, std::span<int> widths) {
    renderer().widths(text, widths);
}

} // namespace tavrin::qt
