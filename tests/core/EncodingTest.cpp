#include "platform/core/Encoding.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

namespace tavrin {
namespace {

using namespace std::string_literals;

struct Loaded {
    std::u16string text;
    int code = 0;
    DecodeReport report;
};

Loaded load(const std::string& bytes, bool keepMark = false) {
    SmartPtr<ByteBuffer> buffer = ByteBuffer::allocate(bytes.size());
    std::memcpy(buffer->data(), bytes.data(), bytes.size());
    Loaded loaded;
    loaded.code = multibyteXmlToUnicode(buffer.get(), keepMark, &loaded.report);
    EXPECT_EQ(buffer->size() % 2, 0u);
    loaded.text.resize(buffer->size() / 2);
    std::memcpy(loaded.text.data(), buffer->data(), buffer->size());
    return loaded;
}

std::string encode(std::u16string_view text, int code, EncodeReport* report = nullptr) {
    TextEncoder encoder(code);
    std::string bytes;
    encoder.encode(text, bytes);
    encoder.finish(bytes);
    if (report)
        *report = encoder.report();
    return bytes;
}

/// The text in units of `order.size()` bytes: order[i] says which byte of the unit, counted from the lowest,
/// comes i-th.
std::string inUnits(std::u32string_view text, const std::string& order) {
    std::string bytes;
    for (const char32_t c : text)
        for (const char place : order)
            bytes += static_cast<char>(c >> (8 * (place - '0')));
    return bytes;
}

std::string declared(const std::string& name, const std::string& rest) {
    return "<?xml version=\"1.0\" encoding=\"" + name + "\"?>" + rest;
}

TEST(Detection, marksComeFirst) {
    struct Case {
        std::string bytes;
        int code;
        std::u16string text;
    };
    const std::string lie = declared("windows-1252", "");
    const std::u32string mark = U"\uFEFF<a\u0151/>\U0001F600";
    const std::u16string text = u"<a\u0151/>\U0001F600";
    const Case cases[] = {
        {"\xEF\xBB\xBF" + lie + "\xC5\x91", 65001,
         u"<?xml version=\"1.0\" encoding=\"windows-1252\"?>\u0151"},
        {inUnits(U"\uFEFF<a\u0151/>", "01"), 1, u"<a\u0151/>"},
        {inUnits(U"\uFEFF<a\u0151/>", "10"), 1, u"<a\u0151/>"},
        {inUnits(mark, "0123"), 1, text},
        {inUnits(mark, "3210"), 1, text},
        {inUnits(mark, "2301"), 1, text},
        {inUnits(mark, "1032"), 1, text},
        {"\xFF\xFE", 1, u""},
        {"\xEF\xBB\xBF", 65001, u""},
    };
    for (const Case& c : cases) {
        const Loaded loaded = load(c.bytes);
        EXPECT_EQ(loaded.code, c.code) << testing::PrintToString(c.bytes);
        EXPECT_EQ(loaded.text, c.text) << testing::PrintToString(c.bytes);
        EXPECT_TRUE(loaded.report.byteOrderMark);
        EXPECT_EQ(loaded.report.invalidCount, 0u);
        EXPECT_EQ(load(c.bytes, true).text, u"\uFEFF" + c.text);
    }
}

TEST(Detection, firstBytesShowTheUnitsAndTheirOrder) {
    const std::u32string text = U"<?xml version='1.0' encoding='utf-8'?><é/>";
    for (const char* order : {"01", "10", "0123", "3210", "2301", "1032"}) {
        const Loaded loaded = load(inUnits(text, order));
        EXPECT_EQ(loaded.code, 1) << order;
        EXPECT_EQ(loaded.text, u"<?xml version='1.0' encoding='utf-8'?><é/>") << order;
        EXPECT_FALSE(loaded.report.byteOrderMark);
    }
    EXPECT_EQ(load(inUnits(U"<a/>", "01")).text, u"<a/>") << "no declaration";
    EXPECT_EQ(load(inUnits(U"<a/>", "10")).text, u"<a/>");
}

TEST(Detection, declarationsNameTheEncoding) {
    struct Case {
        std::string name;
        std::string bytes;
        int code;
        std::u16string text;
    };
    const Case cases[] = {
        {"UTF-8", "\xC5\x91", 65001, u"\u0151"},
        {"utf8", "\xC5\x91", 65001, u"\u0151"},
        {"UTF-8", "a\xE9", 65001, u"a\uFFFD"},
        {"ISO-8859-1", "\xE9\xC5\x91", 28591, u"é\u00C5\u0091"},
        {"latin1", "\xE9", 28591, u"é"},
        {"iso-8859-2", "\xF5", 28592, u"\u0151"},
        {"ISO-8859-15", "\xA4", 28605, u"\u20AC"},
        {"windows-1252", "\x80\x93", 1252, u"\u20AC\u201C"},
        {"windows-1251", "\xFF\xE0", 1251, u"яа"},
        {"KOI8-R", "\xC1", 20866, u"а"},
        {"Shift_JIS", "\x93\xFA\x96\x7B\xB1", 932, u"日本\uFF71"},
        {"EUC-JP", "\xC6\xFC", 51932, u"日"},
        {"GB18030", "\xD6\xD0\x81\x30\x81\x30\x90\x30\x81\x30", 54936, u"中\u0080\U00010000"},
        {"gb2312", "\xD6\xD0", 936, u"中"},
        {"Big5", "\xA4\xA4", 950, u"中"},
        {"EUC-KR", "\xB0\xA1", 51949, u"가"},
        {"ISO-2022-JP", "\x1B$BF|\x1B(B!", 50220, u"日!"},
        {"cp1006", "\xA1", 1006, u"\u06F0"},
        {"us-ascii", "abc", 20127, u"abc"},
    };
    for (const Case& c : cases) {
        const std::string head = declared(c.name, "");
        const Loaded loaded = load(head + c.bytes);
        EXPECT_EQ(loaded.code, c.code) << c.name;
        EXPECT_EQ(loaded.text.substr(head.size()), c.text) << c.name;
        if (c.text.find(u'\uFFFD') != std::u16string::npos)
            continue;
        EXPECT_EQ(loaded.report.invalidCount, 0u) << c.name;
        EXPECT_EQ(encode(loaded.text, loaded.code), head + c.bytes)
            << c.name << " does not come back as it was";
    }
}

TEST(Detection, namesThatCanNotBeTrueTellNothing) {
    for (const char* name :
         {"utf-16", "UTF-16LE", "UTF-32", "IBM037", "x-unheard-of", "", "utf-8 oder so", "UTF-7,x=1"}) {
        EXPECT_EQ(load(declared(name, "\xC5\x91")).code, 65001) << name;
        EXPECT_EQ(load(declared(name, "\xC5")).code, 28591) << name;
    }
    EXPECT_EQ(load(declared("us-ascii", "\xC5\x91")).code, 65001) << "a byte beyond ASCII";
}

TEST(Detection, onlyADeclarationAtTheStartCounts) {
    const char* const latin = "windows-1252";
    struct Case {
        std::string bytes;
        int code;
    };
    const Case cases[] = {
        {"<?xml\tversion='1.0'\r\n encoding = 'windows-1252' ?>", 1252},
        {"<?xml encoding='windows-1252'?>", 1252},
        {" " + declared(latin, ""), 65001},
        {"<a/>" + declared(latin, ""), 65001},
        {"<?xml-stylesheet encoding='windows-1252'?>", 65001},
        {"<?xml version='1.0'?><?pi encoding='windows-1252'?>", 65001},
        {"<?xml version='1.0' encoding='windows-1252?>", 65001},
        {"<?xml version='1.0' encoding=windows-1252?>", 65001},
        {"<?xml version=' encoding=\"windows-1251\"' encoding='windows-1252'?>", 1252},
        {"<?xml", 65001},
        {"<?xml ", 65001},
        {"<?xml version='1.0' encoding='windows-1252'", 1252}, // an end is not asked for
    };
    for (const Case& c : cases)
        EXPECT_EQ(load(c.bytes).code, c.code) << c.bytes;
}

TEST(Detection, ebcdicDeclarationsNameTheCodePage) {
    const std::u16string text = u"<?xml version='1.0' encoding='IBM500'?><a>[é]</a>";
    const Loaded loaded = load(encode(text, 500));
    EXPECT_EQ(loaded.code, 500);
    EXPECT_EQ(loaded.text, text);
    EXPECT_EQ(load(encode(u"<?xml version='1.0'?><a/>", 37)).code, 37);
    EXPECT_EQ(load(encode(u"<?xml version='1.0' encoding='utf-8'?><a/>", 37)).code, 37);
}

TEST(Detection, withoutAnySignValidUtf8IsUtf8AndTheRestIsLatin1) {
    EXPECT_EQ(load("").code, 65001);
    EXPECT_EQ(load("plain").code, 65001);
    EXPECT_EQ(load("<a>\xC5\x91</a>").text, u"<a>\u0151</a>");
    const Loaded latin = load("<a>\xC5\x91 and\x80 \xFF</a>");
    EXPECT_EQ(latin.code, 28591);
    EXPECT_EQ(latin.text, u"<a>\u00C5\u0091 and\u0080 \u00FF</a>");
    EXPECT_EQ(latin.report.invalidCount, 0u) << "every byte is valid in ISO-8859-1";
}

TEST(Decoding, invalidPlacesAreCountedAndTheFirstIsLocated) {
    struct Case {
        const char* what;
        std::string bytes;
        std::u16string text; ///< its end
        std::size_t count;
        std::size_t first;
    };
    const std::string shiftJis = declared("Shift_JIS", "");
    const std::string utf8 = declared("utf-8", "");
    const Case cases[] = {
        {"mark, then UTF-8",
         "\xEF\xBB\xBF"
         "ab\xFF"
         "c\xFF",
         u"ab\uFFFDc\uFFFD", 2, 5},
        {"declared UTF-8", utf8 + "\xC3(", u"\uFFFD(", 1, utf8.size()},
        {"half a unit of UTF-16",
         "\xFF\xFE"
         "a\0b"s,
         u"a\uFFFD", 1, 4},
        {"half a unit and no whole one",
         "\xFE\xFF"
         "a",
         u"\uFFFD", 1, 2},
        {"UTF-32 beyond the last character", inUnits(U"\uFEFF", "0123") + "a\0\0\0\0\0\x11\0b"s,
         u"a\uFFFD\uFFFD", 2, 8},
        {"a surrogate in UTF-32", inUnits(U"\uFEFF", "3210") + "\0\0\xD8\0"s, u"\uFFFD", 1, 4},
        {"a lead byte before a byte that can't follow", shiftJis + "a\x81!\x93\xFA", u"a\uFFFD!日", 1,
         shiftJis.size() + 1},
        {"a lead byte at the end", shiftJis + "a\x93", u"a\uFFFD", 1, shiftJis.size() + 1},
    };
    for (const Case& c : cases) {
        const Loaded loaded = load(c.bytes);
        EXPECT_TRUE(loaded.text.ends_with(c.text)) << c.what << ": " << testing::PrintToString(loaded.text);
        EXPECT_EQ(loaded.report.invalidCount, c.count) << c.what;
        EXPECT_EQ(loaded.report.firstInvalid, c.first) << c.what;
    }
}

TEST(Decoding, unpairedSurrogatesInUtf16StayAndAreCounted) {
    const std::string bytes = inUnits(U"\uFEFFa", "01") +
                              "\x3D\xD8"
                              "b\0\x00\xDE"s +
                              inUnits(U"c", "01") + "\x3D\xD8\x00\xDE"s;
    const Loaded loaded = load(bytes);
    EXPECT_EQ(loaded.report.invalidCount, 2u);
    EXPECT_EQ(loaded.report.firstInvalid, 4u);
    EXPECT_EQ("\xFF\xFE" + encode(loaded.text, loaded.code), bytes);
}

TEST(Decoding, aSecondMarkIsACharacter) {
    EXPECT_EQ(load("\xEF\xBB\xBF\xEF\xBB\xBF"
                   "a")
                  .text,
              u"\uFEFFa");
}

TEST(Decoding, textsLongerThanAnyBlockComeBack) {
    for (const int code : {65001, 28591, 28592, 1251, 932, 54936}) {
        std::u16string text;
        const std::string name = encodingName(code);
        text = u"<?xml version='1.0' encoding='" + std::u16string(name.begin(), name.end()) + u"'?>";
        while (text.size() < 300'000)
            text += code == 54936 || code == 65001 ? u"日 \U0001F600 plain text"
                    : code == 932                  ? u"日本 and more\n"
                                                   : u"<plain/>";
        const std::string bytes = encode(text, code);
        const Loaded loaded = load(bytes);
        EXPECT_EQ(loaded.code, code);
        EXPECT_TRUE(loaded.text == text) << code;
    }
}

TEST(Decoding, noBytesFail) {
    const std::string starts[] = {"",
                                  "\xFF\xFE",
                                  "\xFE\xFF",
                                  "\xFF\xFE\0\0"s,
                                  "\xEF\xBB\xBF",
                                  "<?xml ",
                                  "\x4C\x6F\xA7\x94",
                                  declared("Shift_JIS", ""),
                                  declared("ISO-2022-JP", ""),
                                  declared("GB18030", ""),
                                  declared("hz-gb-2312", ""),
                                  declared("windows-1255", "")};
    for (unsigned seed = 1; seed <= 500; ++seed) {
        std::mt19937 random(seed);
        for (const std::string& start : starts) {
            std::string bytes = start;
            for (auto n = random() % 60; n > 0; --n)
                bytes += static_cast<char>(random());
            const Loaded loaded = load(bytes);
            ASSERT_TRUE(canEncode(loaded.code)) << "seed " << seed;
            if (loaded.report.invalidCount > 0) {
                ASSERT_LT(loaded.report.firstInvalid, bytes.size()) << "seed " << seed;
            }
        }
    }
}

TEST(Encoder, whatAnEncodingLacksBecomesAQuestionMark) {
    struct Case {
        int code;
        std::u16string text;
        std::string bytes;
        std::size_t lost;
        std::size_t first;
    };
    const Case cases[] = {
        {28591, u"aéÿ\u0080", "a\xE9\xFF\x80", 0, 0},
        {28591, u"a\u0151\U0001F600b", "a??b", 2, 1},
        {28592, u"\u0151", "\xF5", 0, 0},
        {28592, u"ab\u00F1\U0001F600\u0151", "ab??\xF5", 2, 2},
        {1252, u"\u20AC\u0151", "\x80?", 1, 1},
        {20127, u"aé", "a?", 1, 1},
        {932, u"日\u00E9本", "\x93\xFA?\x96\x7B", 1, 1},
        {37, u"A日", "\xC1\x6F", 1, 1}, // the question mark of EBCDIC
        {50220, u"日\U0001F600", "\x1B$BF|\x1B(B?", 1, 1},
        {65001, u"é\U0001F600", "\xC3\xA9\xF0\x9F\x98\x80", 0, 0},
        {1, u"é\U0001F600", "\xE9\0\x3D\xD8\x00\xDE"s, 0, 0},
        {987654, u"é", "\xC3\xA9", 0, 0}, // unknown: UTF-8
    };
    for (const Case& c : cases) {
        EncodeReport report;
        EXPECT_EQ(encode(c.text, c.code, &report), c.bytes) << c.code;
        EXPECT_EQ(report.lostCount, c.lost) << c.code;
        EXPECT_EQ(report.firstLost, c.first) << c.code;
    }
}

TEST(Encoder, unpairedSurrogatesAreLostButInUtf16) {
    const std::u16string text{u'a', char16_t{0xDE00}, u'b', char16_t{0xD83D}};
    struct Case {
        int code;
        std::string bytes;
        std::size_t lost;
    };
    const Case cases[] = {
        {65001,
         "a\xEF\xBF\xBD"
         "b\xEF\xBF\xBD",
         2},
        {28591, "a?b?", 2},
        {28592, "a?b?", 2},
        {1,
         "a\0\0\xDE"
         "b\0\x3D\xD8"s,
         0},
    };
    for (const Case& c : cases) {
        EncodeReport report;
        EXPECT_EQ(encode(text, c.code, &report), c.bytes) << c.code;
        EXPECT_EQ(report.lostCount, c.lost) << c.code;
        if (c.lost > 0) {
            EXPECT_EQ(report.firstLost, 1u) << c.code;
        }
    }
}

TEST(Encoder, piecesMayCutThroughAnything) {
    std::u16string text = u"ab\U0001F600é日\U0001F600\u0151";
    text.insert(3, 1, char16_t{0xD83D}); // a high surrogate after half a pair
    for (const int code : {65001, 1, 28591, 28592, 54936, 50220}) {
        EncodeReport wholeReport;
        const std::string whole = encode(text, code, &wholeReport);
        for (unsigned seed = 1; seed <= 50; ++seed) {
            std::mt19937 random(seed);
            TextEncoder encoder(code);
            std::string bytes;
            for (std::size_t i = 0; i < text.size();) {
                const std::size_t length = std::min<std::size_t>(random() % 4, text.size() - i);
                encoder.encode(std::u16string_view(text).substr(i, length), bytes);
                i += length;
            }
            encoder.finish(bytes);
            ASSERT_EQ(bytes, whole) << code << ", seed " << seed;
            ASSERT_EQ(encoder.report().lostCount, wholeReport.lostCount) << code;
            ASSERT_EQ(encoder.report().firstLost, wholeReport.firstLost) << code;
        }
    }
}

TEST(EncodingNames, namesAndCodesBelongTogether) {
    struct Case {
        const char* alias;
        int code;
        const char* name;
    };
    const Case cases[] = {
        {"UTF-8", 65001, "utf-8"},         {"utf-16be", 1, "utf-16"},
        {"ISO-10646-UCS-2", 1, "utf-16"},  {"ISO_8859-1", 28591, "iso-8859-1"},
        {"latin2", 28592, "iso-8859-2"},   {"CP1252", 1252, "windows-1252"},
        {"koi8-u", 21866, "koi8-u"},       {"x-sjis", 932, "shift_jis"},
        {"cp850", 850, "ibm850"},          {"IBM037", 37, "ibm037"},
        {"macintosh", 10000, "macintosh"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(encodingFromName(c.alias), c.code) << c.alias;
        EXPECT_EQ(encodingName(c.code), c.name) << c.alias;
        EXPECT_TRUE(canEncode(c.code)) << c.alias;
    }
    for (const char* unknown : {"", "UTF-32", "SCSU", "klingon", "-", "utf-8\n"})
        EXPECT_EQ(encodingFromName(unknown), std::nullopt) << unknown;
    for (const int unknown : {0, -1, 2, 1200, 999999}) {
        EXPECT_FALSE(canEncode(unknown)) << unknown;
        EXPECT_EQ(encodingName(unknown), "") << unknown;
    }
}

TEST(EncodingNames, everyNameLeadsBackToItsCode) {
    for (int code = 1; code <= 65001; ++code) {
        const std::string name = encodingName(code);
        if (name.empty())
            continue;
        ASSERT_TRUE(canEncode(code)) << name;
        if (isWideEncoding(code) && code != ENCODING_UTF16)
            continue;                                      // a name does not tell the layout
        const int expected = code == 20932 ? 51932 : code; // two numbers of one encoding
        EXPECT_EQ(encodingFromName(name), expected) << name;
    }
}

} // namespace
} // namespace tavrin
