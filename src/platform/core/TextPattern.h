#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace tavrin {

/// A text made ready to be looked for in much other text, by its very characters or by their simple case
/// folding, code unit by code unit. REQUIRES: the text is not empty.
///
/// Places are filtered by two of its units at once, those that are rarest in usual text, vectorised where the
/// machine allows; few are left to be compared.
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

    /// The same by comparing at every place: what the two above are tested against.
    [[nodiscard]] std::size_t firstPortable(std::u16string_view text, std::size_t start) const;
    [[nodiscard]] std::size_t lastPortable(std::u16string_view text, std::size_t start) const;

  private:
    /// No code unit has more that fold alike.
    static constexpr int mostVariants = 4;

    /// One unit of the text as it may appear, repeated to fill the array.
    struct Probe {
        std::size_t offset = 0;
        int variants = 1;
        std::array<char16_t, mostVariants> units{};
    };

    template <int variants>
    struct Filter;

    void chooseProbes();
    [[nodiscard]] Probe probeAt(std::size_t offset) const;
    template <int variants>
    [[nodiscard]] std::size_t firstFiltered(std::u16string_view text, std::size_t start) const;
    template <int variants>
    [[nodiscard]] std::size_t lastFiltered(std::u16string_view text, std::size_t start) const;

    std::u16string what_; ///< folded, unless case counts
    const std::array<char16_t, 0x10000>* fold_ = nullptr;
    std::array<Probe, 2> probes_;
};

} // namespace tavrin
