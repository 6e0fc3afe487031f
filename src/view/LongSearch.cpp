#include "view/LongSearch.h"

#include "buffer/Buffer.h"
#include "platform/ui/Progress.h"

#include <algorithm>

namespace tavrin {

namespace {

/// Lines between two reports; a few milliseconds of search.
constexpr int sliceLines = 1 << 15;

} // namespace

LongSearch::LongSearch(const Buffer& buffer, std::u16string_view what, int flags, Progress& progress)
    : buffer_(buffer),
      search_(buffer, what, flags, BufferSearch::Cuts::Cross),
      length_(what.size()),
      flags_(flags),
      progress_(progress) {}

bool LongSearch::canFind(std::u16string_view what) {
    return !what.empty() && what.find(u'\n') == what.npos;
}

std::optional<TextMatch> LongSearch::find(int line, int col) {
    const int last = buffer_.getLineCount() - 1;
    const bool isDown = flags_ & FIND_DOWN;
    std::optional<TextMatch> match = isDown ? down(line, col, last) : upTo(0, line, col);
    if (match || stopped_ || !(flags_ & FIND_WRAP))
        return match;
    // From the other end, up to and including the whole starting line.
    return isDown ? down(0, 0, line) : upTo(firstToReach(line), last, buffer_.getLineLength(last));
}

/// The line itself, or one above from which a match over cuts reaches into it.
int LongSearch::firstToReach(int line) const {
    for (std::size_t units = 1; units < length_ && line > 0 && buffer_.getContinuesPrevious(line);)
        units += static_cast<std::size_t>(buffer_.getLineLength(--line));
    return line;
}

int LongSearch::endOfSlice(int line, int lastLine) {
    return std::min(line / sliceLines * sliceLines + sliceLines - 1, lastLine);
}

std::optional<int> LongSearch::visitPage(int line, const BufferSearch::Visitor& visit) {
    const int end = endOfSlice(line, buffer_.getLineCount() - 1);
    const std::optional<int> next = search_.visitPage(line, end, visit);
    if (next == end + 1)
        mayGoOn(*next);
    return next;
}

std::optional<TextMatch> LongSearch::down(int line, int col, int lastLine, std::optional<char16_t> before) {
    while (line <= lastLine) {
        const int end = endOfSlice(line, lastLine);
        if (auto match = search_.down(line, col, end, before))
            return match;
        if (end == endOfSlice(end, buffer_.getLineCount() - 1) && !mayGoOn(end + 1))
            break;
        line = end + 1;
        col = 0;
        before.reset();
    }
    return {};
}

std::optional<TextMatch> LongSearch::upTo(int firstLine, int line, int col) {
    for (int from = line; from >= firstLine;) {
        const int first = std::max(from / sliceLines * sliceLines, firstLine);
        if (auto match = search_.up(line, col, first, from))
            return match;
        if (!mayGoOn(buffer_.getLineCount() - first))
            break;
        from = first - 1;
    }
    return {};
}

bool LongSearch::mayGoOn(int linesDone) {
    stopped_ = !progress_.report(linesDone, buffer_.getLineCount());
    return !stopped_;
}

} // namespace tavrin
