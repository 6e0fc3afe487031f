#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tavrin {

/// A text made ready to be looked for in much other text, by its very characters or by their simple case
/// folding, code unit by code unit. REQUIRES: the text is not empty.
class TextPattern {
  public:
    TextPattern(std::u16string_view what, bool matchCase);

    [[nodiscard]] std::size_t size() const { return what_.size(); }
    /// Index of the first occurrence in `text` that begins at or after `start`, or npos.
    [[nodiscard]] std::size_t first(std::u16string_view text, std::size_t start) const;
    /// Index of the last occurrence in `text` that begins at or before `start`, or npos.
    [[nodiscard]] std::size_t last(std::u16string_view text, std::size_t start) const;
    /// Whether it stands at `at`. REQUIRES: at + size() <= text.size().
    [[nodiscard]] bool matchesAt(std::u16string_view text, std::size_t at) const;

  private:
    std::u16string what_; ///< folded, unless case counts
    bool matchCase_;
};

} // namespace tavrin
