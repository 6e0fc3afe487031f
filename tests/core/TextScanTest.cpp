#include "platform/core/TextScan.h"

#include "support.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>

namespace tavrin {
namespace {

// The vectorised searches against the portable ones, over lengths around a vector and every start.
TEST(TextScan, equalsThePortableSearches) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE(seed);
        test::Random random(seed);
        static constexpr std::u16string_view alphabet = u"ab\t\n\r\uFEFF\u6161<";
        std::u16string text;
        for (int i = random.below(80); i > 0; --i)
            text += random.oneIn(3) ? random.pick(alphabet) : u'a';
        std::u16string what(1, u'a');
        for (int i = random.below(5); i > 0; --i)
            what += random.oneIn(3) ? u'b' : u'a';
        const char16_t unit = random.pick(alphabet);
        for (std::size_t start = 0; start <= text.size(); ++start) {
            ASSERT_EQ(scan::findUnit(text, unit, start), scan::portable::findUnit(text, unit, start));
            ASSERT_EQ(scan::findText(text, what, start), scan::portable::findText(text, what, start));
            const std::u16string_view rest = std::u16string_view(text).substr(start);
            ASSERT_EQ(scan::countUnit(rest, unit), scan::portable::countUnit(rest, unit));
            const scan::LineScan fast = scan::scanLine(rest);
            const scan::LineScan plain = scan::portable::scanLine(rest);
            ASSERT_EQ(fast.length, plain.length);
            ASSERT_EQ(fast.tabs, plain.tabs);
        }
        std::string bytes;
        for (int i = random.below(300); i > 0; --i)
            bytes += random.oneIn(40) ? random.pick(std::string_view("\t\t\n\r\x80\xFF<A")) : 'a';
        for (std::size_t start = 0; start <= bytes.size(); ++start) {
            const std::string_view rest = std::string_view(bytes).substr(start);
            const scan::ByteLineScan fast = scan::scanByteLine(rest);
            const scan::ByteLineScan plain = scan::portable::scanByteLine(rest);
            ASSERT_EQ(fast.length, plain.length);
            ASSERT_EQ(fast.tabs, plain.tabs);
            ASSERT_EQ(fast.ascii, plain.ascii);
            ASSERT_EQ(scan::countUnit(rest, '\n'), scan::portable::countUnit(rest, '\n'));
            const std::string pattern = random.oneIn(2) ? "a\ta" : "aa<";
            ASSERT_EQ(scan::findBytes(rest, pattern, 0), scan::portable::findBytes(rest, pattern, 0));
            ASSERT_EQ(scan::findAsciiFolded(rest, pattern, 0),
                      scan::portable::findAsciiFolded(rest, pattern, 0));
        }
        std::string markup;
        while (markup.size() < 2 * scan::maskStep)
            markup += random.pick(std::string_view("<>\"'!\r\naA=\t\xFF\x80\x0B\x1C"));
        std::array<scan::MarkupMasks, 2> masks;
        std::array<scan::MarkupMasks, 2> plainMarkup;
        scan::markupMasks(markup.data(), masks);
        scan::portable::markupMasks(markup.data(), plainMarkup);
        ASSERT_TRUE(masks == plainMarkup);
        const std::uint64_t parity = scan::parityUpTo(masks[1].less);
        for (int i = 0; i < 64; ++i)
            ASSERT_EQ(parity >> i & 1, std::popcount(masks[1].less << (63 - i)) % 2U);
        std::u16string wide(markup.begin(), markup.end());
        wide[random.below(static_cast<int>(wide.size()))] = u'\u013C'; // "<" in its low byte
        const auto expectSameEdges = [](auto units) {
            std::vector<std::uint32_t> fast(units.size());
            std::vector<std::uint32_t> plain(units.size());
            fast.resize(scan::findEdges(units, 7, fast.data()));
            plain.resize(scan::portable::findEdges(units, 7, plain.data()));
            EXPECT_EQ(fast, plain);
        };
        std::string dense = markup + std::string(static_cast<std::size_t>(random.below(70)), '<');
        expectSameEdges(std::string_view(markup));
        expectSameEdges(std::string_view(dense));
        expectSameEdges(std::u16string_view(wide));
        const scan::LineMasks fastMasks = scan::lineMasks(markup.data());
        const scan::LineMasks plainMasks = scan::portable::lineMasks(markup.data());
        ASSERT_EQ(fastMasks.breaks, plainMasks.breaks);
        ASSERT_EQ(fastMasks.tabs, plainMasks.tabs);
        ASSERT_EQ(fastMasks.high, plainMasks.high);
    }
}

TEST(TextScan, tellsPrintableAscii) {
    EXPECT_TRUE(scan::isPrintableAscii({}));
    for (std::size_t size = 1; size <= 9; ++size)
        for (std::size_t at = 0; at < size; ++at)
            for (unsigned c = 0; c <= 0xFFFF; c += c < 0x180 ? 1 : 0x7F) {
                std::u16string text(size, at % 2 ? u'~' : u' ');
                text[at] = static_cast<char16_t>(c);
                ASSERT_EQ(scan::isPrintableAscii(text), c >= 0x20 && c <= 0x7E)
                    << size << ' ' << at << ' ' << c;
            }
}

} // namespace
} // namespace tavrin
