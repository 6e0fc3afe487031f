#include "buffer/Buffer.h"

#include "buffer/RecordingParser.h"
#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavrin {
namespace {

using test::joined;
using test::RecordingParser;

class BufferTest : public testing::Test {
  protected:
    BufferTest() { buffer.setParser(&parser); }

    void load(std::u16string_view text) {
        buffer.loadText(text.data(), text.size());
        parser = {};
    }
    std::string codes(int line) {
        std::string out;
        for (int col = 0; col < buffer.getLineLength(line); ++col)
            out += static_cast<char>('0' + buffer.getCharFormat(line, col));
        return out;
    }

    RecordingParser parser;
    Buffer buffer;
};

TEST_F(BufferTest, startsWithoutLinesAndMakesOneForTheFirstInsertion) {
    EXPECT_EQ(buffer.getLineCount(), 0);
    EXPECT_EQ(buffer.getColumnCount(), 0);
    EXPECT_EQ(buffer.getEncoding(), ENCODING_UTF8);
    buffer.insert(0, 0, u'a');
    EXPECT_EQ(joined(buffer), "a");
    EXPECT_EQ(codes(0), "0");
    EXPECT_EQ(parser.modified, std::vector<int>{0});

    Buffer split;
    split.setParser(&parser);
    split.splitLine(0, 0);
    EXPECT_EQ(split.getLineCount(), 2);
}

TEST_F(BufferTest, insertsTextOfSeveralLines) {
    struct Case {
        const char16_t* text;
        int col;
        std::string lines;
        int endLine, endCol;
    };
    for (const Case& c :
         {Case{u"x\ny\nz", 1, "ax|y|zb", 2, 1}, Case{u"\n", 1, "a|b", 1, 0}, Case{u"x\n", 2, "abx|", 1, 0},
          Case{u"\n\n", 0, "||ab", 2, 0}, Case{u"xy", 1, "axyb", 0, 3}, Case{u"", 1, "ab", 0, 1}}) {
        load(u"ab");
        int line = -1;
        int col = -1;
        buffer.insertText(0, c.col, c.text, line, col);
        EXPECT_EQ(joined(buffer), c.lines);
        EXPECT_EQ(line, c.endLine) << c.lines;
        EXPECT_EQ(col, c.endCol) << c.lines;
        EXPECT_EQ(parser.modified.size(), static_cast<std::size_t>(c.endLine) + 1) << c.lines;
        EXPECT_TRUE(std::ranges::is_sorted(parser.modified));
    }
}

TEST_F(BufferTest, keepsCarriageReturnsOfInsertedText) {
    load(u"");
    int line = 0;
    int col = 0;
    buffer.insertText(0, 0, u"a\r\nb", line, col);
    EXPECT_EQ(buffer.getLineText(0), u"a\r");
    EXPECT_EQ(buffer.getLineText(1), u"b");
}

// Long lines are edited in place; the transactions nest and some are taken back.
TEST_F(BufferTest, takesBackEditsOfLongLines) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        SCOPED_TRACE(seed);
        test::Random random(seed);
        std::u16string model;
        for (int i = 0; i < 3 * BufferLine::longLine; ++i)
            model += random.oneIn(3) ? u'\t' : static_cast<char16_t>(u'a' + random.below(26));
        load(u"first");
        int line = 0;
        int col = 0;
        buffer.insertText(0, 0, model, line, col);
        model += u"first";
        const auto edit = [&] {
            const int at = random.below(static_cast<int>(model.size()) + 1);
            if (random.oneIn(3)) {
                const std::u16string text(static_cast<std::size_t>(random.below(40)), u'\t');
                buffer.insertText(0, at, text, line, col);
                model.insert(static_cast<std::size_t>(at), text);
            } else if (random.oneIn(3)) {
                const std::u16string_view own = buffer.getLineText(0).substr(0, 10); // of the line itself
                model.insert(static_cast<std::size_t>(at), std::u16string(own));
                buffer.insertText(0, at, own, line, col);
            } else {
                const int most = static_cast<int>(model.size()) - at;
                const int count = std::min(most, random.oneIn(9) ? BufferLine::longLine : random.below(50));
                buffer.erase(0, at, 0, at + count);
                model.erase(static_cast<std::size_t>(at), static_cast<std::size_t>(count));
            }
        };
        for (int step = 0; step < 60; ++step) {
            const std::u16string before = model;
            {
                Buffer::Transaction transaction(buffer);
                for (int i = random.below(4); i >= 0; --i)
                    edit();
                if (random.oneIn(4)) {
                    Buffer::Transaction inner(buffer);
                    edit();
                    inner.commit();
                }
                if (random.oneIn(2))
                    transaction.commit();
                else
                    model = before;
            }
            ASSERT_TRUE(buffer.getLineText(0) == model) << "step " << step;
            ASSERT_EQ(buffer.getColumnCount(), buffer.getLineColEffChars(0, buffer.getLineLength(0)));
            buffer.checkInvariants();
        }
    }
}

TEST_F(BufferTest, codesTravelWithTheirCharacters) {
    load(u"abcd");
    buffer.formatRange(0, 0, 2, 3);
    buffer.formatRange(0, 2, 1, 5);
    buffer.formatRange(0, 3, 1, 7);
    int line = 0;
    int col = 0;
    buffer.insertText(0, 2, u"\n", line, col);
    EXPECT_EQ(codes(0), "33");
    EXPECT_EQ(codes(1), "57");
    buffer.insert(1, 1, u'x');
    EXPECT_EQ(codes(1), "507");
    buffer.erase(0, 1, 1, 1);
    EXPECT_EQ(joined(buffer), "axd");
    EXPECT_EQ(codes(0), "307");
    buffer.insertText(0, 1, u"--", line, col);
    buffer.splitLine(0, 2);
    EXPECT_EQ(codes(0) + "|" + codes(1), "30|007");
    buffer.formatRange(1, 1, 1, 9);
    EXPECT_EQ(codes(1), "097");
    buffer.formatRange(1, 0, 3, 0);
    EXPECT_EQ(codes(1), "000");
    buffer.checkInvariants();
}

TEST_F(BufferTest, splitsAtEitherEndOfALine) {
    load(u"ab");
    buffer.setLineFlags(0, 8, 8);
    buffer.splitLine(0, 0);
    EXPECT_EQ(joined(buffer), "|ab");
    EXPECT_EQ(buffer.getLineFlags(0), 8);
    EXPECT_EQ(buffer.getLineFlags(1), 0);
    buffer.splitLine(1, 2);
    EXPECT_EQ(joined(buffer), "|ab|");
    EXPECT_EQ(parser.modified, (std::vector<int>{0, 1, 1, 2}));
    EXPECT_EQ(parser.replaced.back(), (RecordingParser::Replaced{1, 1, 2}));
}

TEST_F(BufferTest, erasesBetweenPositionsInAnyOrder) {
    struct Case {
        int line1, col1, line2, col2;
        std::string lines;
        std::vector<int> modified;
    };
    for (const Case& c : {Case{2, 1, 0, 3, "abckl", {0}}, Case{0, 3, 2, 1, "abckl", {0}},
                          Case{0, 6, 1, 0, "abcdefghi|jkl", {0, 1}}, Case{0, 4, 0, 1, "aef|ghi|jkl", {0}},
                          Case{1, 2, 1, 2, "abcdef|ghi|jkl", {}},
                          // one end does not exist in its line: that line stays as it is
                          Case{1, -1, 1, 2, "abcdef|ghi|jkl", {1}}, Case{1, 1, 1, 9, "abcdef|ghi|jkl", {1}},
                          Case{0, 2, 1, 9, "abghi|jkl", {0, 1}}}) {
        load(u"abcdef\nghi\njkl");
        buffer.erase(c.line1, c.col1, c.line2, c.col2);
        EXPECT_EQ(joined(buffer), c.lines);
        EXPECT_EQ(parser.modified, c.modified) << c.lines;
    }
}

TEST_F(BufferTest, readsTextBetweenPositionsInAnyOrder) {
    load(u"abc\ndefg\nh");
    std::u16string text = u"+";
    buffer.getText(1, 2, 0, 1, text);
    EXPECT_EQ(text, u"+bc\nde");
    buffer.getText(1, 3, 1, 3, text);
    buffer.getText(1, 3, 1, 1, text);
    EXPECT_EQ(text, u"+bc\ndeef");
    text.clear();
    buffer.getText(0, 3, 2, 0, text);
    EXPECT_EQ(text, u"\ndefg\n");
}

TEST_F(BufferTest, countsATabAsFourColumnsWhereverItStands) {
    load(u"a\tb\n\t\tx\n\tx\n");
    EXPECT_EQ(buffer.getLineColEffChars(0, 2), 5);
    EXPECT_EQ(buffer.getLineColEffChars(0, 3), 6);
    EXPECT_EQ(buffer.getLineColEffChars(1, 3), 9);
    EXPECT_EQ(buffer.getColumnCount(), 9);
    const int expected[] = {0, 0, 0, 1, 2, 2};
    for (int v = 0; v < 6; ++v)
        EXPECT_EQ(buffer.getLineColLogicChars(2, v), expected[v]) << v;
    buffer.erase(1, 0, 1, 1);
    EXPECT_EQ(buffer.getColumnCount(), 6);
    buffer.insert(2, 0, u'\t');
    EXPECT_EQ(buffer.getColumnCount(), 9);
    load(u"abc\n");
    EXPECT_EQ(buffer.getLineColLogicChars(0, 1), 2);
    EXPECT_EQ(buffer.getLineColLogicChars(0, 9), 3);
}

TEST_F(BufferTest, countsMoreTabsThanARecordHolds) {
    std::u16string tabs(70'000, u'\t');
    load(u"x");
    int line = 0;
    int col = 0;
    buffer.insertText(0, 0, tabs, line, col);
    EXPECT_EQ(buffer.getColumnCount(), 280'001);
    buffer.erase(0, 0, 0, 69'990);
    EXPECT_EQ(buffer.getColumnCount(), 41);
}

TEST_F(BufferTest, setsFlagsOfOneLineAndOfARange) {
    load(u"a\nb\nc\nd");
    buffer.setLineFlags(1, 3, 3);
    buffer.setLineFlags(1, 4, 6);
    EXPECT_EQ(buffer.getLineFlags(1), 5);
    buffer.setLineFlags(0, 0x10, 0); // bits of value outside the mask are set as well
    EXPECT_EQ(buffer.getLineFlags(0), 0x10);
    buffer.setLineFlags(1, 4, 2, 7);
    EXPECT_EQ(buffer.getLineFlags(0), 0x10);
    EXPECT_EQ(buffer.getLineFlags(1), 2);
    EXPECT_EQ(buffer.getLineFlags(3), 2);
}

TEST_F(BufferTest, asksTheParserBeforeCodesAreRead) {
    load(u"a\nb");
    (void)buffer.getCharFormat(1, 0);
    (void)buffer.getLineFormats(0);
    buffer.formatRange(0, 0, 1, 5);
    EXPECT_EQ(parser.parsed, (std::vector<int>{1, 0}));
}

TEST_F(BufferTest, runsCoverTheWholeLineOnceItHasACode) {
    load(u"abcdef");
    EXPECT_TRUE(buffer.getLineFormats(0).empty());
    buffer.formatRange(0, 1, 2, 5);
    const auto runs = buffer.getLineFormats(0);
    EXPECT_EQ(std::vector(runs.begin(), runs.end()), (std::vector<FormatRun>{{1, 0}, {3, 5}, {6, 0}}));
}

// Random edits of a store of many pages, against the plain list that it stands for.
TEST(LineStore, equalsAPlainListUnderRandomEdits) {
    struct Plain {
        std::u16string text;
        int flags;
        bool continues;
    };
    for (unsigned seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        test::Random random(seed);
        LineStore store;
        std::vector<Plain> plain;
        const auto newLine = [&](std::u16string text) {
            BufferLine line;
            line.insert(0, text);
            return line;
        };
        for (int step = 0; step < 600; ++step) {
            const int count = static_cast<int>(plain.size());
            const int at = random.below(count + 1);
            switch (random.below(6)) {
            case 0: {
                const std::u16string text(static_cast<std::size_t>(random.below(5)), u'\t');
                std::vector<BufferLine> line;
                line.push_back(newLine(text));
                store.replace(at, at, std::move(line));
                plain.insert(plain.begin() + at, {text, 0, false});
                break;
            }
            case 1: {
                const int many = random.oneIn(4) ? random.below(2000) : random.below(100);
                std::vector<BufferLine> lines;
                std::vector<Plain> more;
                for (int i = 0; i < many; ++i) {
                    lines.push_back(newLine(u"ab"));
                    more.push_back({u"ab", 0, false});
                }
                store.replace(at, at, std::move(lines));
                plain.insert(plain.begin() + at, more.begin(), more.end());
                break;
            }
            case 2: {
                const int last =
                    std::min(count, at + (random.oneIn(5) ? random.below(1500) : random.below(20)));
                store.replace(at, last, {});
                plain.erase(plain.begin() + at, plain.begin() + last);
                break;
            }
            case 3:
            case 4: {
                const int last = random.oneIn(3) ? count : std::min(count, at + random.below(700));
                const int mask = random.below(256);
                const int value = random.below(256) & mask;
                store.setFlags(at, last, value, mask);
                for (int i = at; i < last; ++i)
                    plain[static_cast<std::size_t>(i)].flags =
                        (plain[static_cast<std::size_t>(i)].flags & ~mask) | value;
                break;
            }
            default:
                if (count > 0) {
                    const int index = random.below(count);
                    store.edit(index, [&](BufferLine& line) {
                        line.insert(0, u"xyz");
                        line.continuesPrevious = true;
                    });
                    plain[static_cast<std::size_t>(index)].text.insert(0, u"xyz");
                    plain[static_cast<std::size_t>(index)].continues = true;
                }
            }
            if (step % 20 == 0) {
                ASSERT_NO_THROW(store.checkInvariants()) << step;
            }
        }
        ASSERT_EQ(store.lineCount(), static_cast<int>(plain.size()));
        std::int64_t length = 0;
        int columns = 0;
        for (int i = 0; i < store.lineCount(); ++i) {
            const Plain& line = plain[static_cast<std::size_t>(i)];
            ASSERT_EQ(store.line(i).text(), line.text) << i;
            ASSERT_EQ(store.flags(i), line.flags) << i;
            length += static_cast<std::int64_t>(line.text.size()) + (i > 0 && !line.continues ? 2 : 0);
            columns = std::max(columns, store.line(i).columns());
        }
        EXPECT_EQ(store.savedLength(), length);
        EXPECT_EQ(store.columns(), columns);
    }
}

} // namespace
} // namespace tavrin
