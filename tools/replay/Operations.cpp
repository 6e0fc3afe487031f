#include "replay/Interpreter.h"

#include <limits>

namespace tavrin::replay {

namespace {

/// An operation without arguments.
template <auto Operation>
void plain(ReplaySession& session, Arguments& arguments) {
    arguments.finish();
    (session.editor().*Operation)();
}

struct Position {
    int line;
    int col;
};

/// Reads a line and a column, which need not lie in the text.
Position takePosition(Arguments& arguments) {
    const int line = arguments.integer("the line");
    return {line, arguments.integer("the column")};
}

Position takePositionInText(ReplaySession& session, Arguments& arguments) {
    const Position position = takePosition(arguments);
    requirePosition(session, position.line, position.col);
    return position;
}

int takeLine(ReplaySession& session, Arguments& arguments) {
    const int line = arguments.integer("the line");
    requireLine(session, line);
    return line;
}

// Caret

void gotoLineCol(ReplaySession& session, Arguments& arguments) {
    const Position position = takePosition(arguments);
    arguments.finish();
    session.editor().gotoLineCol(position.line, position.col);
}

void setCaret(ReplaySession& session, Arguments& arguments) {
    const Position position = takePosition(arguments);
    const bool ensureVisible = arguments.truth("whether to scroll");
    arguments.finish();
    session.editor().setCaret(position.line, position.col, ensureVisible);
}

// Edits

void insertChar(ReplaySession& session, Arguments& arguments) {
    const std::u16string text = arguments.string("the character");
    arguments.finish();
    if (text.size() != 1)
        throw BadArguments("the character must be one UTF-16 code unit");
    session.editor().insertChar(text.front());
}

void deleteChar(ReplaySession& session, Arguments& arguments) {
    const bool backward = arguments.truth("the direction");
    arguments.finish();
    session.editor().deleteChar(backward);
}

void insert(ReplaySession& session, Arguments& arguments) {
    const Position at = takePositionInText(session, arguments);
    const std::u16string text = arguments.string("the text");
    arguments.finish();
    session.editor().insert(at.line, at.col, std::u16string_view(text));
}

void split(ReplaySession& session, Arguments& arguments) {
    const Position at = takePositionInText(session, arguments);
    arguments.finish();
    session.editor().split(at.line, at.col);
}

void erase(ReplaySession& session, Arguments& arguments) {
    const Position from = takePositionInText(session, arguments);
    const Position to = takePositionInText(session, arguments);
    arguments.finish();
    session.editor().erase(from.line, from.col, to.line, to.col);
}

void replaceSelection(ReplaySession& session, Arguments& arguments) {
    const std::u16string text = arguments.string("the text");
    const bool selectIt = arguments.truth("whether to select it");
    arguments.finish();
    session.editor().replaceSelection(text, selectIt);
}

// Look

void redraw(ReplaySession& session, Arguments& arguments) {
    if (arguments.atEnd()) {
        session.editor().redraw();
        return;
    }
    constexpr int limit = std::numeric_limits<int>::max() / 2; // corners stay inside an int
    const int x = arguments.integer("x", -limit, limit);
    const int y = arguments.integer("y", -limit, limit);
    const int width = arguments.integer("the width", -limit, limit);
    const int height = arguments.integer("the height", -limit, limit);
    arguments.finish();
    session.editor().redraw(x, y, width, height);
}

void redrawToEOP(ReplaySession& session, Arguments& arguments) {
    const int line = takeLine(session, arguments);
    arguments.finish();
    session.editor().redrawToEOP(line);
}

void redrawRange(ReplaySession& session, Arguments& arguments) {
    const int first = takeLine(session, arguments);
    const int last = takeLine(session, arguments);
    arguments.finish();
    session.editor().redrawRange(first, last);
}

using Editor = TextEditorCtrl;

constexpr Command table[] = {
    {"OnEditCopy", "", plain<&Editor::OnEditCopy>},
    {"OnEditCut", "", plain<&Editor::OnEditCut>},
    {"OnEditPaste", "", plain<&Editor::OnEditPaste>},
    {"OnEditSelectAll", "", plain<&Editor::OnEditSelectAll>},
    {"OnEditUndo", "", plain<&Editor::OnEditUndo>},
    {"OnEditRedo", "", plain<&Editor::OnEditRedo>},
    {"OnEditFind", "", plain<&Editor::OnEditFind>},
    {"OnEditReplace", "", plain<&Editor::OnEditReplace>},
    {"OnEditFindNext", "", plain<&Editor::OnEditFindNext>},
    {"OnEditFindPrevious", "", plain<&Editor::OnEditFindPrevious>},
    {"OnEditFindSelectedNext", "", plain<&Editor::OnEditFindSelectedNext>},
    {"OnEditFindSelectedPrev", "", plain<&Editor::OnEditFindSelectedPrev>},
    {"OnIndentSelection", "", plain<&Editor::OnIndentSelection>},
    {"OnUnindentSelection", "", plain<&Editor::OnUnindentSelection>},
    {"OnMakeSelectionLowercase", "", plain<&Editor::OnMakeSelectionLowercase>},
    {"OnMakeSelectionUppercase", "", plain<&Editor::OnMakeSelectionUppercase>},
    {"OnAutocompleteListmembers", "", plain<&Editor::OnAutocompleteListmembers>},
    {"gotoLineCol", "L C", gotoLineCol},
    {"setCaret", "L C true|false", setCaret},
    {"updatePivot", "", plain<&Editor::updatePivot>},
    {"moveCaretLeft", "", plain<&Editor::moveCaretLeft>},
    {"moveCaretRight", "", plain<&Editor::moveCaretRight>},
    {"insertChar", "STRING", insertChar},
    {"deleteChar", "true|false", deleteChar},
    {"insert", "L C STRING", insert},
    {"split", "L C", split},
    {"erase", "L1 C1 L2 C2", erase},
    {"eraseSelection", "", plain<&Editor::eraseSelection>},
    {"replaceSelection", "STRING true|false", replaceSelection},
    {"redraw", "[X Y W H]", redraw},
    {"redrawToEOP", "L", redrawToEOP},
    {"redrawRange", "FIRST LAST", redrawRange},
    {"invalidateSelection", "", plain<&Editor::invalidateSelection>},
    {"updateScrollbars", "", plain<&Editor::updateScrollbars>},
    {"OnInitialUpdate", "", plain<&Editor::OnInitialUpdate>},
    {"OnUpdate", "", plain<&Editor::OnUpdate>},
};

} // namespace

std::span<const Command> operations() {
    return table;
}

} // namespace tavrin::replay
