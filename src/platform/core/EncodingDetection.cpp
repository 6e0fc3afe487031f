#include "platform/core/EncodingDetection.h"

#include "platform/core/Encoding.h"
#include "platform/core/EncodingTable.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace tavrin {

namespace {

using Form = DetectedEncoding::Form;
using Bytes = std::span<const std::uint8_t>;

constexpr ByteShifts utf16LittleEndian{0, 8, 0, 0};
constexpr ByteShifts utf16BigEndian{8, 0, 0, 0};
constexpr ByteShifts utf32LittleEndian{0, 8, 16, 24};
constexpr ByteShifts utf32BigEndian{24, 16, 8, 0};
constexpr ByteShifts utf32Order2143{16, 24, 0, 8};
constexpr ByteShifts utf32Order3412{8, 0, 24, 16};

struct Layout {
    int encoding;
    Form form;
    ByteShifts shifts;
};
constexpr Layout layouts[] = {
    {ENCODING_UTF16, Form::Utf16, utf16LittleEndian},   {ENCODING_UTF16_BE, Form::Utf16, utf16BigEndian},
    {ENCODING_UTF32, Form::Utf32, utf32LittleEndian},   {ENCODING_UTF32_BE, Form::Utf32, utf32BigEndian},
    {ENCODING_UTF32_2143, Form::Utf32, utf32Order2143}, {ENCODING_UTF32_3412, Form::Utf32, utf32Order3412},
};

/// No declaration that means to be understood is longer.
constexpr std::size_t longestDeclaration = 1024;
constexpr std::string_view declarationStart = "<?xml";
constexpr std::string_view xmlSpace = " \t\r\n";

struct Pattern {
    std::string_view bytes;
    Form form;
    ByteShifts shifts;
};

using namespace std::string_view_literals;

/// The marks of four bytes come first: those of UTF-16 begin two of them.
constexpr Pattern marks[] = {
    {"\xFF\xFE\x00\x00"sv, Form::Utf32, utf32LittleEndian},
    {"\x00\x00\xFE\xFF"sv, Form::Utf32, utf32BigEndian},
    {"\x00\x00\xFF\xFE"sv, Form::Utf32, utf32Order2143},
    {"\xFE\xFF\x00\x00"sv, Form::Utf32, utf32Order3412},
    {"\xEF\xBB\xBF"sv, Form::Utf8, {}},
    {"\xFF\xFE"sv, Form::Utf16, utf16LittleEndian},
    {"\xFE\xFF"sv, Form::Utf16, utf16BigEndian},
};

/// A "<" in units of four bytes.
constexpr Pattern wideStarts[] = {
    {"\x3C\x00\x00\x00"sv, Form::Utf32, utf32LittleEndian},
    {"\x00\x00\x00\x3C"sv, Form::Utf32, utf32BigEndian},
    {"\x00\x00\x3C\x00"sv, Form::Utf32, utf32Order2143},
    {"\x00\x3C\x00\x00"sv, Form::Utf32, utf32Order3412},
};

/// Names the second character set of ISO-2022-KR before anything else; no text in another encoding begins so.
constexpr std::string_view koreanStart = "\x1B$)C";

/// "<?xm" in EBCDIC.
constexpr std::string_view ebcdicStart = "\x4C\x6F\xA7\x94";

std::string_view asText(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::optional<DetectedEncoding> matchPattern(std::string_view text, std::span<const Pattern> patterns) {
    const auto found =
        std::ranges::find_if(patterns, [&](const Pattern& p) { return text.starts_with(p.bytes); });
    if (found == patterns.end())
        return std::nullopt;
    return DetectedEncoding{found->form, 0, found->shifts, found->bytes.size()};
}

/// A "<" and another character below U+0100, in units of two bytes.
std::optional<DetectedEncoding> matchUtf16Start(Bytes bytes) {
    if (bytes.size() < 4)
        return std::nullopt;
    if (bytes[0] == '<' && bytes[1] == 0 && bytes[2] != 0 && bytes[3] == 0)
        return DetectedEncoding{Form::Utf16, 0, utf16LittleEndian, 0};
    if (bytes[0] == 0 && bytes[1] == '<' && bytes[2] == 0 && bytes[3] != 0)
        return DetectedEncoding{Form::Utf16, 0, utf16BigEndian, 0};
    return std::nullopt;
}

/// Takes what stands before `end` off the front of `text`.
std::string_view takeUpTo(std::string_view& text, std::size_t end) {
    end = std::min(end, text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end);
    return taken;
}

void skipSpace(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(xmlSpace), text.size()));
}

/// The value of "encoding" in an XML declaration at the start of `text`; empty when there is none.
std::string_view declaredEncoding(std::string_view text) {
    text = text.substr(0, longestDeclaration);
    if (!text.starts_with(declarationStart))
        return {};
    text = text.substr(0, text.find("?>"));
    text.remove_prefix(declarationStart.size());
    if (text.empty() || xmlSpace.find(text.front()) == std::string_view::npos)
        return {};
    for (;;) {
        skipSpace(text);
        const std::string_view name = takeUpTo(text, text.find_first_of(" \t\r\n="));
        skipSpace(text);
        if (name.empty() || !text.starts_with('='))
            return {};
        text.remove_prefix(1);
        skipSpace(text);
        if (!text.starts_with('"') && !text.starts_with('\''))
            return {};
        const char quote = text.front();
        text.remove_prefix(1);
        const std::size_t end = text.find(quote);
        if (end == std::string_view::npos)
            return {};
        const std::string_view value = takeUpTo(text, end);
        text.remove_prefix(1);
        if (name == "encoding")
            return value;
    }
}

/// The first bytes as characters of a code page; those beyond ASCII become NUL.
std::string decodeStart(int codePage, Bytes bytes) {
    const Converter converter = openConverter(codePage);
    if (!converter)
        return {};
    const Bytes start = bytes.first(std::min(bytes.size(), longestDeclaration));
    std::u16string characters(start.size() * 2, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_toUChars(converter.get(), characters.data(), static_cast<std::int32_t>(characters.size()),
                      asText(start).data(), static_cast<std::int32_t>(start.size()), &status);
    if (U_FAILURE(status))
        return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    std::ranges::transform(characters.substr(0, text.size()), text.begin(),
                           [](char16_t c) { return c < 0x80 ? static_cast<char>(c) : '\0'; });
    return text;
}

/// True when the bytes can be text of the code page: the declaration reads as one.
bool fitsCodePage(int codePage, Bytes bytes) {
    if (!decodeStart(codePage, bytes).starts_with(declarationStart))
        return false;
    return codePage != CODEPAGE_ASCII || std::ranges::all_of(bytes, [](std::uint8_t b) { return b < 0x80; });
}

DetectedEncoding detectByDeclaration(Bytes bytes) {
    const std::optional<int> declared = encodingFromName(declaredEncoding(asText(bytes)));
    if (declared == ENCODING_UTF8)
        return {Form::Utf8, 0, {}, 0};
    if (declared && fitsCodePage(*declared, bytes))
        return {Form::CodePage, *declared, {}, 0};
    return {};
}

/// The letters, digits and signs of a declaration are the same in every EBCDIC code page but for few; it says
/// which one.
DetectedEncoding detectEbcdic(Bytes bytes) {
    const std::optional<int> declared =
        encodingFromName(declaredEncoding(decodeStart(CODEPAGE_EBCDIC, bytes)));
    const bool fits = declared && fitsCodePage(*declared, bytes);
    return {Form::CodePage, fits ? *declared : CODEPAGE_EBCDIC, {}, 0};
}

} // namespace

ByteShifts byteShifts(int encoding) {
    return std::ranges::find(layouts, encoding, &Layout::encoding)->shifts;
}

int wideEncoding(Form form, const ByteShifts& shifts) {
    return std::ranges::find_if(layouts,
                                [&](const Layout& l) { return l.form == form && l.shifts == shifts; })
        ->encoding;
}

DetectedEncoding detectEncoding(Bytes bytes) {
    const std::string_view text = asText(bytes);
    if (const auto marked = matchPattern(text, marks))
        return *marked;
    if (auto wide = matchPattern(text, wideStarts)) {
        wide->markLength = 0;
        return *wide;
    }
    if (const auto utf16 = matchUtf16Start(bytes))
        return *utf16;
    if (text.starts_with(ebcdicStart))
        return detectEbcdic(bytes);
    if (text.starts_with(koreanStart))
        return {Form::CodePage, CODEPAGE_KOREAN, {}, 0};
    return detectByDeclaration(bytes);
}

} // namespace tavrin
