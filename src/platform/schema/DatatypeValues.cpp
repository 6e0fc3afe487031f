#include "platform/schema/DatatypeValues.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <utility>

namespace tavrin {

namespace {

struct Description {
    std::u16string_view type;
    std::u16string_view words;
};

constexpr auto descriptions = std::to_array<Description>({
    {u"anyURI", u"a URI"},
    {u"base64Binary", u"bytes in base 64"},
    {u"byte", u"a whole number from -128 to 127"},
    {u"date", u"a date, as 2024-12-31"},
    {u"dateTime", u"a date and time, as 2024-12-31T23:59:59"},
    {u"decimal", u"a number"},
    {u"double", u"a number"},
    {u"duration", u"a duration, as P1DT2H"},
    {u"ENTITIES", u"names of unparsed entities"},
    {u"ENTITY", u"the name of an unparsed entity"},
    {u"float", u"a number"},
    {u"gDay", u"a day of the month, as ---31"},
    {u"gMonth", u"a month, as --12"},
    {u"gMonthDay", u"a day of the year, as --12-31"},
    {u"gYear", u"a year, as 2024"},
    {u"gYearMonth", u"a year and month, as 2024-12"},
    {u"hexBinary", u"bytes in hexadecimal digits"},
    {u"ID", u"a name that is unique in the document"},
    {u"IDREF", u"the ID of an element"},
    {u"IDREFS", u"IDs of elements"},
    {u"int", u"a whole number"},
    {u"integer", u"a whole number"},
    {u"language", u"a language, as en or en-GB"},
    {u"long", u"a whole number"},
    {u"Name", u"a name"},
    {u"NCName", u"a name without a colon"},
    {u"negativeInteger", u"a whole number below 0"},
    {u"NMTOKEN", u"a name token"},
    {u"NMTOKENS", u"name tokens"},
    {u"nonNegativeInteger", u"a whole number, 0 or more"},
    {u"nonPositiveInteger", u"a whole number, 0 or less"},
    {u"NOTATION", u"the name of a notation"},
    {u"positiveInteger", u"a whole number above 0"},
    {u"QName", u"a name that may have a prefix"},
    {u"short", u"a whole number"},
    {u"time", u"a time, as 23:59:59"},
    {u"unsignedByte", u"a whole number from 0 to 255"},
    {u"unsignedInt", u"a whole number, 0 or more"},
    {u"unsignedLong", u"a whole number, 0 or more"},
    {u"unsignedShort", u"a whole number from 0 to 65535"},
});

} // namespace

std::vector<AttributeValue> valuesOfDatatype(std::u16string_view type) {
    if (type == u"boolean")
        return {{.text = u"true"}, {.text = u"false"}};
    const auto known = std::ranges::find(descriptions, type, &Description::type);
    if (known == descriptions.end())
        return {};
    return {{.text = std::u16string(known->words), .isDescription = true}};
}

std::u16string withBounds(std::u16string words, std::u16string_view least, std::u16string_view greatest) {
    if (least.empty() && greatest.empty())
        return words;
    // The bounds of the type itself, if it has any, are the wider ones.
    words.resize(std::min({words.find(u" from "), words.find(u", 0 "), words.find(u" above 0"),
                           words.find(u" below 0"), words.size()}));
    if (greatest.empty())
        return words.append(u", ").append(least).append(u" or more");
    if (least.empty())
        return words.append(u", ").append(greatest).append(u" or less");
    return words.append(u" from ").append(least).append(u" to ").append(greatest);
}

void addValues(std::vector<AttributeValue>& values, const std::vector<AttributeValue>& more) {
    std::set<std::u16string_view> known;
    for (const AttributeValue& value : values)
        known.insert(value.text);
    std::vector<AttributeValue> added;
    for (const AttributeValue& value : more)
        if (known.insert(value.text).second)
            added.push_back(value);
    values.insert(values.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
}

} // namespace tavrin
