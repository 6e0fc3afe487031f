// Lines whose store is the loaded bytes, and which are decoded only to be read.

#include "buffer/Buffer.h"
#include "buffer/LineStore.h"
#include "buffer/RecordingParser.h"
#include "platform/core/Utf8.h"
#include "support.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>

namespace tavrin {
namespace {

using test::blockOf;
using test::linesOf;
using test::Random;
using test::RecordingParser;

std::string_view asText(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string_view endText(LineEnd end) {
    static constexpr std::string_view texts[] = {"", "\r\n", "\n", "\r"};
    return texts[static_cast<std::size_t>(end)];
}

struct LoadedBuffer {
    LoadedBuffer() { buffer.setParser(&parser); }
    explicit LoadedBuffer(std::string_view bytes) : LoadedBuffer() {
        buffer.loadBytes(blockOf(bytes), &report);
    }
    RecordingParser parser;
    Buffer buffer;
    DecodeReport report;
};

std::string inUtf16(std::string_view utf8) {
    std::u16string units(utf8.size() + 1, u'\uFEFF');
    DecodeReport report;
    units.resize(1 + decodeUtf8({reinterpret_cast<const std::uint8_t*>(utf8.data()), utf8.size()},
                                units.data() + 1, OnInvalid::Replace, report));
    return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)};
}

std::string randomBytes(Random& random, int pieces) {
    static constexpr std::string_view plain[] = {"\n", "\r", "\r\n", "\t", "a", "<bc>", "\n"};
    static constexpr std::string_view special[] = {"\xEF\xBB\xBF", "\xC3\xA9", "\xE2\x82\xAC",
                                                   "\xF0\x9F\x98\x80", "\r\xEF\xBB\xBF\n"};
    static constexpr std::string_view broken[] = {"\xFF", "\xE2\x82", "\xF0\x9F\x98", "\xC0\xAF", "\x80"};
    const bool withSpecial = !random.oneIn(3);
    const bool withBroken = random.oneIn(2);
    std::string bytes;
    for (int i = random.below(pieces); i > 0; --i) {
        bytes += random.pick(plain);
        if (withSpecial)
            bytes += random.pick(special);
        if (withBroken && random.oneIn(5))
            bytes += random.pick(broken);
        if (random.oneIn(6)) // near the length at which lines are cut
            bytes.append(
                static_cast<std::size_t>(random.oneIn(2) ? 505 + random.below(16) : random.below(1600)), 'x');
        if (withSpecial && random.oneIn(8))
            for (int k = 250 + random.below(12); k > 0; --k)
                bytes += special[3];
    }
    return bytes;
}

// The way over one block of UTF-16 is the older and simpler one.
TEST(ColdPages, loadTheLinesThatConvertingEverythingGives) {
    static constexpr std::string_view starts[] = {
        "", "\xEF\xBB\xBF", "<?xml version='1.0' encoding='utf-8'?>",
        "<?xml version='1.0' encoding='iso-8859-1'?>\r", "<?xml version='1.0' encoding='windows-1252'?>\r\n"};
    for (unsigned seed = 1; seed <= 1500; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        std::string bytes(random.pick(starts));
        bytes += randomBytes(random, 60);
        if (random.oneIn(8)) { // two bytes a character, odd lengths and unpaired surrogates included
            bytes = "\xFF\xFE";
            static constexpr std::string_view units[] = {{"a\0", 2},      {"\n\0", 2},     {"\r\0", 2},
                                                         {"\xFF\xFE", 2}, {"\x3D\xD8", 2}, {"\x00\xDE", 2}};
            for (int i = random.below(2000); i > 0; --i)
                bytes += random.pick(units);
            if (random.oneIn(4))
                bytes += 'x';
        }
        LoadedBuffer whole;
        DecodeReport expected;
        const SmartPtr<ByteBuffer> converted = blockOf(bytes);
        whole.buffer.loadFromByteBuffer(converted.get(), &expected);
        LoadedBuffer cold(bytes);
        ASSERT_EQ(linesOf(cold.buffer), linesOf(whole.buffer));
        for (int line = 0; line < cold.buffer.getLineCount(); ++line)
            ASSERT_EQ(cold.buffer.getContinuesPrevious(line), whole.buffer.getContinuesPrevious(line))
                << line;
        ASSERT_EQ(cold.buffer.getEncoding(), whole.buffer.getEncoding());
        ASSERT_EQ(cold.buffer.getLength(), whole.buffer.getLength());
        ASSERT_EQ(cold.buffer.getColumnCount(), whole.buffer.getColumnCount());
        ASSERT_EQ(cold.report.invalidCount, expected.invalidCount);
        ASSERT_EQ(cold.report.byteOrderMark, expected.byteOrderMark);
        if (expected.invalidCount > 0) {
            ASSERT_EQ(cold.report.firstInvalid, expected.firstInvalid);
        }
        ASSERT_NO_THROW(cold.buffer.checkInvariants());

        const bool keeps = cold.buffer.getEncoding() != 1252 && cold.buffer.getLineCount() > 0 &&
                           !(cold.buffer.getEncoding() == ENCODING_UTF16 && bytes.size() % 2 != 0);
        if (keeps) { // all bytes behind the mark, as one piece
            const Buffer::LoadedLines all = cold.buffer.getLoadedLines(0);
            ASSERT_EQ(all.end, cold.buffer.getLineCount());
            ASSERT_TRUE(bytes.ends_with(asText(all.bytes)));
            ASSERT_LE(bytes.size() - all.bytes.size(), 3U);
        }
    }
}

TEST(ColdPages, keepTheEndOfEachLine) {
    LoadedBuffer text("a\r\nb\nc\rd\n\xE9" + std::string(600, 'x') + "\r\ne");
    Buffer& buffer = text.buffer;
    const auto ends = [&] {
        std::string out;
        for (int line = 0; line < buffer.getLineCount(); ++line)
            out += "-WLM"[static_cast<int>(buffer.getLineEnd(line))]; // none, CR LF, LF, CR
        return out;
    };
    EXPECT_EQ(ends(), "WLML-W-");
    EXPECT_EQ(buffer.getUsualLineEnd(), LineEnd::CrLf);
    EXPECT_EQ(buffer.getLineEndCounts(), (LineStore::LineEndCounts{2, 2, 2, 1}));
    buffer.splitLine(2, 1);
    EXPECT_EQ(ends(), "WLMML-W-") << "a new break is like the one of the line that is split";
    int line = 0;
    int col = 0;
    buffer.insertText(7, 1, u"\n\n", line, col);
    EXPECT_EQ(ends(), "WLMML-WWW-")
        << "in a line without one, like the one above; no break ends the text still";
    buffer.erase(0, 1, 1, 0);
    EXPECT_EQ(ends(), "LMML-WWW-") << "joined lines end as the lower one";
    buffer.erase(2, 0, 4, 3);
    EXPECT_EQ(ends(), "LM-WWW-");
    EXPECT_EQ(buffer.getLineEndCounts(), (LineStore::LineEndCounts{2, 3, 1, 1}));
    buffer.checkInvariants();
}

TEST(ColdPages, keepTheBytesOfLinesThatNobodyEdited) {
    LoadedBuffer text("one\r\n\xC3\xA9\xFF\ntwo\xE9\nthree");
    Buffer& buffer = text.buffer;
    ASSERT_EQ(buffer.getEncoding(), ENCODING_LATIN1);
    const auto bytesOf = [&](int line) {
        const auto bytes = buffer.getLoadedBytes(line);
        return bytes ? std::string(asText(*bytes)) : std::string("edited");
    };
    buffer.splitLine(1, 0); // a line above: what moves down is as it was
    EXPECT_EQ(bytesOf(2), "\xC3\xA9\xFF");
    buffer.erase(0, 0, 2, 0); // and what moves up
    EXPECT_EQ(bytesOf(0), "\xC3\xA9\xFF");
    buffer.insert(1, 0, u'x');
    EXPECT_EQ(bytesOf(1), "edited");
    EXPECT_EQ(bytesOf(2), "three");
    const Buffer::LoadedLines run = buffer.getLoadedLines(0);
    EXPECT_EQ(run.end, 1);
    EXPECT_EQ(asText(run.bytes), "\xC3\xA9\xFF\n");
    EXPECT_EQ(buffer.getLoadedLines(1).end, 1);
    buffer.splitLine(2, 5);
    EXPECT_EQ(bytesOf(2), "three");
    EXPECT_EQ(buffer.getLoadedLines(2).end, 2) << "its end is another one now";

    // A cut inside a pair: neither half has bytes of its own.
    LoadedBuffer cut(std::string(511, 'x') + "\xF0\x9F\x98\x80yz\nend\n");
    EXPECT_EQ(cut.buffer.getLoadedLines(0).end, 3);
    EXPECT_EQ(cut.buffer.getLoadedLines(1).end, 1);
    cut.buffer.insert(1, 3, u'!');
    EXPECT_EQ(cut.buffer.getLoadedLines(0).end, 0);
    EXPECT_EQ(asText(cut.buffer.getLoadedLines(2).bytes), "end\n");

    LoadedBuffer plain;
    plain.buffer.loadText(u"ab", 2);
    EXPECT_EQ(plain.buffer.getLoadedLines(0).end, 0);
}

TEST(ColdPages, keepViewsAsLongAsPromised) {
    std::string bytes;
    for (int i = 0; i < 60'000; ++i)
        bytes += "line " + std::to_string(i) + "\n";
    LineStore store;
    store.load(std::make_unique<TextSource>(blockOf(bytes), 0, TextSource::Form::Utf8, true));
    Random random(7);
    const auto expected = [](int line) {
        const std::string text = "line " + std::to_string(line);
        return std::u16string(text.begin(), text.end());
    };
    const auto reads = [&](const auto& lineOf) {
        for (int round = 0; round < 20; ++round) {
            const int held = random.below(store.lineCount());
            const std::u16string_view view = store.line(held).text();
            for (int i = 0; i < LineStore::warmLines; ++i) {
                const int other = lineOf(i, held);
                ASSERT_EQ(store.line(other).text(), expected(other));
            }
            ASSERT_EQ(view, expected(held));
        }
    };
    reads([&](int, int) { return random.below(store.lineCount()); });
    reads([&](int i, int) { return i * 14; });
    reads([&](int i, int held) { return (held + i) % store.lineCount(); });
    reads([&](int i, int) { return i % 2 == 0 ? 5 : 50'000; });
    for (int line = 0; line < store.lineCount(); ++line)
        ASSERT_EQ(store.line(line).text(), expected(line));
    EXPECT_LE(store.warmPageCount(), LineStore::warmLines / LineStore::pageLines + 2);
}

// Random edits, flags and reading orders, against plain lists.
class PlainText {
  public:
    struct Line {
        std::u16string text;
        int flags = 0;
        int state = 0;
        int code = 0;    ///< of the first character, when somebody other than the parser wrote it
        int loaded = -1; ///< the line of the file that it still is
    };

    explicit PlainText(const Buffer& buffer) {
        for (int line = 0; line < buffer.getLineCount(); ++line) {
            lines.push_back({std::u16string(buffer.getLineText(line)), 0, 0, 0, line});
            bytes.emplace_back(asText(*buffer.getLoadedBytes(line)));
        }
    }
    [[nodiscard]] int count() const { return static_cast<int>(lines.size()); }
    Line& at(int line) { return lines[static_cast<std::size_t>(line)]; }

    void insert(int line, int col, std::u16string_view text) {
        if (text.empty())
            return;
        Line& l = at(line);
        l.text.insert(static_cast<std::size_t>(col), text);
        l.loaded = -1;
        l.code = col == 0 ? 0 : l.code;
    }
    void split(int line, int col) {
        Line& l = at(line);
        Line tail{l.text.substr(static_cast<std::size_t>(col))};
        if (col == 0 && !tail.text.empty()) {
            tail.code = l.code;
            tail.loaded = std::exchange(l.loaded, -1);
            l.code = 0;
        } else if (!tail.text.empty()) {
            l.loaded = -1;
        }
        l.text.resize(static_cast<std::size_t>(col));
        lines.insert(lines.begin() + line + 1, std::move(tail));
    }
    void erase(int line1, int col1, int line2, int col2) {
        Line& first = at(line1);
        const Line last = at(line2);
        const bool whole = line1 != line2 && col1 == 0 && col2 == 0;
        const std::u16string rest = last.text.substr(static_cast<std::size_t>(col2));
        if (col1 == 0)
            first.code = col2 == 0 && !rest.empty() ? last.code : 0;
        if (line1 != line2 && col1 == static_cast<int>(first.text.size()) && rest.empty() && col1 > 0) {
            // nothing but the break goes
        } else {
            first.loaded = whole ? last.loaded : -1;
        }
        first.text.resize(static_cast<std::size_t>(col1));
        first.text += rest;
        lines.erase(lines.begin() + line1 + 1, lines.begin() + line2 + 1);
    }

    std::vector<Line> lines;
    std::vector<std::string> bytes; ///< of the lines of the file
};

void compare(Buffer& buffer, PlainText& plain, int line) {
    const PlainText::Line& expected = plain.at(line);
    ASSERT_EQ(buffer.getLineText(line), expected.text) << line;
    ASSERT_EQ(buffer.getLineFlags(line), expected.flags) << line;
    ASSERT_EQ(buffer.getLineState(line), expected.state) << line;
    if (!expected.text.empty()) {
        ASSERT_EQ(buffer.getCharFormat(line, 0), expected.code) << line;
    }
    if (expected.loaded >= 0) {
        const auto bytes = buffer.getLoadedBytes(line);
        ASSERT_TRUE(bytes) << line;
        ASSERT_EQ(asText(*bytes), plain.bytes[static_cast<std::size_t>(expected.loaded)]) << line;
    }
}

/// Parts of lines in some pages. Not all texts have a form in every encoding.
void replaceAtRandom(Buffer& buffer, PlainText& plain, Random& random) {
    static constexpr std::u16string_view texts[] = {u"",       u"ab",           u"caf\u00E9", u"\t\t",
                                                    u"\u20AC", u"\xD83D\xDE00", u"\xDE00"};
    const int usual = random.oneIn(3) ? static_cast<int>(std::size(texts)) : 4;
    const int end = random.below(plain.count()) + 1;
    const int step = 1 + random.below(random.oneIn(3) ? 300 : 9);
    std::vector<LineReplacement> changes;
    for (int line = std::max(0, end - 100 * step); line < end; line += 1 + random.below(step)) {
        PlainText::Line& l = plain.at(line);
        int shift = 0;
        const auto length = static_cast<int>(l.text.size());
        for (int col = random.below(3); col <= length; col += 1 + random.below(4)) {
            const int erased = random.below(std::min(3, length - col + 1));
            changes.push_back({line, col, erased, texts[random.below(usual)]});
            l.text.replace(static_cast<std::size_t>(col + shift), static_cast<std::size_t>(erased),
                           changes.back().text);
            l.code = 0;
            l.loaded = -1;
            shift += static_cast<int>(changes.back().text.size()) - erased;
            col += erased;
        }
    }
    buffer.replaceInLines(changes);
}

void changeAtRandom(Buffer& buffer, PlainText& plain, Random& random, int kind) {
    const int line = random.below(plain.count());
    const int length = static_cast<int>(plain.at(line).text.size());
    const int col = random.oneIn(3) ? 0 : random.below(length + 1);
    const int lines = random.oneIn(6) ? random.below(900) : random.below(4);
    const int below = std::min(line + lines, plain.count() - 1);
    int endLine = 0;
    int endCol = 0;
    switch (kind) {
    case 0:
        buffer.insertText(line, col, u"ab", endLine, endCol);
        plain.insert(line, col, u"ab");
        break;
    case 1:
        buffer.splitLine(line, col);
        plain.split(line, col);
        break;
    case 2:
        buffer.insertText(line, col, u"\u00E9\n" + std::u16string(static_cast<std::size_t>(lines), u'\n'),
                          endLine, endCol);
        plain.split(line, col);
        plain.lines.insert(plain.lines.begin() + line + 1, static_cast<std::size_t>(lines), {});
        plain.insert(line, col, u"\u00E9");
        break;
    case 3: {
        const int endCol2 = random.oneIn(2) ? 0 : static_cast<int>(plain.at(below).text.size());
        if (below == line && endCol2 <= col)
            break;
        buffer.erase(line, col, below, endCol2);
        plain.erase(line, col, below, endCol2);
        break;
    }
    case 4: {
        const int mask = random.oneIn(9) ? 0x700 : random.below(256);
        const int value = random.below(0x800) & mask;
        buffer.setLineFlags(line, below, value, mask);
        for (int i = line; i < below; ++i)
            plain.at(i).flags = (plain.at(i).flags & ~mask) | value;
        break;
    }
    case 5:
        plain.at(line).state = random.below(256);
        buffer.setLineState(line, static_cast<std::uint8_t>(plain.at(line).state));
        break;
    case 6:
        if (length > 0) {
            plain.at(line).code = 1 + random.below(9);
            buffer.formatRange(line, 0, 1, plain.at(line).code);
        }
        break;
    case 7:
        replaceAtRandom(buffer, plain, random);
        break;
    default:
        for (int i = line; i < std::min(line + 6'000, plain.count()); ++i)
            ASSERT_EQ(buffer.getLineLength(i), static_cast<int>(plain.at(i).text.size()));
    }
}

/// Saving and searching go over bytes where they can.
void expectSavedAndFound(Buffer& buffer, const PlainText& plain, Random& random) {
    std::u16string all;
    for (const PlainText::Line& line : plain.lines)
        all += line.text + u"\r\n";
    all.resize(all.size() - 2);
    for (const int encoding : {ENCODING_UTF8, ENCODING_LATIN1}) {
        TextEncoder encoder(encoding);
        std::string expected;
        encoder.encode(all, expected);
        encoder.finish(expected);
        std::string written;
        buffer.setEncoding(encoding);
        buffer.writeBytes([&](std::string_view bytes) {
            written += bytes;
            return true;
        });
        ASSERT_EQ(written, expected);
    }
    LoadedBuffer other; // the same text, no page of which has bytes
    other.buffer.loadText(all.data(), all.size());
    static constexpr std::u16string_view patterns[] = {u"<A>",    u"caf\u00E9", u"\u20AC X", u"nowhere",
                                                       u"\u00FF", u"ab<a>",     u"B",        u"\tb"};
    for (int i = 0; i < 60; ++i) {
        const int line = random.below(plain.count());
        const int flags = random.below(8);
        int found[4] = {-1, -1, -1, -1};
        const std::u16string_view what = random.pick(patterns);
        const bool here =
            buffer.find(line, 0, what, flags | (i % 2 ? FIND_MATCH_CASE : 0), found[0], found[1]);
        const bool there =
            other.buffer.find(line, 0, what, flags | (i % 2 ? FIND_MATCH_CASE : 0), found[2], found[3]);
        ASSERT_EQ(here, there);
        ASSERT_EQ(std::pair(found[0], found[1]), std::pair(found[2], found[3])) << line << ' ' << flags;
    }
}

/// Offsets count each line with one unit for its break.
void expectOffsets(const Buffer& buffer, const PlainText& plain) {
    std::int64_t offset = 0;
    for (int line = 0; line < plain.count(); ++line) {
        ASSERT_EQ(buffer.getOffset(line), offset) << line;
        ASSERT_EQ(buffer.getLineAtOffset(offset), line);
        offset += buffer.getLineLength(line) + 1;
        ASSERT_EQ(buffer.getLineAtOffset(offset - 1), line);
    }
    EXPECT_EQ(buffer.getOffset(plain.count()), offset);
    EXPECT_EQ(buffer.getLineAtOffset(offset + 100), plain.count() - 1);
    EXPECT_EQ(buffer.getLineAtOffset(-5), 0);
}

TEST(ColdPages, equalPlainTextUnderRandomEdits) {
    const char* const more = std::getenv("TAVRIN_RANDOM_SEEDS");
    for (unsigned seed = 1; seed <= (more ? static_cast<unsigned>(std::atoi(more)) : 8U); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        std::string bytes = "<x>\n";
        static constexpr std::string_view texts[] = {"",        "<a>", "\tb", "caf\xC3\xA9", "\xE2\x82\xAC x",
                                                     "\xFF\xFE"};
        const bool isBroken = seed % 2 == 0; // with a mark it is UTF-8 that is not valid, else ISO-8859-1
        const int breaks = 2 + random.below(2);
        for (int i = 0; i < 9'000; ++i) {
            bytes += texts[random.below(isBroken ? 6 : 5)];
            bytes += endText(static_cast<LineEnd>(1 + random.below(breaks)));
        }
        LoadedBuffer text;
        if (seed % 4 == 0)
            bytes.insert(0, "\xEF\xBB\xBF");
        if (seed % 4 == 3)
            bytes = inUtf16(bytes);
        text.buffer.loadBytes(blockOf(bytes));
        PlainText plain(text.buffer);
        for (int step = 0; step < 250; ++step) {
            const int kind = step < 40 ? random.pick(std::array{4, 5, 7, 7, 8}) : random.below(9);
            if (random.oneIn(5) && (kind < 4 || kind == 7)) { // one that does not come
                const Buffer::Transaction transaction(text.buffer);
                PlainText ignored = plain;
                changeAtRandom(text.buffer, ignored, random, kind);
                if (random.oneIn(2))
                    changeAtRandom(text.buffer, ignored, random, random.oneIn(2) ? 7 : random.below(4));
            } else {
                changeAtRandom(text.buffer, plain, random, kind);
            }
            ASSERT_FALSE(testing::Test::HasFatalFailure()) << step;
            ASSERT_EQ(text.buffer.getLineCount(), plain.count()) << step;
            for (int i = 0; i < 5; ++i)
                compare(text.buffer, plain, random.below(plain.count()));
            ASSERT_FALSE(testing::Test::HasFatalFailure()) << step;
        }
        ASSERT_NO_THROW(text.buffer.checkInvariants());
        expectOffsets(text.buffer, plain);
        expectSavedAndFound(text.buffer, plain, random);
        for (int line = 0; line < plain.count(); ++line)
            compare(text.buffer, plain, line);
    }
}

} // namespace
} // namespace tavrin
