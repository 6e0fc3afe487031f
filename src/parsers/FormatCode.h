#pragma once

namespace tavrin {

/// Format codes of characters, as the parsers write them and the view colours them.
enum FormatCode : int {
    FORMAT_NORMAL = 0,
    FORMAT_SELECTION = 1,    ///< never stored
    FORMAT_LINE_NUMBERS = 2, ///< never stored
    FORMAT_COMMENT = 3,
    FORMAT_LINE_COMMENT = 4,
    FORMAT_STRING = 5,
    FORMAT_KEYWORD = 6,
    FORMAT_XML_TAG = 7,
    FORMAT_XML_ATTRIBUTE = 8,
    FORMAT_CDATA = 9,
    FORMAT_PUNCTUATION = 10,
};

} // namespace tavrin
