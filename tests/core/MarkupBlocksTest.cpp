#include "platform/core/MarkupBlocks.h"

#include "support.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace tavrin::scan {
namespace {

using test::Random;

/// The mask as text: "x" where a bit is set.
std::string shown(std::uint64_t mask, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i)
        out += mask >> i & 1 ? 'x' : ' ';
    return out;
}

std::vector<std::string> masksOf(const MarkupBlock& block) {
    std::vector<std::string> masks;
    for (const std::uint64_t mask :
         {block.names, block.signs, block.less, block.greater, block.quotes, block.apostrophes, block.odd})
        masks.push_back(shown(mask, markupBlockSize));
    return masks;
}

TEST(MarkupBlocks, areTheSameWhateverTheProcessorHas) {
    std::u16string text;
    for (int c = 0; c < 0x10000; ++c)
        text += static_cast<char16_t>(c);
    Random random(5);
    for (int i = 0; i < 64 * 200; ++i)
        text += random.oneIn(8) ? static_cast<char16_t>(random.below(0x10000))
                                : random.pick(std::u16string_view(u"<>\"'/=?-:_.aZ09@[`{ \x7E\x7F\x80"));
    for (const std::size_t skipped : {0, 1, 29}) { // each unit at other places of a block
        const std::u16string_view part = std::u16string_view(text).substr(skipped);
        std::vector<MarkupBlock> expected(part.size() / markupBlockSize + 1);
        std::vector<MarkupBlock> found(expected.size());
        portable::markupBlocks(part, expected.data());
        for (const auto blocks : {markupBlocks, fallback::markupBlocks}) {
            blocks(part, found.data());
            for (std::size_t i = 0; i < found.size(); ++i)
                ASSERT_EQ(masksOf(found[i]), masksOf(expected[i])) << i;
        }
    }
}

TEST(MarkupBlocks, tellTheKindsOfUnits) {
    const std::u16string_view units = u"<p:a-1 _b='2' c=\"3\"/>4 5< .\u00E9\u8000\x7F?x@[`{~";
    MarkupBlock block;
    portable::markupBlocks(units, &block);
    const auto show = [&](std::uint64_t mask) {
        return shown(mask, markupBlockSize).substr(0, units.size());
    };
    EXPECT_EQ(show(block.names), " xxxxx  x     x                x     ");
    EXPECT_EQ(show(block.signs), "x        x     x   xx   x     x      ");
    EXPECT_EQ(show(block.less), "x                       x            ");
    EXPECT_EQ(show(block.greater), "                    x                ");
    EXPECT_EQ(show(block.quotes), "                x x                  ");
    EXPECT_EQ(show(block.apostrophes), "          x x                        ");
    EXPECT_EQ(show(block.odd), "        x         x     x xxxx       ");
}

// A name, and what only looks like one, go on over the end of a block.
TEST(MarkupBlocks, goOnWithNamesOfTheBlockBefore) {
    struct Case {
        std::u16string_view units; ///< the last two of a block and the first two of the next one
        const char* names;
        const char* odd;
    };
    for (const Case& c :
         {Case{u"a1-b", "xxxx", "    "}, Case{u" a1 ", " xx ", "    "}, Case{u" 11a", "   x", "   x"},
          Case{u" 1a1", "  xx", "  x "}, Case{u"1 1 ", "    ", "    "}, Case{u"-1=\"", "    ", "  x "},
          Case{u" 1\"a", "   x", "  x "}, Case{u".a.1", " x  ", "x x "}}) {
        std::u16string text(2 * markupBlockSize, u' ');
        c.units.copy(text.data() + markupBlockSize - 2, 4);
        std::array<MarkupBlock, 2> block;
        portable::markupBlocks(text, block.data());
        const auto show = [](std::uint64_t first, std::uint64_t second) {
            return shown(first >> (markupBlockSize - 2), 2) + shown(second, 2);
        };
        EXPECT_EQ(show(block[0].names, block[1].names), c.names);
        EXPECT_EQ(show(block[0].odd, block[1].odd), c.odd);
    }
}

} // namespace
} // namespace tavrin::scan
