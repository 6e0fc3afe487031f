#pragma once

#include "platform/core/TextScan.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tavrin {

/// A way from the top of a stored text down its lines, each of which ends at the next break, or where it is
/// said.
template <class Unit>
class StoredLineWalk {
  public:
    /// `hasReturns`: carriage returns alone end some of the lines. `ends`: in bytes, behind the breaks, if
    /// not every line has one.
    StoredLineWalk(std::basic_string_view<Unit> text, bool hasReturns,
                   std::span<const std::uint32_t> ends = {})
        : text_(text), hasReturns_(hasReturns), ends_(ends), after_(behindLine()) {}

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
        after_ = behindLine();
    }
    [[nodiscard]] std::size_t behindLine() const {
        if (ends_.empty())
            return behindBreak(begin_);
        const auto line = static_cast<std::size_t>(line_);
        return line < ends_.size() ? ends_[line] / sizeof(Unit) : text_.size();
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
    std::span<const std::uint32_t> ends_;
    int line_ = 0;
    std::size_t begin_ = 0;
    std::size_t after_; ///< where the next line begins
};

} // namespace tavrin
