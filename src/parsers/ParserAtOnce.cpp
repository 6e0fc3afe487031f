// Lines coloured at once, and ahead of their reading, where the language knows how.

#include "buffer/Buffer.h"
#include "parsers/Parser.h"

namespace tavrin {

namespace {

/// Longer lines, which only an edit makes, are coloured block by block.
constexpr std::size_t longestAtOnce = 1024;

} // namespace

std::optional<Parser::ColouredLine> Parser::colourLine(std::u16string_view, EndState,
                                                       std::span<FormatRun>) const {
    return {};
}

bool Parser::walkAtOnce(int line, Want want) {
    const std::u16string_view text = buffer_->getLineText(line);
    std::array<FormatRun, longestAtOnce> room;
    if (want == Want::Blocks || text.size() > room.size())
        return false;
    const auto done = colourLine(text, line > 0 ? endState(line - 1) : EndState{}, room);
    if (!done)
        return false;
    buffer_->setLineFormats(line, std::span(room).first(done->runs));
    if (want == Want::Both)
        setBoth(line, done->end);
    return true;
}

/// State and codes of the line behind those that are current.
void Parser::walkNext(int line) {
    inTurn_ = line == lastNext_ + 1 ? inTurn_ + 1 : 0;
    lastNext_ = line;
    if (takeAhead(line))
        return;
    if (inTurn_ >= fewLines) { // somebody goes on and on
        colourAhead(line);
        if (takeAhead(line))
            return;
    }
    walk(line, Want::Both);
}

/// Writes the codes of the line and those below it that the buffer keeps together. Their flags stay as they
/// are until they are read.
void Parser::colourAhead(int line) {
    const int limit = known_.empty() ? buffer_->getLineCount() : known_.front().first;
    EndState state = line > 0 ? endState(line - 1) : EndState{};
    std::array<FormatRun, longestAtOnce> room;
    std::size_t count = 0;
    ahead_.first = ahead_.next = ahead_.end = line;
    ahead_.changedPages = buffer_->getChangedPages();
    ahead_.end = buffer_->setLineFormatsAhead(
        line, [&](std::u16string_view text) -> std::optional<std::span<const FormatRun>> {
            const bool isLast = line + static_cast<int>(count) == limit;
            const auto done =
                isLast || text.size() > room.size() ? std::nullopt : colourLine(text, state, room);
            if (!done)
                return {};
            state = done->end;
            ahead_.openBlocks[count] = static_cast<std::uint8_t>(state.openBlock);
            ahead_.details[count++] = state.detail;
            return std::span(room).first(done->runs);
        });
}

bool Parser::takeAhead(int line) {
    if (line != ahead_.next || line >= ahead_.end || ahead_.changedPages != buffer_->getChangedPages())
        return false;
    const auto entry = static_cast<std::size_t>(ahead_.next++ - ahead_.first);
    setBoth(line, {ahead_.openBlocks[entry], ahead_.details[entry]});
    return true;
}

/// State and codes are current: of a line that ends open when a block is open behind it.
void Parser::setBoth(int line, EndState end) {
    const int open = end.openBlock ? PF_OPEN_AT_END | end.openBlock : 0;
    buffer_->setLineParse(line, PF_BLOCKS | PF_PARSED | PF_FORMATS | open, PF_OPEN_AT_END | openBlockMask,
                          end.detail);
}

} // namespace tavrin
