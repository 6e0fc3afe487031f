#pragma once

#include "platform/core/MarkupBlocks.h"
#include "platform/core/TextScan.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace tavrin {

/// Reads a tag, or the part of one that lies on a line, from masks of its characters: where their codes
/// change, and where it ends. Only a plain tag: nothing odd (see MarkupBlock) outside its values, and no
/// double quote in single ones.
class PlainTag {
  public:
    /// `beginsHere`: with its "<", else it goes on from the line above.
    explicit PlainTag(bool beginsHere) : begin_(beginsHere ? 1 : 0) {}

    /// Reads the next `count` characters, a block or fewer, among which no other tag begins. False when the
    /// tag is not plain. REQUIRES: count > 0; the tag has not ended.
    [[gnu::always_inline]] bool read(const scan::MarkupBlock& block, std::size_t count) {
        const std::uint64_t within = bitsBelow(count);
        const std::uint64_t quotes = block.quotes & within;
        const std::uint64_t quoted = openBehind(quotes, inQuotes_);
        const std::uint64_t values = quoted | quotes;
        const std::uint64_t single = openBehind(block.apostrophes & within & ~values, inApostrophes_);
        const std::uint64_t ends = block.greater & within & ~values & ~single;
        hasEnded_ = ends != 0;
        size_ = hasEnded_ ? static_cast<std::size_t>(std::countr_zero(ends)) + 1 : count;
        const std::uint64_t inTag = bitsBelow(size_);
        if (((block.odd & ~behind(quoted, inQuotes_) & ~begin_) | (quotes & single)) & inTag)
            return false;
        const std::uint64_t names = block.names & ~values;
        const std::uint64_t signs = block.signs & ~values;
        changes_ = ((names ^ behind(names, lastNames_)) | (signs ^ behind(signs, lastSigns_)) |
                    (values ^ behind(values, lastValues_))) &
                   inTag;
        begin_ = 0;
        lastNames_ = names >> lastBit;
        lastSigns_ = signs >> lastBit;
        lastValues_ = values >> lastBit;
        inQuotes_ = quoted >> lastBit;
        inApostrophes_ = single >> lastBit;
        return true;
    }

    // About the characters that were read last:

    /// Bit i: character i has another code than the one before it. A value ends with its quote, so that the
    /// last character of equal ones tells their code.
    [[nodiscard]] std::uint64_t changes() const { return changes_; }
    /// So many belong to the tag.
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool hasEnded() const { return hasEnded_; }
    /// A double-quoted value goes on.
    [[nodiscard]] bool isInQuotes() const { return inQuotes_ != 0; }

  private:
    static constexpr int lastBit = scan::markupBlockSize - 1;

    /// REQUIRES: count > 0.
    static std::uint64_t bitsBelow(std::size_t count) { return ~std::uint64_t{0} >> (lastBit + 1 - count); }
    /// Each bit one further, behind the last one before.
    static std::uint64_t behind(std::uint64_t bits, std::uint64_t last) { return bits << 1 | last; }
    /// From each opening quote up to the closing one, which is left out.
    static std::uint64_t openBehind(std::uint64_t quotes, std::uint64_t wasOpen) {
        return (quotes ? scan::parityUpTo(quotes) : 0) ^ (0 - wasOpen);
    }

    std::uint64_t changes_ = 0;
    std::size_t size_ = 0;
    bool hasEnded_ = false;
    std::uint64_t begin_; ///< bit 0: what is read next begins with the tag's "<"
    // Each 0 or 1, of the last character:
    std::uint64_t lastNames_ = 0;
    std::uint64_t lastSigns_ = 0;
    std::uint64_t lastValues_ = 0;
    std::uint64_t inQuotes_ = 0;
    std::uint64_t inApostrophes_ = 0;
};

} // namespace tavrin
