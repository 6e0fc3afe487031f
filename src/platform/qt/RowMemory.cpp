#include "platform/qt/RowMemory.h"

#include "platform/qt/Conversions.h"

#include <QPainter>

#include <algorithm>

namespace tavrin::qt {

const RowMemory::Row* RowMemory::find(const QRect& rect) const {
    const auto found =
        std::ranges::lower_bound(rows_, rect.top(), {}, [](const Row& row) { return row.rect.top(); });
    return found != rows_.end() && found->rect == rect ? &*found : nullptr;
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
}

void RowPainter::TextOut(int x, int y, std::u16string_view text) {
    const std::optional<QRect> cells = cellsToDraw(x, y, text);
    if (!cells)
        return;
    if (const auto colour = backColour()) {
        if (batch_.addOpaque(renderer(), *cells, text, textColour(), *colour))
            return;
        batch_.fill(*cells, *colour);
    }
    if (batch_.add(renderer(), *cells, text, textColour()))
        return;
    batch_.flush();
    painter_.setPen(textColour());
    renderer().draw(painter_, cells->x(), cells->y(), text);
}

void RowPainter::FillSolidRect(const CRect& rect, COLORREF colour) {
    if (rect.IsRectEmpty())
        return;
    // The painter would go through what a clip of several rectangles lets pass line by line.
    for (const QRect& part : exposed_.intersected(toQRect(rect).translated(origin().x, origin().y)))
        batch_.fill(part, toQColor(colour));
}

void RowPainter::DrawImage(const CImageList& images, int index, CPoint at) {
    batch_.flush();
    QtDC::DrawImage(images, index, at);
}

bool RowPainter::WantsRow(const CRect& rect, std::uint64_t look) {
    const QRect row = toQRect(rect);
    if (row.isEmpty())
        return false;
    const RowMemory::Row* known = memory_.find(row);
    const bool isExposed = exposed_.intersects(row);
    if (isExposed && (exposed_ & row) == QRegion(row))
        rows_.push_back({row, look});
    // Painted in part, a row that has changed shows neither look.
    else if (known && (!isExposed || known->look == look))
        rows_.push_back(*known);
    return isExposed;
}

bool RowComparison::WantsRow(const CRect& rect, std::uint64_t look) {
    const QRect row = toQRect(rect);
    const RowMemory::Row* known = memory_.find(row);
    if (!known || known->look != look)
        return false;
    if (!unchanged_.empty() && unchanged_.back().bottom() + 1 == row.top())
        unchanged_.back().setBottom(row.bottom());
    else
        unchanged_.push_back(row);
    return false;
}

QRegion RowComparison::changed(const QRegion& area) const {
    QRegion changed = area;
    for (const QRect& rows : unchanged_)
        changed -= rows;
    return changed;
}

} // namespace tavrin::qt
