#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tavrin {

/// By how many bits each byte of a code unit, or of a character in UTF-32, is shifted into it.
using ByteShifts = std::array<std::uint8_t, 4>;

/// How to read the bytes of an XML text.
struct DetectedEncoding {
    enum class Form {
        Utf8,
        Utf16,      ///< in the byte order of `shifts`
        Utf32,      ///< in the byte order of `shifts`
        CodePage,   ///< the one numbered `codePage`
        Undeclared, ///< nothing tells: UTF-8 when the bytes are valid UTF-8, else ISO-8859-1
    };

    Form form = Form::Undeclared;
    int codePage = 0;
    ByteShifts shifts{};
    std::size_t markLength = 0; ///< bytes of the byte-order mark at the start
};

/// REQUIRES: isWideEncoding(encoding).
[[nodiscard]] ByteShifts byteShifts(int encoding);
/// The code of a layout of UTF-16 or UTF-32.
[[nodiscard]] int wideEncoding(DetectedEncoding::Form form, const ByteShifts& shifts);

/// By the byte-order mark, else by the pattern of the first bytes (XML 1.0, Appendix F, also where the text
/// does not begin with a declaration), else by the encoding that the XML declaration names. A name that can't
/// be that of the bytes (UTF-16 in a text of single bytes, ASCII where a byte is beyond it) tells nothing.
[[nodiscard]] DetectedEncoding detectEncoding(std::span<const std::uint8_t> bytes);

} // namespace tavrin
