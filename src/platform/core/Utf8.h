#pragma once

#include "platform/core/Encoding.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tavrin {

inline constexpr char16_t replacementCharacter = 0xFFFD;

[[nodiscard]] constexpr bool isHighSurrogate(char16_t c) {
    return (c & 0xFC00) == 0xD800;
}
[[nodiscard]] constexpr bool isLowSurrogate(char16_t c) {
    return (c & 0xFC00) == 0xDC00;
}
[[nodiscard]] constexpr bool isSurrogate(char16_t c) {
    return (c & 0xF800) == 0xD800;
}
[[nodiscard]] constexpr char16_t highSurrogate(char32_t c) {
    return static_cast<char16_t>(0xD7C0 + (c >> 10));
}
[[nodiscard]] constexpr char16_t lowSurrogate(char32_t c) {
    return static_cast<char16_t>(0xDC00 | (c & 0x3FF));
}
[[nodiscard]] constexpr char32_t joinSurrogates(char16_t high, char16_t low) {
    return 0x10000 + ((static_cast<char32_t>(high) & 0x3FF) << 10) + (low & 0x3FF);
}

enum class OnInvalid {
    Replace, ///< by U+FFFD, and go on
    Stop,    ///< at the first invalid place, which the report then counts
};

/// Decodes UTF-8 and returns the number of code units written; `out` has room for one a byte.
///
/// Each maximal subpart of an ill-formed sequence becomes one U+FFFD (The Unicode Standard, 3.9, U+FFFD
/// Substitution of Maximal Subparts). Adds to `report`; its offset counts from the start of `bytes`.
std::size_t decodeUtf8(std::span<const std::uint8_t> bytes, char16_t* out, OnInvalid onInvalid,
                       DecodeReport& report);

/// Adds to `report` what decodeUtf8 would, without decoding.
void checkUtf8(std::span<const std::uint8_t> bytes, OnInvalid onInvalid, DecodeReport& report);

/// What UTF-8 holds at one place.
struct Utf8Character {
    std::size_t bytes; ///< of the character, or of what is replaced by one U+FFFD
    int units;         ///< code units that it decodes to
};
/// REQUIRES: `bytes` is not empty.
[[nodiscard]] Utf8Character utf8CharacterAt(std::span<const std::uint8_t> bytes);

/// The number of code units that decodeUtf8 gives. `isValid`: the bytes are known to be valid, which makes
/// counting fast.
[[nodiscard]] std::size_t utf16Length(std::span<const std::uint8_t> bytes, bool isValid);

/// Appends `text` as UTF-8; an unpaired surrogate becomes U+FFFD and is reported as lost. `index` is what the
/// first code unit counts as in the report.
void encodeUtf8(std::u16string_view text, std::string& out, std::size_t index, EncodeReport& report);

} // namespace tavrin
