#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

/// Searches over UTF-16 text, and over bytes of single characters, that decide the speed of loading, parsing
/// and finding. Vectorised where the machine allows; the portable versions are the reference that the tests
/// hold the others against.
namespace tavrin::scan {

/// Index of the first `unit` at or after `start`, or npos.
[[nodiscard]] std::size_t findUnit(std::u16string_view text, char16_t unit, std::size_t start);
[[nodiscard]] inline std::size_t findUnit(std::string_view text, char unit, std::size_t start) {
    if (start >= text.size())
        return std::string_view::npos;
    const void* const found = std::memchr(text.data() + start, unit, text.size() - start); // which is fast
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data())
                 : std::string_view::npos;
}

/// Index of the first occurrence of `what` at or after `start`, or npos. REQUIRES: what is not empty.
[[nodiscard]] std::size_t findText(std::u16string_view text, std::u16string_view what, std::size_t start);

/// Number of units equal to `unit`.
[[nodiscard]] std::size_t countUnit(std::u16string_view text, char16_t unit);
[[nodiscard]] std::size_t countUnit(std::string_view text, char unit);

/// Whether all units are of ' ' to '~'.
[[nodiscard]] bool isPrintableAscii(std::u16string_view text);

/// What a walk over loaded text stopped at.
struct LineScan {
    std::size_t
        length;       ///< units before the first line feed, carriage return or U+FEFF; all when there is none
    std::size_t tabs; ///< tabs among them
};
[[nodiscard]] LineScan scanLine(std::u16string_view text);

/// What a walk over loaded bytes stopped at.
struct ByteLineScan {
    std::size_t length; ///< bytes before the first line feed or carriage return; all when there is none
    std::size_t tabs;   ///< tabs among them
    bool ascii;         ///< all of them are below 0x80
};
[[nodiscard]] ByteLineScan scanByteLine(std::string_view bytes);

/// The bytes that the masks look at. Bit i is about byte i.
inline constexpr std::size_t maskStep = 64;
struct LineMasks {
    std::uint64_t breaks = 0; ///< line feeds and carriage returns
    std::uint64_t tabs = 0;
    std::uint64_t high = 0; ///< bytes that are not below 0x80
};
/// REQUIRES: maskStep bytes.
[[nodiscard]] LineMasks lineMasks(const char* bytes);

/// Where the bytes stand that can change what XML text is inside of.
struct MarkupMasks {
    std::uint64_t less = 0;
    std::uint64_t greater = 0;
    std::uint64_t quotes = 0; ///< double ones
    std::uint64_t apostrophes = 0;
    std::uint64_t marks = 0; ///< "!"
    std::uint64_t feeds = 0;
    std::uint64_t returns = 0;
    std::uint64_t feedCount = 0;
    // parityUpTo:
    std::uint64_t edgesPassed = 0; ///< of `less` and `greater` together
    std::uint64_t quotesPassed = 0;
    std::uint64_t apostrophesPassed = 0;
    friend bool operator==(const MarkupMasks&, const MarkupMasks&) = default;
};
/// Those of one stretch of maskStep bytes after the other. REQUIRES: so many bytes.
void markupMasks(const char* bytes, std::span<MarkupMasks> masks);

/// Bit i tells whether an odd number of the bits 0 to i are set.
[[nodiscard]] constexpr std::uint64_t parityUpTo(std::uint64_t bits) {
    bits ^= bits << 1;
    bits ^= bits << 2;
    bits ^= bits << 4;
    bits ^= bits << 8;
    bits ^= bits << 16;
    return bits ^ bits << 32;
}

/// Writes where "<" and ">" stand, with `first` for the first unit, and returns how many do. REQUIRES: room
/// for as many as there are units.
[[nodiscard]] std::size_t findEdges(std::string_view text, std::uint32_t first, std::uint32_t* places);
[[nodiscard]] std::size_t findEdges(std::u16string_view text, std::uint32_t first, std::uint32_t* places);

/// Index of the first occurrence of `what` at or after `start`, or npos. REQUIRES: what is not empty.
[[nodiscard]] std::size_t findBytes(std::string_view text, std::string_view what, std::size_t start);

/// The same, ignoring the case of ASCII letters. REQUIRES: `what` is ASCII in lower case.
[[nodiscard]] std::size_t findAsciiFolded(std::string_view text, std::string_view what, std::size_t start);

namespace portable {
[[nodiscard]] LineMasks lineMasks(const char* bytes);
[[nodiscard]] std::size_t findAsciiFolded(std::string_view text, std::string_view what, std::size_t start);
void markupMasks(const char* bytes, std::span<MarkupMasks> masks);
[[nodiscard]] std::size_t findEdges(std::string_view text, std::uint32_t first, std::uint32_t* places);
[[nodiscard]] std::size_t findEdges(std::u16string_view text, std::uint32_t first, std::uint32_t* places);
[[nodiscard]] std::size_t findBytes(std::string_view text, std::string_view what, std::size_t start);
[[nodiscard]] std::size_t findUnit(std::u16string_view text, char16_t unit, std::size_t start);
[[nodiscard]] std::size_t findText(std::u16string_view text, std::u16string_view what, std::size_t start);
[[nodiscard]] std::size_t countUnit(std::u16string_view text, char16_t unit);
[[nodiscard]] std::size_t countUnit(std::string_view text, char unit);
[[nodiscard]] LineScan scanLine(std::u16string_view text);
[[nodiscard]] ByteLineScan scanByteLine(std::string_view bytes);
} // namespace portable

} // namespace tavrin::scan
