// Moves of the caret by keys, and what extends the selection.

#include "buffer/Buffer.h"
#include "view/CTextEditorView.h"
#include "view/LineNavigation.h"

#include <algorithm>

namespace tavrin {

/// A move that starts or ends selections: runs `step` between repaints of the old and the new selection.
template <class Step>
void CTextEditorView::navigate(bool shift, Step step) {
    invalidateSelection();
    step();
    if (!shift)
        updatePivot();
    invalidateSelection();
}

void CTextEditorView::handleLeft(bool ctrl, bool shift) {
    if (lastLine() < 0)
        return;
    navigate(shift, [&] {
        if (caretCol_ > 0) {
            const int col = ctrl ? wordLeft(getBuffer().getLineText(caretLine_), caretCol_) : caretCol_ - 1;
            setCaret(caretLine_, col, true);
        }
        updateNav();
    });
}

void CTextEditorView::handleRight(bool ctrl, bool shift) {
    if (lastLine() < 0)
        return;
    navigate(shift, [&] {
        if (caretCol_ < getBuffer().getLineLength(caretLine_)) {
            const int col = ctrl ? wordRight(getBuffer().getLineText(caretLine_), caretCol_) : caretCol_ + 1;
            setCaret(caretLine_, col, true);
        }
        updateNav();
    });
}

void CTextEditorView::handleUp(bool ctrl, bool shift) {
    if (lastLine() < 0)
        return;
    if (ctrl)
        ensureVisible(std::max(0, getFirstCompletellyVisibleLineIdx() - 1), -1);
    else if (caretLine_ > 0)
        navigate(shift, [&] { setCaret(caretLine_ - 1, getClosestToNavColumn(caretLine_ - 1), true); });
}

void CTextEditorView::handleDown(bool ctrl, bool shift) {
    if (lastLine() < 0)
        return;
    if (ctrl)
        ensureVisible(std::min(getLastCompletellyVisibleLineIdx() + 1, lastLine()), -1);
    else if (caretLine_ < lastLine())
        navigate(shift, [&] { setCaret(caretLine_ + 1, getClosestToNavColumn(caretLine_ + 1), true); });
}

void CTextEditorView::handleHome(bool ctrl, bool shift) {
    if (lastLine() < 0)
        return;
    navigate(shift, [&] {
        if (!ctrl)
            setCaret(caretLine_, smartHome(getBuffer().getLineText(caretLine_), caretCol_), true);
        else if (caretLine_ != 0 || caretCol_ != 0)
            setCaret(0, 0, true);
        updateNav();
    });
}

void CTextEditorView::handleEnd(bool ctrl, bool shift) {
    if (lastLine() < 0)
        return;
    navigate(shift, [&] {
        if (ctrl)
            setCaret(lastLine(), getBuffer().getLineLength(lastLine()), true);
        else
            setCaret(caretLine_, smartEnd(getBuffer().getLineText(caretLine_), caretCol_), true);
        updateNav();
    });
}

void CTextEditorView::handlePageUp(bool ctrl, bool shift) {
    if (lastLine() < 0)
        return;
    navigate(shift, [&] {
        int target = std::clamp(getFirstCompletellyVisibleLineIdx(), 0, lastLine());
        if (!ctrl) {
            const int pageLines = getEditArea().Height() / lineHeight_;
            const int row = getLineIndexInPage(caretLine_);
            target = std::max(caretLine_ - pageLines, 0);
            const int top = std::clamp(target - row, 0, lastLine());
            ensureVisible(top, std::min(caretCol_, getBuffer().getLineLength(top)));
        }
        setCaret(target, getClosestToNavColumn(target), true);
    });
}

void CTextEditorView::handlePageDown(bool ctrl, bool shift) {
    if (lastLine() < 0)
        return;
    navigate(shift, [&] {
        int target = std::clamp(getLastCompletellyVisibleLineIdx(), 0, lastLine());
        if (!ctrl) {
            const int pageLines = getEditArea().Height() / lineHeight_;
            const int row = getLineIndexInPage(caretLine_); // the caret stays in it
            target = std::min(caretLine_ + pageLines, lastLine());
            const int bottom = std::clamp(target - row + pageLines - 1, 0, lastLine());
            ensureVisible(bottom, std::min(caretCol_, getBuffer().getLineLength(bottom)));
        }
        setCaret(target, getClosestToNavColumn(target), true);
    });
}

void CTextEditorView::OnEditSelectAll() {
    normalizePositions();
    if (lastLine() < 0)
        return;
    setCaret(0, 0, false);
    updateNav();
    updatePivot();
    setCaret(lastLine(), getBuffer().getLineLength(lastLine()), true);
    invalidateSelection();
}

} // namespace tavrin
