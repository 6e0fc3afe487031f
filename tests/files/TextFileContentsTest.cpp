#include "files/TextFileContents.h"

#include "parsers/XmlLangParser.h"
#include "support.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tavrin {
namespace {

using namespace std::string_literals;

/// A text as the program has it: loaded, edited, written.
struct LoadedText {
    explicit LoadedText(std::string_view bytes) {
        buffer.setParser(&parser);
        parser.setBuffer(&buffer);
        auto block = ByteBuffer::allocate(bytes.size());
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(block->data()));
        buffer.loadBytes(std::move(block), &report);
    }
    [[nodiscard]] std::string written(int encoding) {
        std::string out;
        textFileContents(buffer, {encoding, report.byteOrderMark})([&](std::string_view piece) {
            out += piece;
            return true;
        });
        return out;
    }
    [[nodiscard]] std::string written() { return written(buffer.getEncoding()); }
    void insert(int line, int col, std::u16string_view text) {
        int endLine = 0;
        int endCol = 0;
        buffer.insertText(line, col, text, endLine, endCol);
    }

    Buffer buffer;
    XmlLangParser parser;
    DecodeReport report;
};

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
    };
    for (const std::string& bytes : cases)
        EXPECT_EQ(LoadedText(bytes).written(), bytes);
}

TEST(TextFileContents, anEditChangesItsPlaceOnly) {
    const std::string before = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<a>\xff</a>\n<b>\r</b>\n";
    struct Case {
        const char* what;
        void (*edit)(LoadedText& text);
        std::string after;
    };
    const std::string head = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n";
    const Case cases[] = {
        {"a character", [](LoadedText& t) { t.insert(2, 0, u"\u20ac"); },
         head + "<a>\xff</a>\n\xE2\x82\xAC<b>\r</b>\n"},
        {"a new line", [](LoadedText& t) { t.insert(2, 3, u"\n"); }, head + "<a>\xff</a>\n<b>\r\r</b>\n"},
        {"a joined line", [](LoadedText& t) { t.buffer.erase(2, 3, 3, 0); }, head + "<a>\xff</a>\n<b></b>\n"},
        {"the last line gone", [](LoadedText& t) { t.buffer.erase(2, 3, 3, 4); },
         head + "<a>\xff</a>\n<b>\n"},
        {"the broken byte", [](LoadedText& t) { t.buffer.erase(1, 3, 1, 4); }, head + "<a></a>\n<b>\r</b>\n"},
    };
    for (const Case& c : cases) {
        LoadedText text(before);
        c.edit(text);
        EXPECT_EQ(text.written(), c.after) << c.what;
    }
}

TEST(TextFileContents, aLastLineWithoutBreakGetsOneWhenItIsNoLongerLast) {
    LoadedText text("<a>\n</a>");
    text.insert(1, 4, u"\n<b/>");
    EXPECT_EQ(text.written(), "<a>\n</a>\n<b/>");
    LoadedText moved("<a>\n</a>");
    moved.buffer.splitLine(1, 4);
    EXPECT_EQ(moved.written(), "<a>\n</a>\n");
}

TEST(TextFileContents, anotherEncodingWritesAnew) {
    LoadedText text("<a>\xC3\xA9</a>\r\n<b/>\n");
    EXPECT_EQ(text.written(ENCODING_LATIN1), "<a>\xE9</a>\r\n<b/>\n");
    EXPECT_EQ(text.written(ENCODING_UTF16), "<\0a\0>\0\xE9\0<\0/\0a\0>\0\r\0\n\0<\0b\0/\0>\0\n\0"s);
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
        LoadedText text(bytes);
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
            LoadedText again(text.written());
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
