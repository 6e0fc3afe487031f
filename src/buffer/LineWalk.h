#pragma once

#include "platform/core/TextScan.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace tavrin {

/// A way from the top of a stored text down its lines, each of which ends at the next break.
template <class Unit>
class LineWalk {
  public:
    /// `hasReturns`: carriage returns alone end some of the lines.
    LineWalk(std::basic_string_view<Unit> text, bool hasReturns) : text_(text), hasReturns_(hasReturns) {
        findEnd();
    }

    /// REQUIRES: the line is not above the present one.
    void goDownToLine(int line) {
        while (line_ < line)
            goDown();
    }
    /// REQUIRES: no line above holds the offset, nor does a break.
    void goDownToOffset(std::size_t offset) {
        while (end_ < offset)
            goDown();
    }
    [[nodiscard]] int line() const { return line_; }
    [[nodiscard]] std::size_t begin() const { return begin_; }
    /// Where the line's break is.
    [[nodiscard]] std::size_t end() const { return end_; }

  private:
    void goDown() {
        ++line_;
        begin_ = after_;
        findEnd();
    }
    void findEnd() {
        static constexpr Unit breaks[] = {'\r', '\n', 0};
        const std::size_t found =
            hasReturns_ ? text_.find_first_of(breaks, begin_) : scan::findUnit(text_, Unit{'\n'}, begin_);
        end_ = std::min(found, text_.size());
        after_ = std::min(end_ + 1, text_.size());
        if (hasReturns_ && after_ < text_.size() && text_[end_] == '\r' && text_[after_] == '\n')
            ++after_;
        else if (!hasReturns_ && end_ > begin_ && end_ < text_.size() && text_[end_ - 1] == '\r')
            --end_;
    }

    std::basic_string_view<Unit> text_;
    bool hasReturns_;
    int line_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::size_t after_ = 0;
};

} // namespace tavrin
