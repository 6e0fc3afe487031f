// Editing commands on the caret's line and on the selection.

#include "buffer/Buffer.h"
#include "document/EditAction.h"
#include "document/TextUndoScope.h"
#include "platform/core/CharacterClass.h"
#include "view/CTextEditorView.h"
#include "view/EditCommand.h"
#include "view/LineNavigation.h"

#include <algorithm>

namespace tavrin {

void CTextEditorView::moveCaretToSelectionStart() {
    const Position start = selectionStart();
    caretLine_ = start.line;
    caretCol_ = start.col;
}

void CTextEditorView::placeEmptySelection(Position caret) {
    caretLine_ = pivotLine_ = caret.line;
    caretCol_ = pivotCol_ = caret.col;
}

void CTextEditorView::showCaretMoved() {
    setCaret(caretLine_, caretCol_, true);
}

void CTextEditorView::showEdit() {
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
    EditCommand command(*this);
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
        ++caretLine_;
        caretCol_ = 0;
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
    placeEmptySelection({caretLine_, col});
    command.finish([&] {
        updateScrollbars();
        showCaretMoved();
        updateNav();
        redraw();
    });
}

void CTextEditorView::handleBackspace() {
    invalidateSelection();
    if (hasSelection())
        eraseAndShow(selectionStart(), selectionEnd());
    else if (caretCol_ > 0)
        eraseAndShow({caretLine_, caretCol_ - 1}, {caretLine_, caretCol_});
    else if (caretLine_ > 0)
        eraseAndShow({caretLine_ - 1, getBuffer().getLineLength(caretLine_ - 1)}, {caretLine_, 0});
    else
        showEdit();
}

void CTextEditorView::handleDelete() {
    const int length = lastLine() < 0 ? 0 : getBuffer().getLineLength(caretLine_);
    if (hasSelection())
        eraseAndShow(selectionStart(), selectionEnd());
    else if (caretCol_ < length)
        eraseAndShow({caretLine_, caretCol_}, {caretLine_, caretCol_ + 1});
    else if (caretLine_ < lastLine())
        eraseAndShow({caretLine_, length}, {caretLine_ + 1, 0});
    else
        showEdit();
}

/// Leaves the caret where the text was.
void CTextEditorView::eraseAndShow(Position start, Position end) {
    EditCommand command(*this);
    const TextUndoScope scope(getDocument());
    erase(start.line, start.col, end.line, end.col);
    placeEmptySelection(start);
    command.finish([&] {
        showCaretMoved();
        showEdit();
    });
}

/// Runs `edit(line, endsAtStart)` for each line of the selection, as one undo step; `endsAtStart` says that
/// the selection ends in front of the line. Of several lines such a last one is left out.
template <class Edit>
void CTextEditorView::forSelectedLines(Edit edit) {
    normalizePositions();
    EditCommand command(*this);
    const TextUndoScope scope(getDocument());
    invalidateSelection();
    const int first = selectionStart().line;
    const Position end = selectionEnd();
    for (int line = first; line <= end.line; ++line) {
        const bool ends = line == end.line && end.col == 0;
        if (!ends || first == end.line)
            edit(line, ends);
    }
    command.finish([&] {
        updateScrollbars();
        showCaretMoved();
        redrawRange(first, end.line);
    });
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
