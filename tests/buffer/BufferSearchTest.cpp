#include "buffer/Buffer.h"
#include "buffer/RecordingParser.h"

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

} // namespace
} // namespace tavrin
