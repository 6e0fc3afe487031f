#include "parsers/XmlLangParser.h"
#include "platform/core/Utf8.h"
#include "support.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

using test::Random;

/// Is asked for the blocks of each line one by one, as any class that is derived from the parser.
class BlockByBlock : public XmlLangParser {};

struct Text {
    explicit Text(SmartPtr<XmlLangParser> colours) : parser(std::move(colours)) {
        parser->setBuffer(&buffer);
        buffer.setParser(parser.get());
    }
    std::vector<FormatRun> codes(int line) {
        const auto runs = buffer.getLineFormats(line);
        return {runs.begin(), runs.end()};
    }

    Buffer buffer;
    SmartPtr<XmlLangParser> parser;
};

/// Lines of tags of all lengths, with what colouring from masks leaves to others here and there.
std::u16string linesOfTags(Random& random) {
    static const std::u16string_view plain[] = {u" id=\"p12\"",
                                                u" x:lang='en-GB'",
                                                u" a = \"\"",
                                                u" t=\"a > b / 1.5\"",
                                                u" n='100'",
                                                u" checked",
                                                u" t=\"it's\"",
                                                u" a=\"1\"b=\"2\"",
                                                u" u='x>y'",
                                                u"   ",
                                                u" long-name_of.an:attribute=\"and its value\""};
    static const std::u16string_view rare[] = {
        u" a.b",      u" 1c", u"'\"'",  u" -", u"\"", u" '", u"<", u" _x=2", u" \u00E9t\u00E9=\"\u00E9\"",
        u" \u00B2=3", u"/=?", u"\uFEFF"};
    static const std::u16string_view far[] = {u" \u4E2D\u8A9E='\u4E2D'", u" \uFF8A=\"\uFF8A\"",
                                              u" x=\"\U0001F600\""};
    static const std::u16string_view between[] = {
        u"", u"text 5", u"<!-- <a b=\"c\"> -->", u"\u00E4 > 1", u"<![CDATA[ <a> ]]>", u"5.", u"a1"};
    static const std::u16string_view names[] = {u"<a",  u"</b",  u"<x:y-1", u"<?p", u"<!DOCTYPE d",
                                                u"< c", u"<m.n", u"<o",     u"</a"};
    std::u16string text;
    for (int line = 0; line < 700; ++line) {
        for (int tag = random.below(4); tag > 0; --tag) {
            text += random.pick(between);
            text += names[static_cast<std::size_t>(random.below(random.oneIn(6) ? 9 : 4))];
            for (int i = random.below(random.oneIn(8) ? 12 : 4); i > 0; --i)
                text += !random.oneIn(25) ? random.pick(plain)
                        : random.oneIn(2) ? random.pick(rare)
                                          : random.pick(far);
            if (random.oneIn(12))
                text += u'\n'; // the tag goes on
            text += random.oneIn(60) ? u"" : random.oneIn(3) ? u"/>" : u">";
        }
        text += u'\n';
        if (random.oneIn(150)) // to be cut
            text.append(static_cast<std::size_t>(450 + random.below(100)), u' ');
    }
    return text;
}

std::string inUtf8(std::u16string_view text) {
    std::string bytes;
    EncodeReport report;
    encodeUtf8(text, bytes, 0, report);
    return bytes;
}

std::string withCrLf(std::u16string_view text) {
    std::string bytes;
    for (const char c : inUtf8(text))
        bytes += c == '\n' ? std::string("\r\n") : std::string(1, c);
    return bytes;
}

std::string inLatin1(std::u16string_view text) {
    std::string bytes = "<?xml version='1.0' encoding='ISO-8859-1'?>\n";
    for (const char16_t c : text)
        bytes += c < 0x100 ? static_cast<char>(c) : '?';
    return bytes;
}

std::string inAscii(std::u16string_view text) {
    std::string bytes;
    for (const char16_t c : text)
        bytes += c < 0x80 ? static_cast<char>(c) : '~';
    return bytes;
}

std::string inUtf16(std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t c : text) {
        bytes += static_cast<char>(c & 0xFF);
        bytes += static_cast<char>(c >> 8);
    }
    return bytes;
}

// Whatever the lines are decoded from, reading one after the other gives each the codes, flags and states
// that its blocks give it; those of lines that nobody read stay.
TEST(ColouringAhead, equalsColouringBlockByBlock) {
    for (const auto& encode : {inUtf8, withCrLf, inLatin1, inAscii, inUtf16})
        for (unsigned seed = 1; seed <= 12; ++seed) {
            SCOPED_TRACE(seed);
            Random random(seed);
            const SmartPtr<ByteBuffer> bytes = test::blockOf(encode(linesOfTags(random)));
            Text ahead(SmartPtr<XmlLangParser>(new XmlLangParser));
            Text expected(SmartPtr<XmlLangParser>(new BlockByBlock));
            ahead.buffer.loadBytes(bytes);
            expected.buffer.loadBytes(bytes);
            for (int line = 0; line < ahead.buffer.getLineCount(); ++line) {
                if (random.oneIn(90)) { // in a page that was coloured ahead, or in the next one
                    const int edited = std::min(line + random.below(300), ahead.buffer.getLineCount() - 1);
                    const char16_t c = random.pick(std::u16string_view(u"<>\"'x"));
                    ahead.buffer.insert(edited, 0, c);
                    expected.buffer.insert(edited, 0, c);
                }
                ASSERT_EQ(ahead.codes(line), expected.codes(line)) << line;
                ASSERT_EQ(ahead.buffer.getLineFlags(line), expected.buffer.getLineFlags(line)) << line;
                ASSERT_EQ(ahead.buffer.getLineState(line), expected.buffer.getLineState(line)) << line;
                if (line + 1 < ahead.buffer.getLineCount()) {
                    ASSERT_EQ(ahead.buffer.getLineFlags(line + 1), expected.buffer.getLineFlags(line + 1))
                        << line;
                }
            }
            ahead.buffer.checkInvariants();
        }
}

// A tag has the same codes wherever in a block of masks it begins, and wherever the line ends.
TEST(ColouringAhead, doesNotDependOnTheColumn) {
    const std::u16string_view tags[] = {u"<a b=\"c d\" e1='f' g/>",
                                        u"<!-- - --><n m=\"v\">5</n>",
                                        u"<a -->\"<b ",
                                        u"<p q='1a' 2 r=\"3\"",
                                        u"<x \u00E9=\"1\">",
                                        u"<k 1\"2\">",
                                        u"<a.b c.d=\"e.f\"/>",
                                        u"<v w=\"open",
                                        u"<t a='\"' > '\"'>"};
    for (const std::u16string_view tag : tags) {
        std::u16string lines;
        for (std::size_t skipped = 0; skipped < 140; ++skipped)
            for (std::size_t length = 1; length <= tag.size(); length += skipped % 8 == 0 ? 1 : tag.size()) {
                lines += std::u16string(skipped, u' ') +
                         std::u16string(tag.substr(0, skipped % 8 == 0 ? length : tag.npos));
                lines += u"\n-->\">\n"; // closes what is open
            }
        Text ahead(SmartPtr<XmlLangParser>(new XmlLangParser));
        Text expected(SmartPtr<XmlLangParser>(new BlockByBlock));
        const SmartPtr<ByteBuffer> bytes = test::blockOf(inUtf8(lines));
        ahead.buffer.loadBytes(bytes);
        expected.buffer.loadBytes(bytes);
        for (int line = 0; line < ahead.buffer.getLineCount(); ++line)
            ASSERT_EQ(ahead.codes(line), expected.codes(line)) << inUtf8(ahead.buffer.getLineText(line));
    }
}

} // namespace
} // namespace tavrin
