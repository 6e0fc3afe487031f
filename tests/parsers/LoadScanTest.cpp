// What a load finds out beside the lines is what the parser finds by reading them, and notes what a walk over
// their tags notes.

#include "buffer/Buffer.h"
#include "buffer/TextLoader.h"
#include "buffer/UnparsedBuffer.h"
#include "parsers/TagNote.h"
#include "parsers/TagWalk.h"
#include "parsers/XmlLangParser.h"
#include "support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace tavrin {
namespace {

using test::Random;

/// Reads every line as text.
class LineByLine : public XmlLangParser {
    [[nodiscard]] const LineScan* lineScan() const override { return nullptr; }
};

template <class Parser>
struct Coloured {
    Coloured() {
        parser->setBuffer(&buffer);
        buffer.setParser(parser.get());
    }
    SmartPtr<Parser> parser{new Parser};
    Buffer buffer;
};

LoadedText inPieces(std::string_view bytes, const LineScan* scan, std::size_t expected) {
    TextLoader loader(expected, scan);
    while (!bytes.empty()) {
        const std::span<std::uint8_t> room = loader.room();
        const std::size_t count = std::min({room.size(), bytes.size(), std::size_t{100'000}});
        std::memcpy(room.data(), bytes.data(), count);
        loader.add(count);
        bytes.remove_prefix(count);
    }
    return *loader.finish();
}

LoadedText fromFile(std::string_view bytes, const LineScan* scan) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::rewind(file.get());
    return TextLoader::readFile(file.get(), scan);
}

/// A text that is large enough for a second thread.
std::string textOf(unsigned seed, std::string_view start, std::string_view lineEnd,
                   const std::vector<std::string_view>& rare) {
    static const std::vector<std::string_view> parts = {
        "<a b=\"c\" d='e'>", "text", "</a>", "<!-- a", "-->", "<![CDATA[ <", "]]>",
        "<a\tb=\"x",         "\"/>", "<?pi", "?>"};
    Random random(seed);
    std::string text(start);
    while (text.size() < (5U << 20)) {
        for (int i = random.below(4); i >= 0; --i)
            text += random.oneIn(30) ? random.pick(parts) : "<a b=\"c\" d='e'>text and more text</a>";
        if (!rare.empty() && random.oneIn(2000))
            text += random.pick(rare);
        text += lineEnd;
    }
    return text;
}

TEST(LoadScan, equalsReadingTheLines) {
    const std::string longComment = "<!--" + std::string(900'000, '\n') + "-->";
    const std::string longLine = std::string(700, 'x') + "<!--" + std::string(600, '"') + "-->";
    const std::string texts[] = {
        textOf(1, "<?xml version='1.0'?>\n", "\n", {longLine}),
        textOf(2, "\xEF\xBB\xBF", "\r\n", {"\r", "\xC3\xA9\xF0\x9F\x98\x80"}),
        textOf(3, longComment, "\r", {"\n"}),
        textOf(4, "<a>\n", "\n", {"\r\xEF\xBB\xBF\n"}), // a page that only reading can tell
        textOf(5, "", "\n", {"\xE9"}),                  // no UTF-8, as shows late
        textOf(6, "<?xml version='1.0' encoding='utf-8'?>", "\n", {"\xFF", longLine}),
        textOf(7, "", " ", {}), // one line
        textOf(10, "<a>\n", "\n", {}) + "\xE9\n",
        textOf(8, "", "\n", {}) + longComment + textOf(9, "<!--", "\n", {}),
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 40));
        Random random(11);
        Coloured<LineByLine> read;
        read.buffer.loadBytes(test::blockOf(text));
        const int count = read.buffer.getLineCount();
        const LineScan* const scan = Coloured<XmlLangParser>().parser->lineScan();
        for (const int way : {0, 1, 2, 3}) {
            SCOPED_TRACE(way);
            Coloured<XmlLangParser> loaded;
            if (way == 0)
                loaded.buffer.loadBytes(test::blockOf(text));
            else
                loaded.buffer.adopt(way == 1 ? fromFile(text, scan)
                                             : inPieces(text, scan, way == 2 ? text.size() : (4U << 20) + 1));
            ASSERT_EQ(loaded.buffer.getLineCount(), count);
            ASSERT_NO_THROW(loaded.buffer.checkInvariants());
            if (way == 3) { // an edit before anything was read
                loaded.buffer.insert(count / 2, 0, u'<');
                read.buffer.insert(count / 2, 0, u'<');
            }
            for (const int line : {count / 3 + random.below(50), count - 1}) {
                ASSERT_TRUE(
                    std::ranges::equal(loaded.buffer.getLineFormats(line), read.buffer.getLineFormats(line)));
                for (int l = way % 2; l <= line; l += 2) {
                    ASSERT_EQ(loaded.buffer.getLineFlags(l) | PF_PARSED | PF_FORMATS,
                              read.buffer.getLineFlags(l) | PF_PARSED | PF_FORMATS)
                        << l;
                    ASSERT_EQ(loaded.buffer.getLineState(l), read.buffer.getLineState(l)) << l;
                }
            }
        }
    }
}

/// The same of elements in elements, each closed by its own end tag.
std::string nestedTextOf(unsigned seed, std::string_view start, std::string_view lineEnd,
                         const std::vector<std::string_view>& rare, int usualDepth) {
    static const std::vector<std::string_view> names = {"a", "p:part", "a-longer.name", "x_1"};
    static const std::vector<std::string_view> others = {
        "<a/>",         "<a b='>'>x</a>",     "<!-- a > b <c> -->",      "<![CDATA[ </a> ]]>",
        "<?pi a > b?>", "<a xmlns='u'>x</a>", "<p:part XMLNS:p = 'v'/>", "<x_1>a &lt; b</x_1>",
        "a > b"};
    Random random(seed);
    std::string text(start);
    std::vector<std::string_view> open;
    const auto maybeBreak = [&] { text += random.oneIn(20) ? lineEnd : " "; };
    while (text.size() < (5U << 20)) {
        const int depth = static_cast<int>(open.size());
        if (random.below(2 * usualDepth) >= depth) {
            open.push_back(random.pick(names));
            text += "<";
            text += open.back();
            maybeBreak();
            text += "id='some value'";
            maybeBreak();
            text += ">";
        } else {
            text += "</";
            text += open.back();
            text += ">";
            open.pop_back();
        }
        if (random.oneIn(3))
            text += random.pick(others);
        if (!rare.empty() && random.oneIn(20'000))
            text += random.pick(rare);
        text += lineEnd;
    }
    return text;
}

/// What is noted on the pages below each node right above them.
std::vector<const TagNote*> notesAbovePages(const Buffer& buffer) {
    std::vector<const TagNote*> notes;
    for (int end = 0; end < buffer.getLineCount();) {
        end = buffer.chunkAt(end).end;
        if (buffer.getChunkHeightEndingWith(end - 1) > 0)
            notes.push_back(
                static_cast<const TagNote*>(buffer.getChunkNote(buffer.getChunkEndingWith(end - 1, 1))));
    }
    return notes;
}

void expectEqual(const TagNote::Walk& one, const TagNote::Walk& other) {
    const auto startsOf = [](const TagNote::Walk& walk) {
        std::vector<std::tuple<TextPos, TextPos, std::u16string>> starts;
        for (const TagNote::StartTag& start : walk.starts)
            starts.emplace_back(start.tag, start.end, start.name);
        return starts;
    };
    EXPECT_TRUE(startsOf(one) == startsOf(other));
    EXPECT_EQ(one.ends, other.ends);
    ASSERT_EQ(one.stops, other.stops);
    if (one.stops)
        return; // the rest counts for nothing
    EXPECT_EQ(one.opening, other.opening);
    EXPECT_TRUE(one.rest == other.rest);
    EXPECT_EQ(one.isTooLong, other.isTooLong);
}

void expectEqualParents(const Buffer& one, const Buffer& other, Random& random, int count) {
    for (int i = 0; i < count; ++i) {
        const int last = one.getLineCount() - 1;
        const int line = i == 0 ? last : random.below(last);
        const TextPos at{line, one.getLineLength(line)};
        const auto parent = TagWalk(one).findParent(at);
        const auto wanted = TagWalk(other).findParent(at);
        ASSERT_EQ(parent.has_value(), wanted.has_value()) << line;
        ASSERT_TRUE(!parent || (parent->tag == wanted->tag && parent->end == wanted->end)) << line;
    }
}

TEST(LoadScan, notesWhatAWalkNotesLater) {
    enum Expected { None, Walks, All };
    const std::string longComment = "<!--" + std::string(20'000, '\n') + "> <a> -->";
    const std::string declaration = "<?xml version='1.0' encoding='utf-8'?>";
    const struct {
        std::string text;
        Expected expected; ///< of most nodes
    } cases[] = {
        {nestedTextOf(1, "", "\n", {longComment, "</a>", "<b>", "-->"}, 5), All},
        {nestedTextOf(2, "\xEF\xBB\xBF<!DOCTYPE a>", "\r\n", {"\r", "\xC3\xA9\xF0\x9F\x98\x80"}, 9), All},
        {nestedTextOf(3, longComment, "\r", {"\n", "]]>", "\xC3\xA9 xmlns:q='\xC3\xA9'"}, 30), All},
        {nestedTextOf(4, "", "\n", {"<a", "< >", "<![CDATA[", "\""}, 5), All},
        {nestedTextOf(5, "", "\n", {}, 2000), All}, // too many open tags to be kept
        {nestedTextOf(6, "", " ", {}, 5), All},     // lines are cut, also within names
        {nestedTextOf(7, "", "\xC3\xA9\n", {}, 5), Walks},
        {nestedTextOf(15, "", "<\xC3\xA9>x</\xC3\xA9>\n", {}, 5), None}, // names that only reading can tell
        {nestedTextOf(8, declaration, "\n", {}, 5) + "\xFF", None},      // invalid
        {nestedTextOf(10, "", "\n", {}, 5) + "\xE9\n", None},            // no UTF-8, as shows late
        {nestedTextOf(11, "", "\n\r\xEF\xBB\xBF\n", {}, 5), None},
        {textOf(12, "<a>\n", "\n", {}), All},
        {nestedTextOf(13, "", "\n", {}, 5).substr(0, 4U << 20), All},
        {nestedTextOf(14, "", "\n", {}, 5).substr(0, 2U << 20), None}, // too small for a second thread
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text.substr(0, 40));
        Coloured<LineByLine> read;
        read.buffer.loadBytes(test::blockOf(text));
        const int count = read.buffer.getLineCount();
        const LineScan* const scan = Coloured<XmlLangParser>().parser->lineScan();
        const std::vector<const TagNote*> unread = notesAbovePages(read.buffer);
        ASSERT_TRUE(std::ranges::all_of(unread, [](const TagNote* note) { return note == nullptr; }));
        for (int line = 0; line < count; line = read.buffer.chunkAt(line).end)
            TagWalk(read.buffer).note(line);
        const std::vector<const TagNote*> expectedNotes = notesAbovePages(read.buffer);
        for (const bool isFile : {false, true}) {
            SCOPED_TRACE(isFile);
            Coloured<XmlLangParser> loaded;
            loaded.buffer.adopt(isFile ? fromFile(text, scan) : inPieces(text, scan, text.size()));
            const std::vector<const TagNote*> notes = notesAbovePages(loaded.buffer);
            ASSERT_EQ(notes.size(), expectedNotes.size());
            std::size_t walks = 0;
            std::size_t declarations = 0;
            for (std::size_t i = 0; i < notes.size(); ++i) {
                SCOPED_TRACE(i);
                if (notes[i] && notes[i]->walks[0]) {
                    ++walks;
                    expectEqual(*notes[i]->walks[0], *expectedNotes[i]->walks[0]);
                }
                if (notes[i] && notes[i]->declaredBelow) {
                    ++declarations;
                    EXPECT_TRUE(*notes[i]->declaredBelow == *expectedNotes[i]->declaredBelow);
                }
            }
            EXPECT_EQ(2 * walks >= notes.size(), expected != None) << walks << " of " << notes.size();
            EXPECT_EQ(2 * declarations >= notes.size(), expected == All);
            Random random(1);
            expectEqualParents(loaded.buffer, read.buffer, random, 40);
        }
    }
}

TEST(LoadScan, notesWhatWasLoadedAndNotWhatWasEdited) {
    const std::string text = nestedTextOf(1, "", "\n", {}, 30);
    for (unsigned seed = 0; seed < 5; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Coloured<XmlLangParser> loaded;
        Coloured<LineByLine> read;
        loaded.buffer.loadBytes(test::blockOf(text));
        read.buffer.loadBytes(test::blockOf(text));
        for (int i = 0; i < 10; ++i) {
            const std::u16string_view tags = random.oneIn(2) ? u"<new>" : u"</a>\n</a><!--x-->";
            const int line = random.below(loaded.buffer.getLineCount());
            for (Buffer* const buffer : {&loaded.buffer, &read.buffer}) {
                TextPos end;
                buffer->insertText(line, 0, tags, end.line, end.col);
            }
            expectEqualParents(loaded.buffer, read.buffer, random, 2);
        }
    }
}

TEST(LoadScan, endsWithItsText) {
    const LineScan* const scan = Coloured<XmlLangParser>().parser->lineScan();
    const std::string text = nestedTextOf(1, "", "\n", {}, 5);
    Coloured<XmlLangParser> loaded;
    for (int i = 0; i < 10; ++i) {
        const LoadedText dropped = fromFile(text, scan);
        loaded.buffer.adopt(fromFile(text, scan)); // in place of one of which notes are still made
    }
    Coloured<LineByLine> read;
    read.buffer.loadBytes(test::blockOf(text));
    Random random(1);
    expectEqualParents(loaded.buffer, read.buffer, random, 10);
}

TEST(LoadScan, isNothingToAnotherParser) {
    const std::string text = textOf(1, "<a>\n", "\n", {});
    const LineScan* const scan = Coloured<XmlLangParser>().parser->lineScan();
    UnparsedBuffer buffer;
    buffer.adopt(fromFile(text, scan));
    for (const TagNote* note : notesAbovePages(buffer))
        ASSERT_EQ(note, nullptr);
    for (int line = 0; line < buffer.getLineCount(); ++line) {
        ASSERT_EQ(buffer.getLineFlags(line), 0) << line;
        ASSERT_EQ(buffer.getLineState(line), 0) << line;
    }
}

} // namespace
} // namespace tavrin
