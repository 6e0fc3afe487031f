#pragma once

#include <string>
#include <string_view>

/// Classification and case mapping of UTF-16 code units, from the Unicode data of ICU: the same on every
/// machine and in every locale. Surrogates belong to no class and fold to themselves.
namespace tavrin {

[[nodiscard]] bool isSpace(char16_t c);        ///< Unicode White_Space
[[nodiscard]] bool isLetter(char16_t c);       ///< general category L*
[[nodiscard]] bool isLetterOrDigit(char16_t c); ///< general category L* or Nd

/// Simple case folding of one code unit (a table look-up).
[[nodiscard]] char16_t foldCase(char16_t c);

/// Full case mapping, language-neutral; the length may change ("ß" becomes "SS").
[[nodiscard]] std::u16string toUpperCase(std::u16string_view text);
[[nodiscard]] std::u16string toLowerCase(std::u16string_view text);

} // namespace tavrin
