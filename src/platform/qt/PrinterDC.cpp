#include "platform/qt/PrinterDC.h"

#include <QPageLayout>
#include <QPagedPaintDevice>

namespace tavrin::qt {

namespace {

/// Longer text is drawn in pieces of this many code units.
constexpr std::size_t pieceLength = 256;

} // namespace

int PrinterDC::GetDeviceCaps(DeviceCap cap) const {
    const int resolution = device_.logicalDpiX();
    const QPageLayout layout = device_.pageLayout();
    switch (cap) {
    case DeviceCap::HorzRes:
        return layout.paintRectPixels(resolution).width();
    case DeviceCap::VertRes:
        return layout.paintRectPixels(resolution).height();
    case DeviceCap::LogPixelsX:
        return resolution;
    case DeviceCap::LogPixelsY:
        return device_.logicalDpiY();
    case DeviceCap::PhysicalOffsetX:
        return layout.marginsPixels(resolution).left();
    case DeviceCap::PhysicalOffsetY:
        return layout.marginsPixels(resolution).top();
    case DeviceCap::PhysicalWidth:
        return layout.fullRectPixels(resolution).width();
    case DeviceCap::PhysicalHeight:
        return layout.fullRectPixels(resolution).height();
    }
    return 0;
}

void PrinterDC::setPainter(QPainter* painter) {
    drawOn(painter,
           QRect(-GetDeviceCaps(DeviceCap::PhysicalOffsetX), -GetDeviceCaps(DeviceCap::PhysicalOffsetY),
                 GetDeviceCaps(DeviceCap::PhysicalWidth), GetDeviceCaps(DeviceCap::PhysicalHeight)));
}

void PrinterDC::TextOut(int x, int y, std::u16string_view text) {
    const int paperEdge = GetDeviceCaps(DeviceCap::PhysicalWidth) - GetDeviceCaps(DeviceCap::PhysicalOffsetX);
    while (text.size() > pieceLength && x < paperEdge) {
        std::size_t length = pieceLength;
        if (QChar::isLowSurrogate(text[length]))
            --length;
        const std::u16string_view piece = text.substr(0, length);
        QtDC::TextOut(x, y, piece);
        x += renderer().width(piece);
        text.remove_prefix(length);
    }
    if (x < paperEdge)
        QtDC::TextOut(x, y, text);
}

} // namespace tavrin::qt
