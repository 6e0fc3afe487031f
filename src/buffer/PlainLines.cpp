#include "buffer/PlainLines.h"

#include "platform/core/LineBlocks.h"

#include <algorithm>
#include <array>
#include <bit>

namespace tavrin {

namespace {

constexpr std::size_t limit = TextSource::maxLineLength;
constexpr int lastBit = 63;
/// Few, since a page may end in the first of them.
constexpr std::size_t blocksAtOnce = 8;

std::uint64_t bitsBelow(int bit) {
    return (std::uint64_t{1} << bit) - 1;
}

std::size_t count(std::uint64_t bits) {
    return static_cast<std::size_t>(std::popcount(bits));
}

int lowest(std::uint64_t bits) {
    return std::countr_zero(bits);
}

int highest(std::uint64_t bits) {
    return lastBit - std::countl_zero(bits);
}

/// Whether so many neighbouring bits are set. REQUIRES: 0 < length < 64.
bool hasRun(std::uint64_t bits, int length) {
    int covered = 1; // a bit that is left stands for so many
    for (; 2 * covered <= length; covered *= 2)
        bits &= bits >> covered;
    return (bits & bits >> (length - covered)) != 0;
}

} // namespace

struct PlainLines::Block {
    std::size_t at;
    const scan::LineBlock& bytes;
    [[nodiscard]] bool endsInReturn() const { return bytes.returns >> lastBit != 0; }
};

struct PlainLines::Sums {
    int most; ///< lines that are wanted
    int lines = 0;
    int crLfs = 0;   ///< of their ends
    int columns = 0; ///< of the widest
    std::size_t lastBegin = 0;
    std::size_t lastSurplus = 0;
    std::size_t surplusBefore = 0; ///< of all lines
    // Of the current line, up to the block that is looked at:
    std::size_t begin;
    std::size_t tabs = 0;
    std::size_t surplus = 0; ///< bytes beyond one a code unit
    bool endsInReturn = false;

    /// The current line ends, and so do others behind it.
    void endLines(int count, int countCrLf, std::size_t firstEnd, std::size_t after) {
        const auto length = static_cast<int>(firstEnd - begin - surplus);
        columns = std::max(columns, length + static_cast<int>(tabs) * (TextSource::tabWidth - 1));
        lines += count;
        crLfs += countCrLf;
        lastBegin = begin;
        lastSurplus = surplus;
        surplusBefore += surplus;
        begin = after;
        tabs = surplus = 0;
    }
};

void PlainLines::skip(std::size_t& offset, int count, TextSource::Totals& totals) const {
    Sums sums{.most = count - totals.lines, .columns = totals.columns, .begin = offset};
    std::array<scan::LineBlock, blocksAtOnce> blocks;
    bool isPlain = true;
    for (std::size_t at = offset; isPlain && at + scan::blockSize <= text_.size();) {
        const std::size_t here = std::min(blocksAtOnce, (text_.size() - at) / scan::blockSize);
        scan::lineBlocks(text_.data() + at, {blocks.data(), here});
        for (std::size_t i = 0; i < here && isPlain; ++i, at += scan::blockSize)
            isPlain = add({at, blocks[i]}, sums);
    }
    if (sums.lines == 0)
        return;
    const std::size_t lastBreak = text_[sums.begin - 2] == '\r' && sums.begin - 2 >= sums.lastBegin ? 2 : 1;
    const std::size_t breaks = static_cast<std::size_t>(sums.lines) + static_cast<std::size_t>(sums.crLfs);
    totals.lines += sums.lines;
    totals.length += static_cast<std::int64_t>(sums.begin - offset - breaks - sums.surplusBefore);
    totals.columns = sums.columns;
    totals.ends[static_cast<std::size_t>(LineEnd::CrLf)] += sums.crLfs;
    totals.ends[static_cast<std::size_t>(LineEnd::Lf)] += sums.lines - sums.crLfs;
    totals.lastLength = static_cast<int>(sums.begin - lastBreak - sums.lastBegin - sums.lastSurplus);
    offset = sums.begin;
}

/// False when no more is to be added.
[[gnu::always_inline]] inline bool PlainLines::add(const Block& block, Sums& sums) const {
    if (!addTogether(block, sums)) {
        Sums given = sums; // the caller keeps its own in registers
        const bool isPlain = addEach(block, given);
        sums = given;
        if (!isPlain)
            return false;
    }
    sums.endsInReturn = block.endsInReturn();
    return sums.lines < sums.most && block.at + scan::blockSize <= sums.begin + limit;
}

/// Adds all lines that end in the block at once. False, and nothing is added, when that does not do.
[[gnu::always_inline]] inline bool PlainLines::addTogether(const Block& block, Sums& sums) const {
    const scan::LineBlock& bytes = block.bytes;
    const std::uint64_t afterReturn = bytes.returns << 1 | (sums.endsInReturn ? 1 : 0);
    if (bytes.tabs || (bytes.high && units_ != Units::Bytes) || (afterReturn && afterReturn != bytes.feeds))
        return false;
    if (!bytes.feeds)
        return true;
    const auto lines = static_cast<int>(bytes.feedCount);
    const int first = lowest(bytes.feeds);
    const int last = highest(bytes.feeds);
    const int breakLength = afterReturn ? 2 : 1;
    const std::size_t firstEnd = block.at + static_cast<std::size_t>(first + 1 - breakLength);
    if (sums.lines + lines > sums.most || firstEnd - sums.begin >= limit)
        return false;
    // Lines within the block count only when one of them is wider than all before.
    const int wider = sums.columns + breakLength;
    if (last - first > wider && hasRun(~bytes.feeds & bitsBelow(last) & ~bitsBelow(first), wider))
        return false;
    const std::uint64_t others = bytes.feeds & bitsBelow(last);
    const std::size_t begin = sums.begin;
    const std::size_t surplus = sums.surplus;
    sums.endLines(lines, afterReturn ? lines : 0, firstEnd, block.at + static_cast<std::size_t>(last) + 1);
    // Without branches: nobody can predict how many lines end in a block.
    const std::size_t lastBegin = block.at + static_cast<std::size_t>(highest(others | 1)) + 1;
    sums.lastBegin = others ? lastBegin : begin;
    sums.lastSurplus = others ? 0 : surplus;
    return true;
}

/// The same line by line. False at a line that is not plain, or when there are enough.
bool PlainLines::addEach(const Block& block, Sums& sums) const {
    scan::LineBlock bytes = block.bytes;
    if (sums.endsInReturn && !(bytes.feeds & 1))
        return false; // the return is a break of its own
    const auto addUpTo = [&](std::uint64_t bits) {
        sums.tabs += count(bytes.tabs & bits);
        if (units_ == Units::Utf8)
            sums.surplus += count(bytes.trailing & bits) - count(bytes.pairs & bits);
        const bool isPlain = units_ != Units::Ascii || !(bytes.high & bits);
        bytes.tabs &= ~bits;
        bytes.trailing &= ~bits;
        bytes.pairs &= ~bits;
        bytes.high &= ~bits;
        return isPlain;
    };
    for (std::uint64_t breaks = bytes.feeds | bytes.returns; breaks; breaks &= breaks - 1) {
        const int bit = lowest(breaks);
        const std::uint64_t next = std::uint64_t{1} << bit << 1;
        const std::size_t at = block.at + static_cast<std::size_t>(bit);
        if (bytes.returns >> bit & 1) {
            if (next && !(bytes.feeds & next))
                return false;
            continue;
        }
        const bool isCrLf = bit > 0 ? (bytes.returns >> (bit - 1) & 1) != 0 : sums.endsInReturn;
        const std::size_t end = isCrLf ? at - 1 : at;
        if (!addUpTo(bitsBelow(bit)) || end - sums.begin >= limit)
            return false;
        sums.endLines(1, isCrLf ? 1 : 0, end, at + 1);
        if (sums.lines == sums.most)
            return false;
    }
    return addUpTo(~std::uint64_t{0});
}

} // namespace tavrin
