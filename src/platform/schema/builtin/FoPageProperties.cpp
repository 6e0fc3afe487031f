#include "platform/schema/builtin/FoTable.h"

namespace tavrin::builtin {

namespace {

using enum Inherited;

constexpr PropertyRow rows[] = {
    // Floats
    {"clear", No, "start | end | left | right | both | none | inherit",
     "Moves the block below floats at that side."},
    {"float", No, "before | start | end | left | right | none | inherit",
     "The side to which the content is moved, or the top of the page."},
    {"intrusion-displace", Yes, "auto | none | line | indent | block | inherit",
     "How text makes room for a float beside it: line by line, by its indent or as a block."},

    // Keeps and breaks
    {"break-after", No, "auto | column | page | even-page | odd-page | inherit",
     "Starts a new column or page after the object."},
    {"break-before", No, "auto | column | page | even-page | odd-page | inherit",
     "Starts a new column or page before the object."},
    {"keep-together", Yes, "<keep> | inherit", "Whether the object must stay in one line, column or page."},
    {"keep-with-next", No, "<keep> | inherit", "Whether the object must stay with the one after it."},
    {"keep-with-previous", No, "<keep> | inherit", "Whether the object must stay with the one before it."},
    {"orphans", Yes, "<integer> | inherit",
     "How many lines of a paragraph at least stand at the end of a page."},
    {"widows", Yes, "<integer> | inherit",
     "How many lines of a paragraph at least stand at the start of a page."},

    // Layout
    {"clip", No, "auto | <shape> | inherit",
     "The part of an area that is shown when its content is clipped."},
    {"overflow", No, "visible | hidden | scroll | error-if-overflow | auto | inherit",
     "What becomes of content that is larger than its area."},
    {"reference-orientation", Yes, "0 | 90 | 180 | 270 | -90 | -180 | -270 | inherit",
     "Turns the content counter-clockwise, in degrees."},
    {"span", No, "none | all | inherit", "Whether a block in the flow goes over all columns."},

    // Links and other effects on a screen
    {"active-state", No, "link | visited | active | hover | focus", "The state in which this look applies."},
    {"auto-restore", Yes, "true | false",
     "Whether what was shown first is shown again when an alternative around is hidden."},
    {"case-name", No, "<name>", "The name of an alternative, for switch-to."},
    {"case-title", No, "<string>", "A title of an alternative, for a menu."},
    {"destination-placement-offset", No, "<length>",
     "How far from the top of the page the destination is shown."},
    {"external-destination", No, "<uri>", "The address that a link leads to."},
    {"indicate-destination", No, "true | false", "Whether the destination is highlighted."},
    {"internal-destination", No, "<idref>", "The id of the object in this document that a link leads to."},
    {"show-destination", No, "replace | new",
     "Whether the destination is shown in the same window or in a new one."},
    {"starting-state", No, "show | hide", "Whether the alternative is shown at first."},
    {"switch-to", No, "xsl-preceding | xsl-following | xsl-any | <names>",
     "The alternatives that a click shows."},
    {"target-presentation-context", No, "use-target-processing-context | <uri>",
     "The part of the destination that is shown."},
    {"target-processing-context", No, "document-root | <uri>",
     "The part of the destination that is transformed."},
    {"target-stylesheet", No, "use-normal-stylesheet | <uri>", "The stylesheet for the destination."},

    // Markers
    {"marker-class-name", No, "<name>", "The class by which a retrieve-marker finds the marker."},
    {"retrieve-class-name", No, "<name>", "The class of the marker to show."},
    {"retrieve-position", No,
     "first-starting-within-page | first-including-carryover | last-starting-within-page | "
     "last-ending-within-page",
     "Which marker is shown when a page has several, or none."},
    {"retrieve-boundary", No, "page | page-sequence | document", "How far back a marker is looked for."},

    // Page numbers
    {"format", No, "1 | 01 | a | A | i | I | <format>",
     "The format of page numbers: 1 gives 1, 2, 3, a and i give letters and Roman numerals."},
    {"grouping-separator", No, "<character>", "The character between groups of digits."},
    {"grouping-size", No, "<number>", "How many digits a group has."},
    {"letter-value", No, "auto | alphabetic | traditional",
     "Which of two series of letters to use in languages that have both."},

    // Pages and regions
    {"blank-or-not-blank", No, "blank | not-blank | any | inherit",
     "Whether the layout is for pages without content of the flow."},
    {"column-count", No, "<number> | inherit", "How many columns the region has."},
    {"column-gap", No, "<length> | <percentage> | inherit", "The space between columns."},
    {"extent", No, "<length> | <percentage> | inherit",
     "The height of a region at top or bottom, the width of one at a side."},
    {"flow-name", No,
     "xsl-region-body | xsl-region-before | xsl-region-after | xsl-region-start | xsl-region-end | "
     "xsl-before-float-separator | xsl-footnote-separator | <name>",
     "The region that takes the content."},
    {"force-page-count", No, "auto | even | odd | end-on-even | end-on-odd | no-force | inherit",
     "Adds a blank page where needed for an even or odd number of pages."},
    {"initial-page-number", No, "auto | auto-odd | auto-even | <number> | inherit",
     "The number of the first page; auto goes on from the pages before."},
    {"master-name", No, "<name>", "The name of the page layout or sequence, for master-reference."},
    {"master-reference", No, "<name>", "The name of the page layout or sequence to use."},
    {"maximum-repeats", No, "no-limit | <number> | inherit", "How many pages at most are made."},
    {"media-usage", No, "auto | paginate | bounded-in-one-dimension | unbounded",
     "Whether the document is divided into pages."},
    {"odd-or-even", No, "odd | even | any | inherit",
     "Whether the layout is for pages of odd or of even number."},
    {"page-height", No, "auto | indefinite | <length> | inherit", "The height of the page."},
    {"page-position", No, "first | last | rest | any | inherit",
     "Whether the layout is for the first or last page of the sequence or for others."},
    {"page-width", No, "auto | indefinite | <length> | inherit", "The width of the page."},
    {"precedence", No, "true | false | inherit",
     "Whether the region takes the corners of the page from those at the sides."},
    {"region-name", No,
     "xsl-region-body | xsl-region-before | xsl-region-after | xsl-region-start | xsl-region-end | <name>",
     "The name of the region, for flow-name."},

    // Tables
    {"border-after-precedence", No, "force | <integer> | inherit",
     "Which border wins at the end of blocks when borders collapse."},
    {"border-before-precedence", No, "force | <integer> | inherit",
     "Which border wins at the start of blocks when borders collapse."},
    {"border-end-precedence", No, "force | <integer> | inherit",
     "Which border wins at the end of lines when borders collapse."},
    {"border-start-precedence", No, "force | <integer> | inherit",
     "Which border wins at the start of lines when borders collapse."},
    {"border-collapse", Yes, "collapse | collapse-with-precedence | separate | inherit",
     "Whether cells side by side share one border."},
    {"border-separation", Yes, "<length-bp-ip-direction> | inherit",
     "The distance between cells with separate borders."},
    {"caption-side", Yes, "before | after | start | end | top | bottom | left | right | inherit",
     "The side of the table on which its caption stands."},
    {"column-number", No, "<number>", "The number of the column, counted from 1."},
    {"column-width", No, "<length> | <percentage>",
     "The width of the column; proportional-column-width() divides what is left."},
    {"empty-cells", Yes, "show | hide | inherit", "Whether cells without content have borders."},
    {"ends-row", No, "true | false", "Whether the cell is the last of its row, in tables without rows."},
    {"starts-row", No, "true | false", "Whether the cell is the first of its row, in tables without rows."},
    {"number-columns-repeated", No, "<number>", "To how many columns the description applies."},
    {"number-columns-spanned", No, "<number>", "Over how many columns the cell goes."},
    {"number-rows-spanned", No, "<number>", "Over how many rows the cell goes."},
    {"table-layout", No, "auto | fixed | inherit",
     "Whether column widths follow the content or only what is written."},
    {"table-omit-footer-at-break", No, "true | false", "Whether the footer is left out before page breaks."},
    {"table-omit-header-at-break", No, "true | false", "Whether the header is left out after page breaks."},

    // Lists
    {"provisional-distance-between-starts", Yes, "<length> | <percentage> | inherit",
     "The distance from the start of labels to the start of bodies."},
    {"provisional-label-separation", Yes, "<length> | <percentage> | inherit",
     "The distance between the end of labels and the start of bodies."},

    // References and images
    {"content-type", No, "auto | <string>", "The type of an image, as \"content-type:\" and a media type."},
    {"id", No, "<id>", "An identifier, unique in the document, to which links and citations refer."},
    {"ref-id", No, "<idref> | inherit", "The id of the object whose page number is shown."},
    {"src", No, "<uri> | inherit", "The address of the image, as url('...')."},
    {"z-index", No, "auto | <integer> | inherit", "Which of overlapping areas lies above."},
};

} // namespace

constinit const std::span<const PropertyRow> foPageProperties = rows;

} // namespace tavrin::builtin
