#include "replay/Json.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>

namespace tavrin::json {
namespace {

std::string written(std::u16string_view text) {
    return Writer().value(text).text();
}

/// The string and what is left after it; nothing when it is refused.
std::optional<std::pair<std::u16string, std::string>> taken(std::string_view text) {
    try {
        std::u16string value = takeString(text);
        return std::pair(std::move(value), std::string(text));
    } catch (const Error&) {
        return std::nullopt;
    }
}

TEST(Json, readsEveryEscapeAndEveryLengthOfUtf8) {
    struct Case {
        std::string_view json;
        std::u16string_view value;
    };
    for (const Case& c : {
             Case{R"("")", u""},
             Case{R"("a b")", u"a b"},
             Case{R"("\"\\\/\b\f\n\r\t")", u"\"\\/\b\f\n\r\t"},
             Case{R"("\u0041\u00e9\u00E9\u20aC")", u"Aéé€"},
             Case{R"("\u0000")", std::u16string_view(u"\0", 1)},
             Case{R"("\ud83d\ude00")", u"😀"},
             Case{"\"\x7f é € 😀\"", u"\x7f é € 😀"},
             Case{"\"\xf4\x8f\xbf\xbf\"", u"\U0010FFFF"},
         }) {
        const auto result = taken(std::string(c.json) + " rest");
        ASSERT_TRUE(result) << c.json;
        EXPECT_EQ(result->first, c.value) << c.json;
        EXPECT_EQ(result->second, " rest") << c.json;
    }
}

TEST(Json, unpairedSurrogatesComeAndGo) {
    for (const std::string_view json :
         {R"("\ud800")", R"("\udfff x")", R"("\udc00\ud800")", R"("\ud800\ud800\udc00")"}) {
        const auto result = taken(json);
        ASSERT_TRUE(result) << json;
        // The last two units of the last case are a pair, which is written as one character.
        const auto again = taken(written(result->first));
        ASSERT_TRUE(again) << json;
        EXPECT_EQ(again->first, result->first) << json;
    }
    EXPECT_EQ(written(u"\xd800"), R"("\ud800")");
    EXPECT_EQ(written(u"\xdc00\xd800"), R"("\udc00\ud800")");
    EXPECT_EQ(written(u"\xd83d\xde00\xde00"), "\"😀\\ude00\"");
}

TEST(Json, refusesWhatIsNotAString) {
    for (const std::string_view json : {
             "",
             "a",
             "'a'",
             "\"",
             "\"a",
             "\"\\",
             "\"\\\"",
             R"("\x")",
             R"("\u12")",
             R"("\u12g4")",
             R"("\u+123")",
             "\"\t\"",
             "\"\n\"", // raw control characters
             "\"\x80\"",
             "\"\xff\"",
             "\"\xc3\"", // no character begins or ends so
             "\"\xc0\x80\"",
             "\"\xe0\x80\x80\"", // overlong
             "\"\xed\xa0\x80\"",
             "\"\xf4\x90\x80\x80\"",
             "\"\xf8\x88\x80\x80\x80\"",
         })
        EXPECT_FALSE(taken(json)) << json;
}

TEST(Json, writesControlCharactersShortlyWhereThereIsAShortForm) {
    EXPECT_EQ(written(u"\"\\/"), R"("\"\\/")");
    EXPECT_EQ(written(u"\b\f\n\r\t"), R"("\b\f\n\r\t")");
    EXPECT_EQ(written(std::u16string(1, 0)), R"("\u0000")");
    EXPECT_EQ(written(u"\x1f\x7f\xa0"), "\"\\u001f\x7f\u00a0\"");
}

TEST(Json, writesCompactlyWithCommasBetweenValuesOnly) {
    Writer out;
    out.beginObject();
    out.key("a").beginArray().endArray();
    out.key("b").value(std::array{1, -2}).key("c").null();
    out.key("d").beginArray().value(true).beginObject().endObject().value(u"x").endArray();
    out.endObject();
    EXPECT_EQ(out.text(), R"({"a":[],"b":[1,-2],"c":null,"d":[true,{},"x"]})");
}

TEST(Json, integersFollowJsonsGrammarAndFitAnInt) {
    struct Case {
        std::string_view word;
        std::optional<int> value;
    };
    for (const Case& c : {
             Case{"0", 0},
             Case{"-0", 0},
             Case{"12", 12},
             Case{"-7", -7},
             Case{"2147483647", 2147483647},
             Case{"2147483648", {}},
             Case{"-2147483649", {}},
             Case{"", {}},
             Case{"-", {}},
             Case{"+1", {}},
             Case{"01", {}},
             Case{"-01", {}},
             Case{"1.0", {}},
             Case{"1e2", {}},
             Case{"0x1", {}},
             Case{"1 ", {}},
             Case{"--1", {}},
         })
        EXPECT_EQ(toInteger(c.word), c.value) << c.word;
}

TEST(Json, scalarsAreStringsIntegersAndBooleans) {
    std::string_view text = R"("x" -3 true false null)";
    const auto next = [&] {
        const Scalar value = takeScalar(text);
        text.remove_prefix(1);
        return value;
    };
    EXPECT_EQ(next(), Scalar(std::u16string(u"x")));
    EXPECT_EQ(next(), Scalar(-3));
    EXPECT_EQ(next(), Scalar(true));
    EXPECT_EQ(next(), Scalar(false));
    EXPECT_THROW(next(), Error);
}

TEST(Json, utf8AndUtf16HoldTheSameCharacters) {
    constexpr std::u16string_view text = u"a\x7fé€\uffff😀\U0010FFFF";
    EXPECT_EQ(fromUtf8(toUtf8(text)), text);
    EXPECT_EQ(toUtf8(u"a\xd800z"), "a\ufffdz");
}

} // namespace
} // namespace tavrin::json
