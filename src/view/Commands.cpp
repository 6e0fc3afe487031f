// Editing commands on the caret's line and on the selection.

#include "buffer/Buffer.h"
#include "document/EditAction.h"
#include "document/TextUndoScope.h"
#include "platform/core/CharacterClass.h"
#include "view/CTextEditorView.h"
#include "view/LineNavigation.h"

#include <algorithm>

namespace tavrin {

void CTextEditorView::moveCaretToSelectionStart() {
    const Position start = selectionStart();
    caretLine_ = start.line;
    caretCol_ = start.col;
}

void CTextEditorView::collapseAndShow() {
    setCaret(caretLine_, caretCol_, true);
    updatePivot();
}

void CTextEditorView::finishEdit() {
    updateNav();
    updateScrollbars();
    redraw();
}

std::u16string CTextEditorView::getIndentText(int line) {
    if (line < 0 || line > lastLine())
        return {};
    return std::u16string(indentation(getBuffer().getLineText(line)));
}

void CTextEditorView::handleReturn() {
    invalidateSelection();
    std::u16string indent;
    {
        const TextUndoScope scope(getDocument());
        eraseSelection();
        moveCaretToSelectionStart();
        if (caretCol_ != 0)
            indent = getIndentText(caretLine_);
        split(caretLine_, caretCol_);
        recordCaretMove({caretLine_, caretCol_}, {caretLine_ + 1, 0});
        setCaret(caretLine_ + 1, 0, false);
    }
    int col = 0;
    if (!indent.empty()) {
        // Split inside its indentation, the line brings its own along.
        const std::u16string own = getIndentText(caretLine_);
        col = static_cast<int>(own.empty() ? indent.size() : own.size());
        if (own.empty()) {
            const TextUndoScope scope(getDocument());
            insert(caretLine_, 0, indent);
            recordCaretMove({caretLine_, 0}, {caretLine_, col});
        }
    }
    updateScrollbars();
    setCaret(caretLine_, col, true);
    updatePivot();
    updateNav();
    redraw();
}

void CTextEditorView::handleBackspace() {
    const TextUndoScope scope(getDocument());
    invalidateSelection();
    if (hasSelection()) {
        eraseSelection();
        moveCaretToSelectionStart();
        collapseAndShow();
    } else if (caretCol_ > 0) {
        erase(caretLine_, caretCol_ - 1, caretLine_, caretCol_);
        --caretCol_;
        collapseAndShow();
    } else if (caretLine_ > 0) {
        const int above = caretLine_ - 1;
        const int end = getBuffer().getLineLength(above);
        erase(above, end, caretLine_, 0);
        caretLine_ = above;
        caretCol_ = end;
        collapseAndShow();
    }
    finishEdit();
}

void CTextEditorView::handleDelete() {
    const TextUndoScope scope(getDocument());
    const int length = lastLine() < 0 ? 0 : getBuffer().getLineLength(caretLine_);
    if (hasSelection()) {
        eraseSelection();
        moveCaretToSelectionStart();
        collapseAndShow();
    } else if (caretCol_ < length) {
        erase(caretLine_, caretCol_, caretLine_, caretCol_ + 1);
        collapseAndShow();
    } else if (caretLine_ < lastLine()) {
        erase(caretLine_, length, caretLine_ + 1, 0);
        collapseAndShow();
    }
    finishEdit();
}

/// Runs `edit(line, endsAtStart)` for each line of the selection, as one undo step; `endsAtStart` says that
/// the selection ends in front of the line. Of several lines such a last one is left out.
template <class Edit>
void CTextEditorView::forSelectedLines(Edit edit) {
    normalizePositions();
    const TextUndoScope scope(getDocument());
    invalidateSelection();
    const int first = selectionStart().line;
    const Position end = selectionEnd();
    for (int line = first; line <= end.line; ++line) {
        const bool ends = line == end.line && end.col == 0;
        if (!ends || first == end.line)
            edit(line, ends);
    }
    updateScrollbars();
    setCaret(caretLine_, caretCol_, true);
    redrawRange(first, end.line);
}

void CTextEditorView::OnIndentSelection() {
    forSelectedLines([this](int line, bool endsAtStart) {
        insert(line, 0, u'\t');
        if (endsAtStart)
            return; // the caret stays in front of the new tab
        if (caretLine_ == line)
            ++caretCol_;
        if (pivotLine_ == line)
            ++pivotCol_;
    });
}

void CTextEditorView::OnUnindentSelection() {
    forSelectedLines([this](int line, bool) {
        if (getIndentText(line).empty())
            return;
        erase(line, 0, line, 1);
        if (caretLine_ == line)
            caretCol_ = std::max(0, caretCol_ - 1);
        if (pivotLine_ == line)
            pivotCol_ = std::max(0, pivotCol_ - 1);
    });
}

void CTextEditorView::changeCase(std::u16string (*convert)(std::u16string_view)) {
    normalizePositions();
    replaceSelection(convert(getSelectedText()), true);
}

void CTextEditorView::OnMakeSelectionLowercase() {
    changeCase(&toLowerCase);
}

void CTextEditorView::OnMakeSelectionUppercase() {
    changeCase(&toUpperCase);
}

} // namespace tavrin
