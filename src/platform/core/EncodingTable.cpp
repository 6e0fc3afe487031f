#include "platform/core/EncodingTable.h"

#include "platform/core/Encoding.h"

#include <algorithm>
#include <charconv>

namespace tavrin {

namespace {

struct Row {
    int code;
    const char* name;      ///< preferred IANA name in lower case, or the usual one where IANA has none
    const char* converter; ///< ICU's name
};

/// Windows code-page numbers. The first row of a code gives its name and its converter; further rows are
/// other encodings that are read and written as that one, a superset of theirs.
constexpr Row rows[] = {
    {ENCODING_UTF8, "utf-8", "UTF-8"},
    {ENCODING_UTF16, "utf-16", "UTF-16"},
    {ENCODING_UTF16, "utf-16le", "UTF-16LE"},
    {ENCODING_UTF16, "utf-16be", "UTF-16BE"},
    {ENCODING_LATIN1, "iso-8859-1", "ISO-8859-1"},
    {ENCODING_LATIN2, "iso-8859-2", "iso-8859-2"},
    {28593, "iso-8859-3", "iso-8859-3"},
    {28594, "iso-8859-4", "iso-8859-4"},
    {28595, "iso-8859-5", "iso-8859-5"},
    {28596, "iso-8859-6", "iso-8859-6"},
    {28597, "iso-8859-7", "iso-8859-7"},
    {28598, "iso-8859-8", "iso-8859-8"},
    {28599, "iso-8859-9", "iso-8859-9"},
    {28600, "iso-8859-10", "iso-8859-10"},
    {28601, "iso-8859-11", "iso-8859-11"},
    {28603, "iso-8859-13", "iso-8859-13"},
    {28604, "iso-8859-14", "iso-8859-14"},
    {28605, "iso-8859-15", "iso-8859-15"},
    {CODEPAGE_ASCII, "us-ascii", "US-ASCII"},
    {1250, "windows-1250", "windows-1250"},
    {1251, "windows-1251", "windows-1251"},
    {1252, "windows-1252", "windows-1252"},
    {1253, "windows-1253", "windows-1253"},
    {1254, "windows-1254", "windows-1254"},
    {1255, "windows-1255", "windows-1255"},
    {1256, "windows-1256", "windows-1256"},
    {1257, "windows-1257", "windows-1257"},
    {1258, "windows-1258", "windows-1258"},
    {874, "windows-874", "windows-874"},
    {20866, "koi8-r", "koi8-r"},
    {21866, "koi8-u", "koi8-u"},
    {932, "shift_jis", "windows-932"},
    {936, "gbk", "windows-936"},
    {936, "gb2312", "gb2312"},
    {949, "ks_c_5601-1987", "windows-949"},
    {950, "big5", "windows-950"},
    {950, "big5", "big5"},
    {54936, "gb18030", "gb18030"},
    {51932, "euc-jp", "euc-jp"},
    {20932, "euc-jp", "euc-jp"},
    {51949, "euc-kr", "euc-kr"},
    {50220, "iso-2022-jp", "iso-2022-jp"},
    {50225, "iso-2022-kr", "iso-2022-kr"},
    {52936, "hz-gb-2312", "hz"},
    {437, "ibm437", "ibm-437"},
    {850, "ibm850", "ibm-850"},
    {852, "ibm852", "ibm-852"},
    {855, "ibm855", "ibm-855"},
    {857, "ibm857", "ibm-857"},
    {858, "ibm00858", "ibm-858"},
    {862, "ibm862", "ibm-862"},
    {864, "ibm864", "ibm-864"},
    {866, "ibm866", "ibm-866"},
    {869, "ibm869", "ibm-869"},
    {CODEPAGE_EBCDIC, "ibm037", "ibm-37"},
    {500, "ibm500", "ibm-500"},
    {1026, "ibm1026", "ibm-1026"},
    {1047, "ibm1047", "ibm-1047"},
    {1140, "ibm01140", "ibm-1140"},
    {10000, "macintosh", "macintosh"},
    {10007, "x-mac-cyrillic", "x-mac-cyrillic"},
};

const Row* findCode(int code) {
    const auto* row = std::ranges::find(rows, code, &Row::code);
    return row == std::end(rows) ? nullptr : row;
}

Converter openByName(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(ucnv_open(name, &status));
    return U_SUCCESS(status) ? std::move(converter) : nullptr;
}

/// The name under which ICU keeps the converter that `alias` stands for; empty when it knows none.
std::string_view canonicalName(const char* alias) {
    UErrorCode status = U_ZERO_ERROR;
    const char* name = ucnv_getAlias(alias, 0, &status);
    return U_SUCCESS(status) && name ? name : std::string_view();
}

/// Code pages that the table does not list go by the number in ICU's own name: "ibm-1006_P100-1995" is 1006.
std::string numberedName(int code) {
    return "ibm-" + std::to_string(code);
}

std::optional<int> numberInName(std::string_view canonical) {
    constexpr std::string_view prefix = "ibm-";
    if (!canonical.starts_with(prefix))
        return std::nullopt;
    int code = 0;
    const auto result =
        std::from_chars(canonical.data() + prefix.size(), canonical.data() + canonical.size(), code);
    const bool isNumber = result.ec == std::errc() && !findCode(code);
    return isNumber ? std::optional(code) : std::nullopt;
}

bool isAsciiAlphanumeric(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// What XML 1.0 allows as an encoding's name (production 81, digits accepted at the start).
bool isEncodingName(std::string_view name) {
    return !name.empty() && isAsciiAlphanumeric(name.front()) && std::ranges::all_of(name, [](char c) {
        return isAsciiAlphanumeric(c) || c == '.' || c == '_' || c == '-';
    });
}

} // namespace

Converter openConverter(int codePage) {
    if (codePage <= ENCODING_UTF16 || isWideEncoding(codePage) || codePage == ENCODING_UTF8)
        return nullptr;
    if (const Row* row = findCode(codePage))
        return openByName(row->converter);
    const std::string name = numberedName(codePage);
    return encodingFromName(name) == codePage ? openByName(name.c_str()) : nullptr;
}

bool canEncode(int encoding) {
    return isWideEncoding(encoding) || encoding == ENCODING_UTF8 || openConverter(encoding) != nullptr;
}

std::optional<int> encodingFromName(std::string_view name) {
    if (!isEncodingName(name))
        return std::nullopt;
    const std::string_view canonical = canonicalName(std::string(name).c_str());
    if (canonical.empty())
        return std::nullopt;
    for (const Row& row : rows)
        if (canonicalName(row.converter) == canonical)
            return canEncode(row.code) ? std::optional(row.code) : std::nullopt;
    return numberInName(canonical);
}

std::string encodingName(int encoding) {
    if (isWideEncoding(encoding))
        return encoding >= ENCODING_UTF32 ? "utf-32" : "utf-16";
    if (const Row* row = findCode(encoding))
        return row->name;
    return openConverter(encoding) ? numberedName(encoding) : std::string();
}

} // namespace tavrin
