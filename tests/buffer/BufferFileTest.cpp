#include "buffer/Buffer.h"
#include "buffer/RecordingParser.h"
#include "support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace tavrin {
namespace {

using test::joined;
using test::linesOf;
using test::RecordingParser;

struct LoadedLine {
    std::u16string text;
    bool continues;
    friend bool operator==(const LoadedLine&, const LoadedLine&) = default;
};

/// The rules of loading, one character at a time.
std::vector<LoadedLine> splitPlainly(std::u16string_view text) {
    std::vector<LoadedLine> lines;
    std::size_t start = 0;
    bool continues = false;
    bool afterReturn = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        switch (text[i]) {
        case u'\n':
            if (afterReturn) {
                ++start;
            } else {
                lines.push_back({std::u16string(text.substr(start, i - start)), continues});
                start = i + 1;
            }
            continues = afterReturn = false;
            break;
        case u'\r':
            lines.push_back({std::u16string(text.substr(start, i - start)), continues});
            start = i + 1;
            continues = false;
            afterReturn = true;
            break;
        case u'\uFEFF':
            if (i == 0)
                start = 1;
            break;
        default:
            if (i - start + 1 >= 512) {
                lines.push_back({std::u16string(text.substr(start, i - start + 1)), continues});
                start = i + 1;
                continues = true;
            }
            afterReturn = false;
        }
    }
    if (start < text.size())
        lines.push_back({std::u16string(text.substr(start)), continues});
    return lines;
}

class BufferFileTest : public testing::Test {
  protected:
    BufferFileTest() {
        buffer.setParser(&parser);
        folder = std::filesystem::temp_directory_path() / ("tavrin-buffer-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder);
    }
    ~BufferFileTest() override { std::filesystem::remove_all(folder); }

    void load(std::u16string_view text) { buffer.loadText(text.data(), text.size()); }
    std::vector<LoadedLine> loaded() const {
        std::vector<LoadedLine> lines;
        for (int line = 0; line < buffer.getLineCount(); ++line)
            lines.push_back({std::u16string(buffer.getLineText(line)), buffer.getContinuesPrevious(line)});
        return lines;
    }
    std::u16string path(const char* name) const { return (folder / name).u16string(); }
    std::string saved(int encoding) {
        buffer.setEncoding(encoding);
        EXPECT_TRUE(buffer.saveToFile(path("saved").c_str()));
        std::ifstream file(folder / "saved", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    RecordingParser parser;
    Buffer buffer;
    std::filesystem::path folder;
};

TEST_F(BufferFileTest, endsLinesAtEveryKindOfBreak) {
    struct Case {
        std::u16string text;
        std::string lines;
    };
    for (const Case& c : {Case{u"a\r\nb", "a|b"}, Case{u"a\rb", "a|b"}, Case{u"a\nb", "a|b"},
                          Case{u"a\r\rb", "a||b"}, Case{u"a\n\r\nb", "a||b"}, Case{u"abc\n", "abc"},
                          Case{u"\n", ""}, Case{u"\uFEFFab", "ab"}, Case{u"a\uFEFFb", "a?b"}}) {
        load(c.text);
        EXPECT_EQ(joined(buffer), c.lines);
    }
    load(u"\n");
    EXPECT_EQ(buffer.getLineCount(), 1);
    load(u"");
    EXPECT_EQ(buffer.getLineCount(), 0);
    EXPECT_EQ(parser.loads, 11);
}

TEST_F(BufferFileTest, cutsLongLinesAndJoinsThemAgain) {
    const std::u16string text(1100, u'x');
    load(text);
    ASSERT_EQ(buffer.getLineCount(), 3);
    EXPECT_EQ(buffer.getLineLength(1), 512);
    EXPECT_EQ(buffer.getLineLength(2), 76);
    EXPECT_FALSE(buffer.getContinuesPrevious(0));
    EXPECT_TRUE(buffer.getContinuesPrevious(2));
    EXPECT_EQ(saved(ENCODING_UTF8), std::string(1100, 'x'));
    buffer.splitLine(1, 10); // a break that the author made is written
    EXPECT_EQ(saved(ENCODING_UTF8), std::string(522, 'x') + "\r\n" + std::string(578, 'x'));
}

TEST_F(BufferFileTest, splitsRandomTextByTheRules) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        test::Random random(seed);
        std::u16string text;
        const std::u16string_view pieces[] = {u"\n", u"\r", u"\r\n", u"\uFEFF", u"\t", u"a", u"bc"};
        for (int i = random.below(60); i > 0; --i) {
            text += random.pick(pieces);
            if (random.oneIn(6))
                text.append(
                    static_cast<std::size_t>(random.oneIn(2) ? 505 + random.below(16) : random.below(1600)),
                    u'x');
        }
        load(text);
        ASSERT_EQ(loaded(), splitPlainly(text));
        buffer.checkInvariants();
    }
}

TEST_F(BufferFileTest, savesInEachEncoding) {
    load(u"a\u0151\U0001F600\n\u20AC");
    EXPECT_EQ(saved(ENCODING_UTF8), "a\xC5\x91\xF0\x9F\x98\x80\r\n\xE2\x82\xAC");
    EXPECT_EQ(saved(ENCODING_UTF16), std::string("\xFF\xFE"
                                                 "a\0\x51\x01\x3D\xD8\x00\xDE\r\0\n\0\xAC\x20",
                                                 16));
    EXPECT_EQ(saved(ENCODING_LATIN2).substr(0, 2), "a\xF5");
    EXPECT_EQ(saved(ENCODING_LATIN1), "a??\r\n?");
}

TEST_F(BufferFileTest, keepsAPairThatACutDivides) {
    std::u16string text(511, u'x');
    text += u"\U0001F600";
    load(text);
    ASSERT_EQ(buffer.getLineCount(), 2);
    EXPECT_EQ(saved(ENCODING_UTF8), std::string(511, 'x') + "\xF0\x9F\x98\x80");
}

TEST_F(BufferFileTest, handsOutTheWholeTextWithAZero) {
    load(u"a\nb");
    const SmartPtr<ByteBuffer> text = buffer.getString();
    ASSERT_EQ(text->size(), 10U);
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(text->data()), 5),
              std::u16string(u"a\r\nb\0", 5));
}

TEST_F(BufferFileTest, namesOnlyItsFourEncodings) {
    const std::pair<int, std::u16string> names[] = {
        {65001, u"utf-8"}, {1, u"utf-16"}, {28591, u"iso-8859-1"}, {28592, u"iso-8859-2"}, {1252, u""}};
    for (const auto& [code, name] : names) {
        buffer.setEncoding(code);
        EXPECT_EQ(buffer.getEncodingString(), name);
    }
}

TEST_F(BufferFileTest, loadsFilesAndRefusesWhatIsNone) {
    std::ofstream(folder / "a.xml", std::ios::binary) << "\xFF\xFE" << std::string("<\0a\0>\0\n\0", 8);
    EXPECT_TRUE(buffer.loadFile(path("a.xml").c_str()));
    EXPECT_EQ(joined(buffer), "<a>");
    EXPECT_EQ(buffer.getEncoding(), ENCODING_UTF16);
    EXPECT_FALSE(buffer.loadFile(path("missing").c_str()));
    EXPECT_FALSE(buffer.loadFile(folder.u16string().c_str())) << "a folder is no text";
    EXPECT_EQ(joined(buffer), "<a>") << "a refused file changes nothing";
    EXPECT_FALSE(buffer.saveToFile(path("no/such/folder").c_str()));
}

TEST_F(BufferFileTest, reportsBytesThatAreNotText) {
    std::ofstream(folder / "b.xml", std::ios::binary) << "\xEF\xBB\xBF<a>\xC3(\xFF</a>";
    DecodeReport report;
    ASSERT_TRUE(buffer.loadFile(path("b.xml").c_str(), &report));
    EXPECT_EQ(report.invalidCount, 2U);
    EXPECT_EQ(report.firstInvalid, 6U);
    EXPECT_EQ(buffer.getLineText(0), u"<a>\uFFFD(\uFFFD</a>");
}

} // namespace
} // namespace tavrin
