#pragma once

#include "buffer/FormatRuns.h"
#include "buffer/TextSource.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace tavrin {

/// Characters of one line: borrowed from a block of text until the first edit, then its own.
class LineText {
  public:
    LineText() = default;
    /// Borrows; the characters outlive the object.
    LineText(const char16_t* text, std::uint32_t size) : data_(const_cast<char16_t*>(text)), size_(size) {}
    LineText(LineText&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)),
          size_(std::exchange(other.size_, 0)),
          capacity_(std::exchange(other.capacity_, 0)) {}
    LineText& operator=(LineText&& other) noexcept;
    ~LineText() { release(); }

    [[nodiscard]] std::u16string_view view() const { return {data_, size_}; }
    [[nodiscard]] int size() const { return static_cast<int>(size_); }

    /// The same text, borrowed as here or in a block of as much room. Throws std::bad_alloc.
    [[nodiscard]] LineText copy() const;
    /// The same text in a block of its own. Throws std::bad_alloc.
    [[nodiscard]] LineText own() const { return copyOf(view()); }

    /// Inserts `text`, which must not be part of this line. Throws std::bad_alloc and changes nothing.
    void insert(int col, std::u16string_view text);
    void erase(int col, int count);
    /// A copy of `text`. Throws std::bad_alloc.
    [[nodiscard]] static LineText copyOf(std::u16string_view text);

    [[nodiscard]] bool isBorrowed() const { return capacity_ == 0; }
    /// The other text lies in this one.
    [[nodiscard]] bool holds(std::u16string_view text) const;

  private:
    /// Empty, with a block of so many code units, at least one. Throws std::bad_alloc.
    [[nodiscard]] static LineText withRoom(std::size_t units);
    void release();

    char16_t* data_ = nullptr;
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = 0; ///< 0: borrowed
};

/// One line of a buffer.
class BufferLine {
  public:
    BufferLine() = default;
    /// A line of loaded text, borrowed; `source` is its place in the loaded bytes.
    BufferLine(std::u16string_view loaded, const TextSource::Line& line, std::size_t source)
        : continuesPrevious(line.continues),
          lineEnd(line.lineEnd),
          tabs_(limitTabs(static_cast<std::size_t>(line.tabs))),
          source_(source < noSource ? static_cast<std::uint32_t>(source) : noSource),
          text_(loaded.data(), static_cast<std::uint32_t>(loaded.size())) {}

    [[nodiscard]] std::u16string_view text() const { return text_.view(); }
    [[nodiscard]] int length() const { return text_.size(); }
    /// Visual width: a tab counts as tabWidth columns.
    [[nodiscard]] int columns() const;

    /// A line like this one. Borrowed text stays borrowed.
    [[nodiscard]] BufferLine copy() const;
    /// Throws std::bad_alloc and changes nothing.
    void insert(int col, std::u16string_view text);
    void erase(int col, int count);
    /// Takes back an insert or an erase at `col`; needs no memory. The codes are dropped. REQUIRES:
    /// isLong(); `erased` is what stood there.
    void takeBack(int col, int inserted, std::u16string_view erased) noexcept;
    /// Removes what lies from `col` on, with its codes, and returns it as a line of its own, which has the
    /// line's end.
    [[nodiscard]] BufferLine cut(int col);
    /// Takes over the text and the end of `tail`.
    void append(const BufferLine& tail);
    /// A line with another text and the same end; every code is 0.
    [[nodiscard]] BufferLine withText(std::u16string_view text) const;

    /// Copies a borrowed text, so that the line needs no other block.
    void ownText();

    /// Worth to be edited without a copy, and its text can be.
    [[nodiscard]] bool isLong() const { return length() >= longLine && !isBorrowed() && !isLoaded(); }
    [[nodiscard]] bool holds(std::u16string_view text) const { return text_.holds(text); }

    /// The text is still the one that was loaded from source().
    [[nodiscard]] bool isLoaded() const { return source_ != noSource; }
    /// REQUIRES: isLoaded().
    [[nodiscard]] std::size_t source() const { return source_; }
    [[nodiscard]] bool isBorrowed() const { return text_.isBorrowed(); }

    FormatRuns formats;
    bool continuesPrevious : 1 = false;
    bool formatsDropped : 1 = false; ///< the parser wrote codes that `formats` has lost since
    LineEnd lineEnd = LineEnd::None;

    static constexpr int tabWidth = TextSource::tabWidth;
    /// Only an edit makes such lines; code units.
    static constexpr int longLine = 8192;

  private:
    /// More tabs than fit are counted again when asked for.
    static constexpr std::uint16_t tooManyTabs = 0xFFFF;
    static std::uint16_t limitTabs(std::size_t tabs) {
        return tabs < tooManyTabs ? static_cast<std::uint16_t>(tabs) : tooManyTabs;
    }
    /// Also of lines beyond the first 4 GiB of a file.
    static constexpr std::uint32_t noSource = UINT32_MAX;

    void onEdited() {
        source_ = noSource;
        formatsDropped = false;
    }

    std::uint16_t tabs_ = 0;
    std::uint32_t source_ = noSource;
    LineText text_;
};

static_assert(sizeof(BufferLine) <= 32, "large files have millions of them");

} // namespace tavrin
