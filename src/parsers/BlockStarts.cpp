#include "parsers/BlockStarts.h"

#include <algorithm>

namespace tavrin {

namespace {

/// Characters between two columns that are kept.
constexpr int distance = 512;

} // namespace

void BlockStarts::onLinesReplacing(int line, int before, int after) noexcept {
    if (line_ >= line + before)
        line_ += after - before;
    else if (line_ >= line)
        forget();
}

void BlockStarts::onTextReplacing(int line, int col, int removed, int inserted) noexcept {
    if (line != line_)
        return;
    const int from = hasChange() ? std::min(changeFrom_, col) : col;
    const int to = hasChange() ? std::max(changeTo_, col + removed) : col + removed;
    const auto first = std::ranges::lower_bound(columns_, from);
    const auto last = std::lower_bound(first, columns_.end(), to);
    for (auto column = last; column != columns_.end(); ++column)
        *column += inserted - removed;
    columns_.erase(first, last);
    changeFrom_ = from;
    changeTo_ = to + inserted - removed;
}

void BlockStarts::beginAll() {
    forget();
    columns_.clear();
    found_.clear();
    kept_ = behind_ = 0;
}

int BlockStarts::beginAtChange() {
    found_.clear();
    behind_ = static_cast<std::size_t>(std::ranges::lower_bound(columns_, changeFrom_) - columns_.begin());
    kept_ = behind_;
    return kept_ > 0 ? columns_[kept_ - 1] : 0;
}

bool BlockStarts::reach(int col) {
    while (behind_ < columns_.size() && columns_[behind_] < col)
        ++behind_;
    if (behind_ < columns_.size() && columns_[behind_] == col)
        return true;
    const int last = !found_.empty() ? found_.back() : kept_ > 0 ? columns_[kept_ - 1] : 0;
    if (col - last >= distance)
        found_.push_back(col);
    return false;
}

void BlockStarts::endAll(int line) {
    behind_ = columns_.size();
    endStopped();
    line_ = line;
}

void BlockStarts::endStopped() {
    const auto begin = columns_.begin();
    const auto at = columns_.erase(begin + static_cast<std::ptrdiff_t>(kept_),
                                   begin + static_cast<std::ptrdiff_t>(behind_));
    columns_.insert(at, found_.begin(), found_.end());
    changeFrom_ = 1;
    changeTo_ = 0;
}

} // namespace tavrin
