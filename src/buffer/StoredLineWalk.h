#pragma once

#include "platform/core/TextScan.h"

#include <cstddef>
#include <string_view>

namespace tavrin {

/// A way from the top of a stored text down its lines, each of which ends at the next break.
template <class Unit>
class StoredLineWalk {
  public:
    /// `hasReturns`: carriage returns alone end some of the lines.
    StoredLineWalk(std::basic_string_view<Unit> text, bool hasReturns)
        : text_(text), hasReturns_(hasReturns), after_(behindBreak(0)) {}

    /// REQUIRES: the line is not above the present one.
    void goDownToLine(int line) {
        while (line_ < line)
            goDown();
    }
    /// REQUIRES: no line above holds the offset, nor does a break.
    void goDownToOffset(std::size_t offset) {
        while (after_ <= offset && after_ < text_.size())
            goDown();
    }
    [[nodiscard]] int line() const { return line_; }
    [[nodiscard]] std::size_t begin() const { return begin_; }
    /// Where the line's break is.
    [[nodiscard]] std::size_t end() const {
        std::size_t end = after_;
        if (end > begin_ && text_[end - 1] == '\n')
            --end;
        if (end > begin_ && text_[end - 1] == '\r')
            --end;
        return end;
    }

  private:
    void goDown() {
        ++line_;
        begin_ = after_;
        after_ = behindBreak(begin_);
    }
    [[nodiscard]] std::size_t behindBreak(std::size_t begin) const {
        static constexpr Unit breaks[] = {'\r', '\n', 0};
        const std::size_t found =
            hasReturns_ ? text_.find_first_of(breaks, begin) : scan::findUnit(text_, Unit{'\n'}, begin);
        if (found >= text_.size())
            return text_.size();
        const bool isPair = text_[found] == '\r' && found + 1 < text_.size() && text_[found + 1] == '\n';
        return found + (isPair ? 2 : 1);
    }

    std::basic_string_view<Unit> text_;
    bool hasReturns_;
    int line_ = 0;
    std::size_t begin_ = 0;
    std::size_t after_; ///< where the next line begins
};

} // namespace tavrin
