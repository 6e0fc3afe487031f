#include "platform/core/CodeUnitRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace tavrin {
namespace {

/// Runs of every length around the machine's block, with a unit out of range at every place, at every
/// alignment.
template <class In, class Out, class Function>
void compareWithPortable(Function machine, Function portableCode, In inRange, In outOfRange) {
    for (std::size_t size = 0; size <= 67; ++size) {
        for (std::size_t bad = 0; bad <= size; ++bad) {
            for (const std::size_t offset : {0, 1, 3}) {
                std::vector<In> in(offset + size, inRange);
                for (std::size_t i = 0; i < size; ++i)
                    in[offset + i] = static_cast<In>(inRange - i % 50);
                if (bad < size)
                    in[offset + bad] = outOfRange;
                std::vector<Out> expected(size);
                std::vector<Out> actual(size);
                const std::size_t length = portableCode(in.data() + offset, size, expected.data());
                ASSERT_EQ(length, bad);
                ASSERT_EQ(machine(in.data() + offset, size, actual.data()), length) << size;
                ASSERT_TRUE(std::equal(actual.begin(), actual.begin() + length, expected.begin())) << size;
            }
        }
    }
}

TEST(CodeUnitRuns, blocksGiveWhatSingleUnitsGive) {
    for (const int bad : {0x80, 0xC3, 0xFF})
        compareWithPortable<std::uint8_t, char16_t>(widenAsciiPrefix, portable::widenAsciiPrefix, 0x7F,
                                                    static_cast<std::uint8_t>(bad));
    for (const int bad : {0x80, 0xFF, 0x100, 0x7FFF, 0x8000, 0x8041, 0xFF41, 0xFFFF})
        compareWithPortable<char16_t, char>(narrowAsciiPrefix, portable::narrowAsciiPrefix, u'\x7F',
                                            static_cast<char16_t>(bad));
    for (const int bad : {0x100, 0x17F, 0x8000, 0xD83D, 0xFF41, 0xFFFF})
        compareWithPortable<char16_t, char>(narrowLatin1Prefix, portable::narrowLatin1Prefix, u'\xFF',
                                            static_cast<char16_t>(bad));
}

TEST(CodeUnitRuns, everyByteWidensToItsCodeUnit) {
    std::vector<std::uint8_t> in(256 + 5);
    for (std::size_t i = 0; i < in.size(); ++i)
        in[i] = static_cast<std::uint8_t>(i);
    std::vector<char16_t> out(in.size());
    widenLatin1(in.data(), in.size(), out.data());
    EXPECT_TRUE(std::equal(in.begin(), in.end(), out.begin(), out.end()));
}

} // namespace
} // namespace tavrin
