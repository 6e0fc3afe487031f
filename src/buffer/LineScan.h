#pragma once

#include "buffer/LineStore.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace tavrin {

/// What a language carries from the end of a line to the next one: all that the colours of lines below depend
/// on besides their text.
struct LineEndState {
    int openBlock = 0; ///< the bits of the line's flags that hold it
    std::uint8_t detail = 0;
    friend bool operator==(const LineEndState&, const LineEndState&) = default;
};

/// Finds out about lines from their bytes, without decoding them, what the reader of a language will want to
/// know: the states at their ends, and a note on all pages below a node of the store's tree. It holds nothing
/// that changes, so that several threads may use it at once.
class LineScan {
  public:
    virtual ~LineScan() = default;

    /// Fills in for each line the bits of its flags that tell what is open at its end, and the parser's state
    /// of it. Returns what the next line must know; nothing when it can't be told, and then what was filled
    /// in means nothing. What is not below 0x80 in the bytes delimits nothing.
    [[nodiscard]] virtual std::optional<LineEndState> scan(const LineStore::StoredLines& lines,
                                                           LineEndState entry, std::span<std::uint8_t> flags,
                                                           std::span<std::uint8_t> states) const = 0;

    /// A note on neighbouring pages as one chunk; null when none can be made.
    [[nodiscard]] virtual std::unique_ptr<ChunkNote>
    note(std::span<const LineStore::StoredLines> pages) const = 0;
};

} // namespace tavrin
