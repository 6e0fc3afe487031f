#pragma once

#include "buffer/LineStore.h"
#include "platform/core/TextPattern.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tavrin {

class Buffer;

/// Where a text was found: [start, end), on one line unless it runs over cuts.
struct TextMatch {
    int line;
    int col;
    int endLine;
    int endCol;
    friend bool operator==(const TextMatch&, const TextMatch&) = default;
};

/// One search text with its options (FindFlags), looked for in the lines of a buffer.
///
/// Only FIND_MATCH_CASE and FIND_WHOLE_WORD count. An occurrence that is no whole word ends the search of its
/// line. REQUIRES everywhere: 0 <= line; the text searched for is not empty.
class BufferSearch {
  public:
    enum class Cuts {
        Stop, ///< a match, and what stands around it, lies inside one buffer line
        Cross ///< lines of the loaded text that were cut apart for their length are one (continuesPrevious)
    };

    BufferSearch(const Buffer& buffer, std::u16string_view what, int flags, Cuts cuts);

    /// The first match that begins at or after (line, col) and not below `lastLine`. `before`: what stands in
    /// front of that position is this code unit, whatever the buffer holds (0: nothing).
    [[nodiscard]] std::optional<TextMatch> down(int line, int col, int lastLine,
                                                std::optional<char16_t> before = {}) const;
    /// Visits all matches of the page that begins with `line`, with their texts, and returns the line behind
    /// it. Nothing, and nobody is called, unless the page ends at or above `lastLine` and its bytes alone
    /// tell. A match over cuts is visited piece by piece, each inside its line.
    using Visitor = std::function<void(const TextMatch& piece, std::u16string_view text, bool isFirst)>;
    [[nodiscard]] std::optional<int> visitPage(int line, int lastLine, const Visitor& visit) const;
    /// The last match that ends at or before (line, col) and begins in the lines [firstLine, from].
    [[nodiscard]] std::optional<TextMatch> up(int line, int col, int firstLine, int from) const;
    /// The code unit in front of a position, 0 for none.
    [[nodiscard]] char16_t unitBefore(int line, int col) const;

  private:
    [[nodiscard]] std::size_t startsAboveEnd(int startLine, int line, int col) const;
    [[nodiscard]] TextMatch inside(int line, std::size_t at) const;
    [[nodiscard]] std::optional<TextMatch> overCut(int line, std::size_t from, std::size_t to,
                                                   bool last) const;
    [[nodiscard]] bool isAccepted(const TextMatch& match, std::optional<char16_t> before = {}) const;
    [[nodiscard]] bool isContinued(int line) const;
    [[nodiscard]] char16_t unitAt(int line, int col) const;

    struct Lines {
        int first;
        int end;
    };

    /// The page around `line`, if it lies within lines [from, to) and what it was loaded from tells that it
    /// lacks the text.
    [[nodiscard]] std::optional<Lines> linesWithout(int line, int from, int to) const;
    /// The first line from `line` on, and the last one up to it, of whose page the bytes do not tell that
    /// it lacks the text. Pages that are no part of the lines up to `last` (down from `first`) are not looked
    /// at.
    [[nodiscard]] int skipDown(int line, int last) const;
    [[nodiscard]] int skipUp(int line, int first) const;
    [[nodiscard]] bool lacksText(const LineStore::StoredLines& lines) const;
    [[nodiscard]] std::size_t findIn(std::string_view bytes, std::size_t start) const;
    [[nodiscard]] bool mayRunOverEnd(const LineStore::StoredLines& lines) const;
    [[nodiscard]] bool canFindIn(const LineStore::StoredLines& lines) const;
    void visitLines(const LineStore::StoredLines& lines, const Visitor& visit) const;
    void visitUnits(const LineStore::StoredUnits& units, const Visitor& visit) const;

    const Buffer& buffer_;
    std::u16string what_;
    TextPattern pattern_;
    std::string bytes_;    ///< the text as UTF-8, folded like the pattern; empty when it has no such form
    bool isAscii_ = false; ///< `bytes_` are
    bool matchCase_;
    bool wholeWord_;
    bool crossCuts_;
};

} // namespace tavrin
