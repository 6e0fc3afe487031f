// Replacing one match or all of them.
//
// A match that runs over the cut of a long line is replaced piece by piece, each piece inside its line, and
// the replacement comes where it began: so the lines stay cut as they were, in the text as after undo.

#include "buffer/Buffer.h"
#include "document/EditAction.h"
#include "document/ReplaceAction.h"
#include "document/TextUndoScope.h"
#include "view/CTextEditorView.h"
#include "view/EditCommand.h"
#include "view/LongSearch.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tavrin {

namespace {

/// Places that are changed at once and share a record.
constexpr std::size_t batchSize = 1 << 14;

/// Adds the pieces of a match; the replacement comes with the first of them.
void addMatch(ReplaceAction& batch, const Buffer& buffer, const TextMatch& match) {
    for (int line = match.line; line <= match.endLine; ++line) {
        const std::u16string_view text = buffer.getLineText(line);
        const auto col = static_cast<std::size_t>(line == match.line ? match.col : 0);
        const auto end = line == match.endLine ? static_cast<std::size_t>(match.endCol) : text.size();
        batch.add(line, static_cast<int>(col), text.substr(col, end - col), line == match.line);
    }
}

} // namespace

/// Whether the selected text is `what`; a cut inside it counts as nothing.
bool CTextEditorView::isSelected(std::u16string_view what) {
    const Buffer& buffer = getBuffer();
    const Position start = selectionStart();
    const Position end = selectionEnd();
    for (int line = start.line; line <= end.line; ++line) {
        if (line > start.line && !buffer.getContinuesPrevious(line))
            return false;
        std::u16string_view text = buffer.getLineText(line);
        text =
            text.substr(0, static_cast<std::size_t>(line == end.line ? end.col : buffer.getLineLength(line)));
        text.remove_prefix(static_cast<std::size_t>(line == start.line ? start.col : 0));
        if (!what.starts_with(text))
            return false;
        what.remove_prefix(text.size());
    }
    return what.empty();
}

void CTextEditorView::replace(std::u16string_view text, std::u16string_view with, int flags) {
    const std::u16string what(text); // may be the shared search text
    EditCommand command(*this);
    const TextUndoScope scope(getDocument());
    normalizePositions();
    if (lastLine() >= 0 && LongSearch::canFind(what) && isSelected(what)) {
        const Position start = selectionStart();
        const Position end = selectionEnd();
        invalidateSelection();
        setCaret(start.line, start.col, false);
        updatePivot();
        for (int line = end.line; line >= start.line; --line)
            erase(line, line == start.line ? start.col : 0, line,
                  line == end.line ? end.col : getBuffer().getLineLength(line));
        Position behind{};
        insert(start.line, start.col, with, behind.line, behind.col);
        updateScrollbars();
        setCaret(behind.line, behind.col, true);
        redrawToEOP(start.line);
        invalidateSelection();
    }
    find(what, flags);
    command.commit();
}

int CTextEditorView::replaceAll(std::u16string_view text, std::u16string_view replacement, int flags) {
    const std::u16string what(text); // what was passed may change while the user waits
    const std::u16string with(replacement);
    const WaitCursor busy(platform());
    if (lastLine() < 0)
        return 0;
    EditCommand command(*this);
    const TextUndoScope scope(getDocument());
    const Position before{caretLine_, caretCol_};
    updatePivot();
    const int count = LongSearch::canFind(what)
                          ? replaceMatches(what, with, flags & (FIND_MATCH_CASE | FIND_WHOLE_WORD))
                          : 0;
    const Position after = limited(before);
    placeEmptySelection(after);
    command.finish([&] {
        updateScrollbars();
        if (after != before)
            showCaretMoved();
        redraw();
    });
    return count;
}

/// Looks for all matches in the old text, which is changed some lines behind the search.
int CTextEditorView::replaceMatches(std::u16string_view what, std::u16string_view with, int options) {
    const std::unique_ptr<Progress> progress = platform().beginProgress(*this, LongTask::ReplaceAll);
    LongSearch search(getBuffer(), what, FIND_DOWN | options, *progress);
    SmartPtr<ReplaceAction> batch(new ReplaceAction(with));
    int count = 0;
    Position from{0, 0};
    std::optional<char16_t> before;       // what stands in front of `from` in the new text
    const auto makeRoom = [&](int line) { // before what is found from the line on
        if (batch->size() < batchSize || line <= batch->lastLine())
            return 0;
        const int shift = replaceBatch(*batch, with);
        batch = SmartPtr<ReplaceAction>(new ReplaceAction(with));
        return shift;
    };
    const auto add = [&](const TextMatch& piece, std::u16string_view erased, bool isFirst) {
        batch->add(piece.line, piece.col, erased, isFirst);
        count += isFirst ? 1 : 0;
    };
    const bool byPages = !(options & FIND_WHOLE_WORD); // nothing outside a match counts
    while (from.line <= lastLine() && !search.wasStopped()) {
        if (byPages && from.col == 0) {
            from.line += makeRoom(from.line);
            if (const auto next = search.visitPage(from.line, add)) {
                from.line = *next;
                continue;
            }
        }
        const int last = byPages ? getBuffer().chunkAt(from.line).end - 1 : lastLine();
        std::optional<TextMatch> match = search.down(from.line, from.col, last, before);
        if (!match) {
            from = {last + 1, 0};
            continue;
        }
        const int shift = makeRoom(match->line);
        match->line += shift;
        match->endLine += shift;
        const bool adjacent = before && Position{match->line, match->col} == from;
        if (!with.empty())
            before = with.back();
        else if (!adjacent)
            before = search.search().unitBefore(match->line, match->col);
        addMatch(*batch, getBuffer(), *match);
        from = {match->endLine, match->endCol};
        ++count;
    }
    if (batch->size() > 0)
        replaceBatch(*batch, with);
    return count;
}

/// Makes the changes and records them. The result is how far the lines below have moved.
int CTextEditorView::replaceBatch(ReplaceAction& batch, std::u16string_view with) {
    const std::vector<LineReplacement> changes = batch.forward();
    if (with.find(u'\n') == with.npos) {
        getBuffer().replaceInLines(changes);
        batch.caretLine = caretLine_;
        batch.caretCol = caretCol_;
        batch.pivotLine = pivotLine_;
        batch.pivotCol = pivotCol_;
        getDocument().AddUndoAction(this, &batch);
        return 0;
    }
    // New lines come: from below, so that positions stay what they are and each edit moves little text.
    const int before = lastLine();
    for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
        erase(change->line, change->col, change->line, change->col + change->length);
        if (!change->text.empty())
            insert(change->line, change->col, change->text);
    }
    return lastLine() - before;
}

void CTextEditorView::replaceFromRecord(const ReplaceAction& record, bool forward) {
    getBuffer().replaceInLines(forward ? record.forward() : record.backward());
    placeFromRecord({record.caretLine, record.caretCol}, {record.pivotLine, record.pivotCol});
}

} // namespace tavrin
