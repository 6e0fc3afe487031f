#pragma once

#include "platform/core/ByteBuffer.h"
#include "platform/core/Encoding.h"
#include "platform/core/SmartPtr.h"

#include <algorithm>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace tavrin {

/// The bytes from which a text was converted, found by places in the text between lines.
class OriginalBytes {
  public:
    /// REQUIRES: anchors of those bytes, as convertXmlText gives them.
    OriginalBytes(SmartPtr<ByteBuffer> bytes, std::vector<TextAnchor> anchors)
        : bytes_(std::move(bytes)), anchors_(std::move(anchors)) {}

    [[nodiscard]] std::span<const std::uint8_t> bytes(std::size_t begin, std::size_t end) const {
        return {bytes_->data() + begin, end - begin};
    }
    [[nodiscard]] const SmartPtr<ByteBuffer>& block() const { return bytes_; }
    [[nodiscard]] std::size_t size() const { return bytes_->size(); }
    /// The last anchor at or before a code unit.
    [[nodiscard]] const TextAnchor& anchorBefore(std::size_t unit) const {
        return *std::prev(std::ranges::upper_bound(anchors_, unit, {}, &TextAnchor::unit));
    }
    /// The first code unit of the lines in which a byte lies.
    [[nodiscard]] std::size_t unitBefore(std::size_t byte) const {
        const auto above = std::ranges::upper_bound(anchors_, byte, {}, &TextAnchor::byte);
        return above == anchors_.begin() ? 0 : std::prev(above)->unit;
    }
    /// Where the bytes of a code unit begin; nothing when that is not known.
    [[nodiscard]] std::optional<std::size_t> byteAt(std::size_t unit) const {
        const TextAnchor& anchor = anchorBefore(unit);
        return anchor.unit == unit ? std::optional(anchor.byte) : std::nullopt;
    }

  private:
    SmartPtr<ByteBuffer> bytes_;
    std::vector<TextAnchor> anchors_;
};

} // namespace tavrin
