#pragma once

#include "platform/core/ByteBuffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// Byte encodings, as the document stores them: Windows code-page numbers, and 1 for UTF-16.
/// Any other code page that ICU converts is valid as a plain int.
enum EncodingCode : int {
    ENCODING_UTF16 = 1, ///< UTF-16 little-endian, written with FF FE
    // The same text in other layouts. Reading and names give 1 for all of them; these tell how a file has it.
    ENCODING_UTF16_BE = 1201,
    ENCODING_UTF32 = 12000,
    ENCODING_UTF32_BE = 12001,
    ENCODING_UTF32_2143 = 12002, ///< the two mixed byte orders, for which Windows has no number
    ENCODING_UTF32_3412 = 12003,
    ENCODING_LATIN1 = 28591, ///< ISO-8859-1
    ENCODING_LATIN2 = 28592, ///< ISO-8859-2
    ENCODING_UTF8 = 65001,   ///< UTF-8, written without a byte-order mark
};

/// True for UTF-16 and UTF-32 in any byte order: texts in them begin with a byte-order mark as a rule.
[[nodiscard]] constexpr bool isWideEncoding(int encoding) {
    return encoding == ENCODING_UTF16 || encoding == ENCODING_UTF16_BE ||
           (encoding >= ENCODING_UTF32 && encoding <= ENCODING_UTF32_3412);
}
/// True when a text in the encoding may begin with a byte-order mark.
[[nodiscard]] constexpr bool mayBeginWithMark(int encoding) {
    return encoding == ENCODING_UTF8 || isWideEncoding(encoding);
}
/// Bytes of a line feed or a carriage return.
[[nodiscard]] constexpr std::size_t breakSize(int encoding) {
    return !isWideEncoding(encoding) ? 1 : encoding >= ENCODING_UTF32 ? 4 : 2;
}

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

/// A place between two lines in a text and in the bytes that it was converted from.
struct TextAnchor {
    std::size_t unit = 0; ///< in code units
    std::size_t byte = 0;
};

/// An XML text as UTF-16, made from bytes in another form.
struct ConvertedText {
    SmartPtr<ByteBuffer> text; ///< little-endian code units, without the byte-order mark
    int encoding = 0;          ///< the code that multibyteXmlToUnicode returns
    int layout = 0;            ///< the same, or the code of the layout when that is 1
    DecodeReport report;
    /// Ascending, both ends of the text included: bytes between two of them decode by themselves to the text
    /// between them. One behind each line, except where the decoder is not as at the start of a text.
    std::vector<TextAnchor> anchors;
};
/// The text that multibyteXmlToUnicode gives, and where its lines lie in the bytes.
[[nodiscard]] ConvertedText convertXmlText(std::span<const std::uint8_t> bytes);

/// Counts the places that decoding replaces by U+FFFD in whole lines of an encoding (a layout's code for
/// UTF-16 and UTF-32). Offsets count from the start of `bytes`.
[[nodiscard]] DecodeReport countReplaced(std::span<const std::uint8_t> bytes, int encoding);

/// The characters that an encoding has.
class Repertoire {
  public:
    explicit Repertoire(int encoding);
    Repertoire(const Repertoire&) = delete;
    Repertoire& operator=(const Repertoire&) = delete;
    ~Repertoire();

    /// The first character at or after `from` that it lacks; npos when there is none. An unpaired surrogate
    /// is lacking in all but UTF-16. REQUIRES: no pair is cut by the text's ends.
    [[nodiscard]] std::size_t findLost(std::u16string_view text, std::size_t from = 0) const;
    /// It has every character below 0x80.
    [[nodiscard]] bool hasAscii() const { return hasAscii_; }
    /// It has every character that is one.
    [[nodiscard]] bool isUnicode() const { return !set_ && highest_ == 0x10FFFF; }

  private:
    struct Set;
    std::unique_ptr<Set> set_; ///< null: every character up to highest_
    char32_t highest_ = 0x10FFFF;
    bool losesSurrogates_ = true; ///< unpaired ones
    bool hasAscii_ = true;
};

/// Converts text to bytes piece by piece, so that a large document needs no second copy of itself.
/// A surrogate pair may be cut by the end of a piece. What the encoding can't represent becomes "?", an
/// unpaired surrogate U+FFFD in UTF-8 and UTF-32; UTF-16 loses nothing. No byte-order mark is written here.
/// An unknown code writes UTF-8.
class TextEncoder {
  public:
    explicit TextEncoder(int encoding);
    TextEncoder(const TextEncoder&) = delete;
    TextEncoder& operator=(const TextEncoder&) = delete;
    ~TextEncoder();

    /// Appends the bytes of `text` to `out`.
    void encode(std::u16string_view text, std::string& out);
    /// Appends what is still pending (a lone high surrogate, a shift sequence). To be called at the end;
    /// another text may follow.
    void finish(std::string& out);

    /// What was lost up to now; indices count over all pieces.
    [[nodiscard]] const EncodeReport& report() const noexcept;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// True when text can be written in that encoding (those of EncodingCode, or a code page that ICU has).
[[nodiscard]] bool canEncode(int encoding);

/// The code for an encoding's name as XML declarations spell it (IANA names and aliases, any case), or
/// nothing when it can't be converted. "utf-16", "utf-16le" and "utf-16be" all give code 1.
[[nodiscard]] std::optional<int> encodingFromName(std::string_view name);

/// The preferred IANA name of an encoding in lower case ("utf-8", "windows-1252"), empty when unknown. It
/// does not tell byte orders, which the byte-order mark does.
[[nodiscard]] std::string encodingName(int encoding);

} // namespace tavrin
