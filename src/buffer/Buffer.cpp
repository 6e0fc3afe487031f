#include "buffer/Buffer.h"

#include "buffer/BufferParser.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tavrin {

namespace {

constexpr std::u16string_view lineFeed = u"\n";

std::u16string_view part(std::u16string_view text, int first, int last) {
    return text.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first));
}

/// Orders two positions as pairs. On one line this orders the columns.
void order(int& line1, int& col1, int& line2, int& col2) {
    if (std::pair(line2, col2) < std::pair(line1, col1)) {
        std::swap(line1, line2);
        std::swap(col1, col2);
    }
}

int columnsOf(char16_t c) {
    return c == u'\t' ? Buffer::tabColumns : 1;
}

} // namespace

void Buffer::reset() {
    lines_.clear();
    loadedEncoding_ = 0;
    ++generation_;
}

void Buffer::ensureLine() {
    if (lines_.lineCount() == 0)
        lines_.insert(0, BufferLine());
}

void Buffer::notifyModified(int first, int last) {
    for (int line = first; line < last; ++line)
        parser_->onLineModified(line);
}

// Reading

std::u16string_view Buffer::getLineText(int line) const {
    return lines_.line(line).text();
}

int Buffer::getLineLength(int line) const {
    return lines_.length(line);
}

bool Buffer::getContinuesPrevious(int line) const {
    return lines_.line(line).continuesPrevious;
}

void Buffer::getText(int line1, int col1, int line2, int col2, std::u16string& out) const {
    order(line1, col1, line2, col2);
    if (line1 == line2) {
        out += part(getLineText(line1), col1, col2);
        return;
    }
    out += part(getLineText(line1), col1, getLineLength(line1));
    out += lineFeed;
    for (int line = line1 + 1; line < line2; ++line) {
        out += getLineText(line);
        out += lineFeed;
    }
    out += part(getLineText(line2), 0, col2);
}

int Buffer::getLineColEffChars(int line, int col) const {
    int columns = 0;
    for (const char16_t c : part(getLineText(line), 0, col))
        columns += columnsOf(c);
    return columns;
}

int Buffer::getLineColLogicChars(int line, int visualCol) const {
    const std::u16string_view text = getLineText(line);
    int total = 0;
    for (int i = 0; i < static_cast<int>(text.size()); ++i) {
        total += columnsOf(text[static_cast<std::size_t>(i)]);
        if (total > visualCol)
            return total == visualCol + 1 ? i + 1 : i;
    }
    return static_cast<int>(text.size());
}

// Editing

LineEnd Buffer::neighbourEnd(int line) const {
    for (const int neighbour : {line, line - 1, line + 1})
        if (neighbour >= 0 && neighbour < getLineCount())
            if (const LineEnd end = lines_.line(neighbour).lineEnd; end != LineEnd::None)
                return end;
    return usualLineEnd_;
}

void Buffer::insert(int line, int col, char16_t ch) {
    ensureLine();
    parser_->onLinesReplacing(line, 1, 1);
    lines_.edit(line, [&](BufferLine& l) { l.insert(col, {&ch, 1}); });
    parser_->onLineModified(line);
}

void Buffer::insertText(int line, int col, std::u16string_view text, int& endLine, int& endCol) {
    ensureLine();
    const std::size_t firstBreak = text.find(u'\n');
    if (firstBreak == text.npos) {
        parser_->onLinesReplacing(line, 1, 1);
        lines_.edit(line, [&](BufferLine& l) { l.insert(col, text); });
        endLine = line;
        endCol = col + static_cast<int>(text.size());
        parser_->onLineModified(line);
        return;
    }

    const LineEnd newEnd = neighbourEnd(line);
    std::vector<BufferLine> below;
    std::size_t start = firstBreak + 1;
    for (std::size_t lf = text.find(u'\n', start); lf != text.npos; lf = text.find(u'\n', start)) {
        BufferLine& made = below.emplace_back();
        made.insert(0, text.substr(start, lf - start));
        made.lineEnd = newEnd;
        start = lf + 1;
    }
    const std::u16string_view lastSegment = text.substr(start);
    endLine = line + static_cast<int>(below.size()) + 1;
    endCol = static_cast<int>(lastSegment.size());

    parser_->onLinesReplacing(line, 1, endLine - line + 1);
    BufferLine tail;
    lines_.edit(line, [&](BufferLine& l) {
        tail = l.cut(col);
        l.insert(col, text.substr(0, firstBreak));
        l.lineEnd = newEnd;
    });
    tail.insert(0, lastSegment);
    below.push_back(std::move(tail));
    lines_.insert(line + 1, std::move(below));
    notifyModified(line, endLine + 1);
}

void Buffer::splitLine(int line, int col) {
    ensureLine();
    parser_->onLinesReplacing(line, 1, 2);
    const LineEnd newEnd = neighbourEnd(line);
    BufferLine tail;
    lines_.edit(line, [&](BufferLine& l) {
        tail = l.cut(col);
        l.lineEnd = newEnd;
    });
    lines_.insert(line + 1, std::move(tail));
    notifyModified(line, line + 2);
}

void Buffer::erase(int line1, int col1, int line2, int col2) {
    if (line1 == line2 && col1 == col2)
        return;
    order(line1, col1, line2, col2);
    const auto removeFrom = [](BufferLine& l, int col, int count) {
        if (col >= 0 && col + count <= l.length())
            l.erase(col, count);
    };
    parser_->onLinesReplacing(line1, line2 - line1 + 1, 1);
    if (line1 == line2) {
        lines_.edit(line1, [&](BufferLine& l) { removeFrom(l, col1, col2 - col1); });
        parser_->onLineModified(line1);
        return;
    }
    BufferLine tail;
    lines_.edit(line2, [&](BufferLine& l) {
        removeFrom(l, 0, col2);
        tail = std::move(l);
        l = BufferLine();
    });
    lines_.edit(line1, [&](BufferLine& l) {
        removeFrom(l, col1, l.length() - col1);
        l.append(tail);
    });
    lines_.erase(line1 + 1, line2 + 1);
    notifyModified(line1, std::min(line1 + 2, getLineCount()));
}

void Buffer::replaceInLines(std::span<const LineReplacement> replacements) {
    if (replacements.empty())
        return;
    const int first = replacements.front().line;
    const int count = replacements.back().line - first + 1;
    parser_->onLinesReplacing(first, count, count);
    {
        LineStore::Batch batch(lines_);
        std::u16string made;
        for (auto next = replacements.begin(); next != replacements.end();)
            batch.edit(next->line, [&](BufferLine& line) {
                const int index = next->line;
                int done = 0;
                made.clear();
                for (; next != replacements.end() && next->line == index; ++next) {
                    made += part(line.text(), done, next->col);
                    made += next->text;
                    done = next->col + next->length;
                }
                made += part(line.text(), done, line.length());
                line.assign(made);
            });
    }
    parser_->onLineModified(first);
}

// Formats and flags

/// While it lives, the parser writes codes.
class Buffer::Parsing {
  public:
    explicit Parsing(Buffer& buffer) : buffer_(buffer), before_(std::exchange(buffer.parsing_, true)) {}
    Parsing(const Parsing&) = delete;
    Parsing& operator=(const Parsing&) = delete;
    ~Parsing() { buffer_.parsing_ = before_; }

  private:
    Buffer& buffer_;
    bool before_;
};

void Buffer::formatRange(int line, int col, int count, int format) {
    BufferLine& l = lineToFormat(line);
    if (format == 0 && col == 0 && count >= l.length())
        l.formats.clear();
    else
        l.formats.set(col, count, format);
}

void Buffer::setLineFormats(int line, std::span<const FormatRun> runs) {
    if (parsing_)
        lines_.setFormats(line, runs);
    else
        lineToFormat(line).formats.assign(runs);
}

/// Codes that the parser writes may be dropped, because it can write them again; those of others may not.
BufferLine& Buffer::lineToFormat(int line) {
    BufferLine& l = lines_.lineForFormats(line, !parsing_);
    if (l.formatsDropped) {
        l.formatsDropped = false;
        if (!parsing_)
            writeFormatsAgain(line);
    }
    return l;
}

void Buffer::writeFormatsAgain(int line) {
    const Parsing parsing(*this);
    parser_->formatAgain(line);
}

BufferLine& Buffer::parsedLine(int line) {
    {
        const Parsing parsing(*this);
        parser_->parseLine(line);
    }
    BufferLine& l = lines_.lineForFormats(line, false);
    if (l.formatsDropped)
        writeFormatsAgain(line);
    return l;
}

int Buffer::getCharFormat(int line, int col) {
    return parsedLine(line).formats.at(col);
}

std::span<const FormatRun> Buffer::getLineFormats(int line) {
    BufferLine& l = parsedLine(line);
    l.formats.padTo(l.length());
    return l.formats.runs();
}

void Buffer::setLineFlags(int line, int value, int mask) {
    lines_.setFlags(line, line + 1, value, mask);
}

void Buffer::setLineFlags(int first, int last, int value, int mask) {
    lines_.setFlags(first, last, value, mask);
}

void Buffer::setLineParse(int line, int value, int mask, std::uint8_t state) {
    lines_.setFlagsAndState(line, value, mask, state);
}

void Buffer::setLineFlags(int first, std::span<const std::uint8_t> values, int mask,
                          std::span<const std::uint8_t> states) {
    lines_.setFlags(first, values, mask);
    lines_.setStates(first, states);
}

int Buffer::getLineFlags(int line) const {
    return lines_.flags(line);
}

void Buffer::setLineState(int line, std::uint8_t state) {
    lines_.setState(line, state);
}

std::uint8_t Buffer::getLineState(int line) const {
    return lines_.state(line);
}

void Buffer::checkInvariants() const {
    lines_.checkInvariants();
    for (int line = 0; line < getLineCount(); ++line) {
        int end = 0;
        for (const FormatRun& run : lines_.line(line).formats.runs()) {
            if (run.end <= end)
                throw std::logic_error("Buffer: format runs out of order");
            end = run.end;
        }
        if (end > getLineLength(line))
            throw std::logic_error("Buffer: format codes behind the end of a line");
    }
}

} // namespace tavrin
