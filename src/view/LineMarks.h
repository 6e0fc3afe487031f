#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tavrin {

class Buffer;
class TextMeasure;

/// Where columns of long lines stand, so that what is far to the right is not measured from the start of the
/// line. Of the few lines that were asked for last; what an edit leaves to the left of it stays known.
class LineMarks {
  public:
    /// A column, and where it stands in pixels and in visual columns.
    struct Mark {
        int col;
        int x;
        int visual;
    };

    /// The questions below are about this line, until its text changes. `look` stands for font and settings.
    void turnTo(const Buffer& buffer, int line, TextMeasure& measure, int tabSize, std::uint64_t look);
    [[nodiscard]] std::u16string_view text() const { return text_; }
    /// The last mark at or before a column, an x or a visual column; the line's start when there is none.
    [[nodiscard]] Mark beforeColumn(int col) { return before(&Mark::col, col); }
    [[nodiscard]] Mark beforeX(int x) { return before(&Mark::x, x); }
    [[nodiscard]] Mark beforeVisual(int visual) { return before(&Mark::visual, visual); }
    /// A column all of whose characters stand to the right of x: the first such mark, or the end.
    [[nodiscard]] int endBeyond(int x);

  private:
    struct Line {
        int line = -1;
        unsigned generation = 0;
        unsigned changes = 0;
        std::uint64_t look = 0;
        std::vector<Mark> marks;
    };

    [[nodiscard]] Mark before(int Mark::*what, int value);
    void extend(int Mark::*what, int value);

    std::array<Line, 4> lines_;
    std::size_t oldest_ = 0;
    Line other_; ///< one that is not worth being kept
    Line* current_ = &other_;
    std::u16string_view text_;
    TextMeasure* measure_ = nullptr;
    int tabSize_ = 0;
};

} // namespace tavrin
