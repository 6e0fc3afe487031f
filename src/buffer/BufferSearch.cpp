// Search.

#include "buffer/Buffer.h"
#include "platform/core/CharacterClass.h"
#include "platform/core/TextScan.h"

#include <algorithm>
#include <string>

namespace tavrin {

namespace {

constexpr std::size_t npos = std::u16string_view::npos;

/// One search text with its options, made ready to be looked for in many lines.
class LineSearch {
  public:
    LineSearch(std::u16string_view what, int flags)
        : what_(what), matchCase_(flags & FIND_MATCH_CASE), wholeWord_(flags & FIND_WHOLE_WORD) {
        if (!matchCase_)
            std::ranges::transform(what_, what_.begin(), foldCase);
    }

    [[nodiscard]] std::size_t length() const { return what_.size(); }

    /// The first occurrence at or after `start`, or npos.
    [[nodiscard]] std::size_t first(std::u16string_view text, std::size_t start) const {
        if (start > text.size())
            return npos;
        return accepted(text, matchCase_ ? scan::findText(text, what_, start) : firstFolded(text, start));
    }

    /// The last occurrence that starts at or before `start`, or npos.
    [[nodiscard]] std::size_t last(std::u16string_view text, std::size_t start) const {
        if (what_.size() > text.size())
            return npos;
        for (std::size_t at = std::min(start, text.size() - what_.size()) + 1; at-- > 0;)
            if (matchesAt(text, at))
                return accepted(text, at);
        return npos;
    }

  private:
    [[nodiscard]] std::size_t firstFolded(std::u16string_view text, std::size_t start) const {
        for (std::size_t at = start; at + what_.size() <= text.size(); ++at)
            if (matchesAt(text, at))
                return at;
        return npos;
    }

    [[nodiscard]] bool matchesAt(std::u16string_view text, std::size_t at) const {
        const std::u16string_view there = text.substr(at, what_.size());
        if (matchCase_)
            return there == what_;
        return std::ranges::equal(there, what_, {}, foldCase);
    }

    /// `at`, or npos when only a whole word counts and this is none. A rejected occurrence ends the line.
    [[nodiscard]] std::size_t accepted(std::u16string_view text, std::size_t at) const {
        if (at == npos || !wholeWord_)
            return at;
        const std::size_t end = at + what_.size();
        const bool joined =
            (at > 0 && isLetterOrDigit(text[at - 1])) || (end < text.size() && isLetterOrDigit(text[end]));
        return joined ? npos : at;
    }

    std::u16string what_;
    bool matchCase_;
    bool wholeWord_;
};

} // namespace

bool Buffer::find(int line, int col, std::u16string_view what, int flags, int& foundLine,
                  int& foundCol) const {
    const int last = getLineCount() - 1;
    if (findInLines(line, col, what, flags, 0, last, foundLine, foundCol))
        return true;
    if (!(flags & FIND_WRAP) || last < 0)
        return false;
    // From the other end, up to and including the whole starting line.
    if (flags & FIND_DOWN)
        return line >= 0 && findInLines(0, 0, what, flags, 0, std::min(line, last), foundLine, foundCol);
    return findInLines(last, getLineLength(last) + static_cast<int>(what.size()), what, flags,
                       std::max(line, 0), last, foundLine, foundCol);
}

bool Buffer::findInLines(int line, int col, std::u16string_view what, int flags, int firstLine, int lastLine,
                         int& foundLine, int& foundCol) const {
    if (what.empty())
        return false;
    const LineSearch search(what, flags);
    const auto found = [&](int l, std::size_t at) {
        if (at == npos)
            return false;
        foundLine = l;
        foundCol = static_cast<int>(at);
        return true;
    };
    if (flags & FIND_DOWN) {
        for (int l = std::max(line, firstLine); l <= lastLine; ++l)
            if (found(l, search.first(getLineText(l),
                                      static_cast<std::size_t>(l == line ? std::max(col, 0) : 0))))
                return true;
        return false;
    }
    for (int l = std::min(line, lastLine); l >= firstLine; --l) {
        const std::u16string_view text = getLineText(l);
        const int start = l == line ? col - static_cast<int>(search.length()) : static_cast<int>(text.size());
        if (start >= 0 && found(l, search.last(text, static_cast<std::size_t>(start))))
            return true;
    }
    return false;
}

} // namespace tavrin
