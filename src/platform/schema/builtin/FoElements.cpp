#include "platform/schema/builtin/FoTable.h"

namespace tavrin::builtin {

namespace {

constexpr GroupRow contentGroups[] = {
    // Neither block nor inline: what stands inside decides. Floats join them.
    {"neutral", "multi-switch | multi-properties | wrapper | retrieve-marker | float"},
    {"block", "block | block-container | table-and-caption | table | list-block | %neutral"},
    {"inline", "bidi-override | character | external-graphic | instream-foreign-object | inline | "
               "inline-container | leader | page-number | page-number-citation | basic-link | multi-toggle | "
               "footnote | %neutral"},
    {"blocks", "marker*, (%block)+"},
    {"text", "(#PCDATA | %inline)*"},
    {"mixed", "(#PCDATA | %inline | %block)*"},
};

constexpr GroupRow attributeGroups[] = {
    {"accessibility", "source-document role"},
    {"absolute", "absolute-position top right bottom left"},
    {"relative", "relative-position top right bottom left"},
    {"aural", "azimuth cue-after cue-before elevation pause-after pause-before pitch pitch-range play-during "
              "richness speak speak-header speak-numeral speak-punctuation speech-rate stress voice-family "
              "volume"},
    {"box", "background-attachment background-color background-image background-repeat "
            "background-position-horizontal background-position-vertical "
            "border-before-color border-before-style border-before-width "
            "border-after-color border-after-style border-after-width "
            "border-start-color border-start-style border-start-width "
            "border-end-color border-end-style border-end-width "
            "border-top-color border-top-style border-top-width "
            "border-bottom-color border-bottom-style border-bottom-width "
            "border-left-color border-left-style border-left-width "
            "border-right-color border-right-style border-right-width "
            "padding-before padding-after padding-start padding-end "
            "padding-top padding-bottom padding-left padding-right"},
    {"font", "font-family font-selection-strategy font-size font-stretch font-size-adjust font-style "
             "font-variant font-weight"},
    {"hyphenation",
     "country language script hyphenate hyphenation-character hyphenation-push-character-count "
     "hyphenation-remain-character-count"},
    {"margin-block",
     "margin-top margin-bottom margin-left margin-right space-before space-after start-indent "
     "end-indent"},
    {"margin-inline", "margin-top margin-bottom margin-left margin-right space-end space-start"},
    {"size", "block-progression-dimension height max-height min-height inline-progression-dimension width "
             "max-width min-width"},
    {"baseline", "alignment-adjust alignment-baseline baseline-shift dominant-baseline"},
    {"keeps", "keep-together keep-with-next keep-with-previous"},
    {"keep-with", "keep-with-next keep-with-previous"},
    {"breaks", "break-after break-before"},
    {"border-precedences", "border-after-precedence border-before-precedence border-end-precedence "
                           "border-start-precedence"},
    {"block-level", "%accessibility %aural %box %margin-block %relative %breaks %keeps clear id "
                    "intrusion-displace"},
    {"table-part", "%accessibility %aural %box %relative %border-precedences id"},
    {"graphic", "%accessibility %aural %box %margin-inline %relative %size %baseline %keep-with clip "
                "content-height content-type content-width display-align id line-height overflow scaling "
                "scaling-method text-align"},
    {"page-number", "%accessibility %aural %box %font %margin-inline %relative %baseline %keep-with id "
                    "letter-spacing line-height score-spaces text-altitude text-decoration text-depth "
                    "text-shadow text-transform visibility word-spacing wrap-option"},
    {"region", "%box clip display-align overflow region-name reference-orientation writing-mode"},
};

constexpr ElementRow elements[] = {
    // The document
    {"root", "layout-master-set, declarations?, page-sequence+", "media-usage",
     "The whole document: first the page layouts, then the sequences of pages with their content.",
     R"fill(xmlns:fo="http://www.w3.org/1999/XSL/Format">
        _<fo:layout-master-set>
        __<fo:simple-page-master master-name="page" page-height="297mm" page-width="210mm" margin="20mm">
        ___<fo:region-body/>
        __</fo:simple-page-master>
        _</fo:layout-master-set>
        _<fo:page-sequence master-reference="page">
        __<fo:flow flow-name="xsl-region-body">
        ___<fo:block>*</fo:block>
        __</fo:flow>
        _</fo:page-sequence>
        </fo:root>)fill"},
    {"declarations", "color-profile*, (color-profile | ##other | ##local)*", "",
     "Declarations for the whole document: colour profiles, and what formatters add in their own "
     "namespaces."},
    {"color-profile", "EMPTY", "src! color-profile-name! rendering-intent",
     "Declares a colour profile and the name under which rgb-icc() refers to it.",
     R"fill(src="url('*')" color-profile-name=""/>)fill"},

    // Page layouts
    {"layout-master-set", "(simple-page-master | page-sequence-master)+", "",
     "Holds the page layouts and the rules for choosing among them.",
     R"fill(>
        _<fo:simple-page-master master-name="*" page-height="297mm" page-width="210mm" margin="20mm">
        __<fo:region-body/>
        _</fo:simple-page-master>
        </fo:layout-master-set>)fill"},
    {"simple-page-master", "region-body, region-before?, region-after?, region-start?, region-end?",
     "%margin-block master-name! page-height page-width reference-orientation writing-mode",
     "A page layout: the size of the page, its margins and its regions.",
     R"fill(master-name="*" page-height="297mm" page-width="210mm" margin="20mm">
        _<fo:region-body/>
        </fo:simple-page-master>)fill"},
    {"region-body", "EMPTY", "%region %margin-block column-count column-gap",
     "The region of a page that takes the main text. Its margins leave room for the other regions.",
     R"fill(*/>)fill"},
    {"region-before", "EMPTY", "%region extent precedence",
     "The region at the top of a page (in left-to-right text), as for a running header.",
     R"fill(extent="*"/>)fill"},
    {"region-after", "EMPTY", "%region extent precedence",
     "The region at the bottom of a page (in left-to-right text), as for a running footer.",
     R"fill(extent="*"/>)fill"},
    {"region-start", "EMPTY", "%region extent", "The region at the left of a page (in left-to-right text).",
     R"fill(extent="*"/>)fill"},
    {"region-end", "EMPTY", "%region extent", "The region at the right of a page (in left-to-right text).",
     R"fill(extent="*"/>)fill"},
    {"page-sequence-master",
     "(single-page-master-reference | repeatable-page-master-reference | "
     "repeatable-page-master-alternatives)+",
     "master-name!", "Says which page layouts follow one another in a sequence of pages."},
    {"single-page-master-reference", "EMPTY", "master-reference!", "One page of the layout that is named."},
    {"repeatable-page-master-reference", "EMPTY", "master-reference! maximum-repeats",
     "Pages of the layout that is named, as many as needed or as allowed."},
    {"repeatable-page-master-alternatives", "conditional-page-master-reference+", "maximum-repeats",
     "Pages of which each takes the first layout whose conditions it meets.",
     R"fill(>
        _<fo:conditional-page-master-reference master-reference="*" odd-or-even="odd"/>
        _<fo:conditional-page-master-reference master-reference="" odd-or-even="even"/>
        </fo:repeatable-page-master-alternatives>)fill"},
    {"conditional-page-master-reference", "EMPTY",
     "master-reference! page-position odd-or-even blank-or-not-blank",
     "A layout and the pages that may take it: first or last, odd or even, blank or not."},

    // Content of pages
    {"page-sequence", "title?, static-content*, flow",
     "country format language letter-value grouping-separator grouping-size id initial-page-number "
     "force-page-count master-reference!",
     "A run of pages, such as a chapter: running content, and one flow that fills as many pages as it takes.",
     R"fill(master-reference="*">
        _<fo:flow flow-name="xsl-region-body">
        __<fo:block></fo:block>
        _</fo:flow>
        </fo:page-sequence>)fill"},
    {"title", "%text", "%accessibility %aural %box %font %margin-inline color line-height visibility",
     "The title of a sequence of pages, for a viewer to show; it is not part of any page."},
    {"static-content", "(%block)+", "flow-name!",
     "Content repeated in a region of every page of the sequence: headers, footers, page numbers.",
     R"fill(flow-name="*">
        _<fo:block></fo:block>
        </fo:static-content>)fill"},
    {"flow", "(%block)+", "flow-name!",
     "The text of a sequence of pages, poured into the region that is named.",
     R"fill(flow-name="xsl-region-body">
        _<fo:block>*</fo:block>
        </fo:flow>)fill"},

    // Blocks
    {"block", "marker*, initial-property-set?, %mixed",
     "%block-level %font %hyphenation color text-depth text-altitude hyphenation-keep "
     "hyphenation-ladder-count "
     "last-line-end-indent linefeed-treatment line-height line-height-shift-adjustment "
     "line-stacking-strategy "
     "orphans white-space-treatment span text-align text-align-last text-indent visibility "
     "white-space-collapse widows wrap-option",
     "A paragraph, a heading or a group of them: a rectangle that starts on a new line."},
    {"block-container", "%blocks",
     "%absolute %box %margin-block %size %breaks %keeps clear clip display-align id intrusion-displace "
     "overflow "
     "reference-orientation span writing-mode z-index",
     "A rectangle of its own size, position, rotation or writing direction around blocks.",
     R"fill(*>
        _<fo:block></fo:block>
        </fo:block-container>)fill"},

    // Inlines
    {"bidi-override", "marker*, %mixed",
     "%aural %font %relative color direction id letter-spacing line-height score-spaces unicode-bidi "
     "word-spacing",
     "Sets the direction of a stretch of text where the characters alone would not give the right one.",
     R"fill(direction="*" unicode-bidi="embed"></fo:bidi-override>)fill"},
    {"character", "EMPTY",
     "%aural %box %font %hyphenation %margin-inline %relative %baseline %keep-with treat-as-word-space "
     "character! color text-depth text-altitude glyph-orientation-horizontal glyph-orientation-vertical id "
     "letter-spacing line-height score-spaces suppress-at-line-break text-decoration text-shadow "
     "text-transform visibility word-spacing",
     "One character with properties of its own."},
    {"initial-property-set", "EMPTY",
     "%accessibility %aural %box %font %relative color id letter-spacing line-height score-spaces "
     "text-decoration text-shadow text-transform word-spacing",
     "The look of a block's first line.", R"fill(*/>)fill"},
    {"external-graphic", "EMPTY", "%graphic src!", "An image that is kept in a file of its own.",
     R"fill(src="url('*')"/>)fill"},
    {"instream-foreign-object", "##other | ##local", "%graphic",
     "A drawing, a formula or another object written out inside the document, in its own namespace."},
    {"inline", "marker*, initial-property-set?, %mixed",
     "%accessibility %aural %box %font %margin-inline %relative %size %baseline %keeps color id line-height "
     "text-decoration visibility wrap-option",
     "A stretch of text with a look of its own."},
    {"inline-container", "%blocks",
     "%box %margin-inline %relative %size %baseline %keeps clip display-align id line-height overflow "
     "reference-orientation writing-mode",
     "Blocks that stand in a line of text, as a rectangle of their own.",
     R"fill(>
        _<fo:block>*</fo:block>
        </fo:inline-container>)fill"},
    {"leader", "%text",
     "%accessibility %aural %box %font %margin-inline %relative %baseline %keep-with color text-depth "
     "text-altitude id leader-alignment leader-length leader-pattern leader-pattern-width rule-style "
     "rule-thickness letter-spacing line-height text-shadow visibility word-spacing",
     "A row of dots, a rule or blank space that fills a line, as in a table of contents.",
     R"fill(leader-pattern="*"/>)fill"},
    {"page-number", "EMPTY", "%page-number", "The number of the page on which it stands."},
    {"page-number-citation", "EMPTY", "%page-number ref-id!",
     "The number of the page on which the object with the given id starts."},

    // Tables
    {"table-and-caption", "marker*, table-caption?, table", "%block-level caption-side text-align",
     "A table together with its caption.",
     R"fill(>
        _<fo:table-caption>
        __<fo:block>*</fo:block>
        _</fo:table-caption>
        _<fo:table>
        __<fo:table-body>
        ___<fo:table-row>
        ____<fo:table-cell><fo:block></fo:block></fo:table-cell>
        ___</fo:table-row>
        __</fo:table-body>
        _</fo:table>
        </fo:table-and-caption>)fill"},
    {"table", "marker*, table-column*, table-header?, table-footer?, table-body+",
     "%block-level %size %border-precedences border-collapse border-separation table-layout "
     "table-omit-footer-at-break table-omit-header-at-break writing-mode",
     "A table: its columns, then header and footer, which repeat on each page, then its rows.",
     R"fill(*>
        _<fo:table-column/>
        _<fo:table-body>
        __<fo:table-row>
        ___<fo:table-cell><fo:block></fo:block></fo:table-cell>
        __</fo:table-row>
        _</fo:table-body>
        </fo:table>)fill"},
    {"table-column", "EMPTY",
     "%box %border-precedences column-number column-width number-columns-repeated number-columns-spanned "
     "visibility",
     "The width and the look of one column or of several alike.", R"fill(column-width="*"/>)fill"},
    {"table-caption", "%blocks",
     "%accessibility %aural %box %relative %size id intrusion-displace keep-together text-align",
     "The caption of a table.",
     R"fill(>
        _<fo:block>*</fo:block>
        </fo:table-caption>)fill"},
    {"table-header", "marker*, (table-row+ | table-cell+)", "%table-part visibility",
     "The rows at the head of a table, repeated after each page break unless told otherwise.",
     R"fill(>
        _<fo:table-row>
        __<fo:table-cell><fo:block>*</fo:block></fo:table-cell>
        _</fo:table-row>
        </fo:table-header>)fill"},
    {"table-footer", "marker*, (table-row+ | table-cell+)", "%table-part visibility",
     "The rows at the foot of a table, repeated before each page break unless told otherwise.",
     R"fill(>
        _<fo:table-row>
        __<fo:table-cell><fo:block>*</fo:block></fo:table-cell>
        _</fo:table-row>
        </fo:table-footer>)fill"},
    {"table-body", "marker*, (table-row+ | table-cell+)", "%table-part visibility", "The rows of a table.",
     R"fill(>
        _<fo:table-row>
        __<fo:table-cell><fo:block>*</fo:block></fo:table-cell>
        _</fo:table-row>
        </fo:table-body>)fill"},
    {"table-row", "table-cell+",
     "%table-part block-progression-dimension height max-height min-height %breaks %keeps visibility",
     "One row of a table.",
     R"fill(>
        _<fo:table-cell><fo:block>*</fo:block></fo:table-cell>
        </fo:table-row>)fill"},
    {"table-cell", "%blocks",
     "%table-part %size column-number display-align relative-align empty-cells ends-row "
     "number-columns-spanned "
     "number-rows-spanned starts-row",
     "One cell of a table, which may span columns and rows.",
     R"fill(>
        _<fo:block>*</fo:block>
        </fo:table-cell>)fill"},

    // Lists
    {"list-block", "marker*, list-item+",
     "%block-level provisional-distance-between-starts provisional-label-separation",
     "A list, bulleted, numbered or of definitions: labels at the side, bodies beside them.",
     R"fill(provisional-distance-between-starts="6mm" provisional-label-separation="2mm">
        _<fo:list-item>
        __<fo:list-item-label end-indent="label-end()"><fo:block>*</fo:block></fo:list-item-label>
        __<fo:list-item-body start-indent="body-start()"><fo:block></fo:block></fo:list-item-body>
        _</fo:list-item>
        </fo:list-block>)fill"},
    {"list-item", "marker*, list-item-label, list-item-body", "%block-level relative-align",
     "One item of a list: a label and a body.",
     R"fill(>
        _<fo:list-item-label end-indent="label-end()"><fo:block>*</fo:block></fo:list-item-label>
        _<fo:list-item-body start-indent="body-start()"><fo:block></fo:block></fo:list-item-body>
        </fo:list-item>)fill"},
    {"list-item-label", "%blocks", "%accessibility id keep-together",
     "The bullet, number or term of a list item. end-indent=\"label-end()\" ends it where labels end.",
     R"fill(end-indent="label-end()">
        _<fo:block>*</fo:block>
        </fo:list-item-label>)fill"},
    {"list-item-body", "%blocks", "%accessibility id keep-together",
     "The text of a list item. start-indent=\"body-start()\" starts it where bodies start.",
     R"fill(start-indent="body-start()">
        _<fo:block>*</fo:block>
        </fo:list-item-body>)fill"},

    // Links and other effects on a screen
    {"basic-link", "marker*, %mixed",
     "%accessibility %aural %box %margin-inline %relative %baseline %keeps destination-placement-offset "
     "external-destination id indicate-destination internal-destination line-height show-destination "
     "target-processing-context target-presentation-context target-stylesheet",
     "A link to another place in the document (internal-destination) or outside (external-destination).",
     R"fill(internal-destination="*"></fo:basic-link>)fill"},
    {"multi-switch", "multi-case+", "%accessibility auto-restore id",
     "Alternatives of which one is shown at a time, as for a table of contents that opens and closes.",
     R"fill(>
        _<fo:multi-case case-name="*" starting-state="show"></fo:multi-case>
        _<fo:multi-case case-name="" starting-state="hide"></fo:multi-case>
        </fo:multi-switch>)fill"},
    {"multi-case", "%mixed", "%accessibility id starting-state case-name case-title",
     "One alternative of a multi-switch.", R"fill(case-name="*" starting-state="hide"></fo:multi-case>)fill"},
    {"multi-toggle", "%mixed", "%accessibility id switch-to",
     "What the reader clicks, inside a multi-case, to have another one shown.",
     R"fill(switch-to="*"></fo:multi-toggle>)fill"},
    {"multi-properties", "multi-property-set+, wrapper", "%accessibility id",
     "Text whose look depends on a state, such as a link that was visited or has the focus."},
    {"multi-property-set", "EMPTY", "active-state! id", "The look in one state."},

    // Out of line
    {"float", "(%block)+", "clear float",
     "Blocks that move to the side, or to the top of the page; text flows around.",
     R"fill(float="*">
        _<fo:block></fo:block>
        </fo:float>)fill"},
    {"footnote", "inline, footnote-body", "%accessibility",
     "A footnote: the mark in the text, and the note at the foot of the page.",
     R"fill(>
        _<fo:inline>*</fo:inline>
        _<fo:footnote-body>
        __<fo:block></fo:block>
        _</fo:footnote-body>
        </fo:footnote>)fill"},
    {"footnote-body", "(%block)+", "%accessibility", "The note at the foot of the page.",
     R"fill(>
        _<fo:block>*</fo:block>
        </fo:footnote-body>)fill"},

    // Others
    {"wrapper", "marker*, %mixed", "id",
     "Gives inherited properties to what is inside, and makes no rectangle of its own.",
     R"fill(*></fo:wrapper>)fill"},
    {"marker", "%mixed", "marker-class-name!",
     "Content put aside, such as a chapter title, for a retrieve-marker in a header or footer to show."},
    {"retrieve-marker", "EMPTY", "retrieve-class-name! retrieve-position retrieve-boundary",
     "Shows, in a header or footer, the marker of that class that fits the page."},
};

} // namespace

constinit const std::span<const GroupRow> foContentGroups = contentGroups;
constinit const std::span<const GroupRow> foAttributeGroups = attributeGroups;
constinit const std::span<const ElementRow> foElements = elements;

} // namespace tavrin::builtin
