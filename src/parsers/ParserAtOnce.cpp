// Lines coloured at once, and ahead of their reading, where the language knows how.

#include "buffer/Buffer.h"
#include "parsers/Parser.h"

namespace tavrin {

std::optional<Parser::ColouredLine> Parser::colourLine(std::u16string_view, EndState,
                                                       std::span<FormatRun>) const {
    return {};
}

std::size_t Parser::colourLines(LineStore::LinesAhead&, EndState, std::span<EndState>) const {
    return 0;
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
    flagged_ = std::max(flagged_, line + 1);
    passKnown(line);
    walk(line, Want::Both);
    ++current_;
}

/// Writes the codes of the line and those below it that the buffer keeps together. Their flags stay as they
/// are until they are read.
void Parser::colourAhead(int line) {
    ahead_.first = ahead_.next = ahead_.end = line;
    ahead_.changedPages = buffer_->getChangedPages();
    ahead_.end = buffer_->setLineFormatsAhead(line, buffer_->getLineCount(), [&](LineStore::LinesAhead& lines) {
        return colourLines(lines, line > 0 ? endState(line - 1) : EndState{}, ahead_.ends);
    });
    passKnown(ahead_.end - 1);
}

/// When the line is the next one of those written ahead, and of those whose state is not current.
bool Parser::takeAhead(int line) {
    if (line != ahead_.next || line >= ahead_.end || line != current_ ||
        ahead_.changedPages != buffer_->getChangedPages() || generation_ != buffer_->getGeneration())
        return false;
    flagged_ = std::max(flagged_, line + 1);
    setBoth(line, ahead_.ends[static_cast<std::size_t>(line - ahead_.first)]);
    lastNext_ = line;
    current_ = ahead_.next = line + 1;
    return true;
}

/// State and codes are current: of a line that ends open when a block is open behind it.
void Parser::setBoth(int line, EndState end) {
    const int open = end.openBlock ? PF_OPEN_AT_END | end.openBlock : 0;
    buffer_->setLineParse(line, PF_BLOCKS | PF_PARSED | PF_FORMATS | open, PF_OPEN_AT_END | openBlockMask,
                          end.detail);
}

} // namespace tavrin
