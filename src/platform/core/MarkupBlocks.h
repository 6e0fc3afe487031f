#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tavrin::scan {

/// What a walk over tags wants to know of markupBlockSize code units. Bit i is about unit i.
struct MarkupBlock {
    std::uint64_t names; ///< ASCII letters; and digits, ":", "-" and "_" behind one
    std::uint64_t signs; ///< < > / = ?
    std::uint64_t less;  ///< of them
    std::uint64_t greater;
    std::uint64_t quotes; ///< double ones
    std::uint64_t apostrophes;
    /// What such a walk looks at more closely: "."; what is not below 0x7F; names, signs and quotes right
    /// behind a digit, ":", "-" or "_" that does not count as part of a name.
    std::uint64_t odd;

    friend bool operator==(const MarkupBlock&, const MarkupBlock&) = default;
};
inline constexpr std::size_t markupBlockSize = 64;

/// Looks at the text, before and behind which nothing stands. REQUIRES: room for as many blocks as it takes,
/// the last of which may be one in part. Uses what the processor has.
void markupBlocks(std::u16string_view text, MarkupBlock* blocks);

namespace portable {
/// The definition of what markupBlocks gives.
void markupBlocks(std::u16string_view text, MarkupBlock* blocks);
} // namespace portable

namespace fallback {
/// What markupBlocks uses on processors without AVX2.
void markupBlocks(std::u16string_view text, MarkupBlock* blocks);
} // namespace fallback

} // namespace tavrin::scan
