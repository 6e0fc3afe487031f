#include "platform/schema/XmlSchemaModel.h"

#include "platform/schema/DatatypeValues.h"
#include "platform/schema/GuardedXml.h"
#include "platform/schema/SchemaText.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <map>
#include <set>
#include <utility>
#include <xercesc/framework/psvi/XSAnnotation.hpp>
#include <xercesc/framework/psvi/XSAttributeDeclaration.hpp>
#include <xercesc/framework/psvi/XSAttributeUse.hpp>
#include <xercesc/framework/psvi/XSComplexTypeDefinition.hpp>
#include <xercesc/framework/psvi/XSElementDeclaration.hpp>
#include <xercesc/framework/psvi/XSModel.hpp>
#include <xercesc/framework/psvi/XSModelGroup.hpp>
#include <xercesc/framework/psvi/XSNamedMap.hpp>
#include <xercesc/framework/psvi/XSParticle.hpp>
#include <xercesc/framework/psvi/XSSimpleTypeDefinition.hpp>
#include <xercesc/framework/psvi/XSWildcard.hpp>

namespace tavrin {

struct XmlSchemaComponents {
    xercesc::XSModel& model;
};

namespace {

using xercesc::XSAnnotation;
using xercesc::XSAttributeDeclaration;
using xercesc::XSAttributeUse;
using xercesc::XSComplexTypeDefinition;
using xercesc::XSConstants;
using xercesc::XSElementDeclaration;
using xercesc::XSModelGroup;
using xercesc::XSObject;
using xercesc::XSParticle;
using xercesc::XSSimpleTypeDefinition;
using xercesc::XSTypeDefinition;
using xercesc::XSWildcard;

constexpr std::u16string_view instanceNamespace = u"http://www.w3.org/2001/XMLSchema-instance";
constexpr std::u16string_view schemaNamespace = u"http://www.w3.org/2001/XMLSchema";
/// Simple types derived from one another, or unions in unions, beyond which nobody looks.
constexpr int maxTypeDepth = 50;

std::u16string text(const XMLCh* xerces) {
    return xerces ? std::u16string(xerces) : std::u16string();
}

template <typename Component>
ExpandedName nameOf(Component& component) {
    return {text(component.getNamespace()), text(component.getName())};
}

/// Turns the components of a schema into declarations: global elements, and the local ones that are met in
/// their content.
class Declarer {
  public:
    Declarer(SchemaReading& reading, const XmlSchemaDocuments& documents, xercesc::XSModel& model,
             VocabularyBuilder& builder)
        : reading_(reading), documents_(documents), model_(model), builder_(builder) {}

    void declareAll();

  private:
    using Attributes = std::vector<ElementDeclaration::Attribute>;
    /// Two objects may stand for one named type, so named types are told by their names.
    using TypeKey = std::pair<ExpandedName, const void*>;
    [[nodiscard]] static TypeKey keyOf(XSTypeDefinition& type);

    template <typename Component>
    [[nodiscard]] std::vector<Component*> globals(XSConstants::COMPONENT_TYPE kind);
    void collectSubstitutions(const std::vector<XSElementDeclaration*>& elements);
    void collectDerivations();

    void meet(XSElementDeclaration& element);
    void declare(XSElementDeclaration& element);
    [[nodiscard]] int content(XSComplexTypeDefinition& type);
    [[nodiscard]] int particle(XSParticle& particle, int depth);
    [[nodiscard]] int group(XSModelGroup& group, int depth);
    [[nodiscard]] int anyOf(const XSWildcard& wildcard);
    [[nodiscard]] int reference(XSElementDeclaration& element);
    void substitutes(XSElementDeclaration& head, std::set<ExpandedName>& seen, std::vector<int>& choice);

    [[nodiscard]] const Attributes& attributes(XSComplexTypeDefinition& type);
    [[nodiscard]] ElementDeclaration::Attribute attribute(XSAttributeUse& use);
    void addFromWildcard(const XSWildcard& wildcard, Attributes& attributes);
    void addInstanceAttributes(XSElementDeclaration& element, ElementDeclaration& declaration);
    [[nodiscard]] std::vector<AttributeValue> values(XSSimpleTypeDefinition* type, const std::string& owner,
                                                     int depth = 0);
    [[nodiscard]] static std::vector<AttributeValue> describe(XSSimpleTypeDefinition& type);

    [[nodiscard]] std::u16string documentation(XSAnnotation* annotation);

    SchemaReading& reading_;
    const XmlSchemaDocuments& documents_;
    xercesc::XSModel& model_;
    VocabularyBuilder& builder_;
    std::map<ExpandedName, std::vector<XSElementDeclaration*>> substitutions_; ///< by their head, direct ones
    std::map<ExpandedName, std::set<ExpandedName>> derived_; ///< types that may stand for one by xsi:type
    std::deque<XSElementDeclaration*> open_;
    std::set<std::pair<ExpandedName, TypeKey>> met_;
    std::map<TypeKey, int> contents_;
    std::map<TypeKey, Attributes> attributes_;
    std::map<const void*, std::u16string> documentation_;
    std::set<ExpandedName> referenced_; ///< elements that some content names
};

Declarer::TypeKey Declarer::keyOf(XSTypeDefinition& type) {
    return type.getAnonymous() ? TypeKey{{}, &type} : TypeKey{nameOf(type), nullptr};
}

template <typename Component>
std::vector<Component*> Declarer::globals(XSConstants::COMPONENT_TYPE kind) {
    std::vector<Component*> result;
    const auto* components = model_.getComponents(kind);
    for (XMLSize_t i = 0; components && i < components->getLength(); ++i)
        result.push_back(
            static_cast<Component*>(const_cast<xercesc::XSNamedMap<XSObject>*>(components)->item(i)));
    return result;
}

void Declarer::collectSubstitutions(const std::vector<XSElementDeclaration*>& elements) {
    for (XSElementDeclaration* element : elements)
        if (XSElementDeclaration* head = element->getSubstitutionGroupAffiliation())
            substitutions_[nameOf(*head)].push_back(element);
}

void Declarer::collectDerivations() {
    for (auto* type : globals<XSTypeDefinition>(XSConstants::TYPE_DEFINITION)) {
        if (type->getTypeCategory() != XSTypeDefinition::COMPLEX_TYPE)
            continue;
        if (static_cast<XSComplexTypeDefinition*>(type)->getAbstract())
            continue;
        const ExpandedName name = nameOf(*type);
        XSTypeDefinition* base = type->getBaseType();
        for (int depth = 0; base && depth < maxTypeDepth; ++depth, base = base->getBaseType()) {
            if (text(base->getNamespace()) == schemaNamespace || base == base->getBaseType())
                break;
            if (!base->getAnonymous() && nameOf(*base) != name)
                derived_[nameOf(*base)].insert(name);
        }
    }
}

void Declarer::meet(XSElementDeclaration& element) {
    XSTypeDefinition* type = element.getTypeDefinition();
    if (met_.insert({nameOf(element), type ? keyOf(*type) : TypeKey()}).second)
        open_.push_back(&element);
}

void Declarer::substitutes(XSElementDeclaration& head, std::set<ExpandedName>& seen,
                           std::vector<int>& choice) {
    const ExpandedName name = nameOf(head);
    if (!seen.insert(name).second)
        return;
    if (!head.getAbstract()) {
        choice.push_back(builder_.particles().element(builder_.reference(name)));
        referenced_.insert(name);
    }
    if (head.isDisallowedSubstitution(XSConstants::DERIVATION_SUBSTITUTION))
        return;
    if (const auto members = substitutions_.find(name); members != substitutions_.end())
        for (XSElementDeclaration* member : members->second)
            substitutes(*member, seen, choice);
}

int Declarer::reference(XSElementDeclaration& element) {
    if (element.getScope() == XSConstants::SCOPE_GLOBAL) {
        std::set<ExpandedName> seen;
        std::vector<int> choice;
        substitutes(element, seen, choice);
        return builder_.particles().group(ParticleKind::choice, std::move(choice));
    }
    meet(element);
    return builder_.particles().element(builder_.reference(nameOf(element)));
}

int Declarer::anyOf(const XSWildcard& wildcard) {
    Wildcard result;
    auto* names = const_cast<XSWildcard&>(wildcard).getNsConstraintList();
    for (XMLSize_t i = 0; names && i < names->size(); ++i)
        result.namespaces.push_back(text(names->elementAt(i)));
    result.isExcept = wildcard.getConstraintType() != XSWildcard::NSCONSTRAINT_DERIVATION_LIST;
    if (wildcard.getConstraintType() == XSWildcard::NSCONSTRAINT_NOT &&
        std::ranges::find(result.namespaces, std::u16string()) == result.namespaces.end())
        result.namespaces.emplace_back(); // "other" is in a namespace
    return builder_.particles().anyElement(result);
}

int Declarer::group(XSModelGroup& group, int depth) {
    std::vector<int> parts;
    auto* particles = group.getParticles();
    for (XMLSize_t i = 0; particles && i < particles->size(); ++i)
        parts.push_back(particle(*particles->elementAt(i), depth + 1));
    switch (group.getCompositor()) {
    case XSModelGroup::COMPOSITOR_CHOICE:
        return builder_.particles().group(ParticleKind::choice, std::move(parts));
    case XSModelGroup::COMPOSITOR_ALL:
        return builder_.particles().group(ParticleKind::interleave, std::move(parts));
    case XSModelGroup::COMPOSITOR_SEQUENCE:
        break;
    }
    return builder_.particles().group(ParticleKind::sequence, std::move(parts));
}

int Declarer::particle(XSParticle& particle, int depth) {
    if (depth > reading_.limits().depth || !reading_.mayGoOn())
        return builder_.particles().anyElement({}, 0, Particle::unbounded);
    constexpr XMLSize_t most = std::numeric_limits<int>::max();
    const auto min = static_cast<int>(std::min(particle.getMinOccurs(), most));
    const int max = particle.getMaxOccursUnbounded()
                        ? Particle::unbounded
                        : static_cast<int>(std::min(particle.getMaxOccurs(), most));
    int node = ParticlePool::empty;
    switch (particle.getTermType()) {
    case XSParticle::TERM_EMPTY:
        break;
    case XSParticle::TERM_ELEMENT:
        node = reference(*particle.getElementTerm());
        break;
    case XSParticle::TERM_MODELGROUP:
        node = group(*particle.getModelGroupTerm(), depth);
        break;
    case XSParticle::TERM_WILDCARD:
        node = anyOf(*particle.getWildcardTerm());
        break;
    }
    return builder_.particles().repeat(node, min, max);
}

int Declarer::content(XSComplexTypeDefinition& type) {
    const TypeKey key = keyOf(type);
    if (const auto known = contents_.find(key); known != contents_.end())
        return known->second;
    XSParticle* root = type.getParticle();
    const int node = root ? particle(*root, 0) : ParticlePool::empty;
    contents_.emplace(key, node);
    return node;
}

std::vector<AttributeValue> Declarer::describe(XSSimpleTypeDefinition& type) {
    XSTypeDefinition* builtIn = &type;
    for (int depth = 0; builtIn && depth < maxTypeDepth; ++depth, builtIn = builtIn->getBaseType())
        if (!builtIn->getAnonymous() && text(builtIn->getNamespace()) == schemaNamespace)
            break;
    if (!builtIn)
        return {};
    std::vector<AttributeValue> result = valuesOfDatatype(text(builtIn->getName()));
    if (result.size() == 1 && builtIn != &type && type.getNumeric())
        result[0].text = withBounds(
            result[0].text, text(type.getLexicalFacetValue(XSSimpleTypeDefinition::FACET_MININCLUSIVE)),
            text(type.getLexicalFacetValue(XSSimpleTypeDefinition::FACET_MAXINCLUSIVE)));
    return result;
}

std::vector<AttributeValue> Declarer::values(XSSimpleTypeDefinition* type, const std::string& owner,
                                             int depth) {
    if (!type || depth > maxTypeDepth)
        return {};
    const std::string inner = type->getAnonymous() ? owner : "type " + toUtf8(text(type->getName()));
    std::vector<AttributeValue> result;
    if (auto* listed = type->getLexicalEnumeration(); listed && listed->size() > 0) {
        for (XMLSize_t i = 0; i < listed->size(); ++i) {
            const std::u16string value = text(listed->elementAt(i));
            if (!value.empty())
                result.push_back({value, documents_.documentationOf(inner, toUtf8(value))});
        }
        return result;
    }
    switch (type->getVariety()) {
    case XSSimpleTypeDefinition::VARIETY_UNION:
        if (auto* members = type->getMemberTypes())
            for (XMLSize_t i = 0; i < members->size(); ++i)
                addValues(result, values(members->elementAt(i), inner, depth + 1));
        break;
    case XSSimpleTypeDefinition::VARIETY_LIST:
        result = describe(*type);
        if (result.empty())
            result = values(type->getItemType(), inner, depth + 1);
        break;
    case XSSimpleTypeDefinition::VARIETY_ATOMIC:
    case XSSimpleTypeDefinition::VARIETY_ABSENT:
        result = describe(*type);
        break;
    }
    return result;
}

std::u16string Declarer::documentation(XSAnnotation* annotation) {
    if (!annotation)
        return {};
    const auto [at, isNew] = documentation_.try_emplace(annotation);
    if (isNew)
        if (const XmlDocument tree =
                parseGuarded(reading_, toUtf8(text(annotation->getAnnotationString())), {});
            tree.root())
            at->second = annotationText(tree.root());
    return at->second;
}

ElementDeclaration::Attribute Declarer::attribute(XSAttributeUse& use) {
    XSAttributeDeclaration& declaration = *use.getAttrDeclaration();
    ElementDeclaration::Attribute result{.declaration = {.name = nameOf(declaration)},
                                         .isRequired = use.getRequired()};
    VocabularyAttribute& declared = result.declaration;
    declared.documentation = documentation(declaration.getAnnotation());
    declared.values = values(declaration.getTypeDefinition(), "attribute " + toUtf8(declared.name.localName));
    if (!reading_.spendNodes(declared.values.size()))
        declared.values.clear();
    const bool isOwn = use.getConstraintType() != XSConstants::VALUE_CONSTRAINT_NONE;
    const auto constraint = isOwn ? use.getConstraintType() : declaration.getConstraintType();
    const std::u16string value = text(isOwn ? use.getConstraintValue() : declaration.getConstraintValue());
    if (constraint == XSConstants::VALUE_CONSTRAINT_FIXED)
        declared.values = {{.text = value}};
    else if (constraint == XSConstants::VALUE_CONSTRAINT_DEFAULT && !value.empty())
        addValues(declared.values, {{.text = value}});
    declared.hasDefault = constraint != XSConstants::VALUE_CONSTRAINT_NONE;
    return result;
}

/// A wildcard that lists namespaces means the attributes that the schema has in them.
void Declarer::addFromWildcard(const XSWildcard& wildcard, Attributes& attributes) {
    if (wildcard.getConstraintType() != XSWildcard::NSCONSTRAINT_DERIVATION_LIST)
        return;
    auto* names = const_cast<XSWildcard&>(wildcard).getNsConstraintList();
    std::set<std::u16string> listed;
    for (XMLSize_t i = 0; names && i < names->size(); ++i)
        listed.insert(text(names->elementAt(i)));
    for (auto* global : globals<XSAttributeDeclaration>(XSConstants::ATTRIBUTE_DECLARATION)) {
        const ExpandedName name = nameOf(*global);
        const bool isThere = std::ranges::any_of(
            attributes, [&](const ElementDeclaration::Attribute& a) { return a.declaration.name == name; });
        if (listed.contains(name.namespaceName) && !isThere)
            attributes.push_back(
                {.declaration = {
                     .name = name,
                     .documentation = documentation(global->getAnnotation()),
                     .values = values(global->getTypeDefinition(), "attribute " + toUtf8(name.localName)),
                 }});
    }
}

const Declarer::Attributes& Declarer::attributes(XSComplexTypeDefinition& type) {
    const auto [at, isNew] = attributes_.try_emplace(keyOf(type));
    if (!isNew)
        return at->second;
    auto* uses = type.getAttributeUses();
    for (XMLSize_t i = 0; uses && i < uses->size(); ++i)
        at->second.push_back(attribute(*uses->elementAt(i)));
    if (const XSWildcard* wildcard = type.getAttributeWildcard())
        addFromWildcard(*wildcard, at->second);
    return at->second;
}

void Declarer::addInstanceAttributes(XSElementDeclaration& element, ElementDeclaration& declaration) {
    const auto add = [&](std::u16string_view name, std::u16string_view words,
                         std::vector<AttributeValue> values, bool isRequired) {
        declaration.attributes.push_back({{.name = {std::u16string(instanceNamespace), std::u16string(name)},
                                           .documentation = std::u16string(words),
                                           .values = std::move(values)},
                                          isRequired});
    };
    if (element.getNillable())
        add(u"nil", u"Says that the element is left without content.", valuesOfDatatype(u"boolean"), false);
    XSTypeDefinition* type = element.getTypeDefinition();
    if (!type || type->getAnonymous())
        return;
    const auto derived = derived_.find(nameOf(*type));
    if (derived == derived_.end())
        return;
    std::vector<AttributeValue> names;
    for (const ExpandedName& name : derived->second) {
        const std::u16string prefix = toUtf16(documents_.prefixOf(toUtf8(name.namespaceName)));
        names.push_back({.text = prefix.empty() ? name.localName : prefix + u":" + name.localName});
    }
    const bool isComplex = type->getTypeCategory() == XSTypeDefinition::COMPLEX_TYPE;
    add(u"type", u"The type that the element has here.", std::move(names),
        isComplex && static_cast<XSComplexTypeDefinition*>(type)->getAbstract());
}

void Declarer::declare(XSElementDeclaration& element) {
    ElementDeclaration declaration{.name = nameOf(element)};
    declaration.isRoot = element.getScope() == XSConstants::SCOPE_GLOBAL;
    declaration.documentation = documentation(element.getAnnotation());
    XSTypeDefinition* type = element.getTypeDefinition();
    if (type && type->getTypeCategory() == XSTypeDefinition::COMPLEX_TYPE) {
        auto& complex = static_cast<XSComplexTypeDefinition&>(*type);
        const auto kind = complex.getContentType();
        declaration.textAllowed = kind == XSComplexTypeDefinition::CONTENTTYPE_MIXED ||
                                  kind == XSComplexTypeDefinition::CONTENTTYPE_SIMPLE;
        declaration.content = content(complex);
        declaration.attributes = attributes(complex);
        if (auto* notes = complex.getAnnotations();
            declaration.documentation.empty() && notes && notes->size())
            declaration.documentation = documentation(notes->elementAt(0));
    } else {
        declaration.textAllowed = true;
    }
    addInstanceAttributes(element, declaration);
    builder_.declare(std::move(declaration));
}

void Declarer::declareAll() {
    const auto elements = globals<XSElementDeclaration>(XSConstants::ELEMENT_DECLARATION);
    collectSubstitutions(elements);
    collectDerivations();
    for (XSElementDeclaration* element : elements)
        if (!element->getAbstract())
            meet(*element);
    for (; !open_.empty() && reading_.mayGoOn(); open_.pop_front())
        declare(*open_.front());
}

} // namespace

void declareComponents(SchemaReading& reading, const XmlSchemaDocuments& documents,
                       XmlSchemaComponents& components, VocabularyBuilder& builder) {
    Declarer(reading, documents, components.model, builder).declareAll();
}

} // namespace tavrin
