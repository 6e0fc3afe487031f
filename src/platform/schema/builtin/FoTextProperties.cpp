#include "platform/schema/builtin/FoTable.h"

namespace tavrin::builtin {

namespace {

using enum Inherited;

constexpr PropertyRow rows[] = {
    // Fonts
    {"font-family", Yes, "serif | sans-serif | cursive | fantasy | monospace | <family> | inherit",
     "Font families in order of preference, separated by commas."},
    {"font-selection-strategy", Yes, "auto | character-by-character | inherit",
     "Whether a font is chosen by looking at the text around or at each character."},
    {"font-size", Yes,
     "xx-small | x-small | small | medium | large | x-large | xx-large | larger | smaller | <length> | "
     "<percentage> | inherit",
     "The size of the font."},
    {"font-size-adjust", Yes, "none | <number> | inherit",
     "Keeps the height of small letters when another font is taken."},
    {"font-stretch", Yes,
     "normal | wider | narrower | ultra-condensed | extra-condensed | condensed | semi-condensed | "
     "semi-expanded | expanded | extra-expanded | ultra-expanded | inherit",
     "A narrow or wide face of the font."},
    {"font-style", Yes, "normal | italic | oblique | backslant | inherit",
     "An upright or slanted face of the font."},
    {"font-variant", Yes, "normal | small-caps | inherit",
     "Whether small letters are shown as small capitals."},
    {"font-weight", Yes,
     "normal | bold | bolder | lighter | 100 | 200 | 300 | 400 | 500 | 600 | 700 | 800 | 900 | inherit",
     "The weight of the font."},

    // Language and hyphenation
    {"country", Yes, "none | <country> | inherit", "The country, for hyphenation and line breaking."},
    {"language", Yes, "none | <language> | inherit", "The language, for hyphenation and line breaking."},
    {"script", Yes, "none | auto | <script> | inherit",
     "The script, for the choice of baselines and line breaking."},
    {"hyphenate", Yes, "false | true | inherit", "Whether words may be hyphenated at the end of a line."},
    {"hyphenation-character", Yes, "<character> | inherit",
     "The character shown where a word is hyphenated."},
    {"hyphenation-push-character-count", Yes, "<number> | inherit",
     "How many characters at least stand after the hyphen."},
    {"hyphenation-remain-character-count", Yes, "<number> | inherit",
     "How many characters at least stand before the hyphen."},
    {"hyphenation-keep", Yes, "auto | column | page | inherit",
     "Whether both parts of a hyphenated word stay in one column or on one page."},
    {"hyphenation-ladder-count", Yes, "no-limit | <number> | inherit",
     "How many lines in a row may end with a hyphen."},

    // Blocks and lines
    {"last-line-end-indent", Yes, "<length> | <percentage> | inherit",
     "The indent at the end of the last line."},
    {"line-height", Yes, "normal | <length> | <number> | <percentage> | <space> | inherit",
     "The height of lines. A number multiplies the size of the font."},
    {"line-height-shift-adjustment", Yes, "consider-shifts | disregard-shifts | inherit",
     "Whether superscripts and subscripts make a line higher."},
    {"line-stacking-strategy", Yes, "line-height | font-height | max-height | inherit",
     "How the height of each line is found."},
    {"linefeed-treatment", Yes, "ignore | preserve | treat-as-space | treat-as-zero-width-space | inherit",
     "What becomes of line feeds in the text."},
    {"text-align", Yes,
     "start | center | end | justify | inside | outside | left | right | <character> | inherit",
     "The alignment of lines."},
    {"text-align-last", Yes,
     "relative | start | center | end | justify | inside | outside | left | right | inherit",
     "The alignment of the last line, and of lines before forced breaks."},
    {"text-indent", Yes, "<length> | <percentage> | inherit", "The indent of the first line."},
    {"white-space-collapse", Yes, "true | false | inherit", "Whether several blanks in a row become one."},
    {"white-space-treatment", Yes,
     "ignore | preserve | ignore-if-before-linefeed | ignore-if-after-linefeed | "
     "ignore-if-surrounding-linefeed | inherit",
     "What becomes of blanks and tabs in the text."},
    {"wrap-option", Yes, "wrap | no-wrap | inherit", "Whether long lines are broken."},

    // Characters
    {"character", No, "<character>", "The character to show."},
    {"letter-spacing", Yes, "normal | <length> | <space> | inherit", "Additional space between letters."},
    {"suppress-at-line-break", No, "auto | suppress | retain | inherit",
     "Whether the character goes when it stands next to a line break."},
    {"text-decoration", No,
     "none | underline | no-underline | overline | no-overline | line-through | no-line-through | blink | "
     "no-blink | inherit",
     "Lines under, over or through the text."},
    {"text-shadow", No, "none | <shadow> | inherit", "Shadows of the text."},
    {"text-transform", Yes, "capitalize | uppercase | lowercase | none | inherit",
     "Shows text in capital or small letters."},
    {"treat-as-word-space", No, "auto | true | false | inherit",
     "Whether the character counts as a space between words."},
    {"word-spacing", Yes, "normal | <length> | <space> | inherit", "Additional space between words."},
    {"score-spaces", Yes, "true | false | inherit", "Whether spaces are underlined, too."},
    {"visibility", Yes, "visible | hidden | collapse | inherit",
     "Whether the object is shown; its room stays, but for collapsed rows and columns."},

    // Colour
    {"color", Yes, "<color> | inherit", "The colour of the text."},
    {"color-profile-name", No, "<name> | inherit",
     "The name by which rgb-icc() refers to the colour profile."},
    {"rendering-intent", No,
     "auto | perceptual | relative-colorimetric | saturation | absolute-colorimetric | inherit",
     "What to preserve of colours that can't be shown exactly."},

    // Leaders and rules
    {"leader-alignment", Yes, "none | reference-area | page | inherit",
     "Whether the patterns of leaders in different lines are aligned."},
    {"leader-length", Yes, "<length-range> | <percentage> | inherit",
     "The length of a leader: least, best and most."},
    {"leader-pattern", Yes, "space | rule | dots | use-content | inherit", "What a leader is filled with."},
    {"leader-pattern-width", Yes, "use-font-metrics | <length> | <percentage> | inherit",
     "The distance at which the pattern of a leader repeats."},
    {"rule-style", Yes, "none | dotted | dashed | solid | double | groove | ridge | inherit",
     "The style of a rule."},
    {"rule-thickness", Yes, "<length>", "The thickness of a rule."},

    // Direction of writing
    {"direction", Yes, "ltr | rtl | inherit", "The direction of text inside a line."},
    {"glyph-orientation-horizontal", Yes, "0deg | 90deg | 180deg | 270deg | <angle> | inherit",
     "How characters are turned in horizontal lines."},
    {"glyph-orientation-vertical", Yes, "auto | 0deg | 90deg | 180deg | 270deg | <angle> | inherit",
     "How characters are turned in vertical lines."},
    {"text-altitude", No, "use-font-metrics | <length> | <percentage> | inherit",
     "The height of text above the baseline."},
    {"text-depth", No, "use-font-metrics | <length> | <percentage> | inherit",
     "The depth of text below the baseline."},
    {"unicode-bidi", No, "normal | embed | bidi-override | inherit",
     "How the text takes part in the ordering of mixed directions."},
    {"writing-mode", Yes, "lr-tb | rl-tb | tb-rl | lr | rl | tb | inherit",
     "The direction of lines and of the blocks below one another."},
};

} // namespace

constinit const std::span<const PropertyRow> foTextProperties = rows;

} // namespace tavrin::builtin
