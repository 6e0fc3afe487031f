#pragma once

#include "buffer/BufferSearch.h"

#include <optional>
#include <string_view>

namespace tavrin {

class Buffer;
class Progress;

/// A search through a whole text as the view's commands do it: over cuts, in slices of lines, between which
/// the user may stop it.
class LongSearch {
  public:
    /// `flags` as of Buffer::find. `progress` outlives the search. REQUIRES: canFind(what).
    LongSearch(const Buffer& buffer, std::u16string_view what, int flags, Progress& progress);

    /// False for what is never found: nothing, and what holds a line feed.
    [[nodiscard]] static bool canFind(std::u16string_view what);

    /// The next match from (line, col) on, in the direction of the flags and with FIND_WRAP around the text.
    /// REQUIRES: the buffer has lines, and the position is one of the text.
    [[nodiscard]] std::optional<TextMatch> find(int line, int col);
    /// The next match at or after (line, col) and not below `lastLine`. `before` as of BufferSearch::down.
    [[nodiscard]] std::optional<TextMatch> down(int line, int col, int lastLine,
                                                std::optional<char16_t> before = {});
    /// As BufferSearch::visitPage.
    [[nodiscard]] std::optional<int> visitPage(int line, const BufferSearch::Visitor& visit);
    [[nodiscard]] bool wasStopped() const { return stopped_; }
    [[nodiscard]] const BufferSearch& search() const { return search_; }

  private:
    [[nodiscard]] int firstToReach(int line) const;
    [[nodiscard]] static int endOfSlice(int line, int lastLine);
    [[nodiscard]] std::optional<TextMatch> upTo(int firstLine, int line, int col);
    bool mayGoOn(int linesDone);

    const Buffer& buffer_;
    BufferSearch search_;
    std::size_t length_; ///< of the text that is searched
    int flags_;
    Progress& progress_;
    bool stopped_ = false;
};

} // namespace tavrin
