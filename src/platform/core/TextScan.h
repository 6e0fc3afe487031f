#pragma once

#include <cstddef>
#include <string_view>

/// Searches over UTF-16 text that decide the speed of loading, parsing and finding. Vectorised where the
/// machine allows; the portable versions are the reference that the tests hold the others against.
namespace tavrin::scan {

/// Index of the first `unit` at or after `start`, or npos.
[[nodiscard]] std::size_t findUnit(std::u16string_view text, char16_t unit, std::size_t start);

/// Index of the first occurrence of `what` at or after `start`, or npos. REQUIRES: what is not empty.
[[nodiscard]] std::size_t findText(std::u16string_view text, std::u16string_view what, std::size_t start);

/// Number of units equal to `unit`.
[[nodiscard]] std::size_t countUnit(std::u16string_view text, char16_t unit);

/// What a walk over loaded text stopped at.
struct LineScan {
    std::size_t
        length;       ///< units before the first line feed, carriage return or U+FEFF; all when there is none
    std::size_t tabs; ///< tabs among them
};
[[nodiscard]] LineScan scanLine(std::u16string_view text);

namespace portable {
[[nodiscard]] std::size_t findUnit(std::u16string_view text, char16_t unit, std::size_t start);
[[nodiscard]] std::size_t findText(std::u16string_view text, std::u16string_view what, std::size_t start);
[[nodiscard]] std::size_t countUnit(std::u16string_view text, char16_t unit);
[[nodiscard]] LineScan scanLine(std::u16string_view text);
} // namespace portable

} // namespace tavrin::scan
