#include "platform/schema/builtin/FoTable.h"

namespace tavrin::builtin {

namespace {

constexpr ShorthandRow shorthands[] = {
    {"background",
     "background-color background-image background-repeat background-attachment "
     "background-position-horizontal background-position-vertical",
     "transparent | none | repeat | repeat-x | repeat-y | no-repeat | scroll | fixed | <color> | <uri> | "
     "<length> | <percentage> | inherit",
     "Colour, image, repetition, attachment and position of the background."},
    {"background-position", "background-position-horizontal background-position-vertical",
     "left | center | right | top | bottom | <length> | <percentage> | inherit",
     "Where the background image starts: horizontal, then vertical."},
    {"border",
     "border-top-width border-top-style border-top-color border-bottom-width border-bottom-style "
     "border-bottom-color border-left-width border-left-style border-left-color border-right-width "
     "border-right-style border-right-color",
     "<border-width> | <border-style> | <color> | inherit",
     "Width, style and colour of the border on all sides."},
    {"border-top", "border-top-width border-top-style border-top-color",
     "<border-width> | <border-style> | <color> | inherit", "Width, style and colour of the top border."},
    {"border-bottom", "border-bottom-width border-bottom-style border-bottom-color",
     "<border-width> | <border-style> | <color> | inherit", "Width, style and colour of the bottom border."},
    {"border-left", "border-left-width border-left-style border-left-color",
     "<border-width> | <border-style> | <color> | inherit", "Width, style and colour of the left border."},
    {"border-right", "border-right-width border-right-style border-right-color",
     "<border-width> | <border-style> | <color> | inherit", "Width, style and colour of the right border."},
    {"border-color", "border-top-color border-bottom-color border-left-color border-right-color",
     "transparent | <color> | inherit",
     "The colour of the border: one to four values, from the top clockwise."},
    {"border-style", "border-top-style border-bottom-style border-left-style border-right-style",
     "<border-style> | inherit", "The style of the border: one to four values, from the top clockwise."},
    {"border-width", "border-top-width border-bottom-width border-left-width border-right-width",
     "<border-width> | inherit", "The width of the border: one to four values, from the top clockwise."},
    {"border-spacing", "border-separation", "<length> | inherit",
     "The distance between cells with separate borders: one value or two."},
    {"cue", "cue-before cue-after", "none | <uri> | inherit", "Sounds played before and after the object."},
    {"font",
     "font-style font-variant font-weight font-size line-height font-family font-stretch font-size-adjust "
     "font-selection-strategy",
     "caption | icon | menu | message-box | small-caption | status-bar | <font> | inherit",
     "Style, variant, weight, size, line height and family of the font; or a font of the system."},
    {"margin", "margin-top margin-bottom margin-left margin-right",
     "auto | <length> | <percentage> | inherit",
     "The space outside the border: one to four values, from the top clockwise."},
    {"padding", "padding-top padding-bottom padding-left padding-right", "<length> | <percentage> | inherit",
     "The space inside the border: one to four values, from the top clockwise."},
    {"page-break-after", "break-after keep-with-next", "auto | always | avoid | left | right | inherit",
     "Asks for or avoids a page break after the object."},
    {"page-break-before", "break-before keep-with-previous", "auto | always | avoid | left | right | inherit",
     "Asks for or avoids a page break before the object."},
    {"page-break-inside", "keep-together", "auto | avoid | inherit", "Avoids page breaks inside the object."},
    {"pause", "pause-before pause-after", "<time> | <percentage> | inherit",
     "The silence before and after the object."},
    {"position", "absolute-position relative-position", "static | relative | absolute | fixed | inherit",
     "Places the object elsewhere than where it would stand."},
    {"size", "page-height page-width", "auto | landscape | portrait | <length> | inherit",
     "The size of the page: width and height, or an orientation."},
    {"vertical-align", "alignment-adjust alignment-baseline baseline-shift dominant-baseline",
     "baseline | middle | sub | super | text-top | text-bottom | top | bottom | <percentage> | <length> | "
     "inherit",
     "How the object is aligned in its line."},
    {"white-space", "linefeed-treatment white-space-collapse white-space-treatment wrap-option",
     "normal | pre | nowrap | inherit", "How white space is treated and lines are broken."},
    {"xml:lang", "country language", "<language-country> | inherit",
     "The language and country, such as en or en-GB."},
};

constexpr ComponentRow components[] = {
    {"length-range", "minimum", "auto | <length> | <percentage>", "The least value."},
    {"length-range", "optimum", "auto | <length> | <percentage>", "The best value."},
    {"length-range", "maximum", "auto | <length> | <percentage>", "The greatest value."},
    {"length-conditional", "length", "<length>", "The length."},
    {"length-conditional", "conditionality", "discard | retain",
     "Whether it stays where the object is cut by a page break."},
    {"length-bp-ip-direction", "block-progression-direction", "<length>", "The distance between rows."},
    {"length-bp-ip-direction", "inline-progression-direction", "<length>", "The distance between columns."},
    {"space", "minimum", "<length>", "The least space."},
    {"space", "optimum", "<length>", "The best space."},
    {"space", "maximum", "<length>", "The greatest space."},
    {"space", "precedence", "force | <integer>",
     "Which of two spaces that meet counts; force makes both count."},
    {"space", "conditionality", "discard | retain", "Whether it stays at the start of a page or line."},
    {"keep", "within-line", "auto | always | <integer>", "How strongly in one line."},
    {"keep", "within-column", "auto | always | <integer>", "How strongly in one column."},
    {"keep", "within-page", "auto | always | <integer>", "How strongly on one page."},
};

} // namespace

constinit const std::span<const ShorthandRow> foShorthands = shorthands;
constinit const std::span<const ComponentRow> foComponents = components;

} // namespace tavrin::builtin
