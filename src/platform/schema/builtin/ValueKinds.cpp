#include "platform/schema/builtin/TableRows.h"

namespace tavrin::builtin {

namespace {

constexpr KindRow rows[] = {
    // Of formatting objects
    {"angle", "", "an angle, such as 90deg"},
    {"border-style", "none | hidden | dotted | dashed | solid | double | groove | ridge | inset | outset",
     ""},
    {"border-width", "thin | medium | thick", "a length, such as 12pt"},
    {"color",
     "aqua | black | blue | fuchsia | gray | green | lime | maroon | navy | olive | purple | red | silver | "
     "teal | "
     "white | yellow",
     "a colour, such as #ff8000"},
    {"country", "", "a country, such as GB"},
    {"family", "", "names of font families"},
    {"font", "", "a font, such as bold 12pt serif"},
    {"frequency", "", "a frequency, such as 200Hz"},
    {"keep", "auto | always", "a number: the higher, the stronger"},
    {"language", "", "a language, such as en"},
    {"language-country", "", "a language, such as en-GB"},
    {"length", "", "a length, such as 12pt"},
    {"length-bp-ip-direction", "", "a length, such as 12pt"},
    {"length-conditional", "", "a length, such as 12pt"},
    {"length-range", "", "a length, such as 12pt"},
    {"names", "", "names, separated by blanks"},
    {"percentage", "", "a percentage, such as 50%"},
    {"script", "", "a script, such as Latn"},
    {"shadow", "", "shadows, such as gray 1pt 1pt"},
    {"shape", "", "a shape, such as rect(1pt, 1pt, 1pt, 1pt)"},
    {"space", "", "a length, such as 12pt"},
    {"time", "", "a time, such as 500ms"},
    {"voice", "", "names of voices"},
    // Of stylesheets
    {"boolean-expression", "", "an expression"},
    {"encoding", "", "an encoding"},
    {"expression", "", "an expression"},
    {"media-type", "", "a media type"},
    {"name-tests", "", "names or name tests, separated by blanks"},
    {"pattern", "", "a pattern"},
    {"prefix", "", "a prefix"},
    {"prefixes", "", "prefixes, separated by blanks"},
    {"qname", "", "a name with a prefix"},
    {"qnames", "", "names, separated by blanks"},
    // Of both
    {"character", "", "a character"},
    {"format", "", "another pattern"},
    {"id", "", "an identifier"},
    {"idref", "", "the id of an object"},
    {"integer", "", "a whole number"},
    {"name", "", "a name"},
    {"number", "", "a number"},
    {"string", "", "a text"},
    {"uri", "", "an address"},
};

} // namespace

constinit const std::span<const KindRow> valueKinds = rows;

} // namespace tavrin::builtin
