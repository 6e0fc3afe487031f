#pragma once

#include "buffer/TextSource.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tavrin {

/// Adds up lines that end with LF or CR LF and are shorter than a cut, 64 bytes at a time and mostly without
/// looking at each: every line of a text is added up when it is loaded.
class PlainLines {
  public:
    enum class Units : std::uint8_t {
        Bytes, ///< a code unit a byte
        Utf8,  ///< valid UTF-8
        Ascii, ///< plain are only lines of bytes below 0x80
    };

    PlainLines(std::string_view text, Units units) : text_(text), units_(units) {}

    /// Adds the lines from `offset` on to `totals`, until that has `count`, and moves `offset` behind the
    /// last one. Stops before a line that is not plain, and shortly before the end of the text.
    void skip(std::size_t& offset, int count, TextSource::Totals& totals) const;

  private:
    struct Block;
    struct Sums;

    [[nodiscard]] bool add(const Block& block, Sums& sums) const;
    [[nodiscard]] bool addTogether(const Block& block, Sums& sums) const;
    [[nodiscard]] bool addEach(const Block& block, Sums& sums) const;

    std::string_view text_;
    Units units_;
};

} // namespace tavrin
