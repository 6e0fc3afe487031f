#include "files/EncodingLoss.h"

#include "files/OpenedText.h"

#include <gtest/gtest.h>

#include <string>

namespace tavrin {
namespace {

using namespace std::string_literals;
using test::OpenedText;

std::string losses(const Buffer& buffer, int encoding) {
    std::string found;
    forEachLostCharacter(buffer, encoding, [&](const LostCharacter& lost) {
        found += std::to_string(lost.line) + ":" + std::to_string(lost.col) + " " +
                 std::to_string(static_cast<unsigned>(lost.character)) + ", ";
        return true;
    });
    return found;
}

TEST(EncodingLoss, findsEachCharacterInItsPlace) {
    const std::string rows(2000, '\n'); // pages of nothing but ASCII
    const struct {
        std::string bytes;
        int encoding;
        std::string lost;
    } cases[] = {
        {"a\xC5\x91\xF0\x9F\x98\x80\n\xE2\x82\xAC", ENCODING_LATIN1, "0:1 337, 0:2 128512, 1:0 8364, "},
        {"a\xC5\x91\xF0\x9F\x98\x80\n\xE2\x82\xAC", ENCODING_LATIN2, "0:2 128512, 1:0 8364, "},
        {"a\xC5\x91\xF0\x9F\x98\x80\n\xE2\x82\xAC", 54936, ""},
        {rows + "\xC5\x91" + rows, 1252, "2000:0 337, "},
        {std::string(511, 'x') + "\xF0\x9F\x98\x80\xC5\x91", ENCODING_LATIN1, "0:511 128512, 1:1 337, "},
        {"\xFF\xFE<\0\0\xD8\n\0\0\xDC"s, ENCODING_UTF8, "0:1 55296, 1:0 56320, "},
        {"\xFF\xFE<\0\0\xD8\n\0\0\xDC"s, ENCODING_UTF16_BE, ""},
        {"<?xml version='1.0' encoding='windows-1252'?>\x81\n\x80", 1252, ""}, // kept as it is
        {"<?xml version='1.0' encoding='windows-1252'?>\n\x80", ENCODING_LATIN1, "1:0 8364, "},
    };
    for (const auto& c : cases)
        EXPECT_EQ(losses(OpenedText(c.bytes).buffer, c.encoding), c.lost) << c.encoding;
}

TEST(EncodingLoss, countsBytesThatNoLongerComeBack) {
    const std::string head = "<?xml version='1.0' encoding='utf-8'?>\n";
    OpenedText text("\xEF\xBB\xBF" + head + "\xff\n\xff\xff\n\xff");
    EXPECT_EQ(findLostBytes(text.buffer, ENCODING_UTF8).count, 0U);
    EXPECT_EQ(findLostBytes(text.buffer, ENCODING_LATIN2).count, 4U);
    text.insert(2, 0, u"x");
    const LostBytes lost = findLostBytes(text.buffer, ENCODING_UTF8);
    EXPECT_EQ(lost.count, 2U);
    EXPECT_EQ(lost.first, 3 + head.size() + 2);
    text.buffer.erase(1, 0, 3, 1);
    EXPECT_EQ(findLostBytes(text.buffer, ENCODING_UTF8).count, 4U);
    OpenedText shifted("<?xml version='1.0' encoding='shift_jis'?>\n\x81\x01\nb\n");
    shifted.insert(2, 0, u"x");
    EXPECT_EQ(findLostBytes(shifted.buffer, 932).count, 0U);
    shifted.insert(1, 0, u"x");
    EXPECT_EQ(findLostBytes(shifted.buffer, 932).first, 43U);
}

} // namespace
} // namespace tavrin
