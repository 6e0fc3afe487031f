#pragma once

#include <algorithm>
#include <cwctype>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::test {

/// Colours one line of XML the long way: computes the blocks of all lines above, and colours a tag as a
/// whole, from its start on an earlier line, to know how double quotes pair. ASCII text only. What the engine
/// makes of the same line, from the little that it carries from line to line, must be the same.
class ReferenceXmlColouring {
  public:
    explicit ReferenceXmlColouring(std::vector<std::u16string> lines) : lines_(std::move(lines)) {}

    struct Flags {
        bool openAtEnd = false;
        int openBlock = 0;
    };

    std::vector<int> codesOf(int line) {
        codes_.assign(lines_.size(), {});
        for (std::size_t i = 0; i < lines_.size(); ++i)
            codes_[i].assign(lines_[i].size(), 0);
        parseBlocksTo(line);
        parseContent(line);
        return codes_[static_cast<std::size_t>(line)];
    }

    Flags flagsOf(int line) {
        parseBlocksTo(line);
        return flags_[static_cast<std::size_t>(line)];
    }

  private:
    struct Block {
        int id, format;
        std::u16string start, end;
    };
    inline static const std::vector<Block> blocks{
        {0x20, 3, u"<!--", u"-->"}, {0x40, 9, u"<![", u"]]>"}, {0x80, 10, u"<", u">"}};

    const std::u16string& text(int line) const { return lines_[static_cast<std::size_t>(line)]; }
    int length(int line) const { return static_cast<int>(text(line).size()); }

    int findFirst(int line, int start, const Block*& block) const {
        block = nullptr;
        int first = -1;
        for (const Block& b : blocks) {
            const std::size_t at = text(line).find(b.start, static_cast<std::size_t>(start));
            if (at != std::u16string::npos && (first < 0 || static_cast<int>(at) < first)) {
                first = static_cast<int>(at);
                block = &b;
            }
        }
        return first;
    }

    int findEnd(const Block& block, int line, int start) const {
        if (block.id != 0x80) {
            const std::size_t at = text(line).find(block.end, static_cast<std::size_t>(start));
            return at == std::u16string::npos ? -1 : static_cast<int>(at);
        }
        char16_t quote = 0;
        for (int i = start; i < length(line); ++i) {
            const char16_t c = text(line)[static_cast<std::size_t>(i)];
            if (quote)
                quote = c == quote ? char16_t{0} : quote;
            else if (c == u'"' || c == u'\'')
                quote = c;
            else if (c == u'>')
                return i;
        }
        return -1;
    }

    const Block* openAtEndOf(int line) const {
        if (line < 0)
            return nullptr;
        for (const Block& b : blocks)
            if ((flags_[static_cast<std::size_t>(line)].openBlock & b.id) == b.id)
                return &b;
        return nullptr;
    }

    void parseBlocksTo(int last) {
        flags_.assign(lines_.size(), {});
        for (int line = 0; line <= last; ++line) {
            const Block* block = openAtEndOf(line - 1);
            int pos = 0;
            do {
                int found = -1;
                if (!block) {
                    found = pos = findFirst(line, pos, block);
                    if (!block)
                        break;
                }
                const int end = findEnd(*block, line, found != -1 ? pos + 1 : 0);
                if (end == -1) {
                    flags_[static_cast<std::size_t>(line)] = {true, block->id};
                    break;
                }
                pos = end + static_cast<int>(block->end.size());
                block = nullptr;
            } while (pos < length(line));
        }
    }

    void parseContent(int line) {
        const Block* block = openAtEndOf(line - 1);
        int pos = 0;
        do {
            int found = -1;
            if (!block)
                found = pos = findFirst(line, pos, block);
            if (!block)
                return;
            int blockEnd = length(line);
            const int end = findEnd(*block, line, found != -1 ? pos + 1 : 0);
            if (end != -1)
                blockEnd = end + static_cast<int>(block->end.size());
            if (block->id == 0x80)
                formatTag(line, pos);
            else
                fill(line, pos, blockEnd, block->format);
            block = nullptr;
            pos = blockEnd;
        } while (pos < length(line));
    }

    struct Extent {
        int startLine = -1, startCol = -1, endLine = -1, endCol = -1;
    };

    Extent currentBlock(int line, int col) const {
        Extent e;
        const Block* block = openAtEndOf(line - 1);
        int scanLine = line;
        int from = 0;
        if (block) {
            int above = line - 1;
            const Block* ignored = nullptr;
            while (above > 0 && findFirst(above, 0, ignored) == -1)
                --above;
            e.startLine = above;
            for (int at = findFirst(above, 0, ignored); at != -1; at = findFirst(above, at + 1, ignored))
                e.startCol = at;
        } else {
            e.startCol = findFirst(line, 0, block);
            if (!block)
                return {};
            e.startLine = line;
            from = e.startCol + 1;
        }
        while (true) {
            const int end = findEnd(*block, scanLine, from);
            const bool closed = end != -1;
            e.endLine = scanLine;
            e.endCol = closed ? end + static_cast<int>(block->end.size()) : length(scanLine);
            if (!closed) {
                ++scanLine;
                from = 0;
            }
            if ((e.endLine == line && e.endCol > col) || e.endLine > line ||
                scanLine >= static_cast<int>(lines_.size()))
                return e;
            if (closed) {
                const Block* next = nullptr;
                const int start = findFirst(scanLine, e.endCol, next);
                if (!next)
                    return e;
                block = next;
                e.startLine = scanLine;
                e.startCol = start;
                from = start + 1;
            }
        }
    }

    void formatTag(int line, int start) {
        const Extent e = currentBlock(line, start);
        if (e.startLine > e.endLine)
            return;
        bool inQuote = false;
        for (int l = e.startLine; l <= e.endLine && l != -1; ++l) {
            int segment = l == e.startLine ? e.startCol : 0;
            const int end = l == e.endLine ? e.endCol : length(l);
            while (true) {
                const std::size_t found = inQuote ? 0 : text(l).find(u'"', static_cast<std::size_t>(segment));
                if (found == std::u16string::npos || static_cast<int>(found) >= end)
                    break;
                const int quote = static_cast<int>(found);
                formatOutsideValues(l, segment, quote);
                const std::size_t closing = text(l).find(u'"', found + 1);
                if (closing != std::u16string::npos && static_cast<int>(closing) <= end) {
                    segment = static_cast<int>(closing) + 1;
                    inQuote = false;
                } else {
                    segment = end == length(l) ? end : end - 1;
                    inQuote = true;
                }
                fill(l, quote, segment, 5);
                if (inQuote)
                    break;
            }
            formatOutsideValues(l, segment, end);
        }
    }

    void formatOutsideValues(int line, int i, int end) {
        const auto at = [&](int col) { return text(line)[static_cast<std::size_t>(col)]; };
        const auto letter = [](char16_t c) { return std::iswalpha(c) != 0; };
        const auto nameChar = [](char16_t c) {
            return std::iswalnum(c) || c == u':' || c == u'-' || c == u'_';
        };
        for (; i < end; ++i) {
            if (at(i) == u'<') {
                fill(line, i, i + 1, 10);
                ++i;
                while (i < end && std::iswspace(at(i)))
                    ++i;
                if (i >= end)
                    return;
                if (at(i) == u'/' || at(i) == u'?') {
                    fill(line, i, i + 1, 10);
                    ++i;
                    while (i < end && std::iswspace(at(i)))
                        ++i;
                }
                if (i < end && letter(at(i)))
                    for (; i < end && nameChar(at(i)); ++i)
                        fill(line, i, i + 1, 7);
                if (i >= end)
                    return;
            }
            const char16_t c = at(i);
            if (c == u'>' || c == u'/' || c == u'=' || c == u'?') {
                fill(line, i, i + 1, 10);
            } else if (c == u'"') {
                const std::size_t closing = text(line).find(u'"', static_cast<std::size_t>(i) + 1);
                const int last =
                    closing == std::u16string::npos ? end - 1 : std::min(static_cast<int>(closing), end - 1);
                fill(line, i, last + 1, 5);
                i = last;
            } else if (letter(c)) {
                for (; i < end && (nameChar(at(i)) || at(i) == u'.'); ++i)
                    fill(line, i, i + 1, 8);
                --i;
            }
        }
    }

    void fill(int line, int start, int end, int code) {
        for (int i = start; i < end; ++i)
            codes_[static_cast<std::size_t>(line)][static_cast<std::size_t>(i)] = code;
    }

    std::vector<std::u16string> lines_;
    std::vector<std::vector<int>> codes_;
    std::vector<Flags> flags_;
};

} // namespace tavrin::test
