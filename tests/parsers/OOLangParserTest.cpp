#include "parsers/OOLangParser.h"

#include "buffer/Buffer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavrin {
namespace {

/// A language that colours all text between blocks, and then what a test asks for.
class Language : public OOLangParser {
  public:
    using OOLangParser::formatRange;
    using OOLangParser::keywords;

  protected:
    void formatContentRange(int line, int start, int count) override { formatRange(line, start, count); }
};

class OOLangParserTest : public testing::Test {
  protected:
    OOLangParserTest() {
        language->setBuffer(&buffer);
        buffer.setParser(language.get());
    }

    /// The codes of each line of text, one character a code, "p" for 10.
    std::vector<std::string> codes(std::u16string_view text) {
        buffer.loadText(text.data(), text.size());
        std::vector<std::string> lines;
        for (int line = 0; line < buffer.getLineCount(); ++line)
            lines.push_back(lineCodes(line));
        return lines;
    }

    std::string lineCodes(int line) {
        std::string codes;
        for (int col = 0; col < buffer.getLineLength(line); ++col) {
            const int code = buffer.getCharFormat(line, col);
            codes += code == 10 ? 'p' : static_cast<char>('0' + code);
        }
        return codes;
    }

    Buffer buffer;
    SmartPtr<Language> language{new Language};
};

TEST_F(OOLangParserTest, linesAreColouredByTheirBlocksKeywordsAndPunctuation) {
    struct Case {
        const char16_t* text;
        std::string codes;
    };
    const Case cases[] = {
        {u"if (x) // done", "660p0p04444444"},
        {uR"("a\"b")", "555555"},
        {uR"(\"a" b)", "p00555"}, // an escaped quote starts no string, so the next one does
        {u"/* a */", "3333333"},
        {u"/*/", "333"},
        {u"x/*int*/", "03333333"},
        {u"return", "666666"},
        {u"returned", "00000000"},
        {u"format int_value int2 uint", "00000000000000000000000000"},
        {u"int,int", "666p666"},
        {u"a\tint\tb", "0066600"},
        {u"'int'", "00000"}, // an apostrophe is no keyword end
        {u"`~!@#$%^&()-+={[]}|:;<,.>?", "pppppppppppppppppppppppppp"},
        {u"_9'", "000"},
        {u"", ""},
    };
    for (const Case& c : cases) {
        const std::u16string text = c.text;
        const std::vector<std::string> lines = codes(text.empty() ? u"\n" : text);
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0], c.codes) << std::string(text.begin(), text.end());
    }
}

TEST_F(OOLangParserTest, punctuationReachesIntoBlocksThatWereColouredBefore) {
    EXPECT_EQ(codes(u"x \"a;b\" y")[0], "00"
                                        "55p55"
                                        "00");
    EXPECT_EQ(codes(u"/*/ a")[0], "ppp00");
    EXPECT_EQ(codes(u"x \"a;b\"")[0], "00"
                                      "55555")
        << "nothing follows the string";
}

TEST_F(OOLangParserTest, blocksGoOnBelowAsTheirKindSays) {
    EXPECT_EQ(codes(u"/* a\n\nint */\nint"), (std::vector<std::string>{"3333", "", "333333", "666"}));
    EXPECT_EQ(codes(u"// a\nint"), (std::vector<std::string>{"4444", "666"}));
    EXPECT_EQ(codes(u"\\// a\nint\nint"), (std::vector<std::string>{"p4444", "444", "666"}))
        << "a line that begins with a backslash leads its comment on, the next one does not";
    EXPECT_EQ(codes(u"\"a\nint"), (std::vector<std::string>{"55", "666"}));
    EXPECT_EQ(codes(u"\\ \"a\nint\" int"), (std::vector<std::string>{"p055", "55550666"}));
}

TEST_F(OOLangParserTest, anEmptyStretchColoursNothingAndAnyOtherTheWholeLine) {
    codes(u"int a; int b;");
    buffer.formatRange(0, 0, 13, 0);
    language->formatRange(0, 0, 0);
    EXPECT_EQ(lineCodes(0), "0000000000000");
    language->formatRange(0, 4, 1);
    EXPECT_EQ(lineCodes(0), "00000p066600p") << "keywords from the start on, punctuation everywhere";
}

TEST_F(OOLangParserTest, everyKeywordIsFoundAlone) {
    EXPECT_EQ(language->keywords.size(), 30u);
    for (const std::u16string& keyword : language->keywords)
        EXPECT_EQ(codes(u"(" + keyword + u")")[0], "p" + std::string(keyword.size(), '6') + "p");
}

} // namespace
} // namespace tavrin
