#include "platform/schema/BuiltinVocabularies.h"

#include "platform/schema/VocabularyBuilder.h"
#include "platform/schema/builtin/FoTable.h"
#include "platform/schema/builtin/TableNotation.h"
#include "platform/schema/builtin/XsltTable.h"

#include <map>
#include <set>
#include <stdexcept>

namespace tavrin {

namespace {

using namespace builtin;

constexpr std::u16string_view xmlNamespaceName = u"http://www.w3.org/XML/1998/namespace";

/// The attribute's name: in no namespace, but for the prefixes that the tables use.
ExpandedName attributeName(std::string_view written) {
    if (written.starts_with("xml:"))
        return {std::u16string(xmlNamespaceName), widen(written.substr(4))};
    if (written.starts_with("xsl:"))
        return {std::u16string(xsltNamespaceName), widen(written.substr(4))};
    return {u"", widen(written)};
}

VocabularyAttribute attributeOf(std::string_view name, std::string_view values,
                                std::string_view documentation) {
    return {.name = attributeName(name), .documentation = widen(documentation), .values = readValues(values)};
}

/// Attributes by their names as written.
using Attributes = std::map<std::string, VocabularyAttribute, std::less<>>;

const VocabularyAttribute& attributeNamed(std::string_view name, const Attributes& attributes) {
    const auto found = attributes.find(name);
    if (found == attributes.end())
        throw std::logic_error("no attribute \"" + std::string(name) + '"');
    return found->second;
}

ElementDeclaration declarationOf(const ElementRow& row, std::u16string_view namespaceName,
                                 std::span<const GroupRow> contentGroups, VocabularyBuilder& builder) {
    const Content content = readContent(expandGroups(row.content, contentGroups), namespaceName, builder);
    return {.name = {std::u16string(namespaceName), widen(row.name)},
            .documentation = widen(row.documentation),
            .writtenTemplate = widen(row.fillIn),
            .textAllowed = content.textAllowed,
            .content = content.node};
}

std::shared_ptr<const Vocabulary> finish(VocabularyBuilder& builder) {
    builder.notePrefix(xsltNamespaceName, u"xsl");
    builder.notePrefix(foNamespaceName, u"fo");
    builder.notePrefix(xmlNamespaceName, u"xml");
    if (!builder.undeclared().empty())
        throw std::logic_error("an element is named and not declared");
    return builder.finish();
}

std::shared_ptr<const Vocabulary> makeXslt() {
    Attributes attributes;
    for (const AttributeRow& row : xsltAttributes)
        attributes.emplace(row.name, attributeOf(row.name, row.values, row.documentation));
    VocabularyBuilder builder;
    for (const ElementRow& row : xsltElements) {
        ElementDeclaration element = declarationOf(row, xsltNamespaceName, xsltContentGroups, builder);
        element.isRoot = row.name == "stylesheet" || row.name == "transform";
        for (const AttributeMention& mention :
             readAttributes(expandGroups(row.attributes, xsltAttributeGroups)))
            element.attributes.push_back({attributeNamed(mention.name, attributes), mention.isRequired});
        builder.declare(std::move(element));
    }
    return finish(builder);
}

/// The properties of formatting objects, and which elements take which.
class FoProperties {
  public:
    FoProperties() {
        for (const auto& table : {foBoxProperties, foTextProperties, foPageProperties})
            for (const PropertyRow& row : table)
                addProperty(row);
        for (const ShorthandRow& row : foShorthands)
            attributes_.emplace(row.name, attributeOf(row.name, row.values, row.documentation));
    }

    /// All attributes of an element: those listed, those inherited (any element may hand them down), what
    /// sets one of these, and the components of them all.
    std::vector<ElementDeclaration::Attribute> of(const ElementRow& element) const {
        std::vector<ElementDeclaration::Attribute> result;
        std::set<std::string, std::less<>> taken;
        const auto take = [&](const std::string& name, bool isRequired) {
            if (!taken.insert(name).second)
                return;
            result.push_back({attributeNamed(name, attributes_), isRequired});
            if (const auto components = components_.find(name); components != components_.end())
                for (const std::string& component : components->second)
                    result.push_back({attributeNamed(component, attributes_), false});
        };
        for (const AttributeMention& mention :
             readAttributes(expandGroups(element.attributes, foAttributeGroups)))
            take(mention.name, mention.isRequired);
        for (const std::string& name : inherited_)
            take(name, false);
        for (const ShorthandRow& row : foShorthands)
            for (const AttributeMention& set : readAttributes(row.sets))
                if (taken.contains(set.name))
                    take(std::string(row.name), false);
        return result;
    }

  private:
    void addProperty(const PropertyRow& row) {
        const std::string name(row.name);
        attributes_.emplace(name, attributeOf(row.name, row.values, row.documentation));
        if (row.inherited == Inherited::Yes)
            inherited_.push_back(name);
        for (const std::string_view kind : kindsIn(row.values))
            for (const ComponentRow& component : foComponents)
                if (component.kind == kind)
                    addComponent(name, component);
    }

    void addComponent(const std::string& property, const ComponentRow& component) {
        const std::string name = property + '.' + std::string(component.name);
        attributes_.emplace(name, attributeOf(name, component.values, component.documentation));
        components_[property].push_back(name);
    }

    Attributes attributes_;
    std::vector<std::string> inherited_;
    std::map<std::string, std::vector<std::string>, std::less<>> components_;
};

std::shared_ptr<const Vocabulary> makeFo() {
    const FoProperties properties;
    VocabularyBuilder builder;
    for (const ElementRow& row : foElements) {
        ElementDeclaration element = declarationOf(row, foNamespaceName, foContentGroups, builder);
        element.isRoot = row.name == "root";
        element.attributes = properties.of(row);
        builder.declare(std::move(element));
    }
    return finish(builder);
}

} // namespace

std::shared_ptr<const Vocabulary> xsltVocabulary() {
    static const std::shared_ptr<const Vocabulary> vocabulary = makeXslt();
    return vocabulary;
}

std::shared_ptr<const Vocabulary> foVocabulary() {
    static const std::shared_ptr<const Vocabulary> vocabulary = makeFo();
    return vocabulary;
}

std::span<const VocabularyAttribute> xsltAttributesOnOtherElements() {
    static const std::vector<VocabularyAttribute> attributes = [] {
        std::vector<VocabularyAttribute> result;
        for (const AttributeRow& row : xsltAttributesElsewhere)
            result.push_back(attributeOf(row.name, row.values, row.documentation));
        return result;
    }();
    return attributes;
}

} // namespace tavrin
