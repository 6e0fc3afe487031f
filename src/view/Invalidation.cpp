// What is to be painted again after a change.

#include "buffer/Buffer.h"
#include "view/CTextEditorView.h"

#include <algorithm>

namespace tavrin {

namespace {

/// Selections over more lines are invalidated only as far as they are on screen.
constexpr int maxLinesInvalidatedUnseen = 512;

} // namespace

void CTextEditorView::UpdateAgain() {
    updateScrollbars();
    updateNav();
    placeCaret();
    redraw();
}

void CTextEditorView::redraw() {
    Invalidate();
}

void CTextEditorView::redraw(int x, int y, int width, int height) {
    InvalidateRect({x, y, x + width, y + height});
}

void CTextEditorView::redrawToEOP(int line) {
    const CRect client = GetClientRect();
    const int top = lineTop(line);
    redraw(0, top, client.right, client.bottom - top);
}

void CTextEditorView::redrawRange(int firstLine, int lastLine) {
    const int top = lineTop(firstLine);
    redraw(0, top, GetClientRect().right, lineTop(lastLine) + lineHeight_ - top);
}

void CTextEditorView::invalidateSelection() {
    const int last = lastLine();
    if (!hasSelection() || last < 0)
        return;
    // An end on the last line that is not the caret counts as the end of that line: this only widens the
    // area.
    const bool caretFirst = caretLine_ < pivotLine_;
    const bool oneLine = caretLine_ == pivotLine_;
    const int lastLength = getBuffer().getLineLength(last);
    const int startLine = std::min({caretLine_, pivotLine_, last});
    const int endLine = std::min(std::max(caretLine_, pivotLine_), last);
    const auto columnAt = [&](int line, bool isCaret) {
        return isCaret ? caretCol_ : line == last ? lastLength : pivotCol_;
    };
    const int startCol = oneLine ? std::min(caretCol_, pivotCol_) : columnAt(startLine, caretFirst);
    const int endCol = oneLine ? std::max(caretCol_, pivotCol_) : columnAt(endLine, !caretFirst);
    if (startLine == endLine && startCol == endCol)
        return;

    const int startX = columnX(startLine, startCol);
    const int endX = columnX(endLine, endCol);
    if (startLine == endLine) {
        redraw(startX, lineTop(startLine), endX - startX, lineHeight_);
        return;
    }
    const int lineEnd = columnX(startLine, getBuffer().getLineLength(startLine));
    redraw(startX, lineTop(startLine), lineEnd - startX, lineHeight_);

    int firstBetween = startLine + 1;
    int lastBetween = endLine - 1;
    if (lastBetween - firstBetween >= maxLinesInvalidatedUnseen) {
        firstBetween = std::max(firstBetween, GetScrollPos(SB_VERT) / lineHeight_);
        lastBetween = std::min(lastBetween, getLastVisibleLineIdx());
    }
    const int gutter = gutterWidth();
    const int width = GetClientRect().right;
    for (int line = firstBetween; line <= lastBetween; ++line)
        redraw(gutter, lineTop(line), width, lineHeight_);
    redraw(gutter, lineTop(endLine), endX, lineHeight_);
}

} // namespace tavrin
