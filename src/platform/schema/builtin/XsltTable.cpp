#include "platform/schema/builtin/XsltTable.h"

namespace tavrin::builtin {

namespace {

constexpr GroupRow contentGroups[] = {
    {"top-level",
     "include | strip-space | preserve-space | output | key | decimal-format | namespace-alias | "
     "attribute-set | variable | param | template | ##other"},
    {"text-instruction", "apply-templates | call-template | apply-imports | for-each | value-of | copy-of | "
                         "number | choose | if | text | copy | variable | message | fallback"},
    {"instruction", "%text-instruction | processing-instruction | comment | element | attribute"},
    // Instructions, and what is copied to the result as it stands.
    {"template", "(#PCDATA | %instruction | ##other | ##local)*"},
    // The inside of attributes, comments and processing instructions: text only.
    {"text-template", "(#PCDATA | %text-instruction)*"},
};

constexpr GroupRow attributeGroups[] = {
    {"space", "xml:space"},
    {"stylesheet", "version! id exclude-result-prefixes extension-element-prefixes xml:space"},
};

constexpr ElementRow elements[] = {
    {"stylesheet", "import*, (%top-level)*", "%stylesheet",
     "The stylesheet: the outermost element, which holds imports, declarations and template rules.",
     R"fill(version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
        _<xsl:template match="/">
        __*
        _</xsl:template>
        </xsl:stylesheet>)fill"},
    {"transform", "import*, (%top-level)*", "%stylesheet",
     "The stylesheet under its other name; it means the same as xsl:stylesheet.",
     R"fill(version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
        _<xsl:template match="/">
        __*
        _</xsl:template>
        </xsl:transform>)fill"},

    // Declarations
    {"import", "EMPTY", "href!",
     "Brings in another stylesheet, whose rules and definitions give way to those written here. Imports come "
     "before everything else."},
    {"include", "EMPTY", "href!",
     "Brings in another stylesheet as if its declarations stood here, with the same precedence."},
    {"strip-space", "EMPTY", "elements!",
     "Names the source elements whose white-space-only text is dropped before the transformation."},
    {"preserve-space", "EMPTY", "elements!",
     "Names the source elements whose white-space-only text is kept, as exceptions to xsl:strip-space."},
    {"output", "EMPTY",
     "method version encoding omit-xml-declaration standalone doctype-public doctype-system "
     "cdata-section-elements indent media-type",
     "Says how the result is to be written: method, encoding, indentation, document type and so on.",
     R"fill(method="xml*" encoding="UTF-8" indent="yes"/>)fill"},
    {"key", "EMPTY", "name! match! use!",
     "Declares an index over the source, read with key(): the nodes that match are found by the value of "
     "use."},
    {"decimal-format", "EMPTY",
     "name decimal-separator grouping-separator infinity minus-sign NaN percent per-mille zero-digit digit "
     "pattern-separator",
     "Declares the characters that format-number() reads in its pattern and writes in its result.",
     R"fill(*/>)fill"},
    {"namespace-alias", "EMPTY", "stylesheet-prefix! result-prefix!",
     "Replaces a namespace of the stylesheet by another in the result, for stylesheets that write "
     "stylesheets."},
    {"attribute-set", "attribute*", "name! use-attribute-sets %space",
     "Names a set of attributes that elements of the result can take over with use-attribute-sets.",
     R"fill(name="*">
        _<xsl:attribute name=""></xsl:attribute>
        </xsl:attribute-set>)fill"},
    {"template", "param*, %template", "match name priority mode %space",
     "A template rule: what to write for the nodes that match, or, if it has a name, when it is called.",
     R"fill(match="*">
        _
        </xsl:template>)fill"},

    // Variables and parameters
    {"variable", "%template", "name! select %space",
     "Binds a name to a value, given by select or by the content. The value can't be changed afterwards.",
     R"fill(name="*" select=""/>)fill"},
    {"param", "%template", "name! select %space",
     "A parameter of the stylesheet or of a template; select or the content is the value when none is "
     "passed.",
     R"fill(name="*" select=""/>)fill"},
    {"with-param", "%template", "name! select %space",
     "Passes a value for a parameter of the template that is applied.", R"fill(name="*" select=""/>)fill"},

    // Instructions
    {"apply-templates", "(sort | with-param)*", "select mode %space",
     "Finds and runs the matching template for each selected node, or for each child if nothing is selected.",
     R"fill(select="*"/>)fill"},
    {"apply-imports", "EMPTY", "",
     "Runs the imported template rule that the current one overrides, for the current node."},
    {"call-template", "with-param*", "name! %space",
     "Runs a template by its name; the current node stays the same.", R"fill(name="*"/>)fill"},
    {"for-each", "sort*, %template", "select! %space",
     "Runs its content once for each selected node, in document order or as xsl:sort says.",
     R"fill(select="*">
        _
        </xsl:for-each>)fill"},
    {"sort", "EMPTY", "select lang data-type order case-order",
     "A sort key for the enclosing xsl:for-each or xsl:apply-templates. Further ones break ties.",
     R"fill(select="*"/>)fill"},
    {"if", "%template", "test! %space",
     "Runs its content when the test is true. There is no else: use xsl:choose.",
     R"fill(test="*">
        _
        </xsl:if>)fill"},
    {"choose", "when+, otherwise?", "%space",
     "Runs the first xsl:when whose test is true, or xsl:otherwise when there is none.",
     R"fill(>
        _<xsl:when test="*">
        __
        _</xsl:when>
        _<xsl:otherwise>
        __
        _</xsl:otherwise>
        </xsl:choose>)fill"},
    {"when", "%template", "test! %space",
     "One alternative of xsl:choose, taken when its test is the first that is true.",
     R"fill(test="*">
        _
        </xsl:when>)fill"},
    {"otherwise", "%template", "%space", "What xsl:choose does when no test was true.",
     R"fill(>
        _*
        </xsl:otherwise>)fill"},
    {"value-of", "EMPTY", "select! disable-output-escaping",
     "Writes the string value of an expression: of a node-set, that of its first node."},
    {"copy-of", "EMPTY", "select!", "Copies the selected nodes to the result with everything inside them."},
    {"copy", "%template", "use-attribute-sets %space",
     "Copies the current node without its attributes and children; the content is written inside.",
     R"fill(>
        _*
        </xsl:copy>)fill"},
    {"element", "%template", "name! namespace use-attribute-sets %space",
     "Writes an element whose name is computed.",
     R"fill(name="*">
        _
        </xsl:element>)fill"},
    {"attribute", "%text-template", "name! namespace %space",
     "Adds an attribute to the element being written. It must come before the element's content."},
    {"text", "#PCDATA", "disable-output-escaping",
     "Writes its text exactly, white space included, and nothing of the white space around it."},
    {"number", "EMPTY", "level count from value format lang letter-value grouping-separator grouping-size",
     "Writes a number: the position of the current node in the source, or a computed value, in a chosen "
     "format.",
     R"fill(*/>)fill"},
    {"comment", "%text-template", "%space", "Writes a comment; its content is the comment's text."},
    {"processing-instruction", "%text-template", "name! %space",
     "Writes a processing instruction; its content is what follows the target name."},
    {"message", "%template", "terminate %space",
     "Reports a message to whoever runs the transformation, and ends it if terminate is yes."},
    {"fallback", "%template", "%space",
     "What to do instead of the enclosing element when the processor doesn't know that element.",
     R"fill(>
        _*
        </xsl:fallback>)fill"},
};

constexpr AttributeRow attributes[] = {
    {"case-order", "upper-first | lower-first",
     "Whether capital letters sort before small ones of the same letter."},
    {"cdata-section-elements", "<qnames>",
     "The elements of the result whose text is written as CDATA sections."},
    {"count", "<pattern>", "Which nodes are counted. Without it: those of the current node's kind and name."},
    {"data-type", "text | number | <qname>",
     "How keys compare: as text in the order of the language, or as numbers."},
    {"decimal-separator", "<character>", "The character before the fraction of a number."},
    {"digit", "<character>", "The character that stands for an optional digit in a pattern."},
    {"disable-output-escaping", "yes | no",
     "Whether < and & are written as they are; the result may not be well-formed."},
    {"doctype-public", "<string>", "The public identifier in the document type declaration of the result."},
    {"doctype-system", "<string>",
     "The system identifier in the document type declaration; it makes one be written."},
    {"elements", "<name-tests>", "Names of elements, or name tests, separated by blanks."},
    {"encoding", "UTF-8 | UTF-16 | ISO-8859-1 | US-ASCII | <encoding>",
     "The character encoding of the result."},
    {"exclude-result-prefixes", "#default | <prefixes>",
     "Prefixes whose namespaces are not to be declared in the result unless they are used there."},
    {"extension-element-prefixes", "#default | <prefixes>",
     "Prefixes whose elements are instructions of extensions."},
    {"format", "1 | 01 | a | A | i | I | <format>",
     "The pattern of the number: 1 gives 1, 2, 3, 01 pads, a and i give letters and Roman numerals."},
    {"from", "<pattern>", "Where counting starts: at the nearest ancestor or preceding node that matches."},
    {"grouping-separator", "<character>", "The character between groups of digits."},
    {"grouping-size", "<number>", "How many digits a group has."},
    {"href", "<uri>", "The address of the stylesheet, relative to this one."},
    {"id", "<id>", "An identifier, by which a stylesheet inside another document can be found."},
    {"indent", "yes | no", "Whether white space may be added to indent the result."},
    {"infinity", "Infinity | <string>", "The text for infinity."},
    {"lang", "<language>", "The language whose order or numbering is used, as in xml:lang."},
    {"letter-value", "alphabetic | traditional",
     "Which of two series of letters to use in languages that have both."},
    {"level", "single | multiple | any",
     "Counts siblings, or gives a number for each level of ancestors, or counts through the whole document."},
    {"match", "<pattern>", "The pattern that nodes must match."},
    {"media-type", "text/xml | text/html | text/plain | <media-type>", "The media type of the result."},
    {"method", "xml | html | text | <qname>", "How the result is written."},
    {"minus-sign", "<character>", "The character before negative numbers."},
    {"mode", "<qname>",
     "Separates rules for different passes over the same nodes: only rules of the same mode apply."},
    {"NaN", "NaN | <string>", "The text for what is not a number."},
    {"name", "<qname>",
     "The name; for elements and attributes of the result it may hold expressions in braces."},
    {"namespace", "<uri>", "The namespace of the computed name; it may hold expressions in braces."},
    {"omit-xml-declaration", "yes | no", "Whether the XML declaration is left out."},
    {"order", "ascending | descending", "The direction of sorting."},
    {"pattern-separator", "<character>",
     "The character between the patterns for positive and negative numbers."},
    {"per-mille", "<character>", "The per-mille sign."},
    {"percent", "<character>", "The percent sign."},
    {"priority", "<number>", "Which rule wins when several match: the one with the higher number."},
    {"result-prefix", "#default | <prefix>",
     "The prefix, declared here, of the namespace that the result gets."},
    {"select", "<expression>", "The expression that gives the nodes or the value."},
    {"standalone", "yes | no", "Whether and how the XML declaration says standalone."},
    {"stylesheet-prefix", "#default | <prefix>",
     "The prefix, declared here, of the namespace used in the stylesheet."},
    {"terminate", "yes | no", "Whether the transformation ends after the message."},
    {"test", "<boolean-expression>", "The expression that decides."},
    {"use", "<expression>", "The value, seen from the matching node, under which it is found."},
    {"use-attribute-sets", "<qnames>",
     "Names of attribute sets, separated by blanks, whose attributes are added."},
    {"value", "<expression>", "The number to write instead of a position."},
    {"version", "1.0 | <number>",
     "The version of XSLT that the stylesheet needs; of xsl:output: that of the output method."},
    {"zero-digit", "<character>", "The digit zero, in a pattern and in results; the other digits follow it."},
    {"xml:space", "preserve | default", "Whether white-space-only text inside is kept in the stylesheet."},
};

constexpr AttributeRow onOtherElements[] = {
    {"xsl:exclude-result-prefixes", "#default | <prefixes>",
     "Prefixes whose namespaces are not to be declared in the result, from this element on, unless they are "
     "used."},
    {"xsl:extension-element-prefixes", "#default | <prefixes>",
     "Prefixes whose elements are instructions of extensions, inside this element."},
    {"xsl:use-attribute-sets", "<qnames>",
     "Names of attribute sets, separated by blanks, whose attributes are added."},
    {"xsl:version", "1.0 | <number>",
     "The version of XSLT that is needed inside; makes a document a stylesheet of one rule."},
};

} // namespace

constinit const std::span<const GroupRow> xsltContentGroups = contentGroups;
constinit const std::span<const GroupRow> xsltAttributeGroups = attributeGroups;
constinit const std::span<const ElementRow> xsltElements = elements;
constinit const std::span<const AttributeRow> xsltAttributes = attributes;
constinit const std::span<const AttributeRow> xsltAttributesElsewhere = onOtherElements;

} // namespace tavrin::builtin
