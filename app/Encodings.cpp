#include "Encodings.h"

#include "platform/core/Encoding.h"

#include <algorithm>

namespace tavrin::app {

std::vector<int> offeredEncodings(int present) {
    std::vector<int> codes{
        ENCODING_UTF8, ENCODING_UTF16, ENCODING_UTF16_BE, ENCODING_LATIN1, ENCODING_LATIN2,
        28605, // ISO-8859-15
        1252,  // Windows: western, central Europe, Cyrillic
        1250,          1251,
        20866, // KOI8-R
        932,   // Shift_JIS
        936,   // GBK
        54936, // GB 18030
        949,   // Korean
        950,   // Big5
    };
    std::erase_if(codes, [](int code) { return !canEncode(code); });
    if (std::find(codes.begin(), codes.end(), present) == codes.end())
        codes.push_back(present);
    return codes;
}

QString encodingLabel(int encoding) {
    switch (encoding) {
    case ENCODING_UTF16_BE:
        return "UTF-16 BE";
    case ENCODING_UTF32:
        return "UTF-32 LE";
    case ENCODING_UTF32_BE:
        return "UTF-32 BE";
    case ENCODING_UTF32_2143:
        return "UTF-32 (2143)";
    case ENCODING_UTF32_3412:
        return "UTF-32 (3412)";
    default:
        break;
    }
    const QString name = QString::fromStdString(encodingName(encoding));
    if (name.isEmpty())
        return QString::number(encoding);
    return name.startsWith("windows") ? "W" + name.sliced(1) : name.toUpper();
}

} // namespace tavrin::app
