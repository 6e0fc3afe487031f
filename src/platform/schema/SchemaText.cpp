#include "platform/schema/SchemaText.h"

#include "platform/core/Utf8.h"

namespace tavrin {

std::u16string toUtf16(std::string_view utf8) {
    std::u16string text(utf8.size(), u'\0');
    DecodeReport report;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(utf8.data());
    text.resize(decodeUtf8({bytes, utf8.size()}, text.data(), OnInvalid::Replace, report));
    return text;
}

std::string toUtf8(std::u16string_view text) {
    std::string utf8;
    EncodeReport report;
    encodeUtf8(text, utf8, 0, report);
    return utf8;
}

std::u16string collapseSpaces(std::u16string_view text) {
    std::u16string words;
    bool isGap = false;
    for (const char16_t c : text) {
        if (c == u' ' || c == u'\t' || c == u'\n' || c == u'\r') {
            isGap = true;
            continue;
        }
        if (isGap && !words.empty())
            words += u' ';
        isGap = false;
        words += c;
    }
    return words;
}

} // namespace tavrin
