#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tavrin::scan {

/// What a line scan wants to know of blockSize bytes. Bit i is about byte i.
struct LineBlock {
    std::uint64_t feeds = 0;   ///< line feeds
    std::uint64_t returns = 0; ///< carriage returns
    std::uint64_t tabs = 0;
    std::uint64_t high = 0;     ///< bytes that are not below 0x80
    std::uint64_t trailing = 0; ///< of them, those below 0xC0: all but the first byte of a character in UTF-8
    std::uint64_t pairs = 0;    ///< those from 0xF0 on: the first byte of a character of two code units
    std::uint64_t feedCount = 0;

    friend bool operator==(const LineBlock&, const LineBlock&) = default;
};
inline constexpr std::size_t blockSize = 64;

/// Fills all of `blocks`. REQUIRES: as many times blockSize bytes. Uses what the processor has.
void lineBlocks(const char* bytes, std::span<LineBlock> blocks);

namespace portable {
/// The definition of what lineBlocks gives.
void lineBlocks(const char* bytes, std::span<LineBlock> blocks);
} // namespace portable

namespace fallback {
/// What lineBlocks uses on processors without AVX2.
void lineBlocks(const char* bytes, std::span<LineBlock> blocks);
} // namespace fallback

} // namespace tavrin::scan
