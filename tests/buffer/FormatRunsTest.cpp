#include "buffer/FormatRuns.h"

#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace tavrin {
namespace {

/// Characters behind the end have code 0.
using Codes = std::vector<int>;

Codes codesOf(const FormatRuns& runs, std::size_t length) {
    Codes codes;
    for (const FormatRun& run : runs.runs()) {
        EXPECT_GT(run.end, static_cast<int>(codes.size())) << "runs ascend";
        codes.resize(static_cast<std::size_t>(run.end), run.format);
    }
    codes.resize(std::max(length, codes.size()));
    return codes;
}

std::vector<FormatRun> runsOf(const Codes& codes) {
    std::vector<FormatRun> runs;
    for (std::size_t i = 0; i < codes.size(); ++i)
        if (!runs.empty() && runs.back().format == codes[i])
            runs.back().end = static_cast<int>(i + 1);
        else
            runs.push_back({static_cast<int>(i + 1), codes[i]});
    return runs;
}

TEST(FormatRuns, equalAListOfCodesUnderRandomEdits) {
    for (const unsigned seed : {1U, 2U, 3U, 4U}) {
        test::Random random(seed);
        FormatRuns runs;
        FormatRunRoom room;
        Codes codes(40, 3);
        if (seed % 2 == 0)
            runs.assign(runsOf(codes), room);
        else
            runs.assign(runsOf(codes));
        for (int step = 0; step < 4000; ++step) {
            const auto at = random.below(static_cast<int>(codes.size()) + 1);
            const int count = std::min(random.below(6), static_cast<int>(codes.size()) - at);
            const auto begin = codes.begin() + at;
            switch (random.below(codes.size() > 60 ? 5 : 6)) {
            case 0: {
                const int code = random.below(3);
                runs.set(at, count, code);
                std::fill(begin, begin + count, code);
                break;
            }
            case 1:
                runs.erase(at, count);
                codes.erase(begin, begin + count);
                break;
            case 2: {
                Codes made(static_cast<std::size_t>(count));
                std::ranges::generate(made, [&] { return random.below(3); });
                std::copy(made.begin(), made.end(), begin);
                Codes whole(static_cast<std::size_t>(at), random.below(3)); // before the place: not looked at
                whole.insert(whole.end(), made.begin(), made.end());
                while (!whole.empty() && whole.back() == 0 && random.oneIn(2))
                    whole.pop_back();
                runs.replace(at, at + count, runsOf(whole));
                break;
            }
            case 3: {
                FormatRuns tail = runs.cut(at);
                EXPECT_EQ(codesOf(tail, codes.size() - static_cast<std::size_t>(at)),
                          Codes(begin, codes.end()));
                runs.append(at, tail);
                break;
            }
            default:
                runs.prepareToEdit();
                runs.insert(at, count);
                codes.insert(begin, static_cast<std::size_t>(count), 0);
                break;
            }
            ASSERT_EQ(codesOf(runs, codes.size()), codes) << "seed " << seed << ", step " << step;
            ASSERT_EQ(std::ranges::adjacent_find(runs.runs(), {}, &FormatRun::format), runs.runs().end())
                << "neighbours differ; seed " << seed << ", step " << step;
        }
    }
}

} // namespace
} // namespace tavrin
