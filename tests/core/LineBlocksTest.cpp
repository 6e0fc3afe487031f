#include "platform/core/LineBlocks.h"

#include "support.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace tavrin::scan {
namespace {

using test::Random;

TEST(LineBlocks, areTheSameWhateverTheProcessorHas) {
    Random random(11);
    for (int round = 0; round < 2000; ++round) {
        std::array<LineBlock, 3> expected;
        std::string bytes;
        const bool isAscii = random.oneIn(3);
        while (bytes.size() < expected.size() * blockSize)
            bytes += random.oneIn(4) ? random.pick(std::string_view("\n\r\t\n\x0B\x08"))
                     : isAscii       ? 'a'
                                     : static_cast<char>(random.below(256));
        portable::lineBlocks(bytes.data(), expected);
        std::array<LineBlock, 3> found;
        lineBlocks(bytes.data(), found);
        ASSERT_EQ(found, expected);
        fallback::lineBlocks(bytes.data(), found);
        ASSERT_EQ(found, expected);
    }
}

TEST(LineBlocks, tellTheKindsOfBytes) {
    std::string bytes = "\n\r\ta\x7F\x80\xBF\xC0\xEF\xF0\xFF";
    bytes.resize(blockSize, 'x');
    bytes.back() = '\n';
    std::array<LineBlock, 1> block;
    portable::lineBlocks(bytes.data(), block);
    const std::uint64_t lastBit = std::uint64_t{1} << 63;
    EXPECT_EQ(block[0], (LineBlock{.feeds = 1 | lastBit,
                                   .returns = 2,
                                   .tabs = 4,
                                   .high = 0b111'1110'0000,
                                   .trailing = 0b000'0110'0000,
                                   .pairs = 0b110'0000'0000,
                                   .feedCount = 2}));
}

} // namespace
} // namespace tavrin::scan
