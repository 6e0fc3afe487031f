#include "parsers/XmlLangParser.h"

#include "buffer/Buffer.h"
#include "parsers/XmlBlocks.h"
#include "platform/core/CharacterClass.h"
#include "platform/core/TextScan.h"

#include <algorithm>
#include <utility>

namespace tavrin {

using namespace xml;

namespace {

/// A double-quoted value within the part [start, end) of a tag on one line: [first, after), which leaves out
/// the text that no value covers. None left: first is -1.
struct QuotedValue {
    int first;
    int after;
    bool open; ///< it goes on below
};

/// The next value at or after `start`, or the one that goes on from the line above (`inQuote`; `start` is
/// then 0). A value that goes on from above is not closed by a quote in column 0. One that is not closed on
/// the line leaves the tag's ">" out, unless that ends the line.
QuotedValue nextValue(std::u16string_view text, int start, int end, bool inQuote) {
    const std::size_t quote = inQuote ? 0 : scan::findUnit(text, u'"', static_cast<std::size_t>(start));
    if (quote == text.npos || static_cast<int>(quote) >= end)
        return {-1, start, inQuote};
    const std::size_t closing = scan::findUnit(text, u'"', quote + 1);
    const int first = static_cast<int>(quote);
    if (closing != text.npos && static_cast<int>(closing) <= end)
        return {first, static_cast<int>(closing) + 1, false};
    return {first, end == static_cast<int>(text.size()) ? end : end - 1, true};
}

bool isNameCharacter(char16_t c) {
    return isLetterOrDigit(c) || c == u':' || c == u'-' || c == u'_';
}

} // namespace

XmlLangParser::XmlLangParser() {
    blocks = {
        {commentBlock, FORMAT_COMMENT, u"<!--", u"-->", 0, 0},
        {sectionBlock, FORMAT_CDATA, u"<![", u"]]>", 0, 0},
        {tagBlock, FORMAT_PUNCTUATION, u"<", u">", 0, 0},
    };
    blockTrigger = u'<';
    whitespace = u" \t";
}

// Blocks

/// The ">" of a tag counts outside quotes of either kind only. A line that starts inside a tag starts outside
/// any quote.
int XmlLangParser::findBlockEnd(const Block& block, int line, int start) const {
    if (block.id != tagBlock)
        return Parser::findBlockEnd(block, line, start);
    const std::u16string_view text = textOf(line);
    char16_t quote = 0;
    for (std::size_t i = static_cast<std::size_t>(start); i < text.size(); ++i) {
        const char16_t c = text[i];
        if (quote) {
            if (c == quote)
                quote = 0;
        } else if (c == u'"' || c == u'\'') {
            quote = c;
        } else if (c == u'>') {
            return static_cast<int>(i);
        }
    }
    return -1;
}

/// Double quotes are paired from the last "<" above, wherever in the tag that stands.
std::uint8_t XmlLangParser::openBlockState(const Block& open, int line, std::uint8_t before) const {
    if (open.id != tagBlock)
        return 0;
    const std::u16string_view text = textOf(line);
    const int length = static_cast<int>(text.size());
    const std::size_t lastStart = text.rfind(u'<');
    int at = lastStart == text.npos ? 0 : static_cast<int>(lastStart);
    bool inQuote = lastStart == text.npos && (before & quoteOpen);
    for (QuotedValue value = nextValue(text, at, length, inQuote); value.first >= 0;
         value = nextValue(text, at, length, inQuote)) {
        inQuote = value.open;
        at = value.after;
        if (inQuote)
            break;
    }
    return inQuote ? quoteOpen : 0;
}

// Colouring

void XmlLangParser::formatContentRange(int, int, int) {
    // Text outside tags keeps code 0.
}

void XmlLangParser::formatBlockRange(int line, int start, int count, const Block& block) {
    if (block.id != tagBlock) {
        setFormat(line, start, count, block.format);
        return;
    }
    const bool fromAbove = start == 0 && getEndOpenBlock(line - 1);
    const bool inQuote = fromAbove && (buffer().getLineState(line - 1) & quoteOpen);
    formatTag(line, start, start + count, inQuote);
}

void XmlLangParser::formatTag(int line, int start, int end, bool inQuote) {
    const std::u16string_view text = textOf(line);
    int at = start;
    for (QuotedValue value = nextValue(text, at, end, inQuote); value.first >= 0;
         value = nextValue(text, at, end, inQuote)) {
        formatBlockContentRange(line, at, value.first - at);
        setFormat(line, value.first, value.after - value.first, FORMAT_STRING);
        at = value.after;
        inQuote = value.open;
        if (inQuote)
            break;
    }
    formatBlockContentRange(line, at, end - at);
}

/// Colours "<", "</" or "<?" at `at` and the name behind it. Returns where to go on: `end` when only blanks
/// follow.
int XmlLangParser::formatTagName(int line, std::u16string_view text, int at, int end) {
    const auto skipSpace = [&] {
        while (at < end && isSpace(text[static_cast<std::size_t>(at)]))
            ++at;
        return at < end;
    };
    setFormat(line, at++, 1, FORMAT_PUNCTUATION);
    if (!skipSpace())
        return end;
    if (const char16_t c = text[static_cast<std::size_t>(at)]; c == u'/' || c == u'?') {
        setFormat(line, at++, 1, FORMAT_PUNCTUATION);
        if (!skipSpace())
            return end;
    }
    const int name = at;
    if (isLetter(text[static_cast<std::size_t>(at)]))
        while (at < end && isNameCharacter(text[static_cast<std::size_t>(at)]))
            ++at;
    setFormat(line, name, at - name, FORMAT_XML_TAG);
    return at;
}

void XmlLangParser::formatBlockContentRange(int line, int start, int count) {
    const std::u16string_view text = textOf(line);
    const int end = start + count;
    for (int i = start; i < end; ++i) {
        if (text[static_cast<std::size_t>(i)] == u'<') {
            i = formatTagName(line, text, i, end);
            if (i >= end)
                return;
        }
        const char16_t c = text[static_cast<std::size_t>(i)];
        if (c == u'>' || c == u'/' || c == u'=' || c == u'?') {
            setFormat(line, i, 1, FORMAT_PUNCTUATION);
        } else if (c == u'"') {
            const std::size_t closing = scan::findUnit(text, u'"', static_cast<std::size_t>(i) + 1);
            const int last = closing == text.npos || static_cast<int>(closing) >= end
                                 ? end - 1
                                 : static_cast<int>(closing);
            setFormat(line, i, last - i + 1, FORMAT_STRING);
            i = last;
        } else if (isLetter(c)) {
            int after = i + 1;
            while (after < end && (isNameCharacter(text[static_cast<std::size_t>(after)]) ||
                                   text[static_cast<std::size_t>(after)] == u'.'))
                ++after;
            setFormat(line, i, after - i, FORMAT_XML_ATTRIBUTE);
            i = after - 1;
        }
    }
}

bool XmlLangParser::inNonTagableBlock(int line, int col) {
    if (line >= buffer().getLineCount())
        return true;
    if (col == buffer().getLineLength(line))
        --col;
    while (col <= 0) {
        if (--line < 0)
            return true;
        col = buffer().getLineLength(line) - 1;
    }
    const int format = buffer().getCharFormat(line, col);
    return format == FORMAT_COMMENT || format == FORMAT_CDATA;
}

// The XML declaration

void XmlLangParser::onBufferLoaded() {
    Parser::onBufferLoaded();
    static constexpr std::pair<std::u16string_view, int> named[] = {
        {u"utf-8", ENCODING_UTF8},
        {u"utf-16", ENCODING_UTF16},
        {u"iso-8859-1", ENCODING_LATIN1},
        {u"iso-8859-2", ENCODING_LATIN2},
    };
    const std::u16string value = toLowerCase(getProcessingInstructionField(u"xml", u"encoding"));
    for (const auto& [name, encoding] : named)
        if (value == name)
            buffer().setEncoding(encoding);
}

bool XmlLangParser::findProcessingInstruction(std::u16string_view name, int& startLine, int& startCol,
                                              int& endLine, int& endCol) const {
    const Buffer& text = buffer();
    const int last = text.getLineCount() - 1;
    int searchedFrom = 0; // no "<?" ends above this line, apart from what was found there already
    startLine = startCol = 0;
    endLine = endCol = -1;
    while (text.findInLines(startLine, startCol, u"?>", FIND_DOWN, 0, last, endLine, endCol)) {
        endCol += 2;
        if (text.findInLines(endLine, endCol, u"<?", FIND_UP, searchedFrom, last, startLine, startCol)) {
            int nameLine = 0;
            int nameCol = 0;
            if (text.findInLines(startLine, startCol, name, FIND_DOWN | FIND_WHOLE_WORD, 0, endLine, nameLine,
                                 nameCol) &&
                std::pair(nameLine, nameCol) < std::pair(endLine, endCol))
                return true;
        } else {
            searchedFrom = endLine;
        }
        startLine = endLine;
        startCol = endCol;
    }
    return false;
}

std::u16string XmlLangParser::getProcessingInstructionField(std::u16string_view name,
                                                            std::u16string_view field) const {
    int startLine = 0;
    int startCol = 0;
    int endLine = 0;
    int endCol = 0;
    if (!findProcessingInstruction(name, startLine, startCol, endLine, endCol))
        return {};
    std::u16string text;
    buffer().getText(startLine, startCol, endLine, endCol, text);
    const std::size_t pos = text.find(field);
    return pos == text.npos ? std::u16string() : getFieldValue(text, pos);
}

std::u16string XmlLangParser::getFieldValue(std::u16string_view text, std::size_t pos) {
    const auto skipSpace = [&] {
        while (pos < text.size() && isSpace(text[pos]))
            ++pos;
    };
    while (pos < text.size() && !isSpace(text[pos]) && text[pos] != u'=')
        ++pos;
    skipSpace();
    if (pos == text.size() || text[pos] != u'=')
        return {};
    ++pos;
    skipSpace();
    if (pos == text.size() || (text[pos] != u'"' && text[pos] != u'\''))
        return {};
    const char16_t quote = text[pos++];
    const std::size_t end = text.find(quote, pos);
    return std::u16string(text.substr(pos, end == text.npos ? text.npos : end - pos));
}

} // namespace tavrin
