#include "buffer/PlainLines.h"

#include "platform/core/TextScan.h"

#include <algorithm>
#include <bit>

namespace tavrin {

namespace {

constexpr std::size_t limit = TextSource::maxLineLength;
constexpr int lastBit = 63;

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
    scan::LineMasks masks;
    std::uint64_t feeds = masks.breaks & ~masks.returns;
    [[nodiscard]] bool endsInReturn() const { return masks.returns >> lastBit != 0; }
};

void PlainLines::skip(std::size_t& offset, int count, TextSource::Totals& totals) {
    totals_ = &totals;
    count_ = count;
    begin_ = offset;
    tabs_ = surplus_ = 0;
    endsInReturn_ = false;
    for (std::size_t at = begin_; at + scan::maskStep <= text_.size() && totals.lines < count;
         at += scan::maskStep) {
        const Block block{at, scan::lineMasks(text_.data() + at)};
        if (!addTogether(block) && !addEach(block))
            break;
        if (at + scan::maskStep > begin_ + limit)
            break;
        endsInReturn_ = block.endsInReturn();
    }
    offset = begin_;
}

/// Adds all lines that end in the block at once. False, and nothing is added, when that does not do.
bool PlainLines::addTogether(const Block& block) {
    const scan::LineMasks& masks = block.masks;
    const std::uint64_t afterReturn = masks.returns << 1 | (endsInReturn_ ? 1 : 0);
    const bool isCrLf = afterReturn != 0;
    if (masks.tabs || (masks.high && units_ != Units::Bytes) || (isCrLf && afterReturn != block.feeds))
        return false;
    if (!block.feeds)
        return true;
    const auto lines = static_cast<int>(count(block.feeds));
    const int first = lowest(block.feeds);
    const int last = highest(block.feeds);
    const std::size_t breakLength = isCrLf ? 2 : 1;
    const std::size_t firstBytes = block.at + static_cast<std::size_t>(first) + 1 - breakLength - begin_;
    if (totals_->lines + lines > count_ || firstBytes >= limit)
        return false;
    // Lines within the block only count when one of them is wider than all before.
    const std::uint64_t between = ~block.feeds & bitsBelow(last) & ~bitsBelow(first);
    const int wider = totals_->columns + static_cast<int>(breakLength);
    if (lines > 1 && wider < lastBit && hasRun(between, wider))
        return false;
    const auto firstLength = static_cast<int>(firstBytes - surplus_);
    const int beforeLast = lines > 1 ? highest(block.feeds & bitsBelow(last)) : first;
    const std::size_t after = block.at + static_cast<std::size_t>(last) + 1;
    totals_->lines += lines;
    totals_->length +=
        static_cast<std::int64_t>(after - begin_ - surplus_ - static_cast<std::size_t>(lines) * breakLength);
    totals_->columns =
        std::max(totals_->columns, firstLength + static_cast<int>(tabs_) * (TextSource::tabWidth - 1));
    totals_->ends[static_cast<std::size_t>(isCrLf ? LineEnd::CrLf : LineEnd::Lf)] += lines;
    totals_->lastLength = lines > 1 ? last - beforeLast - static_cast<int>(breakLength) : firstLength;
    begin_ = after;
    tabs_ = surplus_ = 0;
    return true;
}

/// The same line by line. False at a line that is not plain, or when there are enough.
bool PlainLines::addEach(const Block& block) {
    scan::LineMasks masks = block.masks;
    if (endsInReturn_ && !(block.feeds & 1))
        return false; // the return is a break of its own
    const auto addUpTo = [&](std::uint64_t bits) {
        tabs_ += count(masks.tabs & bits);
        if (units_ == Units::Utf8)
            surplus_ += count(masks.trailing & bits) - count(masks.pairs & bits);
        const bool isPlain = units_ != Units::Ascii || !(masks.high & bits);
        masks.tabs &= ~bits;
        masks.trailing &= ~bits;
        masks.pairs &= ~bits;
        masks.high &= ~bits;
        return isPlain;
    };
    for (; masks.breaks; masks.breaks &= masks.breaks - 1) {
        const int bit = lowest(masks.breaks);
        const std::uint64_t next = std::uint64_t{1} << bit << 1;
        const std::size_t at = block.at + static_cast<std::size_t>(bit);
        if (masks.returns >> bit & 1) {
            if (next && !(block.feeds & next))
                return false;
            continue;
        }
        const bool isCrLf = bit > 0 ? (masks.returns >> (bit - 1) & 1) != 0 : endsInReturn_;
        const std::size_t end = isCrLf ? at - 1 : at;
        if (!addUpTo(bitsBelow(bit)) || end - begin_ >= limit)
            return false;
        endLine(end, isCrLf);
        begin_ = at + 1;
        if (totals_->lines == count_)
            return false;
    }
    return addUpTo(~std::uint64_t{0});
}

void PlainLines::endLine(std::size_t end, bool crLf) {
    const auto length = static_cast<int>(end - begin_ - surplus_);
    ++totals_->lines;
    totals_->length += length;
    totals_->columns =
        std::max(totals_->columns, length + static_cast<int>(tabs_) * (TextSource::tabWidth - 1));
    ++totals_->ends[static_cast<std::size_t>(crLf ? LineEnd::CrLf : LineEnd::Lf)];
    totals_->lastLength = length;
    tabs_ = surplus_ = 0;
}

} // namespace tavrin
