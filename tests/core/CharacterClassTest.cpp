#include "platform/core/CharacterClass.h"

#include <gtest/gtest.h>

#include <string>

namespace tavrin {
namespace {

TEST(CharacterClass, classesFollowUnicode) {
    struct Case {
        char16_t c;
        bool space;
        bool letter;
        bool letterOrDigit;
        const char* what;
    };
    const Case cases[] = {
        {u' ', true, false, false, "space"},
        {u'\t', true, false, false, "tab"},
        {u'\u0085', true, false, false, "next line"},
        {u'\u00A0', true, false, false, "no-break space"},
        {u'\u3000', true, false, false, "ideographic space"},
        {u'\u200B', false, false, false, "zero-width space is no white space"},
        {u'\uFEFF', false, false, false, "byte-order mark"},
        {u'a', false, true, true, "ASCII letter"},
        {u'7', false, false, true, "ASCII digit"},
        {u'_', false, false, false, "underscore"},
        {u'\u00AA', false, true, true, "feminine ordinal is a letter"},
        {u'\u00E9', false, true, true, "e acute"},
        {u'\u0663', false, false, true, "Arabic digit"},
        {u'\u00B2', false, false, false, "superscript two is no decimal digit"},
        {u'\u2167', false, false, false, "Roman numeral is a letter number"},
        {u'\u4E2D', false, true, true, "ideograph"},
        {u'\u0301', false, false, false, "combining mark"},
        {u'\0', false, false, false, "NUL"},
        {char16_t{0xD835}, false, false, false, "surrogate"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(isSpace(c.c), c.space) << c.what;
        EXPECT_EQ(isLetter(c.c), c.letter) << c.what;
        EXPECT_EQ(isLetterOrDigit(c.c), c.letterOrDigit) << c.what;
    }
}

TEST(CharacterClass, foldingIsSimpleAndIndependentOfLanguage) {
    EXPECT_EQ(foldCase(u'A'), u'a');
    EXPECT_EQ(foldCase(u'I'), u'i') << "not the dotless i";
    EXPECT_EQ(foldCase(u'\u0130'), u'\u0130') << "has a full folding only";
    EXPECT_EQ(foldCase(u'\u03C2'), foldCase(u'\u03A3')) << "final and capital sigma";
    EXPECT_EQ(foldCase(u'\u1E9E'), u'\u00DF');
    EXPECT_EQ(foldCase(u'\u212A'), u'k') << "Kelvin sign";
    EXPECT_EQ(foldCase(u'\u00DF'), u'\u00DF');
    EXPECT_EQ(foldCase(char16_t{0xD801}), char16_t{0xD801});
    EXPECT_EQ(caseFoldTable()[u'Q'], u'q');
}

TEST(CharacterClass, caseMappingIsFull) {
    const char16_t high[] = {0xD800, 0};
    struct Case {
        std::u16string text;
        std::u16string upper;
        std::u16string lower;
    };
    const Case cases[] = {
        {u"", u"", u""},
        {u"aB1-", u"AB1-", u"ab1-"},
        {u"stra\u00DFe", u"STRASSE", u"stra\u00DFe"},
        {u"\uFB03\uFB03\uFB03", u"FFIFFIFFI", u"\uFB03\uFB03\uFB03"},
        {u"\u039F\u03A3", u"\u039F\u03A3", u"\u03BF\u03C2"}, // a final sigma
        {u"\u0130i", u"\u0130I", u"i\u0307i"},
        {u"\U00010428", u"\U00010400", u"\U00010428"}, // beyond the first plane
        {std::u16string(u"a") + high + u"b", std::u16string(u"A") + high + u"B",
         std::u16string(u"a") + high + u"b"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(toUpperCase(c.text), c.upper);
        EXPECT_EQ(toLowerCase(c.text), c.lower);
    }
}

} // namespace
} // namespace tavrin
