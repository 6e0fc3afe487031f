#include "parsers/XmlPlaces.h"

#include "parsers/XmlLangParser.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tavrin {
namespace {

/// A letter for each "ü" of a text: what it is part of.
std::string placesIn(std::u16string_view text) {
    Buffer buffer;
    XmlLangParser parser;
    buffer.setParser(&parser);
    parser.setBuffer(&buffer);
    buffer.loadText(text.data(), text.size());
    XmlPlaces places(buffer);
    std::string found;
    for (int line = 0; line < buffer.getLineCount(); ++line)
        for (int col = 0; col < buffer.getLineLength(line); ++col)
            if (buffer.getLineText(line)[static_cast<std::size_t>(col)] == u'\u00FC')
                found += "tvn-[?!"[static_cast<int>(places.at(line, col))];
    return found;
}

TEST(XmlPlaces, tellsWhereReferencesMayStand) {
    const struct {
        std::u16string_view text;
        std::string places;
    } cases[] = {
        {u"<\u00FC \u00FC='\u00FC' b=\"\u00FC>\u00FC\">\u00FC</\u00FC>", "nnvvvtn"},
        {u"<a\n b='\u00FC\n> \u00FC'\n \u00FC=\"\n\u00FC\"/>\u00FC", "vvnvt"},
        {u"<!-- \u00FC < ' \n\u00FC -->\u00FC<![CDATA[\u00FC <a '\n]]>\u00FC", "--t[t"},
        {u"<?x \u00FC > '\u00FC\n\u00FC ?>\u00FC<a>\u00FC<?\u00FC?>\u00FC", "???tt?t"},
        {u"<!-- <? \u00FC -->\u00FC<b>\u00FC", "-tt"},
        {u"<!DOCTYPE \u00FC SYSTEM '\u00FC>' [\n<!ENTITY \u00FC '\u00FC'>\n<!-- ]> \u00FC -->\u00FC] "
         u">\u00FC<a b='\u00FC'/>",
         "!!!!-!tv"},
        {u"<!DOCTYPE a>\u00FC", "t"},
        {u"\u00FC", "t"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(placesIn(c.text), c.places);
}

TEST(XmlPlaces, aLongWayBetweenTwoPlacesChangesNothing) {
    const std::u16string way(300, u'\n');
    EXPECT_EQ(placesIn(u"<a b='\u00FC" + way + u"\u00FC' c" + way + u"\u00FC>" + way + u"\u00FC<b>" + way +
                       u"\u00FC<!-- it's <b" + way + u"-->" + way + u"\u00FC"),
              "vvnttt");
}

} // namespace
} // namespace tavrin
