#include "Encodings.h"

#include "platform/core/Encoding.h"

#include <algorithm>

namespace tavrin::app {

std::vector<int> offeredEncodings(int present) {
    std::vector<int> codes{
        ENCODING_UTF8, ENCODING_UTF16, ENCODING_LATIN1, ENCODING_LATIN2,
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
    const QString name = QString::fromStdString(encodingName(encoding));
    if (name.isEmpty())
        return QString::number(encoding);
    return name.startsWith("windows") ? "W" + name.sliced(1) : name.toUpper();
}

} // namespace tavrin::app
