#pragma once

#include "platform/core/ByteBuffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tavrin {

/// Byte encodings, as the document stores them: Windows code-page numbers, and 1 for UTF-16.
/// Any other code page that ICU converts is valid as a plain int.
enum EncodingCode : int {
    ENCODING_UTF16 = 1,      ///< UTF-16 little-endian, written with FF FE
    ENCODING_LATIN1 = 28591, ///< ISO-8859-1
    ENCODING_LATIN2 = 28592, ///< ISO-8859-2
    ENCODING_UTF8 = 65001,   ///< UTF-8, written without a byte-order mark
};

/// What decoding met that was not valid in the encoding.
struct DecodeReport {
    std::size_t invalidCount = 0; ///< places that were replaced by U+FFFD
    std::size_t firstInvalid = 0; ///< byte offset of the first one; meaningful when invalidCount > 0
    bool byteOrderMark = false;   ///< the bytes began with a byte-order mark
};

/// Where and how often a text holds what an encoding can't.
struct EncodeReport {
    std::size_t lostCount = 0; ///< characters that would be replaced
    std::size_t firstLost = 0; ///< index of the first one, in code units; meaningful when lostCount > 0
};

/// Replaces the bytes of an XML text by the same text as UTF-16 little-endian code units and returns the
/// code of the encoding in which it read them. A byte-order mark may stay at the start as U+FEFF.
///
/// The encoding is, in this order: that of a byte-order mark (UTF-8, UTF-16, UTF-32), that of the first
/// bytes' pattern (XML 1.0, Appendix F), the one named in the XML declaration, UTF-8 when the bytes are valid
/// UTF-8, else ISO-8859-1. UTF-16 big-endian and UTF-32 read as code 1 (they are saved as UTF-16
/// little-endian). Bytes that are not valid become U+FFFD and are counted in `report`; no input fails.
/// Unpaired surrogates in UTF-16 are counted too and stay as they are, so that saving gives them back.
/// `keepMark` says whether a byte-order mark stays in the result.
int multibyteXmlToUnicode(ByteBuffer* buffer, bool keepMark, DecodeReport* report = nullptr);

/// How the bytes of an XML text are read.
struct ReadForm {
    enum class Kind : std::uint8_t {
        Utf8,
        Latin1,
        Utf16, ///< little-endian code units, all of them whole
        Other, ///< by multibyteXmlToUnicode only; `report` is empty then
    };
    Kind kind = Kind::Other;
    int encoding = 0;           ///< the code that multibyteXmlToUnicode returns
    std::size_t markLength = 0; ///< bytes of the byte-order mark at the start
    DecodeReport report;
};
/// Finds out what multibyteXmlToUnicode would, without converting.
[[nodiscard]] ReadForm examineXmlText(std::span<const std::uint8_t> bytes);

/// Converts text to bytes piece by piece, so that a large document needs no second copy of itself.
/// A surrogate pair may be cut by the end of a piece. What the encoding can't represent becomes "?", an
/// unpaired surrogate U+FFFD in UTF-8; UTF-16 loses nothing. Code 1 writes no byte-order mark here. An
/// unknown code writes UTF-8.
class TextEncoder {
  public:
    explicit TextEncoder(int encoding);
    TextEncoder(const TextEncoder&) = delete;
    TextEncoder& operator=(const TextEncoder&) = delete;
    ~TextEncoder();

    /// Appends the bytes of `text` to `out`.
    void encode(std::u16string_view text, std::string& out);
    /// Appends what is still pending (a lone high surrogate, a shift sequence). Call once, at the end.
    void finish(std::string& out);

    /// What was lost up to now; indices count over all pieces.
    [[nodiscard]] const EncodeReport& report() const noexcept;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// True when text can be written in that encoding (the four of EncodingCode, or a code page that ICU has).
[[nodiscard]] bool canEncode(int encoding);

/// The code for an encoding's name as XML declarations spell it (IANA names and aliases, any case), or
/// nothing when it can't be converted. "utf-16", "utf-16le" and "utf-16be" all give code 1.
[[nodiscard]] std::optional<int> encodingFromName(std::string_view name);

/// The preferred IANA name of an encoding in lower case ("utf-8", "windows-1252"), empty when unknown.
[[nodiscard]] std::string encodingName(int encoding);

} // namespace tavrin
