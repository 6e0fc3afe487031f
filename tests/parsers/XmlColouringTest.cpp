#include "ReferenceXmlColouring.h"
#include "buffer/Buffer.h"
#include "parsers/XmlLangParser.h"
#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace tavrin {
namespace {

using test::joined;
using test::linesOf;
using test::Random;

/// A buffer with its parser; shows codes as one character each (hexadecimal).
class XmlText {
  public:
    XmlText() {
        parser->setBuffer(&buffer);
        buffer.setParser(parser.get());
    }
    explicit XmlText(std::u16string_view text) : XmlText() { load(text); }

    void load(std::u16string_view text) { buffer.loadText(text.data(), text.size()); }
    std::string codes(int line) {
        std::string out;
        for (int col = 0; col < buffer.getLineLength(line); ++col)
            out += "0123456789abcdef"[buffer.getCharFormat(line, col)];
        return out;
    }
    std::vector<int> codeList(int line) {
        std::vector<int> out;
        for (int col = 0; col < buffer.getLineLength(line); ++col)
            out.push_back(buffer.getCharFormat(line, col));
        return out;
    }

    Buffer buffer;
    SmartPtr<XmlLangParser> parser{new XmlLangParser};
};

TEST(XmlColouring, coloursEachConstruct) {
    struct Case {
        const char16_t* text;
        const char* codes; ///< lines joined by "|"
    };
    const Case cases[] = {
        {u"<xs:element name=\"a\" ref='b'/>", "a777777777708888a5550888a080aa"},
        {u"text &amp; more", "000000000000000"},
        {u"<!-- a > b -->x", "333333333333330"},
        {u"<!-->x", "333330"},
        {u"<a href=\"x>y\">z", "a708888a55555a0"},
        {u"<a title='x>y'>", "a7088888a08a80a"},
        {u"<!DOCTYPE x>", "a0888888808a"},
        {u"<![IGNORE[ <a> ]]>b", "9999999999999999990"},
        {u"<?xml version=\"1.0\"?>", "aa77708888888a55555aa"},
        {u"< a/>", "a07aa"},
        {u"</ a >", "aa070a"},
        {u"<a.b 1c>", "a708008a"},
        {u"<", "a"},
        {u"<  ", "a00"},
        // a double-quoted value stays open over the end of the line
        {u"<a x=\"1\ny=2\" z='3'\n>t", "a708a55|555508a000|a0"},
        {u"<a\n\nb=\"c\">", "a7||8a555a"},
        {u"<a x=\"1\n\" y>", "a708a55|5555"}, // a quote in column 0 does not close it
        {u"<!-- a\n\nb --> c<d", "333333||3333300a7"},
        // quotes pair from the last "<" above, also from one inside a value
        {u"<a t=\"x<y\nz\">t", "a708a5555|8555"},
    };
    for (const Case& c : cases) {
        XmlText text(c.text);
        std::string codes;
        for (int line = 0; line < text.buffer.getLineCount(); ++line)
            codes += (line ? "|" : "") + text.codes(line);
        EXPECT_EQ(codes, c.codes) << joined(text.buffer);
    }
}

TEST(XmlColouring, showsTheStateOfLinesInTheirFlags) {
    XmlText text(u"<a x=\"1\"\n   y=\"2\">text<!-- c\n-->");
    (void)text.buffer.getCharFormat(2, 0);
    EXPECT_EQ(text.buffer.getLineFlags(0), PF_BLOCKS | PF_OPEN_AT_END | 0x80);
    EXPECT_EQ(text.buffer.getLineFlags(1), PF_BLOCKS | PF_OPEN_AT_END | 0x20);
    EXPECT_EQ(text.buffer.getLineFlags(2), PF_BLOCKS | PF_FORMATS | PF_PARSED);
    text.buffer.insert(1, 0, u' ');
    EXPECT_EQ(text.buffer.getLineFlags(0), PF_BLOCKS | PF_OPEN_AT_END | 0x80) << "nothing above is stale";
    EXPECT_EQ(text.buffer.getLineFlags(1), PF_OPEN_AT_END | 0x20)
        << "the open block stays until it is parsed again";
    EXPECT_EQ(text.buffer.getLineFlags(2), 0);
}

/// Lines of bits of XML that like to be put together wrongly.
std::u16string randomXml(Random& random, int pieces) {
    static const std::u16string_view bits[] = {
        u"<",  u">",    u"\"", u"'",   u"<!--", u"-->", u"<![", u"]]>",   u"<a", u"</b", u" x=",
        u"\n", u"\n\n", u"?>", u"<?p", u"/>",   u"t",   u" ",   u"\"v\"", u"-",  u"=\"", u"\t"};
    std::u16string text;
    for (int i = 0; i < pieces; ++i)
        text += random.pick(bits);
    return text;
}

// Lazy colouring in any order, with edits between the readings, equals colouring each line the long way.
TEST(XmlColouring, equalsTheReferenceInAnyReadingOrder) {
    const char* longer = std::getenv("TAVRIN_LONG_TESTS");
    const unsigned seeds = longer ? static_cast<unsigned>(std::atoi(longer)) : 150;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        XmlText text(randomXml(random, 20 + random.below(150)));
        for (int step = 0; step < 40; ++step) {
            const int lines = text.buffer.getLineCount();
            if (lines > 0) {
                const int line = random.below(lines);
                test::ReferenceXmlColouring reference(linesOf(text.buffer));
                ASSERT_EQ(text.codeList(line), reference.codesOf(line))
                    << "line " << line << " step " << step << " of\n"
                    << joined(text.buffer);
                if (text.buffer.getLineLength(line) > 0) {
                    const auto expected = reference.flagsOf(line);
                    const int flags = text.buffer.getLineFlags(line);
                    ASSERT_EQ(flags & 0xE0, expected.openBlock);
                    ASSERT_EQ((flags & PF_OPEN_AT_END) != 0, expected.openAtEnd);
                }
            }
            const int line = lines > 0 ? random.below(lines) : 0;
            const int col = lines > 0 ? random.below(text.buffer.getLineLength(line) + 1) : 0;
            int endLine = 0;
            int endCol = 0;
            switch (random.below(5)) {
            case 0:
                text.buffer.insert(line, col, random.pick(std::u16string_view(u"<>\"'-!x")));
                break;
            case 1:
                text.buffer.insertText(line, col, randomXml(random, random.below(8)), endLine, endCol);
                break;
            case 2:
                text.buffer.splitLine(line, col);
                break;
            case 3:
                if (lines > 0) {
                    const int last = std::min(lines - 1, line + random.below(4));
                    text.buffer.erase(line, col, last, random.below(text.buffer.getLineLength(last) + 1));
                }
                break;
            default:
                break; // read again
            }
        }
        text.buffer.checkInvariants();
    }
}

/// What documents are made of, and now and then a bit that turns up in the wrong place.
std::u16string tidyXml(Random& random, int pieces) {
    static const std::u16string_view bits[] = {u"<a>",
                                               u"</a>",
                                               u"<name id=\"1\" kind='x'>",
                                               u"text",
                                               u"\n",
                                               u"<a\n b=\"c\">",
                                               u"<e x=''/>",
                                               u"<!-- \"a\" 'b' <c> -->",
                                               u"<!--\n\n-- >-->",
                                               u" don't ",
                                               u"<![CDATA[>'\"]]>",
                                               u"<!DOCTYPE a>",
                                               u"<?p q?>",
                                               u"a longer text, to move on",
                                               u"<b t='\n'>",
                                               u"&#x21;"};
    std::u16string text;
    for (int i = 0; i < pieces; ++i)
        text += random.oneIn(40) ? randomXml(random, 1) : std::u16string(random.pick(bits));
    return text;
}

/// Reads every line as text, and asks for its blocks one by one, as it does for any language.
class LineByLine : public XmlLangParser {
    const LineScan* lineScan() const override { return nullptr; }
};

// Of a long line only what an edit can have changed is coloured anew.
TEST(XmlColouring, ofALongLineEqualsColouringItWhole) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const auto bits = [&](int count) {
            std::u16string text = randomXml(random, count);
            std::ranges::replace(text, u'\n', u' ');
            return text;
        };
        const auto balanced = [&] {
            return random.oneIn(4) ? std::u16string(u"<b c='\"'>") : u"<a x=\"1\"><!-- < --></a>";
        };
        XmlText text(u"<first>\n\n<last/>");
        int line = 0;
        int col = 0;
        std::u16string pasted;
        while (pasted.size() < 2 * BufferLine::longLine)
            pasted += seed % 4 == 0 ? bits(10) : balanced();
        text.buffer.insertText(1, 0, pasted, line, col);
        for (int step = 0; step < 40; ++step) {
            for (int i = random.below(3); i >= 0; --i) {
                const int at = random.below(text.buffer.getLineLength(1));
                const int most = text.buffer.getLineLength(1) - at;
                switch (random.below(12)) {
                case 0:
                    text.buffer.insertText(0, 0, random.oneIn(2) ? u"<!--" : u"-->", line, col);
                    break;
                case 1:
                    text.buffer.formatRange(1, at, std::min(most, 5), 7); // goes with the next edit
                    break;
                case 2:
                    text.buffer.splitLine(1, text.buffer.getLineLength(1));
                    break;
                case 3: {
                    const Buffer::Transaction takenBack(text.buffer);
                    text.buffer.erase(1, at, 1, at + std::min(most, 3));
                    break;
                }
                case 4:
                case 5:
                case 6:
                    text.buffer.erase(1, at, 1, at + std::min(most, random.below(random.oneIn(5) ? 900 : 4)));
                    break;
                case 7:
                    text.buffer.insertText(1, at, balanced(), line, col);
                    break;
                default:
                    text.buffer.insertText(1, at, bits(random.below(3)), line, col);
                    break;
                }
            }
            text.buffer.insert(1, random.below(text.buffer.getLineLength(1)), u'x');
            if (random.oneIn(3))
                (void)text.codes(2); // asks for the state at the end first
            XmlText whole;
            whole.buffer.insertText(0, 0, text.buffer.getLineText(0), line, col);
            whole.buffer.splitLine(0, col);
            whole.buffer.insertText(1, 0, text.buffer.getLineText(1), line, col);
            whole.buffer.splitLine(1, col);
            whole.buffer.insertText(2, 0, text.buffer.getLineText(2), line, col);
            ASSERT_TRUE(std::ranges::equal(text.buffer.getLineFormats(1), whole.buffer.getLineFormats(1)))
                << "step " << step;
            ASSERT_EQ(text.codes(2), whole.codes(2)) << "step " << step;
            ASSERT_EQ(text.buffer.getLineFlags(1), whole.buffer.getLineFlags(1)) << "step " << step;
        }
    }
}

// What is found out from the bytes of unread lines is what reading them finds; codes that went with pages not
// read for long come again.
TEST(XmlColouring, equalsItselfOverUnreadBytes) {
    for (unsigned seed = 1; seed <= 80; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const bool isCut = seed % 5 == 0; // nearly all lines are
        std::string bytes = "<r>\n";
        while (bytes.size() < (isCut ? 400'000 : 30'000)) {
            const std::u16string more = seed % 4 < 2 ? tidyXml(random, 60) : randomXml(random, 400);
            for (const char16_t c : more) {
                if (c == u'\n' && isCut && !random.oneIn(500))
                    bytes += ' ';
                else if (c == u'\n')
                    bytes += random.pick(std::vector<std::string>{"\n", "\n", "\r\n", "\r"});
                else
                    bytes += static_cast<char>(c);
            }
            if (seed % 2 && !isCut && random.oneIn(2))
                bytes += "\xC3\xA9";
            else if (seed % 4 >= 2 || random.oneIn(4))
                bytes += "--> ]]> \"> '>\n";
            if (random.oneIn(30)) // markup lies where the line is cut
                bytes.append(static_cast<std::size_t>(480 + random.below(150)), '-');
        }
        const auto load = [&](Buffer& buffer, XmlLangParser& parser) {
            parser.setBuffer(&buffer);
            buffer.setParser(&parser);
            buffer.loadBytes(test::blockOf(bytes));
        };
        XmlText cold;
        load(cold.buffer, *cold.parser);
        Buffer read;
        SmartPtr<LineByLine> parser(new LineByLine);
        load(read, *parser);
        const int count = read.getLineCount();
        const auto replaceInSomeLines = [&] {
            static constexpr std::u16string_view texts[] = {u"", u"<!--", u"-->", u"\"", u"<a b='", u">"};
            std::vector<LineReplacement> changes;
            for (int l = random.below(9); l < count; l += 1 + random.below(30)) {
                const int length = read.getLineLength(l);
                const int col = random.below(length + 1);
                changes.push_back(
                    {l, col, random.below(random.oneIn(9) ? length - col + 1 : 1), random.pick(texts)});
            }
            cold.buffer.replaceInLines(changes);
            read.replaceInLines(changes);
        };
        for (int step = 0; step < 12; ++step) {
            if (step < 3 || (isCut && step < 6))
                replaceInSomeLines();
            const int line = random.below(count);
            (void)cold.buffer.getLineFormats(line);
            (void)read.getLineFormats(line);
            for (int l = 0; l < count; ++l) {
                ASSERT_EQ(cold.buffer.getLineFlags(l), read.getLineFlags(l)) << l;
                ASSERT_EQ(cold.buffer.getLineState(l), read.getLineState(l)) << l;
            }
            const int edited = random.below(count);
            const char16_t c = random.pick(std::u16string_view(u"<>\"'-x"));
            if (random.oneIn(2) && !(isCut && step < 6)) {
                cold.buffer.insert(edited, 0, c);
                read.insert(edited, 0, c);
            }
        }
        for (int round = 0; round < 2; ++round) // more lines than stay in memory
            for (int l = 0; l < count; ++l) {
                const auto codes = cold.buffer.getLineFormats(l);
                const std::vector<FormatRun> kept(codes.begin(), codes.end());
                const auto expected = read.getLineFormats(l);
                ASSERT_TRUE(std::ranges::equal(kept, expected)) << l;
            }
        cold.buffer.checkInvariants();
    }
}

// An edit whose effect on the block state ends on its line leaves the flags below as re-reading every line
// would.
TEST(XmlColouring, takesOverLinesBelowAnEditOnlyAsFarAsAsked) {
    std::u16string many;
    for (int i = 0; i < 1000; ++i)
        many += u"<a>text</a>\n";
    XmlText text(many);
    (void)text.buffer.getCharFormat(999, 0);
    text.buffer.insert(10, 3, u'x');
    (void)text.buffer.getCharFormat(500, 0);
    EXPECT_EQ(text.buffer.getLineFlags(9), PF_BLOCKS);
    EXPECT_EQ(text.buffer.getLineFlags(10), PF_BLOCKS);
    EXPECT_EQ(text.buffer.getLineFlags(499), PF_BLOCKS);
    EXPECT_EQ(text.buffer.getLineFlags(500), PF_BLOCKS | PF_FORMATS | PF_PARSED);
    EXPECT_EQ(text.buffer.getLineFlags(501), 0);
    EXPECT_EQ(text.buffer.getLineFlags(999), 0);
    int line = 0;
    int col = 0;
    text.buffer.insertText(10, 3, u"<!--", line, col);
    EXPECT_EQ(text.codes(999), "33333333333");
    text.buffer.erase(10, 3, 10, 7);
    EXPECT_EQ(text.codes(999), "a7a0000aa7a");
}

TEST(XmlColouring, forgetsTheOldTextAfterALoadAndAReset) {
    XmlText text(u"<!--\na\nb");
    EXPECT_EQ(text.codes(2), "3");
    text.load(u"a\nb\nc");
    EXPECT_EQ(text.codes(2), "0");
    text.load(u"<!--\na\nb");
    EXPECT_EQ(text.codes(2), "3");
    text.buffer.reset();
    int line = 0;
    int col = 0;
    text.buffer.insertText(0, 0, u"a\nb\nc", line, col);
    EXPECT_EQ(text.codes(2), "0");
}

TEST(XmlDeclaration, setsTheEncodingThatItNames) {
    struct Case {
        const char16_t* text;
        int encoding;
    };
    for (const Case& c :
         {Case{u"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 28591},
          Case{u"<?xml encoding = 'utf-16'?>", 1}, Case{u"<?xml encoding='iso-8859-2'?>", 28592},
          Case{u"<?xml encoding='UTF-8'?>", 65001}, Case{u"<?xml encoding='utf8'?>", 1252},
          Case{u"<?xml version='1.0'?>", 1252}, Case{u"<a/>", 1252},
          Case{u"<?xml-stylesheet href='a'?><?xml encoding='utf-8'?>", 1252},
          Case{u"<?pi a?>\n<?XML\nencoding\n=\n'utf-8'\n?>", 65001},
          Case{u"?><?xml encoding='utf-8'?>", 65001}, Case{u"<?p?><?q?>x", 1252},
          Case{u"<?xml encoding='utf-8?>", 1252}}) {
        XmlText text;
        text.buffer.setEncoding(1252);
        text.load(c.text);
        EXPECT_EQ(text.buffer.getEncoding(), c.encoding) << joined(text.buffer);
    }
    XmlText text(u"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>");
    int startLine = 9;
    int startCol = 9;
    int endLine = 9;
    int endCol = 9;
    ASSERT_TRUE(text.parser->findProcessingInstruction(u"xml", startLine, startCol, endLine, endCol));
    EXPECT_EQ((std::vector{startLine, startCol, endLine, endCol}), (std::vector{0, 0, 0, 43}));
    EXPECT_EQ(text.parser->getProcessingInstructionField(u"xml", u"encoding"), u"ISO-8859-1");
}

/// Opens what queries build on.
class TagQueries : public XmlLangParser {
  public:
    using XmlLangParser::inNonTagableBlock;
};

TEST(XmlTagQueries, noTagBeginsInACommentOrSection) {
    Buffer buffer;
    SmartPtr<TagQueries> parser(new TagQueries);
    parser->setBuffer(&buffer);
    buffer.setParser(parser.get());
    const std::u16string_view text = u"<a><!-- <\n\n--><![ \nx";
    buffer.loadText(text.data(), text.size());
    struct Case {
        int line, col;
        bool blocked;
    };
    for (const Case& c :
         {Case{0, 0, true}, Case{0, 1, false}, Case{0, 2, false}, Case{0, 3, true}, Case{0, 9, true},
          Case{1, 0, true}, Case{2, 0, true}, Case{2, 5, true}, Case{3, 1, true}})
        EXPECT_EQ(parser->inNonTagableBlock(c.line, c.col), c.blocked) << c.line << "," << c.col;
}

} // namespace
} // namespace tavrin
