#pragma once

#include "platform/core/MarkupBlocks.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <string_view>

namespace tavrin {

/// Where markup stands in a stretch of text, or in as much of it as fits.
class MarkupMap {
  public:
    static constexpr std::size_t longest = 4096;
    static_assert(longest % scan::markupBlockSize == 0);

    void read(std::u16string_view text) {
        text_ = text.substr(0, longest);
        scan::markupBlocks(text_, blocks_.data());
        blocks_[(text_.size() + scan::markupBlockSize - 1) / scan::markupBlockSize] = {};
    }

    [[nodiscard]] bool covers(std::u16string_view part) const { return encloses(text_, part); }
    /// REQUIRES: covers(part).
    [[nodiscard]] std::size_t indexOf(std::u16string_view part) const {
        return static_cast<std::size_t>(part.data() - text_.data());
    }
    static bool encloses(std::u16string_view text, std::u16string_view part) {
        const std::less_equal<> isUpTo;
        return isUpTo(text.data(), part.data()) &&
               isUpTo(part.data() + part.size(), text.data() + text.size());
    }

    /// The markupBlockSize units from `at` on. REQUIRES: at is within the text.
    [[nodiscard, gnu::always_inline]] scan::MarkupBlock from(std::size_t at) const {
        const std::size_t inBlock = at % scan::markupBlockSize;
        const scan::MarkupBlock& here = blocks_[at / scan::markupBlockSize];
        const scan::MarkupBlock& behind = blocks_[at / scan::markupBlockSize + 1];
        const auto join = [&](std::uint64_t low, std::uint64_t high) {
            return low >> inBlock | high << 1 << (scan::markupBlockSize - 1 - inBlock);
        };
        return {join(here.names, behind.names),   join(here.signs, behind.signs),
                join(here.less, behind.less),     join(here.greater, behind.greater),
                join(here.quotes, behind.quotes), join(here.apostrophes, behind.apostrophes),
                join(here.odd, behind.odd)};
    }

    /// The first "<" from `at` on, or `end` when there is none before. REQUIRES: at <= end, which is within
    /// the text.
    [[nodiscard]] std::size_t nextLess(std::size_t at, std::size_t end) const {
        while (at < end) {
            const std::size_t inBlock = at % scan::markupBlockSize;
            if (const std::uint64_t bits = blocks_[at / scan::markupBlockSize].less >> inBlock)
                return std::min(at + static_cast<std::size_t>(std::countr_zero(bits)), end);
            at += scan::markupBlockSize - inBlock;
        }
        return end;
    }

  private:
    std::u16string_view text_;
    std::array<scan::MarkupBlock, longest / scan::markupBlockSize + 1> blocks_;
};

} // namespace tavrin
