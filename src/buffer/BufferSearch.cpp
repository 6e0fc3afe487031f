#include "buffer/BufferSearch.h"

#include "buffer/Buffer.h"
#include "buffer/StoredLineWalk.h"
#include "platform/core/CharacterClass.h"
#include "platform/core/TextScan.h"
#include "platform/core/Utf8.h"

#include <algorithm>
#include <string>
#include <vector>

namespace tavrin {

namespace {

constexpr std::size_t npos = std::u16string_view::npos;

/// Stands for "no character": neither letter nor digit.
constexpr char16_t nothing = u'\0';

} // namespace

BufferSearch::BufferSearch(const Buffer& buffer, std::u16string_view what, int flags, Cuts cuts)
    : buffer_(buffer),
      what_(what),
      pattern_(what, flags & FIND_MATCH_CASE),
      matchCase_(flags & FIND_MATCH_CASE),
      wholeWord_(flags & FIND_WHOLE_WORD),
      crossCuts_(cuts == Cuts::Cross) {
    std::u16string text(what);
    if (!matchCase_)
        std::ranges::transform(text, text.begin(), foldCase);
    EncodeReport report;
    encodeUtf8(text, bytes_, 0, report);
    isAscii_ = bytes_.size() == what.size();
    if (report.lostCount > 0)
        bytes_.clear();
}

// Bytes that lack the text

std::size_t BufferSearch::findIn(std::string_view bytes, std::size_t start) const {
    return matchCase_ ? scan::findBytes(bytes, bytes_, start) : scan::findAsciiFolded(bytes, bytes_, start);
}

/// Whether a match may begin in the page and end below, where its last line goes on. The bytes of `lines` may
/// be valid no longer.
bool BufferSearch::mayRunOverEnd(const LineStore::StoredLines& lines) const {
    if (!lines.hasCuts || !isContinued(lines.end - 1))
        return false;
    const std::size_t reach = bytes_.size() - 1;
    std::string around(lines.bytes.substr(lines.bytes.size() - std::min(reach, lines.bytes.size())));
    const auto next = buffer_.getStoredLines(lines.end);
    if (!next || !next->isAscii || next->bytes.size() < reach)
        return true;
    around += next->bytes.substr(0, reach);
    return isAscii_ && findIn(around, 0) != npos;
}

bool BufferSearch::lacksText(const LineStore::StoredLines& lines) const {
    if (bytes_.empty())
        return false;
    // Below 0x80 a byte is a character in each encoding of stored lines.
    const bool canTell = matchCase_ ? isAscii_ || lines.isUtf8 : lines.isAscii;
    if (!canTell)
        return false;
    const bool isForeign = !matchCase_ && !isAscii_;
    return (isForeign || findIn(lines.bytes, 0) == npos) && !mayRunOverEnd(lines);
}

std::optional<BufferSearch::Lines> BufferSearch::linesWithout(int line, int from, int to) const {
    const auto isInside = [&](const auto& lines) { return lines->first >= from && lines->end <= to; };
    if (const auto lines = buffer_.getStoredLines(line)) {
        if (isInside(lines) && lacksText(*lines))
            return Lines{lines->first, lines->end};
    } else if (const auto units = buffer_.getStoredUnits(line)) {
        if (isInside(units) && pattern_.first(units->text, 0) == npos)
            return Lines{units->first, units->end};
    }
    return {};
}

int BufferSearch::skipDown(int line, int last) const {
    while (line <= last) {
        const auto without = linesWithout(line, line, last + 1);
        if (!without)
            break;
        line = without->end;
    }
    return line;
}

int BufferSearch::skipUp(int line, int first) const {
    while (line >= first) {
        const auto without = linesWithout(line, first, line + 1);
        if (!without)
            break;
        line = without->first - 1;
    }
    return line;
}

// All matches of a page

/// A match at a place in the bytes of lines that go on over cuts.
void visitPieces(int firstLine, StoredLineWalk<char>& walk, std::size_t at, std::u16string_view text,
                 const BufferSearch::Visitor& visit) {
    for (std::size_t done = 0; done < text.size();) {
        const std::size_t from = at + done;
        walk.goDownToOffset(from);
        const std::size_t length = std::min(text.size() - done, walk.end() - from);
        const int line = firstLine + walk.line();
        const auto col = static_cast<int>(from - walk.begin());
        visit({line, col, line, col + static_cast<int>(length)}, text.substr(done, length), done == 0);
        done += length;
    }
}

/// What is found in the bytes is what would be found in the lines.
bool BufferSearch::canFindIn(const LineStore::StoredLines& lines) const {
    if (bytes_.empty() || (lines.hasCuts && !crossCuts_))
        return false;
    return matchCase_ ? lines.isUtf8 || (isAscii_ && lines.unitsAreBytes) : lines.isAscii;
}

void BufferSearch::visitLines(const LineStore::StoredLines& lines, const Visitor& visit) const {
    if (lines.isAscii && !isAscii_)
        return;
    const auto ends = lines.hasCuts ? lines.lineEnds() : std::vector<std::uint32_t>();
    StoredLineWalk<char> walk(lines.bytes, lines.hasReturns, ends);
    std::u16string text = what_;
    for (std::size_t at = findIn(lines.bytes, 0); at != npos; at = findIn(lines.bytes, at + bytes_.size())) {
        if (!matchCase_)
            std::ranges::copy(lines.bytes.substr(at, text.size()), text.begin());
        walk.goDownToOffset(at);
        if (lines.hasCuts) {
            visitPieces(lines.first, walk, at, text, visit);
            continue;
        }
        const std::string_view before = lines.bytes.substr(walk.begin(), at - walk.begin());
        const std::size_t col =
            lines.unitsAreBytes
                ? before.size()
                : utf16Length({reinterpret_cast<const std::uint8_t*>(before.data()), before.size()}, true);
        visit(inside(lines.first + walk.line(), col), text, true);
    }
}

void BufferSearch::visitUnits(const LineStore::StoredUnits& units, const Visitor& visit) const {
    StoredLineWalk<char16_t> walk(units.text, units.hasReturns);
    const std::size_t size = pattern_.size();
    for (std::size_t at = pattern_.first(units.text, 0); at != npos;
         at = pattern_.first(units.text, at + size)) {
        walk.goDownToOffset(at);
        visit(inside(units.first + walk.line(), at - walk.begin()), units.text.substr(at, size), true);
    }
}

std::optional<int> BufferSearch::visitPage(int line, int lastLine, const Visitor& visit) const {
    if (wholeWord_ || what_.find_first_of(u"\r\n") != npos)
        return {};
    const auto isWanted = [&](const auto& lines) {
        return lines->first == line && lines->end <= lastLine + 1;
    };
    if (const auto lines = buffer_.getStoredLines(line)) {
        if (!isWanted(lines) || !canFindIn(*lines) || mayRunOverEnd(*lines))
            return {};
        visitLines(*buffer_.getStoredLines(line), visit);
        return lines->end;
    }
    const auto units = buffer_.getStoredUnits(line);
    if (!units || !isWanted(units))
        return {};
    visitUnits(*units, visit);
    return units->end;
}

// Searching

std::optional<TextMatch> BufferSearch::down(int line, int col, int lastLine,
                                            std::optional<char16_t> before) const {
    for (; col == buffer_.getLineLength(line) && isContinued(line); ++line)
        col = 0;
    for (int l = line; l <= lastLine; ++l) {
        if (l = skipDown(l, lastLine); l > lastLine)
            break;
        const std::u16string_view text = buffer_.getLineText(l);
        const std::size_t start = l == line ? static_cast<std::size_t>(std::max(col, 0)) : 0;
        const std::optional<char16_t> front = l == line ? before : std::nullopt;
        if (const std::size_t at = pattern_.first(text, start); at != npos) {
            const TextMatch match = inside(l, at);
            if (isAccepted(match, at == start ? front : std::nullopt))
                return match;
        }
        if (!isContinued(l))
            continue;
        if (const auto match = overCut(l, start, text.size(), false))
            if (isAccepted(*match, static_cast<std::size_t>(match->col) == start ? front : std::nullopt))
                return match;
    }
    return {};
}

std::optional<TextMatch> BufferSearch::up(int line, int col, int firstLine, int from) const {
    for (int l = from; l >= firstLine; --l) {
        if (l = skipUp(l, firstLine); l < firstLine)
            break;
        const std::u16string_view text = buffer_.getLineText(l);
        if (l < line && isContinued(l))
            if (const auto match = overCut(l, 0, startsAboveEnd(l, line, col), true))
                if (isAccepted(*match))
                    return match;
        const int start = l == line ? col - static_cast<int>(pattern_.size()) : static_cast<int>(text.size());
        if (start < 0)
            continue;
        const std::size_t at = pattern_.last(text, static_cast<std::size_t>(start));
        if (at != npos && isAccepted(inside(l, at)))
            return inside(l, at);
    }
    return {};
}

/// How many columns of `startLine`, counted from 0, a match may begin in that runs over the line's end and
/// ends at or before (line, col).
std::size_t BufferSearch::startsAboveEnd(int startLine, int line, int col) const {
    const auto length = static_cast<std::size_t>(buffer_.getLineLength(startLine));
    std::size_t room = 0; // from the end of the line to (line, col)
    for (int l = startLine; room < pattern_.size() && isContinued(l); ++l) {
        if (l + 1 < line) {
            room += static_cast<std::size_t>(buffer_.getLineLength(l + 1));
            continue;
        }
        room += static_cast<std::size_t>(std::max(col, 0));
        return room >= pattern_.size() ? length : length - std::min(length, pattern_.size() - room - 1);
    }
    return length;
}

TextMatch BufferSearch::inside(int line, std::size_t at) const {
    const auto col = static_cast<int>(at);
    return {line, col, line, col + static_cast<int>(pattern_.size())};
}

/// The first or the last match that begins in columns [from, to) of the line and ends in a line that
/// continues it.
std::optional<TextMatch> BufferSearch::overCut(int line, std::size_t from, std::size_t to, bool last) const {
    const std::u16string_view text = buffer_.getLineText(line);
    const std::size_t reach = pattern_.size() - 1; // units of a match on one side of the cut, at the most
    const std::size_t tail = text.size() - std::min(reach, text.size());
    std::u16string around(text.substr(tail));
    const std::size_t cut = around.size();
    for (int l = line; around.size() < cut + reach && isContinued(l); ++l)
        around += buffer_.getLineText(l + 1).substr(0, cut + reach - around.size());

    from = std::max(from, tail);
    to = std::min(to, text.size());
    if (from >= to)
        return {};
    const std::size_t at = last ? pattern_.last(around, to - 1 - tail) : pattern_.first(around, from - tail);
    if (at == npos || at < from - tail || at >= to - tail)
        return {};

    auto rest = static_cast<int>(at + pattern_.size() - cut);
    int end = line + 1;
    for (; rest > buffer_.getLineLength(end); ++end)
        rest -= buffer_.getLineLength(end);
    return TextMatch{line, static_cast<int>(tail + at), end, rest};
}

bool BufferSearch::isAccepted(const TextMatch& match, std::optional<char16_t> before) const {
    return !wholeWord_ || (!isLetterOrDigit(before ? *before : unitBefore(match.line, match.col)) &&
                           !isLetterOrDigit(unitAt(match.endLine, match.endCol)));
}

/// Whether the search goes on from the end of this line in the next.
bool BufferSearch::isContinued(int line) const {
    return crossCuts_ && line + 1 < buffer_.getLineCount() && buffer_.getContinuesPrevious(line + 1);
}

char16_t BufferSearch::unitBefore(int line, int col) const {
    while (col == 0 && line > 0 && isContinued(line - 1))
        col = buffer_.getLineLength(--line);
    return col > 0 ? buffer_.getLineText(line)[static_cast<std::size_t>(col - 1)] : nothing;
}

char16_t BufferSearch::unitAt(int line, int col) const {
    for (; col == buffer_.getLineLength(line) && isContinued(line); ++line)
        col = 0;
    const std::u16string_view text = buffer_.getLineText(line);
    return static_cast<std::size_t>(col) < text.size() ? text[static_cast<std::size_t>(col)] : nothing;
}

// The buffer's own search

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
    return findInLines(last, getLineLength(last), what, flags, std::max(line, 0), last, foundLine, foundCol);
}

bool Buffer::findInLines(int line, int col, std::u16string_view what, int flags, int firstLine, int lastLine,
                         int& foundLine, int& foundCol) const {
    if (what.empty() || firstLine > lastLine)
        return false;
    const BufferSearch search(*this, what, flags, BufferSearch::Cuts::Stop);
    const bool isDown = flags & FIND_DOWN;
    if (isDown ? line < firstLine : line > lastLine) { // not one of the lines: all of them
        line = isDown ? firstLine : lastLine;
        col = isDown ? 0 : getLineLength(line);
    }
    const std::optional<TextMatch> match =
        isDown ? search.down(line, col, lastLine) : search.up(line, col, firstLine, line);
    if (!match)
        return false;
    foundLine = match->line;
    foundCol = match->col;
    return true;
}

} // namespace tavrin
