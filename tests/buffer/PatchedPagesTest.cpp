// Pages of which parts of lines were replaced, and which keep to the bytes that they were loaded from.

#include "buffer/Buffer.h"
#include "buffer/LineStore.h"
#include "buffer/RecordingParser.h"
#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tavrin {
namespace {

using Form = TextSource::Form;

constexpr int lineCount = 3000;

std::unique_ptr<TextSource> sourceOf(std::string_view bytes, Form form) {
    return std::make_unique<TextSource>(test::blockOf(bytes), 0, form, true);
}

std::string repeated(std::string_view line, std::string_view lineBreak) {
    std::string text;
    for (int i = 0; i < lineCount; ++i)
        text.append(line).append(lineBreak);
    return text;
}

std::vector<LineReplacement> everyThird(int col, int length, std::u16string_view text) {
    std::vector<LineReplacement> changes;
    for (int line = 0; line < lineCount; line += 3)
        changes.push_back({line, col, length, text});
    return changes;
}

void replace(LineStore& store, const std::vector<LineReplacement>& changes) {
    store.replace(changes);
    store.commit();
    store.checkInvariants();
}

struct Replaced {
    const char* name;
    Form form;
    std::string line;
    int col;
    int length;
    std::u16string text;
    std::u16string expected;
    bool staysCold;
};

const Replaced replacedParts[] = {
    {"ASCII", Form::Utf8, "<a b='c'/>", 3, 1, u"long", u"<a long='c'/>", true},
    {"with a tab", Form::Utf8, "\tabc", 1, 2, u"\t\t", u"\t\t\tc", true},
    {"to nothing", Form::Utf8, "abc", 0, 3, u"", u"", true},
    {"behind other characters", Form::Utf8, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80xyz", 4, 2, u"\u00FC",
     u"\u00E9\u20AC\xD83D\xDE00\u00FCz", true},
    {"a pair", Form::Utf8, "\xF0\x9F\x98\x80x", 0, 2, u"\xD83D\xDE01", u"\xD83D\xDE01x", true},
    {"half a pair", Form::Utf8, "\xF0\x9F\x98\x80x", 1, 1, u"\xDE01", u"\xD83D\xDE01x", false},
    {"by half a pair", Form::Utf8, "abc", 1, 1, u"\xDE01",
     u"a\xDE01"
     u"c",
     false},
    {"by a carriage return", Form::Utf8, "abc", 1, 1, u"\r", u"a\rc", false},
    {"by a mark", Form::Utf8, "abc", 1, 1, u"\uFEFF",
     u"a\uFEFF"
     u"c",
     true},
    {"up to the longest line", Form::Utf8, "abc", 3, 0, std::u16string(508, u'x'),
     u"abc" + std::u16string(508, u'x'), true},
    {"beyond the longest line", Form::Utf8, "abc", 3, 0, std::u16string(509, u'x'),
     u"abc" + std::u16string(509, u'x'), false},
    {"ISO-8859-1", Form::Latin1, "\xE9xy", 1, 1, u"\u00FF", u"\u00E9\u00FFy", true},
    {"what ISO-8859-1 lacks", Form::Latin1, "\xE9xy", 1, 1, u"\u20AC", u"\u00E9\u20ACy", false},
    {"behind the end", Form::Utf8, "abc", 2, 9, u"x", u"abx", true},
    {"far behind the end", Form::Utf8, "abc", 7, 2, u"x", u"abcx", true},
};

TEST(PatchedPages, replacePartsOfLines) {
    for (const Replaced& tested : replacedParts)
        for (const std::string_view lineBreak : {"\n", "\r\n", "\r"}) {
            SCOPED_TRACE(std::string(tested.name) + " " + std::to_string(lineBreak.size()));
            LineStore store;
            store.load(sourceOf(repeated(tested.line, lineBreak), tested.form));
            const std::u16string before(store.line(1).text());
            const int loadedColumns = store.columns();
            const std::vector<LineReplacement> changes = everyThird(tested.col, tested.length, tested.text);
            replace(store, changes);
            EXPECT_EQ(store.warmPageCount() == 0, tested.staysCold);
            for (int line = 0; line < lineCount; ++line) {
                ASSERT_EQ(store.line(line).text(), line % 3 == 0 ? tested.expected : before) << line;
                ASSERT_EQ(store.line(line).isLoaded(), line % 3 != 0);
            }
            if (!tested.staysCold || static_cast<std::size_t>(tested.col) > before.size())
                continue;
            const std::u16string erased =
                before.substr(static_cast<std::size_t>(tested.col), static_cast<std::size_t>(tested.length));
            replace(store, everyThird(tested.col, static_cast<int>(tested.text.size()), erased));
            EXPECT_EQ(store.loadedRun(0).end, LineStore::pageLines) << "as it was loaded";
            EXPECT_EQ(store.columns(), loadedColumns);
            for (int line = 0; line < lineCount; ++line)
                ASSERT_EQ(store.line(line).text(), before) << line;
        }
}

/// Reading, and then editing, lines beside patched ones.
TEST(PatchedPages, becomeChangedPagesLikeOthers) {
    for (const bool isUtf16 : {false, true}) {
        test::RecordingParser parser;
        Buffer buffer;
        buffer.setParser(&parser);
        const std::string text = repeated("one two", "\n");
        if (isUtf16) {
            buffer.loadText(std::u16string(text.begin(), text.end()).data(), text.size());
        } else {
            SmartPtr<ByteBuffer> block = ByteBuffer::allocate(text.size());
            std::ranges::copy(text, block->data());
            buffer.loadBytes(std::move(block));
        }
        std::vector<std::u16string> expected = test::linesOf(buffer);
        const auto replaceAll = [&](int col, int length, std::u16string_view with) {
            for (int line = 0; line < lineCount; line += 3)
                expected[static_cast<std::size_t>(line)].replace(static_cast<std::size_t>(col),
                                                                 static_cast<std::size_t>(length), with);
            buffer.replaceInLines(everyThird(col, length, with));
        };
        replaceAll(4, 3, u"three");
        buffer.splitLine(0, 2);
        buffer.erase(0, 2, 1, 0);
        buffer.insert(900, 1, u'!');
        expected[900].insert(1, u"!");
        buffer.splitLine(1801, 3); // the lines below move to other pages and outlive the patches
        buffer.erase(1801, 3, 1802, 0);
        replaceAll(0, 2, u"\u20AC");
        replaceAll(1, 1, u"");
        buffer.checkInvariants();
        EXPECT_EQ(test::linesOf(buffer), expected);
        if (isUtf16)
            continue;
        EXPECT_FALSE(buffer.getLoadedBytes(3)) << "edited";
        EXPECT_EQ(buffer.getLoadedBytes(4)->size(), 7U);
        EXPECT_EQ(buffer.getLoadedLines(4).end, 6);
        EXPECT_EQ(buffer.getLoadedLines(4).bytes.data(), buffer.getAllLoadedBytes().data() + 32);
    }
}

} // namespace
} // namespace tavrin
