#pragma once

#include <array>
#include <string>
#include <string_view>

/// Classification and case mapping of UTF-16 code units, from the Unicode data of ICU: the same on every
/// machine and in every locale. Surrogates belong to no class and fold to themselves.
namespace tavrin {

[[nodiscard]] bool isSpace(char16_t c);         ///< Unicode White_Space
[[nodiscard]] bool isLetter(char16_t c);        ///< general category L*
[[nodiscard]] bool isLetterOrDigit(char16_t c); ///< general category L* or Nd

/// ASCII: every graphic character that is neither letter nor digit; beyond: general category P*.
[[nodiscard]] bool isPunct(char16_t c);

/// Simple case folding of one code unit (a table look-up).
[[nodiscard]] char16_t foldCase(char16_t c);
/// That table, for loops over much text; lives as long as the process.
[[nodiscard]] const std::array<char16_t, 0x10000>& caseFoldTable();

/// Full case mapping, language-neutral; the length may change ("ß" becomes "SS"). Unpaired surrogates stay.
[[nodiscard]] std::u16string toUpperCase(std::u16string_view text);
[[nodiscard]] std::u16string toLowerCase(std::u16string_view text);

} // namespace tavrin
