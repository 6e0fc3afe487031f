// Colours read in any order, with edits between, equal those of a text coloured from the top.

#include "FuzzTarget.h"
#include "buffer/Buffer.h"
#include "parsers/XmlLangParser.h"
#include "support.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace tavrin;
using fuzz::Choices;
using fuzz::require;

namespace {

constexpr std::u16string_view pieces[] = {
    u"<",    u">",      u"</a>",         u"<a b=\"c\">", u"<!--", u"-->", u"<![CDATA[", u"]]>", u"\"",
    u"'",    u"\n",     u"\t",           u"x",           u" ",    u"=",   u"<?xml ",    u"?>",  u"/",
    u"&lt;", u"\u00e9", u"\xd83d\xde00", u"- -"};

struct Text {
    Text() {
        buffer.setParser(&parser);
        parser.setBuffer(&buffer);
    }
    Buffer buffer;
    XmlLangParser parser;
};

void compareWithFresh(Buffer& edited) {
    Text fresh;
    const std::vector<std::u16string> lines = test::linesOf(edited);
    const auto lengthOf = [&](int line) {
        return fresh.buffer.getLineCount() > 0 ? fresh.buffer.getLineLength(line) : 0;
    };
    for (int line = 0; line < static_cast<int>(lines.size()); ++line) {
        if (line > 0)
            fresh.buffer.splitLine(line - 1, lengthOf(line - 1));
        for (const char16_t unit : lines[line]) // one by one: a line may hold a line feed
            fresh.buffer.insert(line, lengthOf(line), unit);
    }
    if (fresh.buffer.getLineCount() != edited.getLineCount())
        return; // one empty line, or none
    for (int i = 0; i < edited.getLineCount(); ++i)
        for (int c = 0; c < edited.getLineLength(i); ++c)
            require(edited.getCharFormat(i, c) == fresh.buffer.getCharFormat(i, c),
                    "lazy colours equal fresh ones");
}

void step(Buffer& buffer, Choices& choices) {
    const int lines = buffer.getLineCount();
    const int line = lines > 0 ? choices.below(lines) : 0;
    const int col = lines > 0 ? choices.below(buffer.getLineLength(line) + 1) : 0;
    int endLine = 0;
    int endCol = 0;
    switch (choices.below(6)) {
    case 0:
    case 1:
        buffer.insertText(line, col, pieces[choices.below(static_cast<int>(std::size(pieces)))], endLine,
                          endCol);
        break;
    case 2:
        if (lines > 0)
            buffer.splitLine(line, col);
        break;
    case 3:
        if (lines > 0) {
            const int last = std::min(lines - 1, line + choices.below(5));
            buffer.erase(line, col, last, choices.below(buffer.getLineLength(last) + 1));
        }
        break;
    case 4:
        if (lines > 0 && col < buffer.getLineLength(line))
            require(buffer.getCharFormat(line, col) <= 10, "a format code is one of those there are");
        break;
    default:
        buffer.insert(line, col, static_cast<char16_t>(choices.byte() + 256 * (choices.byte() & 1)));
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Choices choices(data, std::min<std::size_t>(size, 4096));
    Text text;
    while (!choices.atEnd())
        step(text.buffer, choices);
    text.buffer.checkInvariants();
    compareWithFresh(text.buffer);
    return 0;
}
