// Scroll ranges, moving the content, and which lines are on screen. All in pixels.

#include "buffer/Buffer.h"
#include "view/CTextEditorView.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tavrin {

namespace {

/// A content size from a count of cells; saturated, so that positions added to it stay in range.
int extent(int count, int cell, int margin) {
    constexpr std::int64_t largest = std::numeric_limits<int>::max() / 2;
    return static_cast<int>(std::min(largest, std::int64_t{count} * cell + margin));
}

int wholeCells(int size, int cell) {
    return size / cell * cell;
}

} // namespace

void CTextEditorView::updateScrollbars() {
    const CPoint before{GetScrollPos(SB_HORZ), GetScrollPos(SB_VERT)};
    if (charWidth_ == 0) {
        SetScrollSizes({0, 0}, {0, 0}, {0, lineHeight_});
    } else {
        const CRect edit = getEditArea();
        const Buffer& buffer = getBuffer();
        SetScrollSizes({extent(buffer.getColumnCount(), charWidth_, rightMargin + gutterWidth()),
                        extent(buffer.getLineCount(), lineHeight_, bottomMargin + topMargin)},
                       {wholeCells(edit.Width(), charWidth_), wholeCells(edit.Height(), lineHeight_)},
                       {charWidth_, lineHeight_});
    }
    if (before != CPoint{GetScrollPos(SB_HORZ), GetScrollPos(SB_VERT)})
        placeCaret(); // a shorter range moved the text
}

bool CTextEditorView::OnScrollBy(CSize displacement, bool doScroll) {
    const auto target = [this](ScrollBarKind bar, int by) {
        if (!peer() || !peer()->isScrollBarEnabled(bar))
            by = 0;
        return std::clamp(GetScrollPos(bar) + by, 0, GetScrollLimit(bar));
    };
    const int sx = GetScrollPos(SB_HORZ);
    const int sy = GetScrollPos(SB_VERT);
    const int x = target(SB_HORZ, displacement.cx);
    const int y = target(SB_VERT, displacement.cy);
    if (x == sx && y == sy)
        return false;
    if (!doScroll)
        return true;
    peer()->scrollWindow(sx - x, sy - y, getEditArea());
    if (const CRect gutter = getLineNumbersArea(); y != sy && !gutter.IsRectEmpty())
        peer()->scrollWindow(0, sy - y, gutter);
    if (x != sx)
        SetScrollPos(SB_HORZ, x);
    if (y != sy)
        SetScrollPos(SB_VERT, y);
    placeCaret();
    return true;
}

void CTextEditorView::OnVScroll(UINT code, int position) {
    if ((code & 0xFFU) == SB_THUMBTRACK && peer())
        position = peer()->trackPosition(SB_VERT); // the message's own position may be too short for it
    ScrollView::OnVScroll(code, position);
}

bool CTextEditorView::OnMouseWheel(UINT, short delta, CPoint) {
    if (incSearchActive_)
        onEndIncSearch();
    DoMouseWheel(SB_VERT, delta);
    setCaret(caretLine_, caretCol_, false);
    return true;
}

void CTextEditorView::OnSize(UINT kind, int width, int height) {
    ScrollView::OnSize(kind, width, height);
    if (!IsWindowVisible())
        return;
    updateScrollbars();
    ensureVisible(caretLine_, caretCol_);
}

int CTextEditorView::getFirstCompletellyVisibleLineIdx() {
    const int sy = GetScrollPos(SB_VERT);
    return sy / lineHeight_ + (sy % lineHeight_ != 0 ? 1 : 0);
}

int CTextEditorView::getLastVisibleLineIdx() {
    const int onScreen = getEditArea().Height() / lineHeight_ + GetScrollPos(SB_VERT) / lineHeight_;
    return std::min(onScreen, lastLine());
}

int CTextEditorView::getLastCompletellyVisibleLineIdx() {
    return std::min(getLastVisibleLineIdx() - 1, lastLine());
}

int CTextEditorView::getLineIndexInPage(int line) {
    return line - GetScrollPos(SB_VERT) / lineHeight_;
}

} // namespace tavrin
