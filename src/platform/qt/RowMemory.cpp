#include "platform/qt/RowMemory.h"

#include "platform/qt/Conversions.h"

#include <QPainter>

#include <algorithm>
#include <ranges>

namespace tavrin::qt {

const RowMemory::Row* RowMemory::find(const QRect& rect) const {
    const auto found =
        std::ranges::lower_bound(rows_, rect.top(), {}, [](const Row& row) { return row.rect.top(); });
    return found != rows_.end() && found->rect == rect ? &*found : nullptr;
}

QRect RowMemory::stale(const QRect& rect, const Row* known, const RowLook& look) {
    if (!known || known->look.paper != look.paper)
        return rect;
    if (known->look.content == look.content)
        return {};
    QRect inked = rect;
    inked.setRight(std::min(rect.right(), std::max(known->look.end, look.end) - 1));
    return inked;
}

RowPainter::~RowPainter() {
    batch_.flush();
    memory_.rows_ = std::move(rows_);
}

const CFont* RowPainter::SelectObject(const CFont* font) {
    batch_.flush();
    return QtDC::SelectObject(font);
}

void RowPainter::SelectClipRect(const CRect& rect) {
    batch_.flush();
    QtDC::SelectClipRect(rect);
    ground_.clear();
}

std::optional<QColor> RowPainter::groundOf(const QRect& cells) const {
    if (ground_.empty() || drawn_.intersects(cells) || !renderer().glyphsFitRow())
        return {};
    for (const Fill& fill : std::views::reverse(ground_)) {
        if (fill.rect.contains(cells))
            return toQColor(fill.colour);
        if (fill.rect.intersects(cells))
            break;
    }
    return {};
}

void RowPainter::TextOut(int x, int y, std::u16string_view text) {
    const std::optional<QRect> cells = cellsToDraw(x, y, text);
    if (!cells)
        return;
    const std::optional<QColor> back = backColour();
    // Text with a known colour below it costs a fraction of what blending it does.
    const std::optional<QColor> ground = back ? back : groundOf(*cells);
    if (!ground_.empty()) {
        const int leaning = cells->height(); // of glyphs out of their cells
        drawn_ |= cells->adjusted(-leaning, 0, leaning, 0);
    }
    if (ground && batch_.addOpaque(renderer(), *cells, text, textColour(), *ground))
        return;
    if (back)
        batch_.fill(*cells, *back);
    if (batch_.add(renderer(), *cells, text, textColour()))
        return;
    batch_.flush();
    painter_.setPen(textColour());
    renderer().draw(painter_, cells->x(), cells->y(), text);
}

void RowPainter::FillSolidRect(const CRect& rect, COLORREF colour) {
    if (rect.IsRectEmpty())
        return;
    const QRect filled = toQRect(rect).translated(origin().x, origin().y);
    if (drawn_.isEmpty())
        ground_.push_back({filled, colour});
    else
        drawn_ |= filled;
    // The painter would go through what a clip of several rectangles lets pass line by line.
    for (const QRect& part : exposed_)
        if (part.intersects(filled))
            batch_.fill(part & filled, toQColor(colour));
}

void RowPainter::DrawImage(const CImageList& images, int index, CPoint at) {
    batch_.flush();
    ground_.clear();
    QtDC::DrawImage(images, index, at);
}

bool RowPainter::isWhollyExposed(const QRect& rect) const {
    if (exposed_.rectCount() == 1)
        return exposed_.boundingRect().contains(rect);
    return (exposed_ & rect) == QRegion(rect);
}

bool RowPainter::WantsRow(const CRect& rect, const RowLook& look) {
    const QRect row = toQRect(rect);
    if (row.isEmpty())
        return false;
    const RowMemory::Row* known = memory_.find(row);
    const QRect stale = RowMemory::stale(row, known, look);
    const bool isExposed = exposed_.intersects(row);
    if (stale.isEmpty() || isWhollyExposed(stale))
        rows_.push_back({row, look});
    // Painted in part, a row that has changed shows neither look.
    else if (known && !isExposed)
        rows_.push_back(*known);
    return isExposed;
}

bool RowComparison::WantsRow(const CRect& rect, const RowLook& look) {
    const QRect row = toQRect(rect);
    if (row.isEmpty())
        return false;
    const QRect stale = RowMemory::stale(row, memory_.find(row), look);
    changedRight_ = std::max(changedRight_, stale.right());
    std::vector<QRect>& rows = stale.isEmpty() ? unchanged_ : changed_;
    if (!rows.empty() && rows.back().bottom() + 1 == row.top())
        rows.back().setBottom(row.bottom());
    else
        rows.push_back(row);
    return false;
}

QRegion RowComparison::changed(const QRegion& area) const {
    QRegion changed = area;
    for (const QRect& rows : unchanged_)
        changed -= rows;
    // One edge for all, so that few rectangles are to be painted.
    for (QRect rows : changed_) {
        rows.setLeft(changedRight_ + 1);
        changed -= rows;
    }
    return changed;
}

} // namespace tavrin::qt
