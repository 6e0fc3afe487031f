#include "buffer/LineColumn.h"

#include <algorithm>
#include <cstring>

namespace tavrin {

LineColumn::LineColumn(std::span<const std::uint8_t> values) : size_(static_cast<int>(values.size())) {
    if (values.empty())
        return;
    common_ = values.front();
    if (std::memcmp(values.data(), values.data() + 1, values.size() - 1) == 0) // each equals the next
        return;
    width_ = Width::Byte;
    values_.assign(values.begin(), values.end());
}

int LineColumn::wideAt(int line) const {
    int value = 0;
    std::memcpy(&value, &values_[static_cast<std::size_t>(line) * sizeof(int)], sizeof(int));
    return value;
}

void LineColumn::store(int line, int value) {
    if (width_ == Width::Byte)
        values_[static_cast<std::size_t>(line)] = static_cast<std::uint8_t>(value);
    else
        std::memcpy(&values_[static_cast<std::size_t>(line) * sizeof(int)], &value, sizeof(int));
}

void LineColumn::makeRoomFor(int value) {
    const bool byte =
        fitsInByte(value) && (width_ == Width::Byte || (width_ == Width::None && fitsInByte(common_)));
    const Width width = byte ? Width::Byte : Width::Int;
    if (width == width_)
        return;
    LineColumn wide(size_);
    wide.width_ = width;
    wide.values_.resize(static_cast<std::size_t>(size_) * static_cast<std::size_t>(width));
    for (int i = 0; i < size_; ++i)
        wide.store(i, at(i));
    *this = std::move(wide);
}

void LineColumn::pack() {
    if (width_ == Width::None)
        return;
    if (size_ > 0 && !std::equal(values_.begin() + static_cast<int>(width_), values_.end(), values_.begin()))
        return;
    common_ = size_ > 0 ? at(0) : 0;
    width_ = Width::None;
    values_ = {};
}

void LineColumn::setWide(int line, int value) {
    makeRoomFor(value);
    store(line, value);
}

void LineColumn::change(int first, int last, int keep, int set) {
    const bool all = first == 0 && last == size_;
    if (all && width_ == Width::None) {
        common_ = (common_ & keep) | set;
        return;
    }
    for (int i = first; i < last; ++i)
        this->set(i, (at(i) & keep) | set);
    if (all)
        pack();
}

void LineColumn::change(int first, int keep, std::span<const std::uint8_t> values) {
    const bool equal = std::ranges::all_of(values, [&](std::uint8_t value) { return value == values[0]; });
    if (values.empty() || equal) {
        change(first, first + static_cast<int>(values.size()), keep, values.empty() ? 0 : values[0]);
        return;
    }
    for (const std::uint8_t value : values) {
        set(first, (at(first) & keep) | value);
        ++first;
    }
}

void LineColumn::insert(int line, int count) {
    if (count == 0)
        return;
    if (width_ == Width::None && (common_ == 0 || size_ == 0)) {
        common_ = 0;
    } else {
        makeRoomFor(0);
        const auto width = static_cast<std::ptrdiff_t>(width_);
        values_.insert(values_.begin() + line * width, static_cast<std::size_t>(count * width), 0);
    }
    size_ += count;
}

void LineColumn::erase(int first, int last) {
    const auto width = static_cast<std::ptrdiff_t>(width_);
    values_.erase(values_.begin() + first * width, values_.begin() + last * width);
    size_ -= last - first;
}

LineColumn LineColumn::cut(int line) {
    LineColumn tail = *this;
    tail.erase(0, line);
    erase(line, size_);
    return tail;
}

void LineColumn::append(const LineColumn& tail) {
    const int first = size_;
    insert(first, tail.size_);
    for (int i = 0; i < tail.size_; ++i)
        set(first + i, tail.at(i));
}

} // namespace tavrin
