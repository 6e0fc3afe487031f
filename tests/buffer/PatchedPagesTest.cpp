// Pages of which parts of lines were replaced, and which keep to the bytes that they were loaded from.

#include "buffer/Buffer.h"
#include "buffer/LineStore.h"
#include "buffer/RecordingParser.h"
#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

struct CutText {
    const char* name;
    Form form;
    std::string text;
    bool staysCold; ///< while what comes has the form
};

std::string times(int count, std::string_view part) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += part;
    return text;
}

std::string asUtf16(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

std::vector<CutText> textsWithCuts() {
    const std::string line = times(90, "<a b='c'>\ttext</a>"); // ends within the fourth piece
    const std::string pairs = times(400, "<a>\xF0\x9F\x98\x80</a>\t");
    std::u16string units;
    for (int i = 0; i < 40000; ++i)
        units += i % 5000 == 4999 ? u"\r\n" : u"a\t\xD83D\xDE00";
    return {
        {"one line", Form::Utf8, times(200, line), true},
        {"ends with a cut", Form::Utf8, std::string(512 * 300, 'x'), true},
        {"short lines between", Form::Utf8, times(150, line + "\n\nab\n"), true},
        {"CR LF", Form::Utf8, times(150, line + "\r\n" + std::string(511, 'y') + "\r\n"), true},
        {"breaks where cuts are", Form::Utf8, times(150, std::string(512, 'z') + "\r" + line + "\n"), true},
        {"a mark", Form::Utf8, "\xEF\xBB\xBF" + times(200, line), true},
        {"accents", Form::Utf8, times(9000, "gr\xC3\xBC\xC3\x9F\x65 "), true},
        {"pairs, some of them cut", Form::Utf8, times(60, pairs), false},
        {"pairs beside cuts", Form::Utf8, times(900, std::string(510, 'x') + "\xF0\x9F\x98\x80"), false},
        {"ISO-8859-1", Form::Latin1, times(9000, "gr\xFC\xDF\x65\t"), true},
        {"UTF-16", Form::Utf16, asUtf16(units), true},
    };
}

void expectSameLines(const LineStore& store, const LineStore& other) {
    ASSERT_EQ(store.lineCount(), other.lineCount());
    EXPECT_EQ(store.columns(), other.columns());
    EXPECT_EQ(store.savedLength(), other.savedLength());
    EXPECT_EQ(store.lineEnds(), other.lineEnds());
    for (int i = 0; i < store.lineCount(); ++i) {
        const std::u16string text(other.line(i).text());
        ASSERT_EQ(store.length(i), static_cast<int>(text.size())) << i;
        ASSERT_EQ(store.line(i).text(), text) << i;
        ASSERT_EQ(store.line(i).continuesPrevious, other.line(i).continuesPrevious) << i;
        ASSERT_EQ(store.line(i).lineEnd, other.line(i).lineEnd) << i;
        ASSERT_EQ(store.line(i).columns(), other.line(i).columns()) << i;
        ASSERT_LE(other.line(i).isLoaded(), store.line(i).isLoaded()) << i;
    }
}

/// Changes, and those that undo them.
struct Replacing {
    std::vector<std::u16string> erased;
    std::vector<LineReplacement> forward;
    std::vector<LineReplacement> backward;
};

Replacing replaceSome(const LineStore& store, std::span<const std::u16string_view> texts,
                      test::Random& random) {
    Replacing made;
    made.erased.reserve(static_cast<std::size_t>(2 * store.lineCount()));
    for (int line = random.below(3); line < store.lineCount(); line += 1 + random.below(9)) {
        const std::u16string text(store.line(line).text());
        int shift = 0;
        for (int col = random.oneIn(2) ? 0 : random.below(static_cast<int>(text.size()) + 1), i = 0;
             i < 2 && col <= static_cast<int>(text.size()); ++i) {
            const int rest = static_cast<int>(text.size()) - col;
            const int length = random.oneIn(9) ? rest : random.below(std::min(9, rest + 1));
            const std::u16string_view with = random.pick(texts);
            made.erased.emplace_back(text, static_cast<std::size_t>(col), static_cast<std::size_t>(length));
            made.forward.push_back({line, col, length, with});
            made.backward.push_back({line, col + shift, static_cast<int>(with.size()), made.erased.back()});
            shift += static_cast<int>(with.size()) - length;
            col += length + random.below(600);
        }
    }
    return made;
}

/// In the bytes, a return and a feed would be one break.
TEST(PatchedPages, leaveNoFeedBehindAReturnOfAnotherLine) {
    for (const std::string_view between : {"ab", "a"}) {
        LineStore store;
        store.load(sourceOf(std::string(600, 'x').append("\r").append(between).append("\n"), Form::Utf8));
        replace(store, {{2, 0, 1, u""}});
        EXPECT_EQ(store.line(1).lineEnd, LineEnd::Cr);
        EXPECT_EQ(store.line(2).text().size(), between.size() - 1);
        EXPECT_EQ(store.line(2).lineEnd, LineEnd::Lf);
        EXPECT_EQ(store.storedLines(0).has_value(), between.size() > 1);
    }
}

/// Lines keep beginning and ending where they did, whatever length that gives them, as in pages that hold
/// their lines in memory.
TEST(PatchedPages, keepCutsAsChangedPagesDo) {
    const std::u16string longText(700, u'q');
    const std::u16string_view texts[] = {u"",      u"\tab",   u"x",      u"longer than what was",
                                         longText, u"\u00E4", u"\u20AC", u"\xD83D\xDE00"};
    for (const CutText& tested : textsWithCuts())
        for (unsigned seed = 1; seed <= 6; ++seed) {
            SCOPED_TRACE(std::string(tested.name) + ", seed " + std::to_string(seed));
            test::Random random(seed);
            LineStore store;
            LineStore changed;
            LineStore loaded;
            for (LineStore* each : {&store, &changed, &loaded})
                each->load(sourceOf(tested.text, tested.form));
            for (int line = 0; line < changed.lineCount(); line = changed.chunkAt(line).end)
                changed.edit(line, [](BufferLine&) {});
            changed.commit();
            const bool isPlain = seed <= 3; // what comes has the form
            const std::span<const std::u16string_view> mayCome = std::span(texts).first(isPlain ? 5 : 8);
            std::vector<Replacing> steps;
            for (int i = 0; i < 3; ++i) {
                steps.push_back(replaceSome(changed, mayCome, random));
                replace(store, steps.back().forward);
                if (tested.staysCold && isPlain) {
                    EXPECT_EQ(store.warmPageCount(), 0);
                }
                replace(changed, steps.back().forward);
                expectSameLines(store, changed);
                store.checkInvariants();
            }
            for (; !steps.empty(); steps.pop_back()) {
                replace(store, steps.back().backward);
                replace(changed, steps.back().backward);
                expectSameLines(store, changed);
            }
            for (int line = 0; line < loaded.lineCount(); ++line)
                ASSERT_EQ(store.line(line).text(), std::u16string(loaded.line(line).text())) << line;
            if (tested.staysCold && isPlain) {
                EXPECT_EQ(store.loadedRun(0).end, store.chunkAt(0).end) << "as it was loaded";
            }
        }
}

} // namespace
} // namespace tavrin
