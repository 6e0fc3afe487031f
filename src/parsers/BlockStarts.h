#pragma once

#include <cstddef>
#include <vector>

namespace tavrin {

/// Columns at which blocks begin in one long line, a few hundred characters apart, and which part of its text
/// has changed since: so much of its colours has to be found again. Behind the part, a walk over the blocks
/// that comes to one of these columns goes on as before.
///
/// A walk is begun, told of every block that begins outside all others, and ended. One that is not ended
/// leaves nothing to rely on.
class BlockStarts {
  public:
    [[nodiscard]] bool isFor(int line) const { return line == line_; }
    [[nodiscard]] bool hasChange() const { return changeFrom_ <= changeTo_; }
    void forget() noexcept { line_ = none; }

    void onLinesReplacing(int line, int before, int after) noexcept;
    void onTextReplacing(int line, int col, int removed, int inserted) noexcept;

    void beginAll();
    /// Returns the column at which the walk begins: 0, or one of a block.
    [[nodiscard]] int beginAtChange();
    /// A block begins at `col`. True when what was known from there on stands, and the walk may stop.
    [[nodiscard]] bool reach(int col);
    /// The walk stopped there, or reached the end of the line.
    void endAll(int line);
    void endStopped();

  private:
    static constexpr int none = -1;

    int line_ = none;
    std::vector<int> columns_; ///< ascending; none lies in the change
    int changeFrom_ = 1;
    int changeTo_ = 0;
    std::vector<int> found_; ///< by the walk
    std::size_t kept_ = 0;   ///< columns before the walk
    std::size_t behind_ = 0; ///< the first column that the walk may still come to
};

} // namespace tavrin
