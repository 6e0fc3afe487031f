#include "platform/schema/builtin/FoTable.h"

namespace tavrin::builtin {

namespace {

using enum Inherited;

constexpr PropertyRow rows[] = {
    // Accessibility
    {"source-document", No, "none | <uri> | inherit", "The document from which this object was made."},
    {"role", No, "none | <string> | <uri> | inherit",
     "What the object means, for readers that go by meaning."},

    // Absolute and relative position
    {"absolute-position", No, "auto | absolute | fixed | inherit",
     "Takes the object out of the flow and places it by top, right, bottom and left."},
    {"relative-position", No, "static | relative | inherit",
     "Moves the object from its normal place by top, right, bottom and left."},
    {"top", No, "auto | <length> | <percentage> | inherit",
     "The distance from the top edge of the surrounding rectangle."},
    {"right", No, "auto | <length> | <percentage> | inherit",
     "The distance from the right edge of the surrounding rectangle."},
    {"bottom", No, "auto | <length> | <percentage> | inherit",
     "The distance from the bottom edge of the surrounding rectangle."},
    {"left", No, "auto | <length> | <percentage> | inherit",
     "The distance from the left edge of the surrounding rectangle."},

    // Speech
    {"azimuth", Yes,
     "left-side | far-left | left | center-left | center | center-right | right | far-right | right-side | "
     "behind | leftwards | rightwards | <angle> | inherit",
     "The direction from which a voice comes, around the listener."},
    {"cue-after", No, "none | <uri> | inherit", "A sound played after the object."},
    {"cue-before", No, "none | <uri> | inherit", "A sound played before the object."},
    {"elevation", Yes, "below | level | above | higher | lower | <angle> | inherit",
     "The direction from which a voice comes, up or down."},
    {"pause-after", No, "<time> | <percentage> | inherit", "The silence after the object."},
    {"pause-before", No, "<time> | <percentage> | inherit", "The silence before the object."},
    {"pitch", Yes, "x-low | low | medium | high | x-high | <frequency> | inherit",
     "The average pitch of the voice."},
    {"pitch-range", Yes, "<number> | inherit", "How lively the voice is, from 0 (flat) to 100."},
    {"play-during", No, "auto | none | <uri> | inherit", "A sound played behind the voice."},
    {"richness", Yes, "<number> | inherit", "How bright the voice is, from 0 (soft) to 100."},
    {"speak", Yes, "normal | none | spell-out | inherit",
     "Whether text is spoken, and whether it is spelled letter by letter."},
    {"speak-header", Yes, "once | always | inherit",
     "Whether the header of a table is said before each cell."},
    {"speak-numeral", Yes, "digits | continuous | inherit", "Whether numbers are said digit by digit."},
    {"speak-punctuation", Yes, "code | none | inherit", "Whether punctuation is said or heard as pauses."},
    {"speech-rate", Yes, "x-slow | slow | medium | fast | x-fast | faster | slower | <number> | inherit",
     "The speed, in words per minute."},
    {"stress", Yes, "<number> | inherit", "How strongly the voice rises and falls, from 0 to 100."},
    {"voice-family", Yes, "male | female | child | <voice> | inherit",
     "The voices that may speak, in order of preference."},
    {"volume", Yes, "silent | x-soft | soft | medium | loud | x-loud | <number> | <percentage> | inherit",
     "The loudness of the voice."},

    // Background
    {"background-attachment", No, "scroll | fixed | inherit",
     "Whether the background image moves with the content."},
    {"background-color", No, "transparent | <color> | inherit", "The colour behind content and padding."},
    {"background-image", No, "none | <uri> | inherit", "An image behind content and padding."},
    {"background-repeat", No, "repeat | repeat-x | repeat-y | no-repeat | inherit",
     "In which directions the background image is repeated."},
    {"background-position-horizontal", No, "left | center | right | <length> | <percentage> | inherit",
     "Where the background image starts, from the left."},
    {"background-position-vertical", No, "top | center | bottom | <length> | <percentage> | inherit",
     "Where the background image starts, from the top."},

    // Borders and padding by direction of writing
    {"border-before-color", No, "<color> | inherit",
     "The colour of the border at the side where blocks start (the top, in left-to-right text)."},
    {"border-before-style", No, "<border-style> | inherit",
     "The style of the border at the side where blocks start."},
    {"border-before-width", No, "<border-width> | <length-conditional> | inherit",
     "The width of the border at the side where blocks start."},
    {"border-after-color", No, "<color> | inherit",
     "The colour of the border at the side where blocks end (the bottom, in left-to-right text)."},
    {"border-after-style", No, "<border-style> | inherit",
     "The style of the border at the side where blocks end."},
    {"border-after-width", No, "<border-width> | <length-conditional> | inherit",
     "The width of the border at the side where blocks end."},
    {"border-start-color", No, "<color> | inherit",
     "The colour of the border at the side where lines start (the left, in left-to-right text)."},
    {"border-start-style", No, "<border-style> | inherit",
     "The style of the border at the side where lines start."},
    {"border-start-width", No, "<border-width> | <length-conditional> | inherit",
     "The width of the border at the side where lines start."},
    {"border-end-color", No, "<color> | inherit",
     "The colour of the border at the side where lines end (the right, in left-to-right text)."},
    {"border-end-style", No, "<border-style> | inherit",
     "The style of the border at the side where lines end."},
    {"border-end-width", No, "<border-width> | <length-conditional> | inherit",
     "The width of the border at the side where lines end."},
    {"padding-before", No, "<length> | <percentage> | <length-conditional> | inherit",
     "The space inside the border, at the side where blocks start."},
    {"padding-after", No, "<length> | <percentage> | <length-conditional> | inherit",
     "The space inside the border, at the side where blocks end."},
    {"padding-start", No, "<length> | <percentage> | <length-conditional> | inherit",
     "The space inside the border, at the side where lines start."},
    {"padding-end", No, "<length> | <percentage> | <length-conditional> | inherit",
     "The space inside the border, at the side where lines end."},

    // Borders and padding by side
    {"border-top-color", No, "<color> | inherit", "The colour of the top border."},
    {"border-top-style", No, "<border-style> | inherit", "The style of the top border."},
    {"border-top-width", No, "<border-width> | inherit", "The width of the top border."},
    {"border-bottom-color", No, "<color> | inherit", "The colour of the bottom border."},
    {"border-bottom-style", No, "<border-style> | inherit", "The style of the bottom border."},
    {"border-bottom-width", No, "<border-width> | inherit", "The width of the bottom border."},
    {"border-left-color", No, "<color> | inherit", "The colour of the left border."},
    {"border-left-style", No, "<border-style> | inherit", "The style of the left border."},
    {"border-left-width", No, "<border-width> | inherit", "The width of the left border."},
    {"border-right-color", No, "<color> | inherit", "The colour of the right border."},
    {"border-right-style", No, "<border-style> | inherit", "The style of the right border."},
    {"border-right-width", No, "<border-width> | inherit", "The width of the right border."},
    {"padding-top", No, "<length> | <percentage> | inherit", "The space inside the top border."},
    {"padding-bottom", No, "<length> | <percentage> | inherit", "The space inside the bottom border."},
    {"padding-left", No, "<length> | <percentage> | inherit", "The space inside the left border."},
    {"padding-right", No, "<length> | <percentage> | inherit", "The space inside the right border."},

    // Margins, spaces and indents
    {"margin-top", No, "auto | <length> | <percentage> | inherit", "The space outside the top border."},
    {"margin-bottom", No, "auto | <length> | <percentage> | inherit", "The space outside the bottom border."},
    {"margin-left", No, "auto | <length> | <percentage> | inherit", "The space outside the left border."},
    {"margin-right", No, "auto | <length> | <percentage> | inherit", "The space outside the right border."},
    {"space-before", No, "<space> | inherit",
     "The space before a block. Of two spaces that meet, the one of higher precedence or the larger counts."},
    {"space-after", No, "<space> | inherit",
     "The space after a block. Of two spaces that meet, the one of higher precedence or the larger counts."},
    {"space-start", No, "<space> | <percentage> | inherit", "The space before an inline object."},
    {"space-end", No, "<space> | <percentage> | inherit", "The space after an inline object."},
    {"start-indent", Yes, "<length> | <percentage> | inherit",
     "How far the start of lines lies inside the surrounding area."},
    {"end-indent", Yes, "<length> | <percentage> | inherit",
     "How far the end of lines lies inside the surrounding area."},

    // Alignment
    {"alignment-adjust", No,
     "auto | baseline | before-edge | text-before-edge | middle | central | after-edge | text-after-edge | "
     "ideographic | alphabetic | hanging | mathematical | <percentage> | <length> | inherit",
     "The point of the object that is put on the line's baseline."},
    {"alignment-baseline", No,
     "auto | baseline | before-edge | text-before-edge | middle | central | after-edge | text-after-edge | "
     "ideographic | alphabetic | hanging | mathematical | inherit",
     "The baseline of the parent on which the object is put."},
    {"baseline-shift", No, "baseline | sub | super | <percentage> | <length> | inherit",
     "Raises or lowers the object, as for superscripts and subscripts."},
    {"display-align", Yes, "auto | before | center | after | inherit",
     "Where the content stands in an area higher than it: at its top, middle or bottom."},
    {"dominant-baseline", No,
     "auto | use-script | no-change | reset-size | ideographic | alphabetic | hanging | mathematical | "
     "central | middle | text-after-edge | text-before-edge | inherit",
     "The baseline by which what is inside is aligned."},
    {"relative-align", Yes, "before | baseline | inherit",
     "Whether cells or list parts side by side align at the top or by their first lines."},

    // Dimensions
    {"block-progression-dimension", No, "auto | <length> | <percentage> | <length-range> | inherit",
     "The size in the direction in which blocks follow each other (the height, in left-to-right text)."},
    {"inline-progression-dimension", No, "auto | <length> | <percentage> | <length-range> | inherit",
     "The size in the direction of lines (the width, in left-to-right text)."},
    {"height", No, "auto | <length> | <percentage> | inherit", "The height of the content."},
    {"width", No, "auto | <length> | <percentage> | inherit", "The width of the content."},
    {"max-height", No, "none | <length> | <percentage> | inherit", "The largest height."},
    {"max-width", No, "none | <length> | <percentage> | inherit", "The largest width."},
    {"min-height", No, "<length> | <percentage> | inherit", "The smallest height."},
    {"min-width", No, "<length> | <percentage> | inherit", "The smallest width."},
    {"content-height", No, "auto | scale-to-fit | <length> | <percentage> | inherit",
     "The height of an image inside its area."},
    {"content-width", No, "auto | scale-to-fit | <length> | <percentage> | inherit",
     "The width of an image inside its area."},
    {"scaling", No, "uniform | non-uniform | inherit", "Whether an image keeps its proportions."},
    {"scaling-method", No, "auto | integer-pixels | resample-any-method | inherit",
     "How the pixels of an image are scaled."},
};

} // namespace

constinit const std::span<const PropertyRow> foBoxProperties = rows;

} // namespace tavrin::builtin
