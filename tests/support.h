#pragma once

#include "buffer/Buffer.h"

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// What several test programs need.
namespace tavrin::test {

/// The lines of text joined by "|"; for messages and short expectations.
inline std::string joined(const Buffer& buffer) {
    std::string out;
    for (int line = 0; line < buffer.getLineCount(); ++line) {
        if (line > 0)
            out += '|';
        for (const char16_t c : buffer.getLineText(line))
            out += c < 128 ? static_cast<char>(c) : '?';
    }
    return out;
}

inline std::vector<std::u16string> linesOf(const Buffer& buffer) {
    std::vector<std::u16string> lines;
    for (int line = 0; line < buffer.getLineCount(); ++line)
        lines.emplace_back(buffer.getLineText(line));
    return lines;
}

inline SmartPtr<ByteBuffer> blockOf(std::string_view bytes) {
    SmartPtr<ByteBuffer> block = ByteBuffer::allocate(bytes.size());
    std::ranges::copy(bytes, block->data());
    return block;
}

/// Random choices from a fixed seed, which tests print when they fail (SCOPED_TRACE).
class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}
    /// In [0, bound).
    int below(int bound) { return static_cast<int>(engine_() % static_cast<unsigned>(bound)); }
    bool oneIn(int n) { return below(n) == 0; }
    template <class List>
    const auto& pick(const List& list) {
        return list[static_cast<std::size_t>(below(static_cast<int>(std::size(list))))];
    }

  private:
    std::mt19937 engine_;
};

} // namespace tavrin::test
