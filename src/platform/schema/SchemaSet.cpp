#include "platform/schema/SchemaSet.h"

#include "platform/core/XmlNamespaces.h"
#include "platform/schema/BuiltinVocabularies.h"
#include "platform/schema/DocumentDeclarations.h"
#include "platform/schema/ElementTemplate.h"

#include <algorithm>
#include <utility>

namespace tavrin {

namespace {

constexpr std::u16string_view xmlNamespace = u"http://www.w3.org/XML/1998/namespace";
constexpr std::u16string_view xlinkNamespace = u"http://www.w3.org/1999/xlink";
constexpr int questionsOfMatcher = 1000;

/// An element of a member; -1 when there is none.
struct Place {
    int member = -1;
    int element = -1;

    explicit operator bool() const { return element >= 0; }
    friend bool operator==(const Place&, const Place&) = default;
};

/// What the enumerations of one service share.
class Service final : public IXSchema {
  public:
    Service(std::shared_ptr<const SchemaSet> schemas, SchemaContext context)
        : schemas_(std::move(schemas)), context_(std::move(context)) {}

    SmartPtr<SchemaElementEnum> getRootElements() override;
    SmartPtr<SchemaElementEnum> getNamespaceElements(const std::u16string& namespaceName) override;
    SmartPtr<SchemaElementEnum> getChildElements(const std::u16string& namespaceName,
                                                 const std::u16string& localName) override;
    SmartPtr<SchemaAttributeEnum> getElementAttributes(const std::u16string& namespaceName,
                                                       const std::u16string& localName) override;
    SmartPtr<SchemaValueEnum> getAttributeValues(const std::u16string& namespaceName,
                                                 const std::u16string& attributeName) override;
    std::u16string getElementTemplate(const std::u16string& namespaceName,
                                      const std::u16string& localName) override;

    [[nodiscard]] const VocabularyElement& element(const Place& place) const {
        return schemas_->vocabulary(place.member).element(place.element);
    }
    [[nodiscard]] std::u16string elementPrefix(std::u16string_view namespaceName) const;
    /// For each of the places whether the parent's content has room for it.
    [[nodiscard]] std::vector<bool> allowed(const Place& parent, const std::vector<Place>& places) const;
    [[nodiscard]] const SchemaContext& context() const { return context_; }

  private:
    [[nodiscard]] Place find(std::u16string_view namespaceName, std::u16string_view localName) const;
    [[nodiscard]] Place findIn(int member, std::u16string_view namespaceName,
                               std::u16string_view localName) const;
    [[nodiscard]] int answering(std::u16string_view namespaceName) const;
    [[nodiscard]] bool isBound(std::u16string_view namespaceName) const {
        return context_.prefixFor(namespaceName) != nullptr;
    }
    [[nodiscard]] bool isLiteralResult(std::u16string_view namespaceName) const;
    [[nodiscard]] bool isRoot(std::u16string_view namespaceName, std::u16string_view localName) const;
    void addForeign(const Place& parent, std::vector<Place>& children) const;
    void addInstructions(std::vector<Place>& children) const;
    [[nodiscard]] std::optional<std::u16string> attributeName(const ExpandedName& name, int member) const;
    [[nodiscard]] const std::u16string* prefixOnly(std::u16string_view namespaceName) const;
    [[nodiscard]] std::u16string declarationFor(const Place& place) const;

    std::shared_ptr<const SchemaSet> schemas_;
    SchemaContext context_;
    Place parent_ = {}; ///< of the children asked for last
};

class ElementEnum final : public SchemaElementEnum {
  public:
    /// `parent` without an element: nothing is known of what has room.
    ElementEnum(SmartPtr<Service> service, std::vector<Place> places, Place parent, bool isAllowed = true)
        : service_(std::move(service)), places_(std::move(places)), parent_(parent), isAllowed_(isAllowed) {}

    bool next() override { return ++at_ < std::ssize(places_); }
    std::u16string getLocalName() override { return element().name.localName; }
    std::u16string getPrefix() override { return service_->elementPrefix(element().name.namespaceName); }
    std::u16string getNamespace() override { return element().name.namespaceName; }
    std::u16string getDocumentation() override { return element().documentation; }
    bool isAllowedHere() override {
        if (!parent_)
            return isAllowed_;
        if (allowed_.empty())
            allowed_ = service_->allowed(parent_, places_);
        return allowed_[at_];
    }

  private:
    [[nodiscard]] const VocabularyElement& element() const { return service_->element(places_[at_]); }

    SmartPtr<Service> service_;
    std::vector<Place> places_;
    Place parent_;
    bool isAllowed_;
    std::vector<bool> allowed_;
    std::ptrdiff_t at_ = -1;
};

/// An attribute as it is offered.
struct OfferedAttribute {
    std::u16string name = {};
    std::u16string documentation = {};
    bool hasDefault = false;
    bool isRequired = false;
};

class AttributeEnum final : public SchemaAttributeEnum {
  public:
    explicit AttributeEnum(std::vector<OfferedAttribute> attributes) : attributes_(std::move(attributes)) {}

    bool next() override { return ++at_ < std::ssize(attributes_); }
    std::u16string getName() override { return attributes_[at_].name; }
    bool isMarked() override { return attributes_[at_].hasDefault; }
    bool isEmphasised() override { return attributes_[at_].isRequired; }
    std::u16string getDocumentation() override { return attributes_[at_].documentation; }

  private:
    std::vector<OfferedAttribute> attributes_;
    std::ptrdiff_t at_ = -1;
};

class ValueEnum final : public SchemaValueEnum {
  public:
    explicit ValueEnum(std::vector<AttributeValue> values) : values_(std::move(values)) {}

    bool next() override { return ++at_ < std::ssize(values_); }
    std::u16string getValue() override { return values_[at_].text; }
    std::u16string getDocumentation() override { return values_[at_].documentation; }
    std::u16string getExtra() override { return {}; }
    bool isDescription() override { return values_[at_].isDescription; }

  private:
    std::vector<AttributeValue> values_;
    std::ptrdiff_t at_ = -1;
};

bool isPartner(std::u16string_view one, std::u16string_view other) {
    return (one == xsltNamespace && other == xslFoNamespace) ||
           (one == xslFoNamespace && other == xsltNamespace);
}

int Service::answering(std::u16string_view namespaceName) const {
    const auto found = schemas_->answering.find(namespaceName);
    return found == schemas_->answering.end() ? -1 : found->second;
}

Place Service::findIn(int member, std::u16string_view namespaceName, std::u16string_view localName) const {
    const Vocabulary& vocabulary = schemas_->vocabulary(member);
    if (const int found = vocabulary.findElement(namespaceName, localName); found >= 0)
        return {member, found};
    if (member == schemas_->documentType && namespaceName.empty())
        for (const std::u16string& fixed : vocabulary.namespaces())
            if (const int found = vocabulary.findElement(fixed, localName); found >= 0)
                return {member, found};
    return {};
}

Place Service::find(std::u16string_view namespaceName, std::u16string_view localName) const {
    const int member = answering(namespaceName);
    if (member >= 0)
        if (const Place place = findIn(member, namespaceName, localName))
            return place;
    // A schema may hold elements of another's namespace that the other does not have.
    for (int other = 0; other < static_cast<int>(schemas_->members.size()); ++other)
        if (other != member)
            if (const Place place = findIn(other, namespaceName, localName))
                return place;
    return {};
}

std::u16string Service::elementPrefix(std::u16string_view namespaceName) const {
    if (const std::u16string* bound = context_.prefixFor(namespaceName))
        return *bound;
    const int member = answering(namespaceName);
    if (namespaceName.empty() || member < 0)
        return {};
    return std::u16string(schemas_->vocabulary(member).prefixOf(namespaceName));
}

/// The prefix bound to a namespace; the default namespace is none for attributes.
const std::u16string* Service::prefixOnly(std::u16string_view namespaceName) const {
    for (const auto& [prefix, name] : context_.bindings)
        if (name == namespaceName && !prefix.empty())
            return &prefix;
    return nullptr;
}

/// As the attribute is written at the place; nothing when there is no prefix for it.
std::optional<std::u16string> Service::attributeName(const ExpandedName& name, int member) const {
    if (name.namespaceName.empty())
        return name.localName;
    std::u16string_view prefix;
    if (name.namespaceName == xmlNamespace)
        prefix = u"xml";
    else if (const std::u16string* bound = prefixOnly(name.namespaceName))
        prefix = *bound;
    else if (const auto own = schemas_->vocabulary(member).prefixOf(name.namespaceName); !own.empty())
        prefix = own;
    else if (name.namespaceName == xlinkNamespace)
        prefix = u"xlink";
    else
        return std::nullopt;
    return std::u16string(prefix) + u':' + name.localName;
}

bool Service::isLiteralResult(std::u16string_view namespaceName) const {
    return namespaceName != xsltNamespace && isBound(xsltNamespace);
}

bool Service::isRoot(std::u16string_view namespaceName, std::u16string_view localName) const {
    return schemas_->root && schemas_->root->namespaceName == namespaceName &&
           schemas_->root->localName == localName;
}

SmartPtr<SchemaElementEnum> Service::getRootElements() {
    std::vector<Place> roots;
    const auto add = [&](bool isNamed) {
        for (int member = 0; member < static_cast<int>(schemas_->members.size()); ++member) {
            if (!schemas_->members[member].givesRoots || (isNamed && member != schemas_->documentType))
                continue;
            const Vocabulary& vocabulary = schemas_->vocabulary(member);
            for (const int root : vocabulary.roots())
                if (!isNamed || vocabulary.element(root).name.localName == schemas_->rootName)
                    roots.push_back({member, root});
        }
    };
    if (!schemas_->rootName.empty())
        add(true);
    if (roots.empty())
        add(false);
    const bool isFirst = context_.siblingsBefore.empty() && context_.siblingsAfter.empty();
    return new ElementEnum(this, std::move(roots), {}, isFirst);
}

SmartPtr<SchemaElementEnum> Service::getNamespaceElements(const std::u16string& namespaceName) {
    std::vector<Place> places;
    if (const int member = answering(namespaceName); member >= 0)
        for (const int element : schemas_->vocabulary(member).elementsOf(namespaceName))
            places.push_back({member, element});
    // Formatting objects below an instruction of XSLT stand where it has room for them.
    const bool isMatched =
        parent_ && namespaceName == xslFoNamespace && element(parent_).name.namespaceName == xsltNamespace;
    return new ElementEnum(this, std::move(places), isMatched ? parent_ : Place());
}

/// What wildcards of the parent's content let in.
void Service::addForeign(const Place& parent, std::vector<Place>& children) const {
    const Vocabulary& own = schemas_->vocabulary(parent.member);
    const VocabularyElement& declared = own.element(parent.element);
    if (declared.wildcards.empty())
        return;
    const std::u16string& parentNamespace = declared.name.namespaceName;
    for (const auto& [name, member] : schemas_->answering) {
        const bool isOwn = member == parent.member;
        const auto lets = [&, &name = name](int wildcard) {
            const Wildcard& model = own.wildcard(wildcard);
            return model.allows(name) && !(isOwn && model.isExcept);
        };
        if (isPartner(parentNamespace, name) || std::ranges::none_of(declared.wildcards, lets))
            continue;
        if (schemas_->members[member].isBuiltIn && !isBound(name))
            continue;
        const Vocabulary& vocabulary = schemas_->vocabulary(member);
        const auto all = vocabulary.elementsOf(name);
        const auto isRootElement = [&](int element) { return vocabulary.element(element).isRoot; };
        const bool wantsAll = parentNamespace == xsltNamespace || std::ranges::none_of(all, isRootElement);
        for (const int id : all) {
            const Place place{member, id};
            const bool isListed = isOwn && std::ranges::find(children, place) != children.end();
            if (!isListed && (wantsAll || isRootElement(id)))
                children.push_back(place);
        }
    }
}

/// What may stand in a template of XSLT, but for its parameters.
void Service::addInstructions(std::vector<Place>& children) const {
    const Place body = find(xsltNamespace, u"template");
    if (!body)
        return;
    for (const int child : element(body).children)
        if (schemas_->vocabulary(body.member).element(child).name.localName != u"param")
            children.push_back({body.member, child});
}

SmartPtr<SchemaElementEnum> Service::getChildElements(const std::u16string& namespaceName,
                                                      const std::u16string& localName) {
    parent_ = find(namespaceName, localName);
    std::vector<Place> children;
    if (parent_) {
        for (const int child : element(parent_).children)
            children.push_back({parent_.member, child});
        addForeign(parent_, children);
    }
    if (isLiteralResult(namespaceName) && namespaceName != xslFoNamespace)
        addInstructions(children);
    return new ElementEnum(this, std::move(children), parent_);
}

std::vector<bool> Service::allowed(const Place& parent, const std::vector<Place>& places) const {
    const bool isXslt = element(parent).name.namespaceName == xsltNamespace;
    const auto siblingOf = [&](const ExpandedName& name) {
        const Place place = findIn(parent.member, name.namespaceName, name.localName);
        return ContentMatcher::Sibling{place.element, name.namespaceName};
    };
    bool isBeforeComplete = context_.isBeforeComplete;
    const auto siblingsOf = [&](const std::vector<ExpandedName>& names) {
        std::vector<ContentMatcher::Sibling> siblings;
        for (const ExpandedName& name : names) {
            // What an instruction puts there is not known.
            if (!isXslt && name.namespaceName == xsltNamespace)
                isBeforeComplete = isBeforeComplete && &names != &context_.siblingsBefore;
            else
                siblings.push_back(siblingOf(name));
        }
        return siblings;
    };
    const auto before = siblingsOf(context_.siblingsBefore);
    const auto after = siblingsOf(context_.siblingsAfter);
    std::vector<ContentMatcher::Sibling> candidates;
    for (const Place& place : places)
        candidates.push_back(place.member == parent.member
                                 ? ContentMatcher::Sibling{place.element, element(place).name.namespaceName}
                                 : siblingOf(element(place).name));
    std::vector<bool> result = schemas_->members[parent.member].use->matcher().allowed(
        element(parent).content, before, after, isBeforeComplete, candidates);
    for (std::size_t i = 0; i < places.size(); ++i)
        if (!isXslt && element(places[i]).name.namespaceName == xsltNamespace)
            result[i] = true;
    return result;
}

SmartPtr<SchemaAttributeEnum> Service::getElementAttributes(const std::u16string& namespaceName,
                                                            const std::u16string& localName) {
    std::vector<OfferedAttribute> offered;
    const auto add = [&](OfferedAttribute attribute) {
        if (std::ranges::find(offered, attribute.name, &OfferedAttribute::name) == offered.end())
            offered.push_back(std::move(attribute));
    };
    const Place place = find(namespaceName, localName);
    if (place)
        for (const AttributeUse& use : element(place).attributes) {
            const VocabularyAttribute& attribute =
                schemas_->vocabulary(place.member).attribute(use.attribute);
            if (const auto name = attributeName(attribute.name, place.member))
                add({*name, attribute.documentation, attribute.hasDefault, use.isRequired});
        }
    if (isLiteralResult(namespaceName))
        for (const VocabularyAttribute& attribute : xsltAttributesOnOtherElements())
            if (const std::u16string* prefix = prefixOnly(xsltNamespace))
                add({.name = *prefix + u':' + attribute.name.localName,
                     .documentation = attribute.documentation});
    const bool isBuiltIn = namespaceName == xsltNamespace || namespaceName == xslFoNamespace;
    if (const std::u16string* prefix = prefixOnly(schemaInstanceNamespace); prefix && !isBuiltIn) {
        add({.name = *prefix + u":nil"});
        add({.name = *prefix + u":type"});
        if (isRoot(namespaceName, localName)) {
            add({.name = *prefix + u":noNamespaceSchemaLocation"});
            add({.name = *prefix + u":schemaLocation"});
        }
    }
    return new AttributeEnum(std::move(offered));
}

SmartPtr<SchemaValueEnum> Service::getAttributeValues(const std::u16string& namespaceName,
                                                      const std::u16string& attributeName) {
    std::vector<AttributeValue> values;
    const std::size_t colon = attributeName.find(u':');
    const std::u16string prefix = colon == std::u16string::npos ? u"" : attributeName.substr(0, colon);
    if (prefix == u"xmlns" || attributeName == u"xmlns") {
        for (const auto& [name, member] : schemas_->answering)
            if (!name.empty())
                values.push_back({.text = name});
        return new ValueEnum(std::move(values));
    }
    ExpandedName name{{}, colon == std::u16string::npos ? attributeName : attributeName.substr(colon + 1)};
    int member = answering(namespaceName);
    if (member < 0 && namespaceName.empty())
        member = schemas_->documentType;
    if (prefix == u"xml")
        name.namespaceName = xmlNamespace;
    else if (!prefix.empty())
        name.namespaceName = context_.namespaceOf(prefix);
    if (member >= 0) {
        const Vocabulary& vocabulary = schemas_->vocabulary(member);
        std::u16string_view elements = namespaceName;
        if (namespaceName.empty() && member == schemas_->documentType && !vocabulary.namespaces().empty())
            elements = vocabulary.namespaces().front();
        const auto known = vocabulary.attributeValues(elements, name);
        values.assign(known.begin(), known.end());
    }
    if (values.empty() && isLiteralResult(namespaceName))
        for (const VocabularyAttribute& attribute : xsltAttributesOnOtherElements())
            if (attribute.name == name)
                values = attribute.values;
    if (values.empty() && name == ExpandedName{std::u16string(schemaInstanceNamespace), u"nil"})
        values = {{.text = u"true"}, {.text = u"false"}};
    if (values.empty() && name == ExpandedName{std::u16string(xmlNamespace), u"space"})
        values = {{.text = u"default"}, {.text = u"preserve"}};
    return new ValueEnum(std::move(values));
}

/// The namespace declaration that an element needs at the place; empty when it needs none or none can be
/// written.
std::u16string Service::declarationFor(const Place& place) const {
    const std::u16string& name = element(place).name.namespaceName;
    if (isBound(name))
        return {};
    const std::u16string prefix = elementPrefix(name);
    const std::u16string_view inForce = context_.namespaceOf(prefix);
    // A prefix of the two that mean their namespace even where nothing binds them.
    const bool isKnown =
        (prefix == u"xsl" && name == xsltNamespace) || (prefix == u"fo" && name == xslFoNamespace);
    const bool isByDtd = place.member == schemas_->documentType && prefix.empty();
    if (inForce == name || (inForce.empty() && (isKnown || isByDtd)))
        return {};
    if (name.find_first_of(u"_*\"&<") != std::u16string::npos)
        return {};
    return (prefix.empty() ? u"xmlns=\"" : u"xmlns:" + prefix + u"=\"") + name + u'"';
}

std::u16string Service::getElementTemplate(const std::u16string& namespaceName,
                                           const std::u16string& localName) {
    const Place place = find(namespaceName, localName);
    if (!place)
        return {};
    const auto ofElement = [this](std::u16string_view name) { return elementPrefix(name); };
    const auto ofAttribute = [&](std::u16string_view name) {
        const auto written = attributeName({std::u16string(name), u""}, place.member);
        return written ? written->substr(0, written->size() - 1) : std::u16string();
    };
    const Vocabulary& vocabulary = schemas_->vocabulary(place.member);
    std::u16string text = elementTemplate(vocabulary, place.element, ofElement, ofAttribute);
    if (isBound(namespaceName)) {
        // A template written by hand declares its namespace.
        const std::u16string declared =
            u"xmlns:" + std::u16string(vocabulary.prefixOf(namespaceName)) + u"=\"" + namespaceName + u'"';
        if (const std::size_t at = text.find(declared); at != std::u16string::npos) {
            const std::size_t from = at > 0 && text[at - 1] == u' ' ? at - 1 : at;
            text.erase(from, at - from + declared.size());
        }
        return text;
    }
    const std::u16string declaration = declarationFor(place);
    const std::u16string start = declaration.substr(0, declaration.find(u'"') + 1);
    if (declaration.empty() || text.find(start) != std::u16string::npos)
        return text;
    const bool hasAttributes = text.find_first_of(u">/*") != 0;
    return declaration + (hasAttributes ? u" " : u"") + text;
}

} // namespace

ContentMatcher& VocabularyInUse::matcher() {
    if (!matcher_ || ++questions_ > questionsOfMatcher) {
        matcher_ = std::make_unique<ContentMatcher>(*vocabulary_);
        questions_ = 0;
    }
    return *matcher_;
}

SmartPtr<IXSchema> makeSchemaService(std::shared_ptr<const SchemaSet> schemas, SchemaContext context) {
    return new Service(std::move(schemas), std::move(context));
}

} // namespace tavrin
