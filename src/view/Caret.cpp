// The caret's place, its picture, and keeping it in view.

#include "buffer/Buffer.h"
#include "view/CTextEditorView.h"
#include "view/LineNavigation.h"

#include <algorithm>

namespace tavrin {

void CTextEditorView::setCaret(int line, int col, bool ensureVisible) {
    const Position caret = limited({line, col});
    caretLine_ = caret.line;
    caretCol_ = caret.col;
    if (ensureVisible)
        this->ensureVisible(caretLine_, caretCol_);
    placeCaret();
}

void CTextEditorView::updatePivot() {
    pivotLine_ = caretLine_;
    pivotCol_ = caretCol_;
}

CPoint CTextEditorView::getCaretPoint() {
    const Position caret = limited({caretLine_, caretCol_});
    if (lastLine() < 0)
        return {gutterWidth(), topMargin};
    return {columnX(caret.line, caret.col), lineTop(caret.line)};
}

void CTextEditorView::placeCaret() {
    if (peer() && (HasFocus() || autoCompleteShown_))
        peer()->setCaretPos(getCaretPoint());
}

void CTextEditorView::createCaret() {
    peer()->destroyCaret();
    peer()->createCaret(caretWidth, lineHeight_);
}

void CTextEditorView::ensureVisible(int line, int col) {
    const CRect client = GetClientRect();
    if (client.Height() == 0 || line > lastLine())
        return;
    const int sx = GetScrollPos(SB_HORZ);
    const int sy = GetScrollPos(SB_VERT);
    const int textHeight = client.Height() - bottomMargin - topMargin;
    const int textWidth = client.Width() - rightMargin - gutterWidth();
    const int pageLines = std::max(1, textHeight / lineHeight_);
    const int top = line * lineHeight_;
    const int x = col == -1 ? sx : xInLine(line, col);

    CPoint position{sx, sy};
    if (top + lineHeight_ + topMargin - sy > textHeight)
        position.y = (line - pageLines + 1) * lineHeight_;
    else if (top < sy)
        position.y = top;
    if (x - sx > textWidth)
        position.x = x + caretWidth + rightMargin + gutterWidth() - client.Width();
    else if (x < sx)
        position.x = x;
    if (position == CPoint{sx, sy})
        return;
    redraw();
    ScrollToPosition(position);
    placeCaret();
}

void CTextEditorView::updateNav() {
    navColumn_ = 0;
    if (lastLine() < 0)
        return;
    LineMarks& line = marks(caretLine_);
    const LineMarks::Mark from = line.beforeColumn(caretCol_);
    navColumn_ = visualColumn(line.text().substr(static_cast<std::size_t>(from.col)), caretCol_ - from.col,
                              tabSize, from.visual);
}

int CTextEditorView::getClosestToNavColumn(int line) {
    LineMarks& known = marks(line);
    const LineMarks::Mark from = known.beforeVisual(navColumn_);
    return from.col + columnNearVisual(known.text().substr(static_cast<std::size_t>(from.col)), navColumn_,
                                       tabSize, from.visual);
}

void CTextEditorView::gotoLineCol(int line, int col) {
    if (limited({line, col}) != Position{line, col} || lastLine() < 0)
        return;
    setCaret(line, col, true);
    updatePivot();
    redraw();
}

void CTextEditorView::OnSetFocus(CWnd*) {
    Default();
    if (!peer())
        return;
    createCaret();
    const Position caret{caretLine_, caretCol_};
    const Position pivot{pivotLine_, pivotCol_};
    normalizePositions();
    const bool moved = caret != Position{caretLine_, caretCol_} || pivot != Position{pivotLine_, pivotCol_};
    setCaret(caretLine_, caretCol_, moved && lastLine() >= 0);
    peer()->showCaret();
    updateScrollbars();
}

void CTextEditorView::OnKillFocus(CWnd*) {
    Default();
    if (!autoCompleteShown_ && peer())
        peer()->destroyCaret();
}

void CTextEditorView::setAutoCompleteShown(bool shown) {
    autoCompleteShown_ = shown;
    if (!shown && peer() && !HasFocus())
        peer()->destroyCaret(); // the focus was lost meanwhile
}

} // namespace tavrin
