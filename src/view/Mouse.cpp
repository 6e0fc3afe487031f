// The mouse: click, drag selection, double-click.
//
// A drag is a state: the press captures the mouse and begins it; moves place the caret; the release places it
// a last time and ends it. Escape, a right press and the loss of the capture end it and leave the caret.
// Other keys are taken and discarded while it lasts, before any shortcut sees them.

#include "buffer/Buffer.h"
#include "view/CTextEditorView.h"
#include "view/LineNavigation.h"

#include <algorithm>

namespace tavrin {

CTextEditorView::Position CTextEditorView::getPositionAt(CPoint point) {
    if (lastLine() < 0)
        return {0, 0};
    const int row = (GetScrollPos(SB_VERT) - topMargin + point.y) / lineHeight_;
    const int line = std::clamp(row, 0, lastLine());
    const int x = GetScrollPos(SB_HORZ) - gutterWidth() + point.x;
    if (x <= 0)
        return {line, 0};
    LineMarks& known = marks(line);
    const LineMarks::Mark from = known.beforeX(x);
    const std::u16string_view near = known.text().substr(
        static_cast<std::size_t>(from.col), static_cast<std::size_t>(known.endBeyond(x) - from.col));
    return {line, from.col + measure().columnAt(near, x, tabSize, from.x)};
}

void CTextEditorView::setCaretAtPoint(CPoint point, bool movePivot) {
    normalizePositions();
    if (lastLine() < 0)
        return;
    invalidateSelection();
    const Position at = getPositionAt(point);
    setCaret(at.line, at.col, true);
    if (movePivot)
        updatePivot();
    invalidateSelection();
}

void CTextEditorView::OnLButtonDown(UINT, CPoint point) {
    if (!HasFocus())
        SetFocus();
    if (incSearchActive_)
        onEndIncSearch();
    setCaretAtPoint(point, !platform().GetKeyState(VK_SHIFT));
    if (!peer())
        return;
    peer()->setCapture();
    dragging_ = true;
}

void CTextEditorView::OnMouseMove(UINT, CPoint point) {
    if (isDragging())
        setCaretAtPoint(point, false);
    else
        Default();
}

void CTextEditorView::OnLButtonUp(UINT, CPoint point) {
    if (!isDragging()) {
        Default();
        return;
    }
    setCaretAtPoint(point, false);
    endDrag();
}

void CTextEditorView::OnCaptureChanged(CWnd*) {
    dragging_ = false;
}

void CTextEditorView::endDrag() {
    dragging_ = false; // first: releasing the capture reports its loss
    if (peer())
        peer()->releaseCapture();
}

bool CTextEditorView::PreTranslateMessage(const MSG& message) {
    if (!isDragging() || message.message < WM_KEYFIRST || message.message > WM_KEYLAST)
        return ScrollView::PreTranslateMessage(message);
    if (message.message == WM_KEYDOWN && message.key == VK_ESCAPE)
        endDrag();
    return true;
}

void CTextEditorView::OnLButtonDblClk(UINT, CPoint point) {
    if (incSearchActive_)
        onEndIncSearch();
    setCaretAtPoint(point, true);
    if (lastLine() < 0 || getBuffer().getLineLength(caretLine_) == 0)
        return;
    const ColumnRange word = wordAround(getBuffer().getLineText(caretLine_), caretCol_);
    pivotCol_ = word.start;
    setCaret(caretLine_, word.end, true);
    invalidateSelection();
}

void CTextEditorView::OnRButtonDown(UINT, CPoint) {
    if (isDragging()) {
        endDrag();
        return;
    }
    if (incSearchActive_)
        onEndIncSearch();
    Default();
}

void CTextEditorView::OnContextMenu(CWnd*, CPoint) {
    Default();
}

} // namespace tavrin
