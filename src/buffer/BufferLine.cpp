#include "buffer/BufferLine.h"

#include "platform/core/TextScan.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <new>

namespace tavrin {

LineText& LineText::operator=(LineText&& other) noexcept {
    if (this != &other) {
        release();
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
        capacity_ = std::exchange(other.capacity_, 0);
    }
    return *this;
}

void LineText::release() {
    if (capacity_ > 0)
        std::free(data_);
}

LineText LineText::withRoom(std::size_t units) {
    LineText text;
    const std::size_t capacity = std::min<std::size_t>(std::max<std::size_t>(units, 1), UINT32_MAX);
    text.data_ = static_cast<char16_t*>(std::malloc(capacity * sizeof(char16_t)));
    if (!text.data_)
        throw std::bad_alloc();
    text.capacity_ = static_cast<std::uint32_t>(capacity);
    return text;
}

LineText LineText::copy() const {
    if (isBorrowed())
        return LineText(data_, size_);
    LineText same = withRoom(capacity_);
    std::copy_n(data_, size_, same.data_);
    same.size_ = size_;
    return same;
}

LineText LineText::copyOf(std::u16string_view text) {
    if (text.size() > INT32_MAX)
        throw std::bad_alloc(); // a column would no longer fit
    LineText own = withRoom(text.size());
    std::copy_n(text.data(), text.size(), own.data_);
    own.size_ = static_cast<std::uint32_t>(text.size());
    return own;
}

void LineText::insert(int col, std::u16string_view text) {
    if (text.empty())
        return;
    const std::size_t size = size_ + text.size();
    if (size > INT32_MAX)
        throw std::bad_alloc(); // a column would no longer fit
    if (size > capacity_) {
        LineText larger = withRoom(size + size / 2 + 8);
        std::copy_n(data_, col, larger.data_);
        std::copy_n(data_ + col, size_ - static_cast<std::uint32_t>(col), larger.data_ + col + text.size());
        *this = std::move(larger);
    } else {
        std::copy_backward(data_ + col, data_ + size_, data_ + size);
    }
    std::copy(text.begin(), text.end(), data_ + col);
    size_ = static_cast<std::uint32_t>(size);
}

void LineText::erase(int col, int count) {
    if (count <= 0)
        return;
    if (col + count == size()) { // a borrowed tail is given back without a copy
        size_ = static_cast<std::uint32_t>(col);
    } else if (col == 0 && capacity_ == 0) {
        data_ += count;
        size_ -= static_cast<std::uint32_t>(count);
    } else if (capacity_ == 0) {
        LineText own;
        own.insert(0, view().substr(0, static_cast<std::size_t>(col)));
        own.insert(col, view().substr(static_cast<std::size_t>(col + count)));
        *this = std::move(own);
    } else {
        std::copy(data_ + col + count, data_ + size_, data_ + col);
        size_ -= static_cast<std::uint32_t>(count);
    }
}

bool LineText::holds(std::u16string_view text) const {
    const std::less_equal<const char16_t*> isBefore;
    return isBefore(data_, text.data()) && isBefore(text.data(), data_ + size_);
}

BufferLine BufferLine::copy() const {
    BufferLine line;
    line.text_ = text_.copy();
    line.formats.assign(formats.runs());
    line.continuesPrevious = continuesPrevious;
    line.formatsDropped = formatsDropped;
    line.lineEnd = lineEnd;
    line.tabs_ = tabs_;
    line.source_ = source_;
    return line;
}

void BufferLine::ownText() {
    if (isBorrowed() && length() > 0)
        text_ = text_.own();
}

int BufferLine::columns() const {
    const std::size_t tabs = tabs_ == tooManyTabs ? scan::countUnit(text(), u'\t') : tabs_;
    return length() + static_cast<int>(tabs) * (tabWidth - 1);
}

void BufferLine::insert(int col, std::u16string_view text) {
    if (text.empty())
        return;
    formats.prepareToEdit();
    text_.insert(col, text);
    onEdited();
    formats.insert(col, static_cast<int>(text.size()));
    if (tabs_ != tooManyTabs)
        tabs_ = limitTabs(tabs_ + scan::countUnit(text, u'\t'));
}

void BufferLine::erase(int col, int count) {
    if (count <= 0)
        return;
    formats.prepareToEdit();
    onEdited();
    if (tabs_ != tooManyTabs)
        tabs_ =
            static_cast<std::uint16_t>(tabs_ - scan::countUnit(text().substr(static_cast<std::size_t>(col),
                                                                             static_cast<std::size_t>(count)),
                                                               u'\t'));
    text_.erase(col, count);
    formats.erase(col, count);
    if (tabs_ == tooManyTabs)
        tabs_ = limitTabs(scan::countUnit(text(), u'\t'));
}

void BufferLine::takeBack(int col, int inserted, std::u16string_view erased) noexcept {
    formats = {};
    erase(col, inserted);
    insert(col, erased); // there is room: the line was as long before
    formatsDropped = true;
}

BufferLine BufferLine::cut(int col) {
    BufferLine tail;
    const std::uint32_t source = source_;
    tail.insert(0, text().substr(static_cast<std::size_t>(col)));
    tail.formats = formats.cut(col);
    erase(col, length() - col);
    if (col == 0 && tail.length() > 0)
        tail.source_ = source;
    tail.lineEnd = std::exchange(lineEnd, LineEnd::None);
    return tail;
}

void BufferLine::append(const BufferLine& tail) {
    const int at = length();
    insert(at, tail.text());
    formats.append(at, tail.formats);
    if (at == 0)
        source_ = tail.source_;
    lineEnd = tail.lineEnd;
}

BufferLine BufferLine::withText(std::u16string_view text) const {
    BufferLine line;
    line.continuesPrevious = continuesPrevious;
    line.lineEnd = lineEnd;
    line.tabs_ = limitTabs(scan::countUnit(text, u'\t'));
    if (!text.empty())
        line.text_ = LineText::copyOf(text);
    return line;
}

} // namespace tavrin
