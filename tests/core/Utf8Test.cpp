#include "platform/core/Utf8.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <random>
#include <string>
#include <vector>

namespace tavrin {
namespace {

using namespace std::string_literals;

std::u16string decode(const std::string& bytes, DecodeReport& report,
                      OnInvalid onInvalid = OnInvalid::Replace) {
    std::u16string text(bytes.size(), u'\0');
    const std::span in(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    text.resize(decodeUtf8(in, text.data(), onInvalid, report));
    return text;
}

std::u16string decodeByIcu(const std::string& bytes) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open("UTF-8", &status);
    std::u16string text(bytes.size() + 1, u'\0');
    text.resize(ucnv_toUChars(converter, text.data(), static_cast<std::int32_t>(text.size()), bytes.data(),
                              static_cast<std::int32_t>(bytes.size()), &status));
    ucnv_close(converter);
    return text;
}

TEST(Utf8, everyMaximalSubpartBecomesOneReplacement) {
    struct Case {
        std::string bytes;
        std::u16string text;
        std::size_t invalid;
        std::size_t first;
    };
    const Case cases[] = {
        {"", u"", 0, 0},
        {"a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80z", u"aé中\U0001F600z", 0, 0},
        {"a\0b"s, u"a\0b"s, 0, 0},
        {"\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF", u"\uD7FF\uE000\uFFFF\U0010FFFF", 0, 0},
        {"a\x80z", u"a\uFFFDz", 1, 1},
        {"\xC0\xAF", u"\uFFFD\uFFFD", 2, 0},                     // longer than needed
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD", 3, 0},           // longer than needed
        {"ab\xED\xA0\x80", u"ab\uFFFD\uFFFD\uFFFD", 3, 2},       // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 4, 0}, // beyond U+10FFFF
        {"\xF5\xFF", u"\uFFFD\uFFFD", 2, 0},                     // bytes that never occur
        {"\xE4\xB8", u"\uFFFD", 1, 0},                           // cut off by the end
        {"\xF0\x9F\x98", u"\uFFFD", 1, 0},                       // cut off by the end
        {"\xF0\x9F\x98z\xC3", u"\uFFFDz\uFFFD", 2, 0},           // cut off by a letter, and by the end
        {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", u"\uFFFD\uFFFD\uFFFD\uFFFDA", 4,
         0}, // the Standard's table 3-11
    };
    for (const Case& c : cases) {
        DecodeReport report;
        EXPECT_EQ(decode(c.bytes, report), c.text) << testing::PrintToString(c.bytes);
        EXPECT_EQ(report.invalidCount, c.invalid) << testing::PrintToString(c.bytes);
        EXPECT_EQ(report.firstInvalid, c.first) << testing::PrintToString(c.bytes);
    }
}

TEST(Utf8, decodingCanStopAtTheFirstInvalidPlace) {
    DecodeReport report;
    EXPECT_EQ(decode("abc\xFF\xFF"
                     "def",
                     report, OnInvalid::Stop),
              u"abc");
    EXPECT_EQ(report.invalidCount, 1u);
    EXPECT_EQ(report.firstInvalid, 3u);
}

TEST(Utf8, randomBytesDecodeAsIcuDecodesThem) {
    const std::vector<std::string> pieces = {"plain text, longer than a block of the machine",
                                             "a",
                                             "\n",
                                             "\xC3\xA9",
                                             "\xE4\xB8\xAD",
                                             "\xF0\x9F\x98\x80",
                                             "\xED\xA0\x80",
                                             "\xE0\x9F",
                                             "\xF0\x8F",
                                             "\xF4\x90",
                                             "\xC0",
                                             "\xC1\xBF",
                                             "\x80",
                                             "\xBF",
                                             "\xE4",
                                             "\xE4\xB8",
                                             "\xF0\x9F",
                                             "\xF0\x9F\x98",
                                             "\xFE",
                                             "\xFF",
                                             "\xF8\x88"};
    for (unsigned seed = 1; seed <= 3000; ++seed) {
        std::mt19937 random(seed);
        std::string bytes;
        for (auto n = random() % 12; n > 0; --n) {
            bytes += pieces[random() % pieces.size()];
            if (random() % 8 == 0)
                bytes += static_cast<char>(random());
        }
        DecodeReport report;
        const std::u16string text = decode(bytes, report);
        ASSERT_EQ(text, decodeByIcu(bytes)) << "seed " << seed;
    }
}

TEST(Utf8, encodingReplacesUnpairedSurrogates) {
    std::u16string text = u"aé中\U0001F600";
    text += char16_t{0xD83D};
    text += u'z';
    text += char16_t{0xDE00};
    text += char16_t{0xD83D};
    std::string out = "before ";
    EncodeReport report;
    encodeUtf8(text, out, 100, report);
    EXPECT_EQ(out, "before aé中\U0001F600\uFFFDz\uFFFD\uFFFD");
    EXPECT_EQ(report.lostCount, 3u);
    EXPECT_EQ(report.firstLost, 105u);
}

TEST(Utf8, longTextsComeBackAsTheyWere) {
    // Pairs and longer sequences at every place relative to the pieces in which a long text is encoded.
    for (std::size_t shift = 0; shift < 40; ++shift) {
        std::u16string text(shift, u'x');
        while (text.size() < 5000)
            text += text.size() % 3 == 0 ? u"\U0001F600\U0001F600" : u"日本é";
        std::string bytes;
        EncodeReport encoded;
        encodeUtf8(text, bytes, 0, encoded);
        DecodeReport decoded;
        ASSERT_EQ(decode(bytes, decoded), text) << shift;
        ASSERT_EQ(encoded.lostCount + decoded.invalidCount, 0u);
    }
}

} // namespace
} // namespace tavrin
