#pragma once

// What the sources that decode share.

#include "platform/core/ByteBuffer.h"
#include "platform/core/Encoding.h"
#include "platform/core/SmartPtr.h"

#include <cstring>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin {

/// The block that the decoded text is written to: code units one after the other, its mark first.
class DecodedText {
  public:
    /// Room for `capacity` code units. Pages that are never written cost nothing, so it may be generous.
    explicit DecodedText(std::size_t capacity) : block_(allocateUnits(capacity)), capacity_(capacity) {}

    [[nodiscard]] char16_t* end() { return units() + length_; }
    [[nodiscard]] char16_t* limit() { return units() + capacity_; }
    [[nodiscard]] std::size_t size() const { return length_; }
    [[nodiscard]] std::u16string_view view() const {
        return {reinterpret_cast<const char16_t*>(block_->data()), length_};
    }
    void clear() { length_ = 0; }
    void advance(std::size_t count) { length_ += count; }
    void advanceTo(const char16_t* end) { length_ = static_cast<std::size_t>(end - units()); }
    void put(char16_t c) { units()[length_++] = c; }

    /// Makes room for half as much again.
    void grow() {
        const std::size_t capacity = capacity_ + capacity_ / 2 + 16;
        SmartPtr<ByteBuffer> larger = allocateUnits(capacity);
        std::memcpy(larger->data(), block_->data(), length_ * sizeof(char16_t));
        block_ = std::move(larger);
        capacity_ = capacity;
    }

    /// Gives the text away as little-endian code units.
    SmartPtr<ByteBuffer> take() {
        block_->shrink(length_ * sizeof(char16_t));
        return std::move(block_);
    }

  private:
    static SmartPtr<ByteBuffer> allocateUnits(std::size_t count) {
        return ByteBuffer::allocate(count * sizeof(char16_t));
    }
    [[nodiscard]] char16_t* units() { return reinterpret_cast<char16_t*>(block_->data()); }

    SmartPtr<ByteBuffer> block_;
    std::size_t capacity_;
    std::size_t length_ = 0;
};

inline void addInvalid(DecodeReport& report, std::size_t offset) {
    if (report.invalidCount++ == 0)
        report.firstInvalid = offset;
}

/// Collects the places between lines at which decoding may begin anew; null: nobody wants them.
using Anchors = std::vector<TextAnchor>*;

/// Decodes a code page. Anchors count from the start of `bytes` and of what `out` holds.
void decodeCodePage(std::span<const std::uint8_t> bytes, int codePage, DecodedText& out, DecodeReport& report,
                    Anchors anchors);

} // namespace tavrin
