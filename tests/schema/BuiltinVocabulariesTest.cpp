#include "platform/schema/BuiltinVocabularies.h"

#include "platform/schema/ContentMatcher.h"
#include "platform/schema/ElementTemplate.h"
#include "platform/schema/builtin/FoTable.h"
#include "platform/schema/builtin/TableNotation.h"
#include "platform/schema/builtin/XsltTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavrin {
namespace {

using namespace builtin;

std::string narrow(std::u16string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

/// One of the two vocabularies, with names and answers as plain strings.
struct Known {
    std::shared_ptr<const Vocabulary> vocabulary;
    std::u16string_view namespaceName;
    std::string prefix;

    [[nodiscard]] int id(std::string_view name) const {
        const int found = vocabulary->findElement(namespaceName, widen(name));
        if (found < 0)
            throw std::out_of_range("no element " + std::string(name));
        return found;
    }
    [[nodiscard]] const VocabularyElement& element(std::string_view name) const {
        return vocabulary->element(id(name));
    }
    [[nodiscard]] std::string nameOf(int element) const {
        return narrow(vocabulary->element(element).name.localName);
    }
    [[nodiscard]] bool hasChild(std::string_view parent, std::string_view child) const {
        return std::ranges::count(element(parent).children, id(child)) > 0;
    }
    [[nodiscard]] const VocabularyAttribute* attribute(std::string_view name,
                                                       std::string_view attribute) const {
        return vocabulary->findAttribute(id(name), {u"", widen(attribute)});
    }
    [[nodiscard]] std::set<std::string> required(int element) const {
        std::set<std::string> names;
        for (const AttributeUse& use : vocabulary->element(element).attributes)
            if (use.isRequired)
                names.insert(narrow(vocabulary->attribute(use.attribute).name.localName));
        return names;
    }
    /// The values offered, descriptions in brackets.
    [[nodiscard]] std::string values(std::string_view attribute) const {
        std::string result;
        for (const AttributeValue& value :
             vocabulary->attributeValues(namespaceName, {u"", widen(attribute)}))
            result += (result.empty() ? "" : " ") +
                      (value.isDescription ? '[' + narrow(value.text) + ']' : narrow(value.text));
        return result;
    }
    [[nodiscard]] std::string templateOf(int element) const {
        const auto prefixOf = [this](std::u16string_view) { return widen(prefix); };
        return narrow(elementTemplate(*vocabulary, element, prefixOf, prefixOf));
    }
};

Known xslt() {
    return {xsltVocabulary(), xsltNamespaceName, "xsl"};
}
Known fo() {
    return {foVocabulary(), foNamespaceName, "fo"};
}

std::vector<PropertyRow> foProperties() {
    std::vector<PropertyRow> rows;
    for (const auto& table : {foBoxProperties, foTextProperties, foPageProperties})
        rows.insert(rows.end(), table.begin(), table.end());
    return rows;
}

template <class Rows>
std::multiset<std::string> namesOf(const Rows& rows) {
    std::multiset<std::string> names;
    for (const auto& row : rows)
        names.emplace(row.name);
    return names;
}

std::set<std::string> twice(const std::multiset<std::string>& names) {
    std::set<std::string> result;
    for (const std::string& name : names)
        if (names.count(name) > 1)
            result.insert(name);
    return result;
}

TEST(BuiltinVocabularies, holdWhatTheRecommendationsList) {
    EXPECT_EQ(xslt().vocabulary->elementCount(), 35);
    EXPECT_EQ(xslt().vocabulary->roots().size(), 2u);
    EXPECT_EQ(xsltAttributes.size(), 50u);
    EXPECT_EQ(xsltAttributesOnOtherElements().size(), 4u);

    EXPECT_EQ(fo().vocabulary->elementCount(), 56);
    EXPECT_EQ(fo().vocabulary->roots().size(), 1u);
    EXPECT_EQ(foProperties().size(), 224u);
    EXPECT_EQ(foShorthands.size(), 24u);
    EXPECT_EQ(std::ranges::count(foProperties(), Inherited::Yes, &PropertyRow::inherited), 73);
    std::set<ExpandedName> names;
    for (int id = 0; id < fo().vocabulary->elementCount(); ++id)
        for (const AttributeUse& use : fo().vocabulary->element(id).attributes)
            names.insert(fo().vocabulary->attribute(use.attribute).name);
    EXPECT_EQ(names.size(), 224u + 24u + 71u) << "properties, shorthands, components: each on some element";
}

TEST(BuiltinVocabularies, nameNothingTwice) {
    std::multiset<std::string> foNames = namesOf(foProperties());
    foNames.merge(namesOf(foShorthands));
    for (const auto& names :
         {foNames, namesOf(xsltElements), namesOf(foElements), namesOf(xsltAttributes), namesOf(valueKinds),
          namesOf(xsltContentGroups), namesOf(foContentGroups), namesOf(foAttributeGroups)})
        EXPECT_EQ(twice(names), std::set<std::string>());
    for (const ElementRow& row : foElements) {
        const auto mentions = readAttributes(expandGroups(row.attributes, foAttributeGroups));
        EXPECT_EQ(twice(namesOf(mentions)), std::set<std::string>()) << row.name;
    }
}

TEST(BuiltinVocabularies, areClosed) {
    for (const Known& known : {xslt(), fo()}) {
        std::set<int> reached(known.vocabulary->roots().begin(), known.vocabulary->roots().end());
        std::vector<int> open(reached.begin(), reached.end());
        while (!open.empty()) {
            const int parent = open.back();
            open.pop_back();
            for (const int child : known.vocabulary->element(parent).children)
                if (reached.insert(child).second)
                    open.push_back(child);
        }
        for (int id = 0; id < known.vocabulary->elementCount(); ++id)
            EXPECT_TRUE(reached.contains(id)) << known.nameOf(id) << " is in no content model";
    }
    // Unknown elements, groups and kinds cannot be: they throw when the vocabulary is made. Unused ones can.
    std::string mentioned;
    for (const ElementRow& row : foElements)
        mentioned += std::string(row.content) + ' ' + std::string(row.attributes) + ' ';
    for (const auto& rows : {foContentGroups, foAttributeGroups})
        for (const GroupRow& row : rows)
            mentioned += std::string(row.members) + ' ';
    for (const auto& rows : {foContentGroups, foAttributeGroups})
        for (const GroupRow& row : rows)
            EXPECT_TRUE(std::regex_search(mentioned, std::regex("%" + std::string(row.name) + "(?![-\\w])")))
                << row.name << " is not used";
    const std::set<std::string> all = [] {
        const auto names = namesOf(foProperties());
        return std::set<std::string>(names.begin(), names.end());
    }();
    for (const ShorthandRow& row : foShorthands)
        for (const AttributeMention& set : readAttributes(row.sets))
            EXPECT_TRUE(all.contains(set.name)) << row.name << " sets " << set.name;
}

TEST(BuiltinVocabularies, sayWhatEachNameIsFor) {
    const auto isSentence = [](std::u16string_view text) { return text.size() > 5 && text.back() == u'.'; };
    for (const Known& known : {xslt(), fo()})
        for (int id = 0; id < known.vocabulary->elementCount(); ++id) {
            EXPECT_TRUE(isSentence(known.vocabulary->element(id).documentation)) << known.nameOf(id);
            for (const AttributeUse& use : known.vocabulary->element(id).attributes) {
                const VocabularyAttribute& attribute = known.vocabulary->attribute(use.attribute);
                EXPECT_TRUE(isSentence(attribute.documentation)) << narrow(attribute.name.localName);
            }
        }
}

/// Reads a template as the text of a document after its element's name, and checks each element in it.
class TemplateCheck {
  public:
    explicit TemplateCheck(const Known& known) : known_(known) {}

    void check(int element) {
        const std::string written = known_.templateOf(element);
        EXPECT_EQ(std::ranges::count(written, '*'), 1) << "one place for the caret";
        const std::regex inLine("[^\\n_ ] *_");
        EXPECT_FALSE(std::regex_search(written, inLine)) << "tabs only indent";
        std::string text = '<' + known_.prefix + ':' + known_.nameOf(element);
        if (std::isalpha(static_cast<unsigned char>(written[0])))
            text += ' ';
        text += written;
        std::erase(text, '*');
        readTags(text);
        EXPECT_TRUE(open_.empty()) << "an element is not closed";
    }

  private:
    struct Open {
        int element;
        std::vector<ContentMatcher::Sibling> children;
    };

    void readTags(const std::string& text) {
        const std::regex tag("<(/?)" + known_.prefix + R"re(:([\w-]+)((?: [\w:-]+="[^"<]*")*)(/?)>\s*)re");
        auto at = text.begin();
        for (std::smatch found; std::regex_search(at, text.end(), found, tag); at = found.suffix().first) {
            EXPECT_EQ(found.prefix().str().find_first_not_of("_ \n"), std::string::npos)
                << "not a tag: " << found.prefix().str();
            if (found[1].length() > 0) {
                EXPECT_EQ(known_.nameOf(open_.back().element), found[2].str());
                close();
            } else {
                openTag(found[2], found[3]);
                if (found[4].length() > 0)
                    close();
            }
        }
        EXPECT_EQ(at, text.end());
    }

    void openTag(const std::string& name, const std::string& attributes) {
        const int element = known_.id(name);
        if (!open_.empty())
            open_.back().children.push_back({element, known_.namespaceName});
        open_.push_back({element, {}});
        std::set<std::string> given;
        const std::regex attribute(R"re(([\w:-]+)=")re");
        for (std::sregex_iterator it(attributes.begin(), attributes.end(), attribute), end; it != end; ++it)
            given.insert((*it)[1]);
        for (const std::string& required : known_.required(element))
            EXPECT_TRUE(given.contains(required)) << name << " needs " << required;
        for (const std::string& one : given)
            EXPECT_TRUE(one.starts_with("xmlns:") || known_.attribute(name, one))
                << name << " has no " << one;
    }

    void close() {
        const auto& [element, children] = open_.back();
        ContentMatcher matcher(*known_.vocabulary);
        for (std::size_t i = 0; i < children.size(); ++i) {
            const std::span<const ContentMatcher::Sibling> all = children;
            const auto allowed = matcher.allowed(known_.vocabulary->element(element).content, all.first(i),
                                                 all.subspan(i + 1), true, all.subspan(i, 1));
            EXPECT_TRUE(allowed[0]) << known_.nameOf(children[i].element) << " in " << known_.nameOf(element);
        }
        open_.pop_back();
    }

    const Known& known_;
    std::vector<Open> open_;
};

TEST(BuiltinVocabularies, fillInWhatTheyAllow) {
    for (const Known& known : {xslt(), fo()})
        for (int id = 0; id < known.vocabulary->elementCount(); ++id) {
            SCOPED_TRACE(known.nameOf(id));
            TemplateCheck(known).check(id);
        }
}

TEST(BuiltinVocabularies, knowChildren) {
    struct Case {
        Known known;
        const char* parent;
        const char* children;
        const char* others;
    };
    const Case cases[] = {
        {xslt(), "stylesheet", "import include template output param variable", "if value-of sort"},
        {xslt(), "template", "param if choose text element", "template sort when with-param output"},
        {xslt(), "attribute", "value-of text choose", "element attribute comment param"},
        {xslt(), "attribute-set", "attribute", "element variable"},
        {xslt(), "call-template", "with-param", "sort param"},
        {xslt(), "for-each", "sort apply-templates message fallback", "param otherwise"},
        {xslt(), "value-of", "", "text value-of"},
        {fo(), "root", "layout-master-set declarations page-sequence", "flow block root"},
        {fo(), "page-sequence", "title static-content flow", "block simple-page-master"},
        {fo(), "flow", "block table list-block float wrapper retrieve-marker", "inline footnote marker flow"},
        {fo(), "block", "block inline footnote marker initial-property-set float",
         "table-row list-item title"},
        {fo(), "title", "inline page-number footnote", "block table marker"},
        {fo(), "table-body", "marker table-row table-cell", "block table-column"},
        {fo(), "footnote", "inline footnote-body", "block"},
        {fo(), "multi-properties", "multi-property-set wrapper", "inline"},
        {fo(), "region-body", "", "block"},
    };
    for (const auto& [known, parent, children, others] : cases) {
        for (const AttributeMention& child : readAttributes(children))
            EXPECT_TRUE(known.hasChild(parent, child.name)) << parent << ", " << child.name;
        for (const AttributeMention& child : readAttributes(others))
            EXPECT_FALSE(known.hasChild(parent, child.name)) << parent << ", " << child.name;
    }
}

TEST(BuiltinVocabularies, allowForeignElementsWhereTemplatesAre) {
    const auto allows = [](const Known& known, const char* parent, std::u16string_view namespaceName) {
        return std::ranges::any_of(known.element(parent).wildcards, [&](int wildcard) {
            return known.vocabulary->wildcard(wildcard).allows(namespaceName);
        });
    };
    for (const char* parent : {"template", "for-each", "when", "element", "variable", "fallback"}) {
        EXPECT_TRUE(allows(xslt(), parent, foNamespaceName)) << parent;
        EXPECT_TRUE(allows(xslt(), parent, u"")) << parent;
        EXPECT_FALSE(allows(xslt(), parent, xsltNamespaceName)) << parent;
    }
    EXPECT_TRUE(allows(xslt(), "stylesheet", u"urn:x"));
    EXPECT_FALSE(allows(xslt(), "stylesheet", u"")) << "at the top level only those of a namespace";
    EXPECT_TRUE(allows(fo(), "instream-foreign-object", u"http://www.w3.org/2000/svg"));
    for (const char* parent : {"attribute", "comment", "choose", "text"})
        EXPECT_TRUE(xslt().element(parent).wildcards.empty()) << parent;
}

TEST(BuiltinVocabularies, knowAttributes) {
    struct Case {
        Known known;
        const char* element;
        const char* attributes;
        const char* others;
    };
    const Case cases[] = {
        {xslt(), "stylesheet", "version exclude-result-prefixes id", "use-attribute-sets href"},
        {xslt(), "template", "match name priority mode", "select use"},
        {xslt(), "sort", "select lang data-type order case-order", "name test"},
        {xslt(), "number", "level count grouping-size letter-value", "select"},
        {fo(), "block",
         "space-before space-before.optimum space-before.conditionality keep-with-next.within-page span "
         "border-before-width.length margin padding border-top page-break-before text-indent "
         "line-height.minimum",
         "border-top-width.length padding-top.conditionality vertical-align column-count width src"},
        {fo(), "inline", "vertical-align baseline-shift space-end.maximum text-decoration", "break-before"},
        {fo(), "region-body", "column-count column-gap margin-top space-before", "extent precedence id"},
        {fo(), "region-before", "extent precedence", "column-count margin"},
        {fo(), "region-start", "extent", "precedence"},
        {fo(), "simple-page-master", "size page-height margin-left reference-orientation",
         "background-color"},
        {fo(), "table", "table-layout border-spacing border-separation.block-progression-direction width",
         "span"},
        {fo(), "table-cell", "number-rows-spanned display-align text-align min-height",
         "margin keep-with-next"},
        {fo(), "leader", "leader-length.optimum leader-pattern rule-style vertical-align", "src"},
        {fo(), "block-container", "position top z-index height block-progression-dimension.maximum", "role"},
        {fo(), "list-item-body", "id keep-together start-indent", "background-color margin"},
        // Inherited properties may stand anywhere, to be handed down.
        {fo(), "flow", "font-size font text-align white-space visibility widows page-break-inside",
         "id border"},
        {fo(), "single-page-master-reference", "master-reference hyphenate", "master-name maximum-repeats"},
    };
    for (const auto& [known, element, attributes, others] : cases) {
        for (const AttributeMention& attribute : readAttributes(attributes))
            EXPECT_TRUE(known.attribute(element, attribute.name)) << element << ", " << attribute.name;
        for (const AttributeMention& attribute : readAttributes(others))
            EXPECT_FALSE(known.attribute(element, attribute.name)) << element << ", " << attribute.name;
    }
    EXPECT_EQ(xslt().required(xslt().id("key")), (std::set<std::string>{"match", "name", "use"}));
    EXPECT_EQ(xslt().required(xslt().id("template")), std::set<std::string>());
    EXPECT_EQ(fo().required(fo().id("color-profile")), (std::set<std::string>{"color-profile-name", "src"}));

    const std::u16string xml = u"http://www.w3.org/XML/1998/namespace";
    EXPECT_TRUE(fo().vocabulary->findAttribute(fo().id("block"), {xml, u"lang"}));
    EXPECT_TRUE(xslt().vocabulary->findAttribute(xslt().id("template"), {xml, u"space"}));
    EXPECT_EQ(xsltAttributesOnOtherElements()[2].name,
              (ExpandedName{std::u16string(xsltNamespaceName), u"use-attribute-sets"}));
}

TEST(BuiltinVocabularies, offerKeywordsThenDescribeTheRest) {
    struct Case {
        Known known;
        const char* attribute;
        const char* values;
    };
    const Case cases[] = {
        {xslt(), "indent", "yes no"},
        {xslt(), "method", "xml html text [a name with a prefix]"},
        {xslt(), "level", "single multiple any"},
        {xslt(), "select", ""},
        {fo(), "border-before-width", "thin medium thick inherit [a length, such as 12pt]"},
        {fo(), "border-before-width.conditionality", "discard retain"},
        {fo(), "border-before-width.length", ""},
        {fo(), "keep-with-next", "auto always inherit [a number: the higher, the stronger]"},
        {fo(), "keep-with-next.within-line", "auto always [a whole number]"},
        {fo(), "space-before.precedence", "force [a whole number]"},
        {fo(), "reference-orientation", "0 90 180 270 -90 -180 -270 inherit"},
        {fo(), "starting-state", "show hide"},
        {fo(), "id", ""},
        {fo(), "color",
         "aqua black blue fuchsia gray green lime maroon navy olive purple red silver teal white yellow "
         "inherit "
         "[a colour, such as #ff8000]"},
    };
    for (const auto& [known, attribute, values] : cases)
        EXPECT_EQ(known.values(attribute), values) << attribute;
}

TEST(BuiltinVocabularies, areMadeOnceOnWhateverThread) {
    std::vector<std::future<std::shared_ptr<const Vocabulary>>> asked;
    for (int i = 0; i < 4; ++i)
        asked.push_back(std::async(std::launch::async, foVocabulary));
    for (auto& answer : asked)
        EXPECT_EQ(answer.get(), foVocabulary());
}

TEST(TableNotation, refusesWhatItDoesNotKnow) {
    VocabularyBuilder builder;
    for (const char* content : {"", "a,", "(a", "a)", "a b", "a, b | c", "#TEXT", "##any", "a??", "(a | )"})
        EXPECT_THROW(static_cast<void>(readContent(content, u"", builder)), std::logic_error) << content;
    EXPECT_THROW(static_cast<void>(expandGroups("%nothing", foContentGroups)), std::logic_error);
    EXPECT_THROW(static_cast<void>(readValues("a | <nothing>")), std::logic_error);
}

} // namespace
} // namespace tavrin
