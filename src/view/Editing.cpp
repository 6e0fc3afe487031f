// Changes of the text with their records, and the records applied back and again.

#include "buffer/Buffer.h"
#include "document/EditAction.h"
#include "document/ReloadAction.h"
#include "document/ReplaceAction.h"
#include "document/TextFormAction.h"
#include "document/TextTransaction.h"
#include "document/TextUndoScope.h"
#include "view/CTextEditorView.h"
#include "view/EditCommand.h"

#include <algorithm>
#include <utility>

namespace tavrin {

void CTextEditorView::record(EditActionKind kind, Position start, Position end, std::u16string text) {
    getDocument().AddUndoAction(this, new EditAction(kind, start.line, start.col, end.line, end.col,
                                                     std::move(text), caretLine_, caretCol_, pivotLine_,
                                                     pivotCol_));
}

void CTextEditorView::recordCaretMove(Position from, Position to) {
    getDocument().AddUndoAction(this, new EditAction(EditActionKind::CaretMove, from.line, from.col, to.line,
                                                     to.col, {}, to.line, to.col, to.line, to.col));
}

void CTextEditorView::insert(int line, int col, char16_t ch) {
    TextTransaction edit(getDocument());
    getBuffer().insert(line, col, ch);
    record(EditActionKind::Insert, {line, col}, {line, col + 1}, std::u16string(1, ch));
    edit.commit();
}

void CTextEditorView::insert(int line, int col, std::u16string_view text, int& endLine, int& endCol) {
    TextTransaction edit(getDocument());
    Position end{};
    getBuffer().insertText(line, col, text, end.line, end.col);
    record(EditActionKind::Insert, {line, col}, end, std::u16string(text));
    edit.commit();
    endLine = end.line;
    endCol = end.col;
}

void CTextEditorView::insert(int line, int col, std::u16string_view text) {
    int endLine = 0;
    int endCol = 0;
    insert(line, col, text, endLine, endCol);
}

void CTextEditorView::split(int line, int col) {
    TextTransaction edit(getDocument());
    getBuffer().splitLine(line, col);
    record(EditActionKind::Split, {line, col}, {line + 1, 0}, {});
    edit.commit();
}

void CTextEditorView::erase(int line1, int col1, int line2, int col2) {
    const auto [start, end] = std::minmax({Position{line1, col1}, Position{line2, col2}});
    if (start == end)
        return;
    TextTransaction edit(getDocument());
    std::u16string text;
    getBuffer().getText(start.line, start.col, end.line, end.col, text);
    getBuffer().erase(start.line, start.col, end.line, end.col);
    record(EditActionKind::Erase, start, end, std::move(text));
    edit.commit();
}

std::u16string CTextEditorView::getSelectedText() {
    std::u16string text;
    const Position start = limited(selectionStart());
    const Position end = limited(selectionEnd());
    if (start != end)
        getBuffer().getText(start.line, start.col, end.line, end.col, text);
    return text;
}

void CTextEditorView::eraseSelection() {
    normalizePositions();
    erase(caretLine_, caretCol_, pivotLine_, pivotCol_);
}

void CTextEditorView::replaceSelection(std::u16string_view text, bool select) {
    normalizePositions();
    EditCommand command(*this);
    const TextUndoScope scope(getDocument());
    invalidateSelection();
    eraseSelection();
    const Position start = selectionStart();
    Position end{};
    insert(start.line, start.col, text, end.line, end.col);
    placeEmptySelection(end);
    if (select) {
        pivotLine_ = start.line;
        pivotCol_ = start.col;
    }
    command.finish([&] {
        updateScrollbars();
        showCaretMoved();
        updateNav();
        redraw();
    });
}

void CTextEditorView::addBufferReplaceUndoAction(bool before) {
    const Position end{lastLine(), getBuffer().getLineLength(lastLine())};
    std::u16string text;
    getBuffer().getText(0, 0, end.line, end.col, text);
    if (before) {
        record(EditActionKind::Erase, {0, 0}, end, std::move(text));
        return;
    }
    getDocument().AddUndoAction(
        this, new EditAction(EditActionKind::Insert, 0, 0, end.line, end.col, std::move(text), 0, 0, 0, 0));
}

void CTextEditorView::changeForm(const TextForm& form) {
    const TextForm before = getBuffer().getForm();
    if (form == before)
        return;
    EditCommand command(*this);
    getBuffer().setForm(form);
    getDocument().AddUndoAction(this, new TextFormAction(before, form));
    command.commit();
}

void CTextEditorView::OnEditUndo() {
    normalizePositions();
    EditCommand command(*this);
    getDocument().Undo(this);
    command.finish([&] {
        updateScrollbars();
        redraw();
    });
}

void CTextEditorView::OnEditRedo() {
    normalizePositions();
    EditCommand command(*this);
    getDocument().Redo(this);
    command.finish([&] {
        updateScrollbars();
        redraw();
    });
}

void CTextEditorView::OnUpdateOnEditUndo(CCmdUI* state) {
    state->Enable(getDocument().CanUndo());
}

void CTextEditorView::OnUpdateOnEditRedo(CCmdUI* state) {
    state->Enable(getDocument().CanRedo());
}

void CTextEditorView::placeFromRecord(Position caret, Position pivot) {
    setCaret(caret.line, caret.col, true);
    const Position inText = limited(pivot);
    pivotLine_ = inText.line;
    pivotCol_ = inText.col;
}

void CTextEditorView::undo(const UndoableAction& action) {
    if (const auto* replaced = dynamic_cast<const ReplaceAction*>(&action)) {
        replaceFromRecord(*replaced, false);
        return;
    }
    if (const auto* changed = dynamic_cast<const TextFormAction*>(&action)) {
        getBuffer().setForm(changed->before);
        return;
    }
    if (const auto* reloaded = dynamic_cast<const ReloadAction*>(&action)) {
        reloaded->exchange(getBuffer());
        updateScrollbars(); // before the caret is brought into view
        placeFromRecord({reloaded->caretBefore.line, reloaded->caretBefore.col},
                        {reloaded->pivotBefore.line, reloaded->pivotBefore.col});
        return;
    }
    const auto& done = static_cast<const EditAction&>(action);
    Position start = limited({done.startLine, done.startCol});
    const Position end = limited({done.endLine, done.endCol});
    switch (done.kind) {
    case EditActionKind::Erase:
        getBuffer().insertText(start.line, start.col, done.text, start.line, start.col);
        break;
    case EditActionKind::Insert:
    case EditActionKind::Split:
        if (start != end)
            getBuffer().erase(start.line, start.col, end.line, end.col);
        break;
    case EditActionKind::CaretMove:
        placeFromRecord(start, start);
        return;
    }
    placeFromRecord({done.caretLine, done.caretCol}, {done.pivotLine, done.pivotCol});
}

void CTextEditorView::redo(const UndoableAction& action) {
    if (const auto* replaced = dynamic_cast<const ReplaceAction*>(&action)) {
        replaceFromRecord(*replaced, true);
        return;
    }
    if (const auto* changed = dynamic_cast<const TextFormAction*>(&action)) {
        getBuffer().setForm(changed->after);
        return;
    }
    if (const auto* reloaded = dynamic_cast<const ReloadAction*>(&action)) {
        reloaded->exchange(getBuffer());
        updateScrollbars();
        const Position caret{reloaded->caretAfter.line, reloaded->caretAfter.col};
        placeFromRecord(caret, caret);
        return;
    }
    const auto& undone = static_cast<const EditAction&>(action);
    Position start = limited({undone.startLine, undone.startCol});
    const Position end = limited({undone.endLine, undone.endCol});
    switch (undone.kind) {
    case EditActionKind::Erase:
        if (start != end)
            getBuffer().erase(start.line, start.col, end.line, end.col);
        break;
    case EditActionKind::Insert:
        getBuffer().insertText(start.line, start.col, undone.text, start.line, start.col);
        break;
    case EditActionKind::Split:
        getBuffer().splitLine(start.line, start.col);
        break;
    case EditActionKind::CaretMove:
        placeFromRecord({undone.caretLine, undone.caretCol}, {undone.caretLine, undone.caretCol});
        return;
    }
    placeFromRecord({undone.caretLine, undone.caretCol}, {undone.pivotLine, undone.pivotCol});
}

bool CTextEditorView::canMerge(const UndoableAction& previous, const UndoableAction& next) {
    const auto* before = dynamic_cast<const EditAction*>(&previous);
    const auto* after = dynamic_cast<const EditAction*>(&next);
    // A line feed stays a record of its own: a merged record ends on the line on which it did.
    return before && after && before->kind == EditActionKind::Insert &&
           after->kind == EditActionKind::Insert && after->text.size() == 1 && after->text[0] != u'\n' &&
           after->startLine == before->endLine && after->startCol == before->endCol;
}

void CTextEditorView::merge(UndoableAction& previous, const UndoableAction& next) {
    auto& before = static_cast<EditAction&>(previous);
    before.text += static_cast<const EditAction&>(next).text;
    ++before.endCol;
}

} // namespace tavrin
