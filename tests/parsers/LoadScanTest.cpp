// What a load finds out beside the lines is what the parser finds by reading them.

#include "buffer/Buffer.h"
#include "buffer/TextLoader.h"
#include "buffer/UnparsedBuffer.h"
#include "parsers/XmlLangParser.h"
#include "support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
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

TEST(LoadScan, isNothingToAnotherParser) {
    const std::string text = textOf(1, "<a>\n", "\n", {});
    const LineScan* const scan = Coloured<XmlLangParser>().parser->lineScan();
    UnparsedBuffer buffer;
    buffer.adopt(fromFile(text, scan));
    for (int line = 0; line < buffer.getLineCount(); ++line) {
        ASSERT_EQ(buffer.getLineFlags(line), 0) << line;
        ASSERT_EQ(buffer.getLineState(line), 0) << line;
    }
}

} // namespace
} // namespace tavrin
