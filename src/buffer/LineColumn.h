#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tavrin {

/// One number for each line of a page: one for all while they are equal, else an array of bytes, or of ints
/// when a byte is too small.
class LineColumn {
  public:
    explicit LineColumn(int size = 0) : size_(size) {}
    explicit LineColumn(std::span<const std::uint8_t> values);

    [[nodiscard]] int size() const { return size_; }
    [[nodiscard]] int at(int line) const {
        if (width_ == Width::Byte)
            return values_[static_cast<std::size_t>(line)];
        return width_ == Width::None ? common_ : wideAt(line);
    }
    void set(int line, int value) {
        if (width_ == Width::Byte && fitsInByte(value))
            values_[static_cast<std::size_t>(line)] = static_cast<std::uint8_t>(value);
        else if (width_ != Width::None || value != common_)
            setWide(line, value);
    }
    /// value = (value & keep) | set, for the lines [first, last).
    void change(int first, int last, int keep, int set);
    /// value = (value & keep) | values[i], for the lines from `first` on.
    void change(int first, int keep, std::span<const std::uint8_t> values);

    /// Lines of value 0.
    void insert(int line, int count);
    void erase(int first, int last);
    /// Removes the lines from `line` on and returns them.
    [[nodiscard]] LineColumn cut(int line);
    void append(const LineColumn& tail);

  private:
    /// Bytes a line takes in `values_`.
    enum class Width : std::uint8_t { None = 0, Byte = 1, Int = 4 };

    static bool fitsInByte(int value) { return value >= 0 && value <= UINT8_MAX; }
    [[nodiscard]] int wideAt(int line) const;
    void setWide(int line, int value);
    /// Makes an array of the lines, wide enough for `value` as well.
    void makeRoomFor(int value);
    void store(int line, int value);
    /// One number again, when all are equal.
    void pack();

    int size_;
    int common_ = 0; ///< of every line, without an array
    Width width_ = Width::None;
    std::vector<std::uint8_t> values_;
};

} // namespace tavrin
