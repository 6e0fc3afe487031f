#include "platform/core/TextPattern.h"

#include "support.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

// With units that several others fold to (k and the Kelvin sign, s and the long s, four forms of iota).
TEST(TextPattern, findsByVectorsWhatItFindsPlaceByPlace) {
    constexpr std::u16string_view units = u"kK\u212Aass\u017FS\u0345\u0399\u03B9\u1FBEe \U0001F600";
    int found = 0;
    for (unsigned seed = 1; seed <= 4000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        test::Random random(seed);
        const int used = 1 + random.below(static_cast<int>(units.size()));
        std::u16string text(static_cast<std::size_t>(random.below(120)), u'x');
        for (char16_t& c : text)
            c = random.pick(units.substr(0, static_cast<std::size_t>(used)));
        std::u16string what;
        if (!text.empty() && random.oneIn(2)) // a part of it
            what = text.substr(static_cast<std::size_t>(random.below(static_cast<int>(text.size()))));
        what.resize(std::min<std::size_t>(what.size(), 1 + static_cast<std::size_t>(random.below(9))));
        while (what.empty() || random.oneIn(4))
            what += random.pick(units);
        const TextPattern pattern(what, random.oneIn(2));
        const auto start = static_cast<std::size_t>(random.below(static_cast<int>(text.size()) + 2));
        ASSERT_EQ(pattern.first(text, start), pattern.firstPortable(text, start));
        ASSERT_EQ(pattern.last(text, start), pattern.lastPortable(text, start));
        found += pattern.first(text, start) != text.npos;
    }
    EXPECT_GT(found, 1000);
}

TEST(TextPattern, foldsUnitByUnit) {
    struct Case {
        std::u16string_view text, what;
        std::size_t any, exact;
    };
    constexpr std::size_t npos = std::u16string_view::npos;
    const Case cases[] = {
        {u"the \u212Aelvin", u"KELVIN", 4, npos},
        {u"\u00C4\u0411", u"\u00E4\u0431", 0, npos},
        {u"stra\u00DFe", u"STRASSE", npos, npos}, // one unit never equals two
        {u"an exact match", u"match", 9, 9},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(TextPattern(c.what, false).first(c.text, 0), c.any);
        EXPECT_EQ(TextPattern(c.what, true).last(c.text, c.text.size()), c.exact);
    }
}

} // namespace
} // namespace tavrin
