#include "buffer/Buffer.h"
#include "parsers/XmlLangParser.h"
#include "platform/core/Utf8.h"
#include "platform/core/XmlNamespaces.h"
#include "support.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tavrin {
namespace {

using test::Random;

std::string narrow(std::u16string_view text) {
    return {text.begin(), text.end()};
}

/// Answers findParentTag by walking every tag with the buffer's own search, a name look-up at each.
class LiteralXmlParser : public XmlLangParser {
  public:
    std::string parent(int line, int col) {
        if (inNonTagableBlock(line, col))
            return "none";
        std::vector<std::u16string> stack;
        int l = line;
        int c = col;
        if (!before(u">", l, c))
            return "top";
        while (true) {
            const std::u16string text(buffer().getLineText(l));
            const auto endsWith = [&](std::u16string_view end) {
                return std::u16string_view(text).substr(0, static_cast<std::size_t>(c)).ends_with(end);
            };
            int nextLine = l;
            int nextCol = c;
            if (endsWith(u"/") || endsWith(u"?")) {
                // skipped
            } else if (endsWith(u"--") || endsWith(u"]]")) {
                if (!before(endsWith(u"--") ? u"<!--" : u"<![", nextLine, nextCol))
                    return "top";
            } else {
                int tagLine = l;
                int tagCol = c;
                if (!before(u"<", tagLine, tagCol))
                    return "top";
                std::u16string local;
                std::u16string qualified;
                std::u16string raw;
                std::u16string uri;
                if (!getTagName(tagLine, tagCol, l, c, local, qualified, raw, uri))
                    return "top";
                if (raw.starts_with(u'/')) {
                    stack.push_back(raw.substr(1));
                } else if (stack.empty()) {
                    return narrow(qualified + u"{" + uri + u"}") + std::to_string(tagLine) + "," +
                           std::to_string(tagCol);
                } else if (raw == stack.back()) {
                    stack.pop_back();
                }
            }
            l = nextLine;
            c = nextCol;
            if (!before(u">", l, c))
                return "top";
        }
    }

    std::string fastParent(int line, int col) {
        std::u16string local;
        std::u16string qualified;
        std::u16string uri;
        bool topLevel = false;
        int tagLine = -1;
        int tagCol = -1;
        if (!findParentTag(line, col, local, qualified, uri, topLevel, tagLine, tagCol))
            return "none";
        if (topLevel)
            return "top";
        return narrow(qualified + u"{" + uri + u"}") + std::to_string(tagLine) + "," + std::to_string(tagCol);
    }

    using XmlLangParser::findOpenTag;

  private:
    bool before(std::u16string_view what, int& line, int& col) {
        return buffer().find(line, col, what, FIND_UP, line, col);
    }
};

class XmlStructure : public testing::Test {
  protected:
    XmlStructure() {
        parser->setBuffer(&buffer);
        buffer.setParser(parser.get());
    }
    void load(std::u16string_view text) { buffer.loadText(text.data(), text.size()); }
    void loadAsBytes(std::u16string_view text, std::string_view lineEnd) {
        std::string bytes;
        EncodeReport report;
        for (const char16_t c : text)
            c == u'\n' ? void(bytes += lineEnd) : encodeUtf8({&c, 1}, bytes, 0, report);
        buffer.loadBytes(test::blockOf(bytes));
    }
    std::string openTag(int line, int col) {
        std::u16string local;
        std::u16string qualified;
        std::u16string raw;
        std::u16string uri;
        if (!parser->findOpenTag(line, col, local, qualified, raw, uri))
            return "none";
        return narrow(local + u" " + qualified + u" " + raw + u" " + uri);
    }

    /// Compares searches backwards with the buffer's own.
    void checkSearches(TextPos from) {
        const auto plain = [&](std::u16string_view what, int flags) -> std::optional<TextPos> {
            TextPos found;
            if (buffer.find(from.line, from.col, what, FIND_UP | flags, found.line, found.col))
                return found;
            return {};
        };
        const TagWalk walk(buffer);
        for (const TagMark mark : {TagMark::Less, TagMark::Greater, TagMark::Comment, TagMark::Section})
            EXPECT_EQ(walk.findBefore(mark, from), plain(textOf(mark), FIND_MATCH_CASE))
                << narrow(textOf(mark)) << " before " << from.line << "," << from.col;
        for (const char16_t* suffix : {u":p", u":none"})
            EXPECT_EQ(walk.findDeclarationBefore(suffix, from),
                      plain(u"xmlns" + std::u16string(suffix) + u"=", 0))
                << narrow(suffix) << " before " << from.line << "," << from.col;
    }

    Buffer buffer;
    SmartPtr<LiteralXmlParser> parser{new LiteralXmlParser};
};

TEST_F(XmlStructure, findsTheTagAroundAPosition) {
    const std::string xslt = narrow(xsltNamespace);
    const std::string fo = narrow(xslFoNamespace);
    struct Case {
        const char16_t* text;
        int line, col;
        std::string tag;
    };
    for (const Case& c : {
             Case{u"<!-- <a -->", 0, 7, "none"},
             Case{u"<a b=\"1\">", 0, 9, "none"},
             Case{u"<a b=\"x>y", 0, 9, "none"}, // the ">" in the value counts
             Case{u"<a b=\"1\" ", 0, 9, "a a a "},
             Case{u"<r xmlns:x=\"u\">\n<x:y", 1, 4, "y x:y x:y u"},
             Case{u"<r xmlns:x='u'>\n<x:y", 1, 4, "y x:y x:y u"},
             Case{u"<r XMLNS:X='u'>\n<x:y", 1, 4, "y x:y x:y u"},
             Case{u"<r xmlns:x = 'u'>\n<x:y", 1, 4, "y x:y x:y "}, // blanks around "=" hide it
             Case{u"<r xmlns='d'>\n<y ", 1, 3, "y y y d"},
             Case{u"<fo:block ", 0, 10, "block fo:block fo:block " + fo},
             Case{u"<xsl:if ", 0, 8, "if xsl:if xsl:if " + xslt},
             Case{u"</xsl:template", 0, 14, "template xsl:template /xsl:template " + xslt},
             Case{u"<XSL:if ", 0, 8, "if XSL:if XSL:if "},
             Case{u"<br/", 0, 4, "br/ br/ br/ "},
             Case{u"<:a ", 0, 4, ":a :a :a "},
             Case{u"< a", 0, 3, "none"},
             Case{u"<", 0, 1, "none"},
             Case{u"<?xml ", 0, 6, "none"},
             Case{u"<a\nb", 1, 1, "a a a "},
             Case{u"x", 0, 1, "none"},
         }) {
        load(c.text);
        EXPECT_EQ(openTag(c.line, c.col), c.tag) << test::joined(buffer);
    }
}

TEST_F(XmlStructure, findsTheElementAround) {
    struct Case {
        const char16_t* text;
        int line, col;
        std::string parent;
    };
    for (const Case& c : {
             Case{u"<a>\n<b></b>\n<c x=\"1\"/>text", 2, 14, "a{}0,0"},
             Case{u"<a><b/></a>", 0, 11, "top"},
             Case{u"plain\n<", 1, 1, "top"},
             Case{u"<", 0, 1, "none"},
             Case{u"<a><!-- <b> --><", 0, 16, "a{}0,0"},
             Case{u"<a><![CDATA[ <b> ]]><", 0, 21, "a{}0,0"},
             Case{u"<a><!-- x", 0, 9, "none"},
             Case{u"<!DOCTYPE a>\n<", 1, 1, "top"},
             Case{u"<?xml version='1.0'?>\n<", 1, 1, "top"},
             Case{u"<a><b></c></b><", 0, 15, "top"}, // "</c>" waits for a "<c>" that never comes
             Case{u"<p:a xmlns:p='u'>\n<", 1, 1, "p:a{u}0,0"},
             Case{u"<a\nx='1'\n>\n<", 3, 1, "a{}0,0"},
         }) {
        load(c.text);
        EXPECT_EQ(parser->fastParent(c.line, c.col), c.parent) << test::joined(buffer);
        EXPECT_EQ(parser->parent(c.line, c.col), c.parent) << test::joined(buffer);
    }
}

TEST_F(XmlStructure, findsTheAttributeBeingTyped) {
    struct Case {
        const char16_t* text;
        int line, col;
        bool found;
        const char16_t* name;
        const char16_t* value;
        bool open, close;
        int nameStart, nameEnd, valueStart, valueEnd;
    };
    for (const Case& c : {
             Case{u"<a href=\"ab", 0, 11, true, u"href", u"ab", true, false, 3, 7, 9, 11},
             Case{u"<a href=\"ab\" c", 0, 10, true, u"href", u"ab", true, true, 3, 7, 9, 11},
             Case{u"<a ", 0, 3, true, u"", u"", false, false, 3, 3, 3, 3},
             Case{u"<a hr", 0, 5, true, u"hr", u"", false, false, 3, 5, 5, 5},
             Case{u"<a href=", 0, 8, true, u"href", u"", false, false, 3, 7, 7, 7},
             Case{u"<a href=\"", 0, 9, true, u"href", u"", true, false, 3, 7, 9, 9},
             Case{u"<a href='x", 0, 10, false, u"", u"", false, false, -1, -1, -1, -1},
             Case{u"<a\nhref = \"x\"", 1, 4, true, u"href", u"x", true, true, 0, 4, 8, 9},
             Case{u"</a ", 0, 4, false, u"", u"", false, false, -1, -1, -1, -1},
             Case{u"<a", 0, 2, false, u"", u"", false, false, -1, -1, -1, -1},
             Case{u"<a>x", 0, 4, false, u"", u"", false, false, -1, -1, -1, -1},
         }) {
        load(c.text);
        XmlAttrEditInfo info;
        ASSERT_EQ(parser->findAttribute(c.line, c.col, info), c.found) << test::joined(buffer);
        EXPECT_EQ(info.name, c.name) << test::joined(buffer);
        EXPECT_EQ(info.value, c.value) << test::joined(buffer);
        EXPECT_EQ((std::vector{int{info.hasOpenQuote}, int{info.hasCloseQuote}, info.nameStart, info.nameEnd,
                               info.valueStart, info.valueEnd}),
                  (std::vector{int{c.open}, int{c.close}, c.nameStart, c.nameEnd, c.valueStart, c.valueEnd}))
            << test::joined(buffer);
    }
}

TEST_F(XmlStructure, tellsWhatThePositionIsOn) {
    load(u"<a b=\"cd\" e>f<");
    std::string kinds;
    for (int col = 0; col <= 14; ++col) {
        kinds += parser->isTagStart(0, col) ? 's' : '.';
        kinds += parser->isTag(0, col) ? 't' : '.';
        kinds += parser->isAttribute(0, col) ? 'a' : '.';
        kinds += parser->isAttributeValue(0, col) ? 'v' : '.';
        kinds += ' ';
    }
    // A name of one character is not seen from its end: the query looks two characters back.
    EXPECT_EQ(kinds, ".... s... .t.. .tav .t.. .t.. ...v ...v ...v .... .tav .t.. .... .... s... ");
}

struct Shape {
    bool isBroken = false;
    bool isBeyondAscii = false; ///< some names and some text
    int blankLines = 0;         ///< at most, in a row
    bool isCut = false;         ///< few lines end otherwise
};

/// Documents of many chunks.
std::u16string randomDocument(Random& random, const Shape& shape) {
    static const std::vector<std::u16string_view> plain = {u"a", u"b", u"p:c", u"d"};
    static const std::vector<std::u16string_view> other = {u"a", u"b", u"b", u"a", u"a", u"\u00e9"};
    const auto& names = shape.isBeyondAscii && random.oneIn(2) ? other : plain;
    std::u16string text = u"<?xml version='1.0'?>\n<root xmlns:p='one'>\n";
    std::vector<std::u16string> open;
    const auto blankLines = [&] {
        const int count = random.oneIn(4) ? random.below(shape.blankLines + 1) : 0;
        return std::u16string(static_cast<std::size_t>(count), u'\n');
    };
    for (int i = (shape.isCut ? 20'000 : 300) + random.below(2500); i > 0; --i) {
        switch (random.below(shape.isBroken ? 12 : 7)) {
        case 0:
        case 1:
            open.emplace_back(random.pick(names));
            text += u"<" + open.back() + (random.oneIn(9) ? u" xmlns:p=\"two\"" : u"") +
                    (random.oneIn(20) ? u"\n x='1'\n>" : u">");
            break;
        case 2:
        case 3:
            if (!open.empty()) {
                text += u"</" + open.back() + u">";
                open.pop_back();
            }
            break;
        case 4:
            text += u"<e x='1'/>";
            if (random.oneIn(12)) // the next tags lie where the line is cut
                text.append(static_cast<std::size_t>(480 + random.below(60)), u'-');
            break;
        case 5:
            text += random.oneIn(4)       ? u"<!-- <a>\n" + blankLines() + u"\n </b> -->"
                    : shape.isBeyondAscii ? u"t\u00eaxt "
                                          : u"text ";
            break;
        case 6:
            text += u"<![CDATA[ " + blankLines() + u"]]>";
            break;
        case 7:
            text += random.oneIn(30) ? u"<!-- " : u"\"";
            break;
        case 8:
            text += u"</" + std::u16string(random.pick(names)) + u">";
            break;
        case 9:
            text += random.oneIn(20) ? u">" : u"x";
            break;
        case 10:
            text += random.oneIn(60) ? u"< >" : u"<f y='>'/>";
            break;
        default:
            text += random.oneIn(40) ? u"-->" : u"<g z='a>b'>";
        }
        if (random.oneIn(shape.isCut ? 200 : 3))
            text += u"\n" + blankLines();
    }
    return text;
}

TEST_F(XmlStructure, findsTheSameAsAWalkOverEveryTag) {
    const char* longer = std::getenv("TAVRIN_LONG_TESTS");
    const unsigned seeds = longer ? static_cast<unsigned>(std::atoi(longer)) : 40;
    int parents = 0;
    int mostLines = 0;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const bool isCut = seed % 4 == 3; // nearly all lines are
        const std::u16string text =
            randomDocument(random, {seed % 2 == 0, seed % 3 == 0, seed % 4 == 0 ? 600 : 0, isCut});
        static constexpr std::string_view lineEnds[] = {"\n", "\r\n", "\r"};
        if (seed % 5 == 0)
            load(text);
        else
            loadAsBytes(text, random.pick(lineEnds));
        mostLines = std::max(mostLines, buffer.getLineCount());
        if (seed % 3 == 1) // with everything noted before anybody asks
            for (int line = 0; line < buffer.getLineCount();)
                line = parser->readAhead(line, true);
        for (int step = 0; step < 16; ++step) {
            const int line =
                random.oneIn(3) ? buffer.getLineCount() - 1 : random.below(buffer.getLineCount());
            const int col =
                random.oneIn(2) ? buffer.getLineLength(line) : random.below(buffer.getLineLength(line) + 1);
            const std::string expected = parser->parent(line, col);
            ASSERT_EQ(parser->fastParent(line, col), expected) << line << "," << col;
            parents += expected != "none" && expected != "top";
            checkSearches({line, col});
            const int edited = random.below(buffer.getLineCount());
            int endLine = 0;
            int endCol = 0;
            if (random.oneIn(4) || (isCut && step < 10)) { // pages keep to their bytes
                std::vector<LineReplacement> changes;
                for (int l = edited % 5; l < buffer.getLineCount(); l += 1 + random.below(40))
                    changes.push_back({l, random.below(buffer.getLineLength(l) + 1), random.below(3),
                                       random.oneIn(2) ? u"<b>" : u"xy"});
                buffer.replaceInLines(changes);
                continue;
            }
            switch (random.below(6)) {
            case 0:
            case 1:
            case 2: { // mostly within a line
                static const std::vector<std::u16string_view> texts = {u"<b>", u"<a>", u"</b> xmlns:p='x'",
                                                                       u"<b>\n"};
                buffer.insertText(edited, 0, random.pick(texts), endLine, endCol);
                break;
            }
            case 3:
                buffer.insertText(edited, 0, u"<!-- " + std::u16string(300, u'\n') + u"<b> -->", endLine,
                                  endCol);
                break;
            case 4: { // an edit that does not happen after all
                const Buffer::Transaction transaction(buffer);
                buffer.erase(edited, 0, buffer.getLineCount() - 1, 0);
                static_cast<void>(parser->fastParent(buffer.getLineCount() - 1, 0));
                break;
            }
            default:
                buffer.erase(
                    edited, 0,
                    std::min(edited + random.below(random.oneIn(3) ? 900 : 3), buffer.getLineCount() - 1), 0);
            }
        }
    }
    EXPECT_GT(parents, static_cast<int>(seeds)) << "most places should lie in an element";
    EXPECT_GT(mostLines, LineStore::pageLines * LineStore::treeFanOut * 2) << "chunks of several heights";
}

// Lines that were cut apart keep ending where they did, however long they are after a replacement.
TEST_F(XmlStructure, findsATagInLinesOfOtherLengthsThanTheirCuts) {
    constexpr int length = Buffer::maxLoadedLineLength;
    loadAsBytes(u"<r>" + std::u16string(100 * length, u'x') + u"<a>" + std::u16string(600 * length, u'x'),
                "\n");
    std::vector<LineReplacement> changes;
    for (int line = 1; line < 100; line += 3)
        changes.push_back({line, 0, length, line % 2 ? u"" : u"some more"});
    buffer.replaceInLines(changes);
    ASSERT_TRUE(buffer.getStoredLines(0)->isPatched);
    const int last = buffer.getLineCount() - 1;
    const std::string expected = parser->parent(last, 0);
    EXPECT_EQ(expected, "a{}100,3");
    EXPECT_EQ(parser->fastParent(last, 0), expected);
}

TEST_F(XmlStructure, seesEditsFarAbove) {
    constexpr int lines = 300'000; // below several levels of chunks
    std::u16string text = u"<r xmlns:p='one'>\n";
    for (int i = 0; i < lines; ++i)
        text += i % 1000 == 0     ? u"<!--\n"
                : i % 1000 == 500 ? u"-->\n"
                : i % 3 == 0      ? u"<p:a>x</p:a>\n"
                                  : u"\n";
    loadAsBytes(text, "\n");
    const auto parent = [&] { return parser->fastParent(buffer.getLineCount() - 1, 0); };
    ASSERT_EQ(parent(), "r{}0,0");
    Random random(1);
    int endLine = 0;
    int endCol = 0;
    for (int step = 0; step < 20; ++step) {
        const int line = 1000 * random.below(lines / 1000) + 501 + random.below(500);
        const std::string place = std::to_string(line) + ",0";
        SCOPED_TRACE(place);
        const bool isLineOfItsOwn = random.oneIn(2);
        buffer.insertText(line, 0, isLineOfItsOwn ? u"<p:q xmlns:p='two'>\n" : u"<p:q xmlns:p='two'>",
                          endLine, endCol);
        EXPECT_EQ(parent(), "p:q{two}" + place);
        buffer.insertText(endLine, endCol, u"</p:q>", endLine, endCol);
        EXPECT_EQ(parent(), "r{}0,0");
        {
            const Buffer::Transaction transaction(buffer);
            buffer.insertText(line, 0, u"</r>\n", endLine, endCol);
            EXPECT_EQ(parent(), "top");
        }
        EXPECT_EQ(parent(), "r{}0,0");
        buffer.erase(line, 0, line + (isLineOfItsOwn ? 1 : 0), isLineOfItsOwn ? 6 : 25);
        EXPECT_EQ(parent(), "r{}0,0");
    }
}

TEST_F(XmlStructure, findsTheParentWhereElementsLieDeep) {
    constexpr int depth = 12000; // in more pages than a node has
    std::u16string text;
    for (int i = 0; i < depth; ++i)
        text += i % 3 == 0 ? u"<a>\n" : u"<b>\n";
    for (int i = depth; i-- > 40;)
        text += i % 3 == 0 ? u"</a>\n" : u"</b>\n";
    load(text);
    Random random(1);
    for (int step = 0; step < 8; ++step) {
        const int line = step == 0 ? buffer.getLineCount() - 1 : random.below(buffer.getLineCount());
        EXPECT_EQ(parser->fastParent(line, 0), parser->parent(line, 0)) << line;
        const int edited = random.below(buffer.getLineCount());
        buffer.erase(edited, 0, edited, 1); // a delimiter
    }
}

} // namespace
} // namespace tavrin
