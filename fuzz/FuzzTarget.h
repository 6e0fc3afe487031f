#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// What a fuzzer calls with each input. Returns 0; ends the process when a promise is broken.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tavrin::fuzz {

/// Ends the process with a message unless a promise holds.
inline void require(bool holds, const char* promise) {
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

/// Reads an input byte by byte as small decisions; zeros after its end.
class Choices {
  public:
    Choices(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

    [[nodiscard]] bool atEnd() const { return at_ == end_; }
    std::uint8_t byte() { return atEnd() ? std::uint8_t{0} : *at_++; }
    /// In [0, bound); bound is at least 1.
    int below(int bound) {
        const unsigned value = bound > 256 ? byte() * 256U + byte() : byte();
        return static_cast<int>(value % static_cast<unsigned>(bound));
    }

  private:
    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

} // namespace tavrin::fuzz
