#include "buffer/Buffer.h"
#include "parsers/Parser.h"
#include "support.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

/// Braces nest nothing, "%" comments end with the line, "\" before a quote escapes it. Writes down what it is
/// told to colour.
class SmallLanguage : public Parser {
  public:
    SmallLanguage() {
        blocks = {
            {0x20, 3, u"{", u"}", 0, 0}, {0x40, 4, u"%", u"\n", u'+', 0}, {0x80, 5, u"\"", u"\"", 0, u'\\'}};
        whitespace = u" ";
        punctuation = u".";
    }
    using Parser::findFirstBlock;
    using Parser::findKeyword;
    using Parser::findNotEscapedString;

    std::string told;

  protected:
    void formatContentRange(int, int start, int count) override {
        told += "c" + std::to_string(start) + "+" + std::to_string(count) + " ";
    }
    void formatBlockRange(int line, int start, int count, const Block& block) override {
        told += "b" + std::to_string(start) + "+" + std::to_string(count) + " ";
        buffer().formatRange(line, start, count, block.format);
    }
};

class ParserEngine : public testing::Test {
  protected:
    ParserEngine() {
        language->setBuffer(&buffer);
        buffer.setParser(language.get());
    }
    void load(std::u16string_view text) { buffer.loadText(text.data(), text.size()); }
    std::string codes(int line) {
        std::string out;
        for (int col = 0; col < buffer.getLineLength(line); ++col)
            out += static_cast<char>('0' + buffer.getCharFormat(line, col));
        return out;
    }

    Buffer buffer;
    SmartPtr<SmallLanguage> language{new SmallLanguage};
};

TEST_F(ParserEngine, handsOutContentAndBlocksInTurn) {
    load(u"a{b}c{");
    EXPECT_EQ(codes(0), "033303");
    EXPECT_EQ(language->told, "c0+1 b1+3 c4+1 b5+1 ");
    language->told.clear();
    EXPECT_EQ(codes(0), "033303");
    EXPECT_EQ(language->told, "") << "a parsed line is read for free";
}

TEST_F(ParserEngine, carriesOpenBlocksOverLines) {
    load(u"a {\n\nb } c\n% d\ne\n% f\n+g");
    EXPECT_EQ(codes(2), "33300");
    EXPECT_EQ(buffer.getLineFlags(1) & 0xE8, 0x28) << "an empty line keeps the block open";
    EXPECT_EQ(codes(3), "444");
    EXPECT_EQ(codes(4), "0") << "the comment ends with its line";
    EXPECT_EQ(codes(6), "00");
    load(u"+% a\nb\n\nc");
    EXPECT_EQ(codes(1), "4") << "the line began with the continuation character";
    EXPECT_EQ(codes(3), "0") << "an empty line does not";
}

TEST_F(ParserEngine, skipsEscapedDelimiters) {
    load(u"\"a\\\"b\"c\\\"d");
    EXPECT_EQ(codes(0), "5555550000");
    struct Case {
        const char16_t* text;
        const char16_t* what;
        int start, at;
    };
    for (const Case& c :
         {Case{u"\\\"x\"", u"\"", 0, 3}, Case{u"\"", u"\"", 0, 0}, Case{u"a\\\"", u"\"", 0, 2},
          Case{u"a\\xy", u"xy", 0, -1}, Case{u"\"\\\"", u"\"", 1, 2}, Case{u"a", u"\"", 1, -1}})
        EXPECT_EQ(SmallLanguage::findNotEscapedString(c.what, u'\\', c.text, c.start), c.at);
}

TEST_F(ParserEngine, findsKeywordsThatStandAlone) {
    struct Case {
        const char16_t* text;
        int start, at;
    };
    for (const Case& c : {Case{u"int", 0, 0}, Case{u"integer x", 0, -1}, Case{u"print int", 0, 6},
                          Case{u"int_ int9 int.", 0, 10}, Case{u"int int", 1, 4}})
        EXPECT_EQ(language->findKeyword(c.text, c.start, u"int"), c.at);
}

TEST_F(ParserEngine, marksTheEditedLineAndAllBelowStale) {
    std::u16string text;
    for (int i = 0; i < 100; ++i)
        text += u"a { b }\n";
    load(text);
    for (int line = 0; line < 100; ++line)
        (void)codes(line);
    buffer.insert(40, 0, u'x');
    EXPECT_EQ(buffer.getLineFlags(39), PF_PARSED | PF_BLOCKS | PF_FORMATS);
    for (const int line : {40, 41, 99})
        EXPECT_EQ(buffer.getLineFlags(line), 0) << line;
    (void)codes(90);
    EXPECT_EQ(buffer.getLineFlags(40), PF_BLOCKS);
    EXPECT_EQ(buffer.getLineFlags(89), PF_BLOCKS);
    EXPECT_EQ(buffer.getLineFlags(90), PF_PARSED | PF_BLOCKS | PF_FORMATS);
    EXPECT_EQ(buffer.getLineFlags(91), 0);
}

} // namespace
} // namespace tavrin
