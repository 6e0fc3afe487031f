#pragma once

#include <string>

namespace tavrin {

/// The attribute that is being typed at a position. Columns are those of that position's line.
struct XmlAttrEditInfo {
    std::u16string elementNamespace; ///< namespace name of the element that the attribute belongs to
    std::u16string name;
    std::u16string value;  ///< without quotes
    char16_t quote = u'"'; ///< for values that are written
    bool hasOpenQuote = false;
    bool hasCloseQuote = false; ///< on the same line
    int valueStart = -1;        ///< after the opening quote
    int valueEnd = -1;          ///< the closing quote's column, or the line's length
    int nameStart = -1;
    int nameEnd = -1; ///< exclusive
};

} // namespace tavrin
