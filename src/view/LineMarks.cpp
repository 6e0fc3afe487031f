#include "view/LineMarks.h"

#include "buffer/Buffer.h"
#include "view/LineNavigation.h"
#include "view/TextMeasure.h"

#include <algorithm>
#include <iterator>

namespace tavrin {

namespace {

/// Columns from mark to mark.
constexpr int step = 1024;

bool isAscii(char16_t c) {
    return (c >= 0x20 && c < 0x7F) || c == u'\t';
}

/// Whether the `step` columns from `start` on have a width of their own, so that the next begins where they
/// end: no script joins letters or runs from right to left, and neither end is a part of something.
bool isPlain(std::u16string_view text, int start) {
    if (text.size() <= static_cast<std::size_t>(start + step))
        return false;
    const char16_t* const units = text.data() + start;
    if (!isAscii(units[step - 1]) || !isAscii(units[step]))
        return false;
    bool all = true;
    for (int i = 0; i < step; ++i) { // without an exit, so that it is done many at a time
        const char16_t c = units[i];
        const bool isLetter = c >= 0x20 && c < 0x590;  // up to Armenian
        const bool isSign = c >= 0x2010 && c < 0x2028; // dashes and quotes
        all &= isLetter | isSign | (c == u'\t');
    }
    return all;
}

} // namespace

void LineMarks::turnTo(const Buffer& buffer, int line, TextMeasure& measure, int tabSize,
                       std::uint64_t look) {
    text_ = buffer.getLineText(line);
    measure_ = &measure;
    tabSize_ = tabSize;
    if (text_.size() <= step) {
        current_ = &other_; // has no marks
        return;
    }
    const auto isKnown = [&](const Line& known) {
        return known.line == line && known.generation == buffer.getGeneration() && known.look == look;
    };
    const auto known = std::ranges::find_if(lines_, isKnown);
    if (known == lines_.end()) {
        current_ = &lines_[oldest_];
        oldest_ = (oldest_ + 1) % lines_.size();
        *current_ = {line, buffer.getGeneration(), 0, look, {Mark{0, 0, 0}}};
    } else {
        current_ = &*known;
        // A mark needs the character behind it to be what it was.
        const int same = buffer.getUnchangedColumns(line, known->changes);
        std::erase_if(known->marks, [&](const Mark& mark) { return mark.col > 0 && mark.col >= same; });
    }
    current_->changes = buffer.getChanges();
}

void LineMarks::extend(int Mark::*what, int value) {
    std::vector<Mark>& marks = current_->marks;
    while (marks.back().*what <= value && isPlain(text_, marks.back().col)) {
        const Mark last = marks.back();
        const std::u16string_view part = text_.substr(static_cast<std::size_t>(last.col), step);
        marks.push_back({last.col + step, measure_->tabbedWidth(part, tabSize_, last.x),
                         visualColumn(part, step, tabSize_, last.visual)});
    }
}

LineMarks::Mark LineMarks::before(int Mark::*what, int value) {
    if (current_ == &other_)
        return {};
    extend(what, value);
    const std::vector<Mark>& marks = current_->marks;
    const auto behind = std::ranges::upper_bound(marks, value, {}, what);
    return behind == marks.begin() ? marks.front() : *std::prev(behind);
}

int LineMarks::endBeyond(int x) {
    if (current_ == &other_)
        return static_cast<int>(text_.size());
    extend(&Mark::x, x);
    const std::vector<Mark>& marks = current_->marks;
    const auto beyond = std::ranges::upper_bound(marks, x, {}, &Mark::x);
    return beyond == marks.end() ? static_cast<int>(text_.size()) : beyond->col;
}

} // namespace tavrin
