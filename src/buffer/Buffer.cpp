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
    origin_ = {};
    form_ = {form_.encoding};
    ++generation_;
}

void Buffer::ensureLine() {
    if (lines_.lineCount() > 0)
        return;
    std::vector<BufferLine> line(1);
    lines_.replace(0, 0, std::move(line));
}

void Buffer::notifyModified(int first, int last) {
    for (int line = first; line < last; ++line)
        parser_->onLineModified(line);
}

void Buffer::noteChange(int line, int col) {
    ++changes_;
    notedChanges_[changes_ % notedChanges_.size()] = {line, col};
}

int Buffer::getUnchangedColumns(int line, unsigned since) const {
    if (changes_ - since > notedChanges_.size())
        return 0;
    int columns = getLineLength(line);
    for (unsigned change = changes_; change != since; --change) {
        const NotedChange& noted = notedChanges_[change % notedChanges_.size()];
        if (noted.line < 0)
            return 0;
        if (noted.line == line)
            columns = std::min(columns, noted.col);
    }
    return columns;
}

// Reading

std::u16string_view Buffer::getLineText(int line) const {
    return lines_.line(line).text();
}

int Buffer::getLineLength(int line) const {
    return lines_.length(line);
}

bool Buffer::getContinuesPrevious(int line) const {
    return lines_.continuesPrevious(line);
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

void Buffer::setLastLineEnd(LineEnd end) {
    Transaction transaction(*this);
    if (getLineCount() > 0)
        lines_.edit(getLineCount() - 1, [&](BufferLine& last) { last.lineEnd = end; });
    transaction.commit();
}

Buffer::Transaction::Transaction(Buffer& buffer)
    : buffer_(buffer), before_(buffer.lines_.changes()), changes_(buffer.changes_), form_(buffer.form_) {
    ++buffer_.transactions_;
}

Buffer::Transaction::~Transaction() {
    --buffer_.transactions_;
    if (!isCommitted_ || buffer_.changes_ - changes_ != buffer_.lines_.changes() - before_)
        buffer_.noteChange(-1, 0); // not each change was one within a line
    if (!isCommitted_) {
        buffer_.lines_.takeBack(before_);
        if (Buffer* const other = before_ == 0 ? std::exchange(buffer_.exchanged_, nullptr) : nullptr)
            buffer_.swapText(*other);
        buffer_.form_ = form_;
        buffer_.parser_->onLinesRestored(); // it may have been told of changes that did not come
    }
    if (buffer_.transactions_ > 0)
        return;
    buffer_.lines_.commit();
    buffer_.exchanged_ = nullptr;
}

void Buffer::insert(int line, int col, char16_t ch) {
    Transaction transaction(*this);
    ensureLine();
    parser_->onTextReplacing(line, col, 0, 1);
    lines_.insert(line, col, {&ch, 1});
    noteChange(line, col);
    parser_->onLineModified(line);
    transaction.commit();
}

void Buffer::insertText(int line, int col, std::u16string_view text, int& endLine, int& endCol) {
    Transaction transaction(*this);
    ensureLine();
    const std::size_t firstBreak = text.find(u'\n');
    if (firstBreak == text.npos) {
        parser_->onTextReplacing(line, col, 0, static_cast<int>(text.size()));
        lines_.insert(line, col, text);
        noteChange(line, col);
        parser_->onLineModified(line);
        transaction.commit();
        endLine = line;
        endCol = col + static_cast<int>(text.size());
        return;
    }

    const LineEnd newEnd = neighbourEnd(line);
    BufferLine head = lines_.line(line).copy();
    BufferLine tail = head.cut(col);
    head.insert(col, text.substr(0, firstBreak));
    head.lineEnd = newEnd;
    std::vector<BufferLine> lines;
    lines.push_back(std::move(head));
    std::size_t start = firstBreak + 1;
    for (std::size_t lf = text.find(u'\n', start); lf != text.npos; lf = text.find(u'\n', start)) {
        BufferLine& made = lines.emplace_back();
        made.insert(0, text.substr(start, lf - start));
        made.lineEnd = newEnd;
        start = lf + 1;
    }
    const std::u16string_view lastSegment = text.substr(start);
    tail.insert(0, lastSegment);
    lines.push_back(std::move(tail));

    const int count = static_cast<int>(lines.size());
    parser_->onLinesReplacing(line, 1, count);
    lines_.replace(line, line + 1, std::move(lines));
    notifyModified(line, line + count);
    transaction.commit();
    endLine = line + count - 1;
    endCol = static_cast<int>(lastSegment.size());
}

void Buffer::splitLine(int line, int col) {
    Transaction transaction(*this);
    ensureLine();
    parser_->onLinesReplacing(line, 1, 2);
    const LineEnd newEnd = neighbourEnd(line);
    std::vector<BufferLine> lines(2);
    lines[0] = lines_.line(line).copy();
    lines[1] = lines[0].cut(col);
    lines[0].lineEnd = newEnd;
    lines_.replace(line, line + 1, std::move(lines));
    notifyModified(line, line + 2);
    transaction.commit();
}

void Buffer::erase(int line1, int col1, int line2, int col2) {
    if (line1 == line2 && col1 == col2)
        return;
    order(line1, col1, line2, col2);
    const auto removeFrom = [](BufferLine& l, int col, int count) {
        if (col >= 0 && col + count <= l.length())
            l.erase(col, count);
    };
    Transaction transaction(*this);
    if (line1 == line2) {
        const bool isWithin = col1 >= 0 && col2 <= getLineLength(line1);
        const int count = isWithin ? col2 - col1 : 0;
        parser_->onTextReplacing(line1, col1, count, 0);
        if (isWithin) {
            lines_.erase(line1, col1, count);
            noteChange(line1, col1);
        }
        parser_->onLineModified(line1);
    } else {
        parser_->onLinesReplacing(line1, line2 - line1 + 1, 1);
        BufferLine tail = lines_.line(line2).copy();
        removeFrom(tail, 0, col2);
        std::vector<BufferLine> joined(1);
        joined[0] = lines_.line(line1).copy();
        removeFrom(joined[0], col1, joined[0].length() - col1);
        joined[0].append(tail);
        lines_.replace(line1, line2 + 1, std::move(joined));
        notifyModified(line1, std::min(line1 + 2, getLineCount()));
    }
    transaction.commit();
}

void Buffer::replaceInLines(std::span<const LineReplacement> replacements) {
    while (!replacements.empty() && replacements.back().line >= getLineCount())
        replacements = replacements.first(replacements.size() - 1);
    if (replacements.empty())
        return;
    const int first = replacements.front().line;
    const int count = replacements.back().line - first + 1;
    Transaction transaction(*this);
    parser_->onLinesReplacing(first, count, count);
    lines_.replace(replacements);
    parser_->onLineModified(first);
    transaction.commit();
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

bool Buffer::setLineFormats(int line, int from, int to, std::span<const FormatRun> runs) {
    FormatRuns& formats = lines_.lineForFormats(line, false).formats;
    if (formats.runs().empty())
        return false;
    formats.replace(from, to, runs);
    return true;
}

/// Codes that the parser writes may be dropped, because it can write them again; those of others may not.
BufferLine& Buffer::lineToFormat(int line) {
    BufferLine& l = lines_.lineForFormats(line, !parsing_);
    if (l.formatsDropped) {
        l.formatsDropped = false;
        if (!parsing_)
            writeFormatsAgain(line);
    }
    if (!parsing_)
        parser_->onCodesWritten(line);
    return l;
}

void Buffer::writeFormatsAgain(int line) {
    const Parsing parsing(*this);
    try {
        parser_->formatAgain(line);
    } catch (...) {
        lines_.lineForFormats(line, false).formatsDropped = true; // half of them are no codes
        throw;
    }
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
