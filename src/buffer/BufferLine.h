#pragma once

#include "buffer/FormatRuns.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace tavrin {

/// Characters of one line: borrowed from the loaded text until the first edit, then its own.
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

    /// Inserts `text`, which must not be part of this line. Throws std::bad_alloc and changes nothing.
    void insert(int col, std::u16string_view text);
    void erase(int col, int count);
    /// Replaces everything by a copy of `text`, which must not be part of this line. Throws std::bad_alloc
    /// and changes nothing.
    void assign(std::u16string_view text);

  private:
    void release();

    char16_t* data_ = nullptr;
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = 0; ///< 0: borrowed
};

/// One line of a buffer.
class BufferLine {
  public:
    BufferLine() = default;
    /// A line of loaded text. `tabs` counts the tabs in it.
    BufferLine(const char16_t* loaded, std::size_t length, std::size_t tabs, bool continues)
        : continuesPrevious(continues),
          tabs_(limitTabs(tabs)),
          text_(loaded, static_cast<std::uint32_t>(length)) {}

    [[nodiscard]] std::u16string_view text() const { return text_.view(); }
    [[nodiscard]] int length() const { return text_.size(); }
    /// Visual width: a tab counts as tabWidth columns.
    [[nodiscard]] int columns() const;

    void insert(int col, std::u16string_view text);
    void erase(int col, int count);
    /// Removes what lies from `col` on, with its codes, and returns it as a line without flags.
    [[nodiscard]] BufferLine cut(int col);
    void append(const BufferLine& tail);
    /// Replaces the whole text, which must not be part of this line; every code is then 0.
    void assign(std::u16string_view text);

    FormatRuns formats;
    int flags = 0;
    std::uint8_t state = 0; ///< the parser's, see Buffer::setLineState
    bool continuesPrevious = false;

    static constexpr int tabWidth = 4;

  private:
    /// More tabs than fit are counted again when asked for.
    static constexpr std::uint16_t tooManyTabs = 0xFFFF;
    static std::uint16_t limitTabs(std::size_t tabs) {
        return tabs < tooManyTabs ? static_cast<std::uint16_t>(tabs) : tooManyTabs;
    }

    std::uint16_t tabs_ = 0;
    LineText text_;
};

static_assert(sizeof(BufferLine) <= 32, "large files have millions of them");

} // namespace tavrin
