#include "buffer/Buffer.h"
#include "buffer/RecordingParser.h"
#include "support.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

constexpr int down = FIND_DOWN;
constexpr int up = FIND_UP;
constexpr int wrap = FIND_WRAP;
constexpr int exact = FIND_MATCH_CASE;
constexpr int word = FIND_WHOLE_WORD;

struct SearchCase {
    const char16_t* text;
    const char16_t* what;
    int flags;
    int line, col;
    int foundLine, foundCol; ///< -1 for not found
};

TEST(BufferFind, findsByDirectionCaseAndWord) {
    const SearchCase cases[] = {
        {u"a cat\ncat", u"cat", down, 0, 0, 0, 2},
        {u"a cat\ncat", u"cat", down, 0, 3, 1, 0},
        {u"a cat\ncat", u"cat", up, 1, 2, 0, 2},
        {u"a cat\ncat", u"cat", up, 1, 3, 1, 0},
        {u"abc", u"bc", up | exact, 0, 3, 0, 1},
        {u"a cat", u"CAT", down, 0, 0, 0, 2},
        {u"a cat", u"CAT", down | exact, 0, 0, -1, -1},
        {u"\u00C4\u0431", u"\u00E4\u0411", down, 0, 0, 0, 0},
        {u"cats", u"cat", down | word, 0, 0, -1, -1},
        {u"bobcat", u"cat", down | word, 0, 0, -1, -1},
        {u"cat_1", u"cat", down | word, 0, 0, 0, 0},
        {u"the cat.", u"cat", down | word, 0, 0, 0, 4},
        {u"cats cat", u"cat", down | word, 0, 0, -1, -1}, // the rejected one ends the line
        {u"cats cat\ncat", u"cat", down | word, 0, 0, 1, 0},
        {u"cat cats", u"cat", up | word, 0, 8, -1, -1},
        {u"cat\nx\nx", u"cat", down, 2, 0, -1, -1},
        {u"cat\nx\nx", u"cat", down | wrap, 2, 0, 0, 0},
        {u"cat x", u"cat", down | wrap, 0, 2, 0, 0}, // the starting line again, from its beginning
        {u"x\nx cat", u"cat", up | wrap, 0, 1, 1, 2},
        {u"x cat", u"cat", up | wrap, 0, 3, 0, 2},
        {u"aaa", u"aa", up, 0, 3, 0, 1},
        {u"a\nb", u"a\nb", down, 0, 0, -1, -1},
        {u"abc", u"", down, 0, 0, -1, -1},
        {u"abc", u"abcd", down | wrap, 0, 0, -1, -1},
        {u"abc", u"abcd", up | wrap, 0, 3, -1, -1},
        {u"", u"a", down | wrap, 0, 0, -1, -1},
        {u"", u"a", up | wrap, 0, 0, -1, -1},
    };
    test::RecordingParser parser;
    Buffer buffer;
    buffer.setParser(&parser);
    int index = 0;
    for (const SearchCase& c : cases) {
        SCOPED_TRACE(index++);
        buffer.loadText(c.text, std::char_traits<char16_t>::length(c.text));
        int line = -1;
        int col = -1;
        EXPECT_EQ(buffer.find(c.line, c.col, c.what, c.flags, line, col), c.foundLine >= 0);
        EXPECT_EQ(line, c.foundLine);
        EXPECT_EQ(col, c.foundCol);
    }
}

/// Pages as they were loaded are searched as one piece of memory, others line by line.
TEST(BufferFind, findsTheSameInLoadedAndInEditedLines) {
    int found = 0;
    for (unsigned seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        test::Random random(seed);
        std::u16string text;
        for (int lines = 1 + random.below(600); lines > 0; --lines) {
            const int length = random.oneIn(50) ? random.below(1200) : random.below(9);
            for (int i = 0; i < length; ++i)
                text += random.pick(std::u16string_view(u"aaAb.x"));
            text += random.pick(std::vector<std::u16string>{u"\n", u"\r\n", u"\r"});
        }
        test::RecordingParser parser;
        Buffer loaded;
        loaded.setParser(&parser);
        loaded.loadText(text.data(), text.size());
        if (random.oneIn(3)) // one page of them is no longer as loaded
            loaded.insert(random.below(loaded.getLineCount()), 0, u'b');
        std::u16string same;
        const int last = loaded.getLineCount() - 1;
        loaded.getText(0, 0, last, loaded.getLineLength(last), same);
        Buffer edited;
        edited.setParser(&parser);
        int line = 0;
        int col = 0;
        edited.insertText(0, 0, same, line, col);
        ASSERT_EQ(edited.getLineCount(), loaded.getLineCount());

        std::u16string what;
        while (what.empty() || !random.oneIn(4))
            what += random.pick(std::u16string_view(u"aAbx."));
        for (int i = 0; i < 40; ++i) {
            const int flags = random.below(32);
            const int fromLine = random.below(loaded.getLineCount());
            const int fromCol = random.below(loaded.getLineLength(fromLine) + 1);
            int places[2][2] = {{-1, -1}, {-1, -1}};
            const bool is = loaded.find(fromLine, fromCol, what, flags, places[0][0], places[0][1]);
            ASSERT_EQ(edited.find(fromLine, fromCol, what, flags, places[1][0], places[1][1]), is);
            ASSERT_EQ(places[0][0], places[1][0]) << flags;
            ASSERT_EQ(places[0][1], places[1][1]) << flags;
            found += is;
        }
    }
    EXPECT_GT(found, 2000);
}

/// Many replacements at once do what single edits do, and mark the lines stale once.
TEST(BufferReplace, writesEachLineOnce) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        test::Random random(seed);
        test::RecordingParser parser;
        Buffer buffer;
        buffer.setParser(&parser);
        std::u16string text;
        for (int lines = 1 + random.below(700); lines > 0; --lines)
            text += u"\tabc\tdef\n";
        buffer.loadText(text.data(), text.size());
        std::vector<std::u16string> expected = test::linesOf(buffer);
        std::vector<LineReplacement> changes;
        const std::u16string_view with[] = {u"", u"x", u"\ty\t", u"long enough"};
        for (int line = 0; line < buffer.getLineCount(); line += 1 + random.below(40))
            for (int col = random.below(3); col < 8; col += 1 + random.below(4)) {
                const int length = random.below(std::min(3, 9 - col));
                changes.push_back({line, col, length, random.pick(with)});
                col += length;
            }
        if (changes.empty())
            continue;
        for (auto change = changes.rbegin(); change != changes.rend(); ++change)
            expected[static_cast<std::size_t>(change->line)].replace(static_cast<std::size_t>(change->col),
                                                                     static_cast<std::size_t>(change->length),
                                                                     change->text);
        buffer.replaceInLines(changes);
        EXPECT_EQ(test::linesOf(buffer), expected);
        buffer.checkInvariants();
        const int first = changes.front().line;
        const int count = changes.back().line - first + 1;
        EXPECT_EQ(parser.replaced, (std::vector<test::RecordingParser::Replaced>{{first, count, count}}));
        EXPECT_EQ(parser.modified, std::vector{first});
    }
}

} // namespace
} // namespace tavrin
