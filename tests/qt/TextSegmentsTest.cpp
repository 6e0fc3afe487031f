#include "platform/qt/TextSegments.h"

#include <gtest/gtest.h>

#include <string>

namespace tavrin::qt {
namespace {

/// The segments of a text as kinds and lengths: "A3 S2 M1".
std::string segmentsOf(std::u16string_view text) {
    std::string result;
    while (!text.empty()) {
        const Segment segment = firstSegment(text);
        EXPECT_GT(segment.length, 0u);
        if (!result.empty())
            result += ' ';
        result += "AMS"[static_cast<int>(segment.kind)] + std::to_string(segment.length);
        text.remove_prefix(segment.length);
    }
    return result;
}

TEST(TextSegments, cutRunsOnlyWhereShapingAllows) {
    struct Case {
        const char* what;
        std::u16string text;
        std::string segments;
    };
    const Case cases[] = {
        {"plain", u"<a b=\"c\">", "A9"},
        {"accented letters", u"caf\u00E9 x", "A3 S1 A2"},
        {"a mark keeps its base", u"abe\u0301x", "A2 S2 A1"},
        {"two marks", u"e\u0301\u0323", "S3"},
        {"a mark on nothing", u"\u0301a", "S1 A1"},
        {"a mark on a shaped letter", u"\u00E9\u0301a", "S2 A1"},
        {"Chinese", u"a\u6F22\u5B57b", "A1 S2 A1"},
        {"emoji", u"a\U0001F600b", "A1 S2 A1"},
        {"emoji sequence", u"\U0001F469\u200D\U0001F467!", "S5 A1"},
        {"keycap", u"1\uFE0F\u20E3 ", "S3 A1"},
        {"control", u"a\u0001b", "A1 M1 A1"},
        {"delete and a C1 control", u"\u007F\u0085", "M1 M1"},
        {"zero-width space between letters", u"\u00E9\u200B\u00E9", "S1 M1 S1"},
        {"joiner after ASCII joins nothing", u"a\u200Db", "A1 M1 A1"},
        {"byte-order mark", u"\uFEFFa", "M1 A1"},
        {"soft hyphen", u"a\u00ADb", "A1 M1 A1"},
        {"bidirectional override does not act", u"a\u202Eb", "A1 M1 A1"},
        {"line separator", u"\u2028", "M1"},
        {"lone high surrogate", std::u16string(u"a") + char16_t(0xD83D) + u"b", "A1 M1 A1"},
        {"lone low surrogate", std::u16string(1, char16_t(0xDE00)), "M1"},
        {"halves the wrong way round", std::u16string({char16_t(0xDE00), char16_t(0xD83D)}), "M1 M1"},
        {"Hebrew with what stands inside", u"x \u05D0\u05D1 y \u05D2 z", "A2 S6 A2"},
        {"numbers after Arabic belong to it", u"\u0645\u0631 12 z", "S5 A2"},
        {"numbers after a letter do not", u"\u0645\u0631 z 12", "S2 A5"},
        {"point on Hebrew", u"\u05D0\u05B0 z", "S2 A2"},
        {"override inside Arabic", u"\u0645\u202E\u0631", "S1 M1 S1"},
        {"non-joiner inside Arabic", u"\u0645\u200C\u0631", "S3"},
        {"Arabic after Chinese", u"\u6F22\u0645", "S1 S1"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(segmentsOf(each.text), each.segments) << each.what;
}

TEST(TextSegments, longTextIsCutBetweenLettersOnly) {
    const std::u16string chinese(1000, u'\u6F22');
    std::u16string_view rest = chinese;
    while (!rest.empty()) {
        const Segment segment = firstSegment(rest);
        EXPECT_LE(segment.length, 64u);
        rest.remove_prefix(segment.length);
    }

    std::u16string marked; // every letter with a mark: a cut may only come before a letter
    for (int i = 0; i < 200; ++i)
        marked += u"\u0430\u0301";
    rest = marked;
    while (!rest.empty()) {
        EXPECT_EQ(rest[0], u'\u0430');
        rest.remove_prefix(firstSegment(rest).length);
    }

    const std::u16string devanagari(300, u'\u0915'); // letters that join: one segment, however long
    EXPECT_EQ(firstSegment(devanagari).length, devanagari.size());
}

} // namespace
} // namespace tavrin::qt
