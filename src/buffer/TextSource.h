#pragma once

#include "platform/core/ByteBuffer.h"
#include "platform/core/SmartPtr.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tavrin {

/// What ends a line in a file.
enum class LineEnd : std::uint8_t { None, CrLf, Lf, Cr };

/// A text as it was loaded: its bytes, and the rules by which lines lie in them.
///
/// A carriage return, a line feed and the two together end a line each. What reaches maxLineLength code units
/// goes on in another line. Only a mark at the very start of the text is dropped; one elsewhere is a
/// character at which no line is cut, and which a carriage return and a line feed stand around as if it were
/// not there: it is lost, and the line feed becomes a character.
///
/// Each line takes up the bytes from its place to that of the next one.
class TextSource {
  public:
    enum class Form : std::uint8_t {
        Utf8,
        Latin1,
        Utf16, ///< little-endian
    };

    static constexpr int maxLineLength = 512;

    /// Where a line begins, and what its reading depends on besides its bytes.
    struct Place {
        std::size_t offset = 0;   ///< in bytes
        bool continues = false;   ///< the line goes on from the one before
        bool afterReturn = false; ///< a carriage return stands before it, and a mark follows
        bool insidePair =
            false; ///< at `offset` stands a character whose first code unit ended the line before
    };

    struct Line {
        std::size_t begin = 0; ///< the bytes of the text
        std::size_t end = 0;
        int units = 0; ///< code units
        int tabs = 0;
        LineEnd lineEnd = LineEnd::None;
        bool continues = false;
        bool startsInPair = false;
        bool endsInPair = false; ///< the last code unit is the first half of the character at `end`
    };

    /// The text is the bytes [begin, end). `isValid`: they are valid in the form.
    /// REQUIRES for Utf16: `begin` and `end` are multiples of 2.
    TextSource(SmartPtr<ByteBuffer> bytes, std::size_t begin, std::size_t end, Form form, bool isValid);
    /// The text is what stands behind the first `skip` bytes.
    TextSource(SmartPtr<ByteBuffer> bytes, std::size_t skip, Form form, bool isValid);

    /// The same text in a block of the same bytes.
    [[nodiscard]] TextSource in(SmartPtr<ByteBuffer> block) const;

    [[nodiscard]] Form form() const { return form_; }
    [[nodiscard]] bool isValid() const { return isValid_; }
    /// Bytes of a code unit of the form.
    [[nodiscard]] std::size_t unitBytes() const { return form_ == Form::Utf16 ? sizeof(char16_t) : 1; }
    [[nodiscard]] std::size_t size() const { return text_.size(); }
    /// The mark that is dropped.
    [[nodiscard]] bool beginsWithMark() const { return hasMarkAt(0); }
    /// The bytes in which the text lies, with what stands before it.
    [[nodiscard]] const SmartPtr<ByteBuffer>& block() const { return block_; }
    [[nodiscard]] std::span<const std::uint8_t> bytes(std::size_t begin, std::size_t end) const {
        return text_.subspan(begin, end - begin);
    }

    /// The place of a line that was read before.
    [[nodiscard]] Place placeAt(std::size_t offset, bool insidePair) const;
    /// Reads the line at `place` and moves that behind it. False at the end of the text.
    bool next(Place& place, Line& line) const;
    /// The line that takes up the bytes [begin, after) with its break, however long it is. Whether it
    /// continues another is the caller's to know. REQUIRES: no cut divides a character of it.
    [[nodiscard]] Line lineWithin(std::size_t begin, std::size_t after) const;
    /// Where the line at a place ends with its break, when the text shows it without being read: as many
    /// units of the form as the line has code units, then the break. 0 when it does not. REQUIRES: the line
    /// was read there, and has this many code units.
    [[nodiscard]] std::size_t behindPlainLine(std::size_t offset, int units, LineEnd lineEnd) const;

    /// A line feed stands at the place.
    [[nodiscard]] bool startsWithFeed(std::size_t offset) const { return unitAt(offset) == u'\n'; }

    /// What lines add up to.
    struct Totals {
        int lines = 0;
        int continued = 0;         ///< that continue the one before
        std::int64_t length = 0;   ///< code units
        int columns = 0;           ///< of the widest line, a tab counting as `tabWidth`
        std::array<int, 4> ends{}; ///< indexed by LineEnd
        int lastLength = 0;        ///< of the last line
        bool hasOddBreak = false;  ///< a line began with afterReturn
        void add(const Line& line);
    };
    static constexpr int tabWidth = 4;
    /// Reads `count` lines, or as many as there are, as next() does.
    [[nodiscard]] Totals skip(Place& place, int count) const;

    /// The line's text; what has to be decoded is written to `room`, which is moved behind it. Room is needed
    /// for one code unit a byte, and pairRoom behind the last line.
    [[nodiscard]] std::u16string_view text(const Line& line, char16_t*& room) const;
    static constexpr std::size_t pairRoom = 4;
    [[nodiscard]] bool needsDecoding() const { return form_ != Form::Utf16; }

  private:
    bool nextInBytes(Place& place, Line& line) const;
    bool walkUtf8(Place& place, Line& line) const;
    bool nextInUnits(Place& place, Line& line) const;
    bool finish(Place& place, Line& line, std::size_t begin, std::size_t end) const;
    void cut(Place& place, Line& line, std::size_t begin, std::size_t end) const;
    [[nodiscard]] bool hasMarkAt(std::size_t offset) const;
    /// 0 behind the text.
    [[nodiscard]] char16_t unitAt(std::size_t offset) const {
        if (offset >= size())
            return 0;
        return form_ == Form::Utf16 ? units()[offset / sizeof(char16_t)] : text_[offset];
    }
    [[nodiscard]] std::u16string_view units() const {
        return {reinterpret_cast<const char16_t*>(text_.data()), text_.size() / sizeof(char16_t)};
    }

    SmartPtr<ByteBuffer> block_;
    std::span<const std::uint8_t> text_;
    Form form_;
    bool isValid_;
};

} // namespace tavrin
