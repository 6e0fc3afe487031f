#pragma once

#include <string>

namespace tavrin::bench {

/// XML of about `bytes` bytes, the same on every machine: nested elements, attributes, comments, CDATA
/// sections and entity references, in lines of about 45 characters.
inline std::u16string generatedXml(std::size_t bytes) {
    std::u16string text = u"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<catalogue xmlns:p=\"urn:parts\">\n";
    text.reserve(bytes + 512);
    std::size_t i = 0;
    const auto number = [&] {
        const std::string digits = std::to_string(i);
        return std::u16string(digits.begin(), digits.end());
    };
    for (; text.size() < bytes; ++i) {
        text += u"  <p:part id=\"p" + number() + u"\" kind='spare' state=\"in use\">\n";
        text += u"    <name lang=\"en\">Part " + number() + u" &amp; its fittings</name>\n";
        if (i % 4 == 0)
            text += u"    <!-- checked by hand against the list -->\n";
        if (i % 4 == 2)
            text += u"    <note><![CDATA[ a < b && c > d, as drawn ]]></note>\n";
        text += u"    <price currency=\"EUR\" unit=\"piece\">" + number() + u".50</price>\n";
        text += u"  </p:part>\n";
    }
    text += u"</catalogue>\n";
    return text;
}

} // namespace tavrin::bench
