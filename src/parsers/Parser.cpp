#include "parsers/Parser.h"

#include "buffer/Buffer.h"
#include "platform/core/TextScan.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tavrin {

namespace {

constexpr int staleFlags = PF_PARSED | PF_BLOCKS | PF_FORMATS;
constexpr std::u16string_view endOfLine = u"\n";

/// Stretches of known lines that are kept. Edits at more places than this between two readings make
/// the engine read some lines again that it need not.
constexpr std::size_t maxKnown = 16;

} // namespace

// Staleness

void Parser::onBufferLoaded() {
    forgetOtherLines();
}

/// They are as after an edit above them.
void Parser::onLinesScanned(int count) {
    forgetOtherLines();
    if (count > 0)
        known_.assign(1, {0, count, {}});
}

void Parser::onLinesRestored() noexcept {
    generation_ = buffer_->getGeneration();
    current_ = flagged_ = 0;
    known_.clear();
    ahead_.end = 0;
    longLine_.forget();
    buffer_->setLineFlags(0, buffer_->getLineCount(), 0, staleFlags); // of all lines: allocates nothing
}

/// What is remembered is about lines that may be gone.
void Parser::forgetOtherLines() {
    if (generation_ == buffer_->getGeneration())
        return;
    generation_ = buffer_->getGeneration();
    current_ = flagged_ = 0;
    known_.clear();
    ahead_.end = 0;
    longLine_.forget();
}

void Parser::onLinesReplacing(int line, int before, int after) {
    longLine_.onLinesReplacing(line, before, after);
    linesReplacing(line, before, after);
}

void Parser::onTextReplacing(int line, int col, int removed, int inserted) {
    longLine_.onTextReplacing(line, col, removed, inserted);
    linesReplacing(line, 1, 1);
}

void Parser::onCodesWritten(int line) {
    if (longLine_.isFor(line))
        longLine_.forget();
}

void Parser::linesReplacing(int line, int before, int after) {
    forgetOtherLines();
    ahead_.end = 0;
    forgetText(line, before, after);
    if (line < flagged_)
        flagged_ = std::max(line + after, flagged_ + after - before);
}

void Parser::onLineModified(int line) {
    forgetOtherLines();
    ahead_.end = 0;
    const auto isKnown = [line](const KnownLines& known) { return known.first <= line && line < known.end; };
    if (line < current_ || std::ranges::any_of(known_, isKnown))
        forgetText(line, 1, 1);
    if (line < flagged_) {
        buffer_->setLineFlags(line, std::min(flagged_, buffer_->getLineCount()), 0, staleFlags);
        flagged_ = line;
    }
}

/// The text of [line, line + before) goes, `after` lines come in its place: keeps what is known of the other
/// lines.
void Parser::forgetText(int line, int before, int after) {
    const int below = line + before;
    const int shift = after - before;
    std::vector<KnownLines> kept;
    const auto keepBelow = [&](int end) {
        if (below < end)
            kept.push_back({below + shift, end + shift, endState(below - 1)});
    };
    if (line < current_) {
        int end = current_;
        if (!known_.empty() && known_.front().first == current_ &&
            known_.front().entry == endState(current_ - 1)) {
            end = known_.front().end; // it goes on from here as it was computed
            known_.erase(known_.begin());
        }
        keepBelow(end);
        current_ = line;
    }
    for (const KnownLines& known : known_) {
        if (known.end <= line) {
            kept.push_back(known);
        } else if (known.first >= below) {
            kept.push_back({known.first + shift, known.end + shift, known.entry});
        } else {
            if (known.first < line)
                kept.push_back({known.first, line, known.entry});
            keepBelow(known.end);
        }
    }
    if (kept.size() > maxKnown)
        kept.erase(std::ranges::min_element(kept, {}, [](const KnownLines& k) { return k.end - k.first; }));
    known_ = std::move(kept);
}

// Block state

Parser::EndState Parser::endState(int line) const {
    return {buffer_->getLineFlags(line) & openBlockMask, buffer_->getLineState(line)};
}

const Parser::Block* Parser::blockOf(int openBlock) const {
    const auto block =
        std::ranges::find_if(blocks, [&](const Block& b) { return (openBlock & b.id) == b.id; });
    return block == blocks.end() ? nullptr : &*block;
}

const Parser::Block* Parser::getEndOpenBlock(int line) {
    if (line < 0)
        return nullptr;
    bringBlocksTo(line);
    return blockOf(endState(line).openBlock);
}

/// Makes the block state of [0, line] current, without reading lines whose state still holds.
void Parser::bringBlocksTo(int line) {
    forgetOtherLines();
    flagged_ = std::max(flagged_, line + 1); // before any flag is set: memory may run out on the way
    while (current_ <= line) {
        if (known_.empty() || known_.front().first != current_) {
            if (!scanStoredLines(line)) {
                parseBlocks(current_);
                ++current_;
            }
            continue;
        }
        KnownLines& known = known_.front();
        if (known.entry == (current_ > 0 ? endState(current_ - 1) : EndState{})) {
            // Same text, same entry state: the stored results stand. Only up to the line asked for, so that
            // the flags below it stay as they are.
            const int end = std::min(known.end, line + 1);
            buffer_->setLineFlags(current_, end, PF_BLOCKS, PF_BLOCKS);
            passKnown(end - 1);
            current_ = end;
        } else {
            passKnown(current_);
            parseBlocks(current_);
            ++current_;
        }
    }
}

/// What is known of lines below goes on from the state that `line` has now, which may be about to change.
void Parser::passKnown(int line) {
    while (!known_.empty() && known_.front().end <= line + 1)
        known_.erase(known_.begin());
    if (known_.empty() || known_.front().first > line)
        return;
    known_.front().first = line + 1;
    known_.front().entry = endState(line);
}

int Parser::endOf(const Block& block, int line, int pos, bool startsHere) const {
    if (block.end == endOfLine)
        return -1;
    const int end = findBlockEnd(block, line, startsHere ? pos + 1 : 0);
    return end < 0 ? -1 : end + static_cast<int>(block.end.size());
}

void Parser::walk(int line, Want want) {
    if (walkAtOnce(line, want) || walkChange(line, want))
        return;
    const EndState entry = line > 0 ? endState(line - 1) : EndState{};
    const bool codes = want != Want::Blocks;
    const bool isLong = codes && buffer_->getLineLength(line) >= BufferLine::longLine && colourBlocksAlone();
    if (codes)
        buffer_->formatRange(line, 0, buffer_->getLineLength(line), 0);
    if (!isLong) {
        setWalked(line, walkBlocks(line, entry, 0, want, [](int) { return false; }), want);
        return;
    }
    longLine_.beginAll();
    const Walked walked =
        walkBlocks(line, entry, 0, Want::Both, [this](int col) { return longLine_.reach(col); });
    longLine_.endAll(line);
    longLineEntry_ = entry;
    longLineEnd_ = walked.end;
    setWalked(line, walked, want);
}

template <class Reach>
Parser::Walked Parser::walkBlocks(int line, EndState entry, int from, Want want, Reach&& reach) {
    struct End {
        Parser& parser;
        ~End() {
            parser.walkedLine_ = -1;
            parser.collecting_ = false;
        }
    } const end{*this};
    const std::u16string_view text = buffer_->getLineText(line);
    walkedLine_ = line;
    walkedText_ = text;
    const int length = static_cast<int>(text.size());
    const bool codes = want != Want::Blocks;
    runs_.clear();
    collecting_ = codes;
    Walked result{{}, 0, length};
    const Block* block = from == 0 ? blockOf(entry.openBlock) : nullptr;
    int contentStart = from;
    int pos = from;
    do {
        const bool startsHere = !block;
        if (startsHere)
            pos = findFirstBlock(line, pos, block);
        if (codes)
            formatContentRange(line, contentStart, (block ? pos : length) - contentStart);
        if (!block)
            break;
        if (startsHere && reach(pos)) {
            result.column = pos;
            break;
        }
        const int closed = endOf(*block, line, pos, startsHere);
        const int blockEnd = closed < 0 ? length : closed;
        if (codes)
            formatBlockRange(line, pos, blockEnd - pos, *block);
        if (closed < 0 && want != Want::Codes) {
            result.flags = PF_OPEN_AT_END;
            if (block->continuation == 0 || text.starts_with(block->continuation))
                result.end = {block->id,
                              openBlockState(*block, line, startsHere ? std::uint8_t{0} : entry.detail)};
        }
        block = nullptr;
        contentStart = pos = blockEnd;
    } while (pos < length);
    if (codes && !collectingPart_)
        writeRuns(line);
    return result;
}

void Parser::setWalked(int line, const Walked& walked, Want want) {
    if (want == Want::Codes)
        return;
    const int current = want == Want::Both ? PF_BLOCKS | PF_PARSED | PF_FORMATS : PF_BLOCKS;
    buffer_->setLineParse(line, current | walked.flags | walked.end.openBlock, PF_OPEN_AT_END | openBlockMask,
                          walked.end.detail);
}

/// Of a long line whose other parts are known.
bool Parser::walkChange(int line, Want want) {
    if (!longLine_.isFor(line) || longLineEntry_ != (line > 0 ? endState(line - 1) : EndState{}))
        return false;
    if (longLine_.hasChange()) {
        BlockStarts starts = std::exchange(longLine_, {}); // nothing is known when this fails
        const int from = starts.beginAtChange();
        collectingPart_ = true;
        isOutOfOrder_ = false;
        struct End {
            bool& collectingPart;
            ~End() { collectingPart = false; }
        } const end{collectingPart_};
        const Walked walked =
            walkBlocks(line, longLineEntry_, from, Want::Both, [&](int col) { return starts.reach(col); });
        if (isOutOfOrder_ || !buffer_->setLineFormats(line, from, walked.column, runs_))
            return false;
        if (walked.column < buffer_->getLineLength(line)) {
            starts.endStopped();
        } else {
            starts.endAll(line);
            longLineEnd_ = walked.end;
        }
        longLine_ = std::move(starts);
    }
    setWalked(line, {longLineEnd_, longLineEnd_.openBlock ? PF_OPEN_AT_END : 0, 0}, want);
    return true;
}

/// Block state of the lines that the buffer keeps together from current_ on, when `line` is not among them:
/// flags below the line asked for stay as they are.
bool Parser::scanStoredLines(int line) {
    const LineScan* const scan = lineScan();
    if (!scan || line - current_ < fewLines)
        return false;
    const auto lines = buffer_->getStoredLines(current_);
    if (!lines || lines->first != current_ || lines->end > line + 1 ||
        (!known_.empty() && known_.front().first < lines->end))
        return false;
    std::array<std::uint8_t, LineStore::pageLines> flags;
    std::array<std::uint8_t, LineStore::pageLines> details;
    const auto count = static_cast<std::size_t>(lines->end - lines->first);
    if (!scan->scan(*lines, current_ > 0 ? endState(current_ - 1) : EndState{}, std::span(flags).first(count),
                    std::span(details).first(count)))
        return false;
    for (std::uint8_t& state : flags)
        state |= PF_BLOCKS;
    buffer_->setLineFlags(current_, std::span(flags).first(count), PF_OPEN_AT_END | openBlockMask,
                          std::span(details).first(count));
    current_ = lines->end;
    return true;
}

// Codes

void Parser::parseLine(int line) {
    if (line >= flagged_ && takeAhead(line)) // has no flag of ours
        return;
    const int flags = buffer_->getLineFlags(line);
    if (flags & PF_PARSED)
        return;
    bringBlocksTo(line - 1);
    if (current_ == line && !(flags & PF_FORMATS)) { // state and codes in one walk
        walkNext(line);
        return;
    }
    bringBlocksTo(line);
    if (!(flags & PF_FORMATS))
        walk(line, Want::Codes);
    buffer_->setLineFlags(line, PF_PARSED | PF_FORMATS, PF_PARSED | PF_FORMATS);
}

void Parser::formatAgain(int line) {
    bringBlocksTo(line - 1);
    walk(line, Want::Codes);
}

std::u16string_view Parser::textOf(int line) const {
    return line == walkedLine_ ? walkedText_ : buffer_->getLineText(line);
}

void Parser::setFormat(int line, int start, int count, int format) {
    if (count <= 0)
        return;
    FormatRun* const last = runs_.empty() ? nullptr : &runs_.back();
    const int end = last ? last->end : 0;
    if (collecting_ && start >= end) {
        if (format == 0)
            return;
        if (start == end && last && last->format == format) {
            last->end = start + count;
            return;
        }
        if (start > end)
            runs_.push_back({start, 0});
        runs_.push_back({start + count, format});
        return;
    }
    if (collectingPart_) {
        isOutOfOrder_ = true;
        return;
    }
    writeRuns(line); // out of order: the rest goes to the buffer by itself
    buffer_->formatRange(line, start, count, format);
}

/// What was collected goes to the buffer; what comes later goes there by itself.
void Parser::writeRuns(int line) {
    if (collecting_ && !runs_.empty())
        buffer_->setLineFormats(line, runs_);
    collecting_ = false;
}

// Finding

int Parser::findBlockEnd(const Block& block, int line, int start) const {
    return findNotEscapedString(block.end, block.escape, textOf(line), start);
}

std::uint8_t Parser::openBlockState(const Block&, int, std::uint8_t) const {
    return 0;
}

int Parser::findFirstBlock(int line, int start, const Block*& block) const {
    block = nullptr;
    const std::u16string_view text = textOf(line);
    if (!startsWithTrigger_)
        startsWithTrigger_ = std::ranges::all_of(
            blocks, [&](const Block& b) { return b.start.front() == blockTrigger && b.escape == 0; });
    if (*startsWithTrigger_) { // then one walk over the trigger characters finds the leftmost start
        for (std::size_t at = scan::findUnit(text, blockTrigger, static_cast<std::size_t>(start));
             at != text.npos; at = scan::findUnit(text, blockTrigger, at + 1))
            for (const Block& candidate : blocks)
                if (text.substr(at).starts_with(candidate.start)) {
                    block = &candidate;
                    return static_cast<int>(at);
                }
        return -1;
    }
    if (blockTrigger != u'0' && scan::findUnit(text, blockTrigger, 0) == text.npos)
        return -1;
    int first = -1;
    for (const Block& candidate : blocks) {
        const int at = findNotEscapedString(candidate.start, candidate.escape, text, start);
        if (at >= 0 && (first < 0 || at < first)) {
            first = at;
            block = &candidate;
        }
    }
    return first;
}

int Parser::findNotEscapedString(std::u16string_view what, char16_t escape, std::u16string_view text,
                                 int start) {
    std::size_t from = static_cast<std::size_t>(start);
    while (from <= text.size()) {
        const std::size_t at = scan::findText(text, what, from);
        if (at == text.npos)
            return -1;
        if (escape == 0 || at == 0 || text[at - 1] != escape || at + 1 == text.size())
            return static_cast<int>(at);
        from = at + 1;
    }
    return -1;
}

int Parser::findKeyword(std::u16string_view text, int start, std::u16string_view keyword) const {
    for (std::size_t at = scan::findText(text, keyword, static_cast<std::size_t>(start)); at != text.npos;
         at = scan::findText(text, keyword, at + 1)) {
        const std::size_t end = at + keyword.size();
        if ((at == 0 || isKeywordEnd(text[at - 1])) && (end == text.size() || isKeywordEnd(text[end])))
            return static_cast<int>(at);
    }
    return -1;
}

} // namespace tavrin
