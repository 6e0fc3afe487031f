#include "RecordingParser.h"
#include "buffer/Buffer.h"
#include "support.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

using test::Random;

constexpr int lineCount = 40 * LineStore::pageLines; // more pages than a node has children

/// Near the line asked for last, mostly: that is what a store remembers.
int lineNear(Random& random, int& last, int count) {
    last = random.oneIn(4) ? random.below(count) : std::clamp(last + random.below(300) - 100, 0, count - 1);
    return last;
}

// Flags of single lines and of ranges, written in any order and between edits, against a list.
TEST(LineFlags, areThoseOfAList) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Buffer buffer;
        test::RecordingParser parser;
        buffer.setParser(&parser);
        std::string bytes;
        for (int line = 0; line < lineCount; ++line)
            bytes += "<a/>\n";
        buffer.loadBytes(test::blockOf(bytes));
        std::vector<int> expected(static_cast<std::size_t>(buffer.getLineCount()));
        int last = 0;
        for (int step = 0; step < 600; ++step) {
            const int line = lineNear(random, last, buffer.getLineCount());
            const int value = 1 << random.below(8);
            const int mask = random.below(0x100) | value;
            const auto change = [&](int from, int to) {
                for (int l = from; l < to; ++l)
                    expected[static_cast<std::size_t>(l)] =
                        (expected[static_cast<std::size_t>(l)] & ~mask) | value;
            };
            switch (random.below(5)) {
            case 0: {
                const int end = random.oneIn(2) ? buffer.getLineCount()
                                                : std::min(line + random.below(2000), buffer.getLineCount());
                const int first = std::max(0, line - random.below(600));
                buffer.setLineFlags(first, end, value, mask);
                change(first, end);
                break;
            }
            case 1:
                buffer.setLineFlags(line, value, mask);
                change(line, line + 1);
                break;
            case 2:
                buffer.setLineParse(line, value, mask, 1);
                change(line, line + 1);
                break;
            case 3:
                if (random.oneIn(5)) { // flags stay with the first of the two
                    buffer.splitLine(line, 0);
                    expected.insert(expected.begin() + line + 1, 0);
                }
                break;
            default:
                break; // read again
            }
            ASSERT_EQ(buffer.getLineFlags(line), expected[static_cast<std::size_t>(line)])
                << line << " step " << step;
        }
        for (int line = 0; line < buffer.getLineCount(); ++line)
            ASSERT_EQ(buffer.getLineFlags(line), expected[static_cast<std::size_t>(line)]) << line;
        buffer.checkInvariants();
    }
}

} // namespace
} // namespace tavrin
