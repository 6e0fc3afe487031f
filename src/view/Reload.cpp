// The text of the file again, after another program has written it.

#include "buffer/Buffer.h"
#include "document/ReloadAction.h"
#include "document/TextDocument.h"
#include "view/CTextEditorView.h"
#include "view/EditCommand.h"

#include <algorithm>

namespace tavrin {

namespace {

/// Lines around a place by which it is found again.
constexpr int surroundings = 3;

int equalLines(const Buffer& before, int line, const Buffer& after, int candidate) {
    int equal = 0;
    for (int i = -surroundings; i <= surroundings; ++i)
        if (line + i >= 0 && line + i < before.getLineCount() && candidate + i >= 0 &&
            candidate + i < after.getLineCount() &&
            before.getLineText(line + i) == after.getLineText(candidate + i))
            ++equal;
    return equal;
}

/// Where a line of the old text went: as far from the top as it was, or as far from the end, whichever has
/// more of the same lines around it.
int lineAfter(const Buffer& before, int line, const Buffer& after) {
    const int fromEnd = line + after.getLineCount() - before.getLineCount();
    const bool isFromEnd = equalLines(before, line, after, fromEnd) > equalLines(before, line, after, line);
    return std::clamp(isFromEnd ? fromEnd : line, 0, std::max(after.getLineCount() - 1, 0));
}

} // namespace

void CTextEditorView::reload(ReloadAction& action) {
    endIncrementalSearch();
    normalizePositions();
    action.caretBefore = {caretLine_, caretCol_};
    action.pivotBefore = {pivotLine_, pivotCol_};
    EditCommand command(*this);
    const int line = lineAfter(getBuffer(), caretLine_, action.hidden());
    const int shift = line - caretLine_;
    action.exchange(getBuffer());
    const Position caret = limited({line, caretCol_});
    action.caretAfter = {caret.line, caret.col};
    getDocument().AddUndoAction(this, &action);
    placeEmptySelection(caret);
    command.finish([&] {
        updateScrollbars();
        ScrollToPosition({GetScrollPos(SB_HORZ), GetScrollPos(SB_VERT) + shift * lineHeight_});
        setCaret(caret.line, caret.col, false);
        updateNav();
        redraw();
    });
}

} // namespace tavrin
