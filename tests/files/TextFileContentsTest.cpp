#include "files/TextFileContents.h"

#include "files/OpenedText.h"
#include "support.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace tavrin {
namespace {

using namespace std::string_literals;
using test::OpenedText;

TEST(TextFileContents, whatNobodyEditedComesBackByteByByte) {
    const std::string cases[] = {
        "",
        "<a/>",
        "<a/>\n",
        "<a>\r\n\n\r</a>\r",
        "\n\n\n",
        "\xEF\xBB\xBF<a>\n</a>",
        "\xEF\xBB\xBF",
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<a>\xff\xC3(\xED\xA0\x80</a>\r\n",
        "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<a>\xE9\x80</a>\n",
        "<?xml version=\"1.0\" encoding=\"iso-8859-2\"?>\n<a>\xF5</a>\n",
        "<?xml version=\"1.0\" encoding=\"windows-1252\"?>\r\n<a>\x80</a>\r\n",
        "\xFF\xFE<\0a\0/\0>\0\n\0"s,
        "<a>" + std::string(3000, 'x') + "\r\n" + std::string(1500, '\xE9') + "</a>\n",
        "<a>" + std::string(511, 'x') + "\xF0\x9F\x98\x80</a>\r\n\xEF\xBB\xBF\n",
        "\xEF\xBB\xBF\xEF\xBB\xBF",
        "\xFF\xFE\xFF\xFE<\0a\0/\0>\0"s,
        "\xFE\xFF\0<\0a\0>\xD8\0\0\r\0\n\0x"s, // half a pair
        "\xFE\xFF\0<\0a\0>\0\n\0"s,            // half a unit
    };
    for (const std::string& bytes : cases)
        EXPECT_EQ(OpenedText(bytes).written(), bytes);
}

TEST(TextFileContents, anEditChangesItsPlaceOnly) {
    const std::string before = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<a>\xff</a>\n<b>\r</b>\n";
    struct Case {
        const char* what;
        void (*edit)(OpenedText& text);
        std::string after;
    };
    const std::string head = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n";
    const Case cases[] = {
        {"a character", [](OpenedText& t) { t.insert(2, 0, u"\u20ac"); },
         head + "<a>\xff</a>\n\xE2\x82\xAC<b>\r</b>\n"},
        {"a new line", [](OpenedText& t) { t.insert(2, 3, u"\n"); }, head + "<a>\xff</a>\n<b>\r\r</b>\n"},
        {"a joined line", [](OpenedText& t) { t.buffer.erase(2, 3, 3, 0); }, head + "<a>\xff</a>\n<b></b>\n"},
        {"the last line gone", [](OpenedText& t) { t.buffer.erase(2, 3, 3, 4); },
         head + "<a>\xff</a>\n<b>\n"},
        {"the broken byte", [](OpenedText& t) { t.buffer.erase(1, 3, 1, 4); }, head + "<a></a>\n<b>\r</b>\n"},
    };
    for (const Case& c : cases) {
        OpenedText text(before);
        c.edit(text);
        EXPECT_EQ(text.written(), c.after) << c.what;
    }
}

// Their bytes are looked for beside an edit, where a line may seem to end before it does.
TEST(TextFileContents, linesAroundAnEditKeepTheirBytes) {
    const std::string mark = "\xEF\xBB\xBF";
    const std::string lines[] = {
        "",
        "plain",
        "\t\xC3\xA9\xF0\x9F\x98\x80",
        "\xff\xC3(",
        "a\r" + mark + "\nbc", // the mark stands between, and the feed is a character
        "a\r" + mark + mark + "\nbcde",
        "a\r" + mark + "bc",
        std::string(511, 'x'),
        std::string(512, 'x'),
        std::string(511, 'x') + "\xF0\x9F\x98\x80y",
    };
    for (const std::string& head : {std::string(), mark})
        for (const std::string& line : lines)
            for (const char* const end : {"\n", "\r\n", "\r"}) {
                const std::string before = head + line + end + line + end + "<a>" + end;
                const std::string after = line + end + line + end;
                OpenedText text(before + after);
                const int edited = [&] {
                    for (int l = 0;; ++l)
                        if (text.buffer.getLineText(l) == u"<a>")
                            return l;
                }();
                text.insert(edited, 3, u"!");
                EXPECT_EQ(text.written(), head + line + end + line + end + "<a>!" + end + after)
                    << testing::PrintToString(before);
            }
}

// Large runs are handed on from where they lie, many of them together.
TEST(TextFileContents, manyEditsInALargeTextChangeTheirPlacesOnly) {
    constexpr int lineCount = 40000;
    const std::string line = "<line>" + std::string(70, 'x') + "</line>\n";
    std::string bytes;
    std::string expected;
    for (int i = 0; i < lineCount; ++i) {
        bytes += line;
        expected += i % 900 == 450 ? "<!-- -->" + line : i % 900 == 451 ? "<LINE>" + line.substr(6) : line;
    }
    OpenedText text(bytes);
    for (int i = 450; i < lineCount; i += 900) {
        text.insert(i, 0, u"<!-- -->");
        const LineReplacement replacement{i + 1, 1, 4, u"LINE"};
        text.buffer.replaceInLines({&replacement, 1});
    }
    EXPECT_TRUE(text.written() == expected);

    OpenedText replaced(bytes);
    std::vector<LineReplacement> replacements;
    for (int i = 0; i < lineCount; i += 3)
        replacements.push_back({i, 1, 4, u"list"});
    replaced.buffer.replaceInLines(replacements);
    for (int i = 0; i < lineCount; i += 3)
        bytes.replace(static_cast<std::size_t>(i) * line.size() + 1, 4, "list");
    EXPECT_TRUE(replaced.written() == bytes);

    std::ranges::replace(bytes, '\n', ' ');
    OpenedText cut(bytes); // one line, in pieces
    replacements.clear();
    for (int i = 0; i < cut.buffer.getLineCount(); ++i)
        replacements.push_back({i, 0, i % 2, u"ab"});
    cut.buffer.replaceInLines(replacements);
    cut.insert(700, 3, u"!");
    std::string pieces;
    for (int i = 0; i < cut.buffer.getLineCount(); ++i) {
        const std::string piece = bytes.substr(static_cast<std::size_t>(i) * Buffer::maxLoadedLineLength,
                                               Buffer::maxLoadedLineLength);
        pieces += (i == 700 ? "ab" + piece.substr(0, 1) + "!" + piece.substr(1) : "ab" + piece.substr(i % 2));
    }
    EXPECT_TRUE(cut.written() == pieces);
}

/// A declared text of five lines in an encoding, with bytes in the fourth that are not valid where `broken`
/// is not empty.
struct Sample {
    int encoding;
    std::string name; ///< in the declaration
    std::u16string word;
    std::string broken;
};

std::string encoded(int encoding, std::u16string_view text) {
    std::string out;
    TextEncoder encoder(encoding);
    encoder.encode(text, out);
    encoder.finish(out);
    return out;
}

// An edit in the second line: all bytes before and behind it stay, in whatever encoding, valid or not.
TEST(TextFileContents, anEditChangesItsPlaceOnlyInEveryEncoding) {
    const Sample samples[] = {
        {ENCODING_UTF16, "utf-16", u"é", "\0\xD8"s},
        {ENCODING_UTF16_BE, "utf-16", u"é\U0001F41D", "\xD8\0"s},
        {ENCODING_UTF32, "utf-32", u"\U0001F41D", "\0\0\x11\0"s},
        {ENCODING_UTF32_BE, "utf-32", u"ő", "\0\x11\0\0"s},
        {ENCODING_UTF32_2143, "utf-32", u"ő", "\x11\0\0\0"s},
        {ENCODING_UTF32_3412, "utf-32", u"ő", "\0\0\0\x11"s},
        {ENCODING_LATIN1, "iso-8859-1", u"é", ""},
        {ENCODING_LATIN2, "iso-8859-2", u"ő", ""},
        {1252, "windows-1252", u"€", ""},
        {932, "shift_jis", u"表す", "\x81\x01"},
        {936, "gbk", u"中文", "\x81\x01"},
        {54936, "gb18030", u"中\U0001F41D", "\x81\x30\xFF"},
        {950, "big5", u"中文", "\x81\x01"},
        {51932, "euc-jp", u"表す", "\xFF"},
        {50220, "iso-2022-jp", u"表す", "\x1B$B!\x7F\x1B(B"},
        {37, "ibm037", u"é", ""},
        {1140, "ibm01140", u"€", ""},
    };
    for (const Sample& sample : samples) {
        SCOPED_TRACE(sample.name + " " + std::to_string(sample.encoding));
        const auto bytesOf = [&](std::u16string_view text) { return encoded(sample.encoding, text); };
        const std::u16string name(sample.name.begin(), sample.name.end());
        const std::string head = (isWideEncoding(sample.encoding) ? bytesOf(u"\uFEFF") : "") +
                                 bytesOf(u"<?xml version='1.0' encoding='" + name + u"'?>\r\n");
        const std::string tail = bytesOf(sample.word + u"\r\n<b>") + sample.broken + bytesOf(u"\r</b>\n");
        const std::string before = head + bytesOf(u"<a>" + sample.word + u"\n") + tail;
        OpenedText text(before);
        ASSERT_EQ(text.buffer.getLoadedEncoding(), sample.encoding);
        EXPECT_EQ(text.report.invalidCount > 0, !sample.broken.empty());
        EXPECT_EQ(text.written(), before);
        text.insert(1, 1, u"x" + sample.word + u"\n");
        const std::string after = text.written();
        EXPECT_EQ(after,
                  head + bytesOf(u"<x" + sample.word + u"\n") + bytesOf(u"a>" + sample.word + u"\n") + tail);
        OpenedText again(after);
        ASSERT_EQ(again.buffer.getLineCount(), text.buffer.getLineCount());
        for (int line = 0; line < again.buffer.getLineCount(); ++line)
            EXPECT_EQ(again.buffer.getLineText(line), text.buffer.getLineText(line)) << line;
        // Other line ends keep the bytes of the lines.
        OpenedText ended(before);
        TextForm form = ended.buffer.getForm();
        form.lineEnds = LineEnd::Cr;
        const std::string returns = ended.written(form);
        EXPECT_NE(returns.find(sample.broken), std::string::npos);
        EXPECT_EQ(returns.find(bytesOf(u"\n")), std::string::npos);
        form.lineEnds = LineEnd::None;
        EXPECT_EQ(ended.written(form), before);
    }
}

// Where a text changes its shift state in one line and back in another, what lies between is one to it.
TEST(TextFileContents, linesThatShareAShiftStateAreKeptOrEncodedTogether) {
    const std::string bytes = "<?xml version='1.0' encoding='iso-2022-jp'?>\na\x1B(Jb\nc\\\nd\x1B(B\n\\e\n";
    OpenedText text(bytes);
    ASSERT_EQ(text.buffer.getLineText(2), u"c\u00A5");
    EXPECT_EQ(text.written(), bytes);
    text.insert(4, 0, u"x");
    EXPECT_EQ(text.written(), bytes.substr(0, bytes.size() - 3) + "x\\e\n");
    for (const int line : {2, 1, 3}) {
        text.insert(line, 0, u"x\\");
        OpenedText again(text.written());
        for (int l = 0; l < text.buffer.getLineCount(); ++l)
            EXPECT_EQ(again.buffer.getLineText(l), text.buffer.getLineText(l)) << l;
    }
}

// The second character set is named once, at the start, by whoever writes the start.
TEST(TextFileContents, theHeaderOfATextStaysAtItsStart) {
    const std::string head = "\x1B$)C";
    const std::string declaration = "<?xml version='1.0' encoding='iso-2022-kr'?>\n";
    const std::string word = "\x0E\x30\x21\x0F";
    const std::string tail = "<b>" + word + "</b>\n";
    const struct {
        std::string before;
        int line;
        int col;
        std::string after;
    } cases[] = {
        {head + declaration + "<a>\n" + tail, 1, 3, head + declaration + "<a>" + word + "\n" + tail},
        {head + declaration + tail, 0, 0, head + word + declaration + tail},
        {head + tail, 0, 3, head + "<b>\x0E\x30\x21\x30\x21\x0F</b>\n"},
        {declaration + "<a>\n" + tail, 1, 3, head + declaration + "<a>" + word + "\n" + tail},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.before));
        OpenedText text(c.before);
        ASSERT_EQ(text.buffer.getLoadedEncoding(), 50225);
        EXPECT_EQ(text.report.invalidCount, 0U);
        EXPECT_EQ(text.written(), c.before);
        text.insert(c.line, c.col, u"\uAC00");
        EXPECT_EQ(text.written(), c.after);
        OpenedText again(c.after);
        for (int line = 0; line < text.buffer.getLineCount(); ++line)
            EXPECT_EQ(again.buffer.getLineText(line), text.buffer.getLineText(line)) << line;
    }
    EXPECT_EQ(OpenedText(head + tail).buffer.getLineText(0), u"<b>\uAC00</b>");
    EXPECT_EQ(OpenedText("").written({50225}), "");
}

TEST(TextFileContents, oneEndForAllLinesKeepsTheirBytes) {
    OpenedText text("\xEF\xBB\xBF<a>\r\n\xff\n\n\r" + std::string(700, 'x') + "\xff\n</a>");
    const std::string lines[] = {"\xEF\xBB\xBF<a>", "\xff", "", "", std::string(700, 'x') + "\xff", "</a>"};
    const std::pair<LineEnd, std::string> ends[] = {
        {LineEnd::Lf, "\n"}, {LineEnd::CrLf, "\r\n"}, {LineEnd::Cr, "\r"}};
    for (const auto& [end, bytes] : ends) {
        std::string expected;
        for (const std::string& line : lines)
            expected += (expected.empty() ? "" : bytes) + line;
        EXPECT_EQ(text.written({ENCODING_UTF8, true, end}), expected);
        EXPECT_EQ(text.buffer.getCommonLineEnd(), end);
    }
    EXPECT_EQ(text.written({ENCODING_UTF8, false}), text.written({ENCODING_UTF8, true}).substr(3));
    EXPECT_EQ(text.buffer.getCommonLineEnd(), std::nullopt) << "mixed";
}

TEST(TextFileContents, aLastLineWithoutBreakGetsOneWhenItIsNoLongerLast) {
    OpenedText text("<a>\n</a>");
    text.insert(1, 4, u"\n<b/>");
    EXPECT_EQ(text.written(), "<a>\n</a>\n<b/>");
    OpenedText moved("<a>\n</a>");
    moved.buffer.splitLine(1, 4);
    EXPECT_EQ(moved.written(), "<a>\n</a>\n");
    OpenedText broken("<?xml version='1.0' encoding='utf-8'?>\n\xff");
    broken.buffer.splitLine(1, 1);
    EXPECT_TRUE(broken.written().ends_with("\n\xff\n")) << "the line itself was not edited";
}

TEST(TextFileContents, anotherEncodingWritesAnew) {
    OpenedText text("<a>\xC3\xA9</a>\r\n<b/>\n");
    EXPECT_EQ(text.written({ENCODING_LATIN1}), "<a>\xE9</a>\r\n<b/>\n");
    EXPECT_EQ(text.written({ENCODING_UTF16}), "<\0a\0>\0\xE9\0<\0/\0a\0>\0\r\0\n\0<\0b\0/\0>\0\n\0"s);
}

// Edits here and there: what was written loads as the same lines, and untouched lines are in it as they were.
TEST(TextFileContents, randomEditsLoseNothing) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        test::Random random(seed);
        // Without the declaration, taking away the last byte that is not UTF-8 would change how the rest is
        // read.
        std::string bytes = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
        const std::string_view pieces[] = {
            "<a>", "x", "\n", "\r\n", "\r", "\xff", "\xC3\xA9", "\xF0\x9F\x98\x80", "\t"};
        for (int i = random.below(900); i > 0; --i)
            bytes += random.pick(pieces);
        OpenedText text(bytes);
        ASSERT_EQ(text.written(), bytes);
        for (int i = 0; i < 20 && text.buffer.getLineCount() > 1; ++i) {
            const int line = 1 + random.below(text.buffer.getLineCount() - 1);
            int col = random.below(text.buffer.getLineLength(line) + 1);
            if (col < text.buffer.getLineLength(line) &&
                (text.buffer.getLineText(line)[static_cast<std::size_t>(col)] & 0xFC00) == 0xDC00)
                --col; // half of a pair has no bytes
            if (random.oneIn(3))
                text.insert(line, col, random.oneIn(2) ? u"\n" : u"\u00e9y");
            else
                text.buffer.erase(line, 0, line, col);
            std::u16string expected;
            for (int l = 0; l < text.buffer.getLineCount(); ++l) {
                if (l > 0 && !text.buffer.getContinuesPrevious(l))
                    expected += u'\n';
                expected += text.buffer.getLineText(l);
            }
            OpenedText again(text.written());
            std::u16string found;
            for (int l = 0; l < again.buffer.getLineCount(); ++l) {
                if (l > 0 && !again.buffer.getContinuesPrevious(l))
                    found += u'\n';
                found += again.buffer.getLineText(l);
            }
            // A last line that is empty has no break of its own to come back with.
            ASSERT_TRUE(found == expected || found + u'\n' == expected);
        }
    }
}

} // namespace
} // namespace tavrin
