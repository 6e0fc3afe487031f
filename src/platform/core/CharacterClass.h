#pragma once

#include <array>
#include <string>
#include <string_view>

/// Classification and case mapping of UTF-16 code units, from the Unicode data of ICU: the same on every
/// machine and in every locale. Surrogates belong to no class and fold to themselves.
namespace tavrin {

namespace beyond_ascii { // what the functions below ask of other characters
[[nodiscard]] bool isSpace(char16_t c);
[[nodiscard]] bool isLetter(char16_t c);
[[nodiscard]] bool isLetterOrDigit(char16_t c);
[[nodiscard]] bool isPunct(char16_t c);
} // namespace beyond_ascii

/// Unicode White_Space.
[[nodiscard]] constexpr bool isSpace(char16_t c) {
    return c < 0x80 ? c == u' ' || (c >= u'\t' && c <= u'\r') : beyond_ascii::isSpace(c);
}
/// General category L*.
[[nodiscard]] constexpr bool isLetter(char16_t c) {
    return c < 0x80 ? (c | 0x20) >= u'a' && (c | 0x20) <= u'z' : beyond_ascii::isLetter(c);
}
/// General category L* or Nd.
[[nodiscard]] constexpr bool isLetterOrDigit(char16_t c) {
    return c < 0x80 ? isLetter(c) || (c >= u'0' && c <= u'9') : beyond_ascii::isLetterOrDigit(c);
}

/// ASCII: every graphic character that is neither letter nor digit; beyond: general category P*.
[[nodiscard]] constexpr bool isPunct(char16_t c) {
    return c < 0x80 ? c > u' ' && c < 0x7F && !isLetterOrDigit(c) : beyond_ascii::isPunct(c);
}

/// Simple case folding of one code unit (a table look-up).
[[nodiscard]] char16_t foldCase(char16_t c);
/// That table, for loops over much text; lives as long as the process.
[[nodiscard]] const std::array<char16_t, 0x10000>& caseFoldTable();

/// Full case mapping, language-neutral; the length may change ("ß" becomes "SS"). Unpaired surrogates stay.
[[nodiscard]] std::u16string toUpperCase(std::u16string_view text);
[[nodiscard]] std::u16string toLowerCase(std::u16string_view text);

} // namespace tavrin
