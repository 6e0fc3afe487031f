#include "platform/schema/VocabularyBuilder.h"

#include <algorithm>
#include <set>
#include <utility>

namespace tavrin {

VocabularyBuilder::VocabularyBuilder() : vocabulary_(std::make_unique<Vocabulary>()) {}

int VocabularyBuilder::reference(const ExpandedName& name) {
    const int next = vocabulary_->elementCount();
    const auto [at, isNew] = vocabulary_->ids_[name.namespaceName].try_emplace(name.localName, next);
    if (isNew) {
        vocabulary_->elements_.push_back({.name = name});
        declared_.push_back(false);
    }
    return at->second;
}

void VocabularyBuilder::notePrefix(std::u16string_view namespaceName, std::u16string_view prefix) {
    if (!prefix.empty())
        vocabulary_->prefixes_.try_emplace(std::u16string(namespaceName), prefix);
}

void VocabularyBuilder::declare(ElementDeclaration declaration) {
    const int id = reference(declaration.name);
    merge(vocabulary_->elements_[id], declaration);
    declared_[id] = true;
}

void VocabularyBuilder::merge(VocabularyElement& element, ElementDeclaration& declaration) {
    const bool isFirst = !declared_[reference(declaration.name)];
    mergeAttributes(element, declaration, isFirst);
    if (element.documentation.empty())
        element.documentation = std::move(declaration.documentation);
    if (element.writtenTemplate.empty())
        element.writtenTemplate = std::move(declaration.writtenTemplate);
    element.textAllowed |= declaration.textAllowed;
    element.isRoot |= declaration.isRoot;
    element.content.root =
        isFirst ? declaration.content
                : particles().group(ParticleKind::choice, {element.content.root, declaration.content});
}

namespace {

void unite(VocabularyAttribute& into, const VocabularyAttribute& other) {
    for (const AttributeValue& value : other.values)
        if (std::ranges::find(into.values, value.text, &AttributeValue::text) == into.values.end())
            into.values.push_back(value);
    if (into.documentation.empty())
        into.documentation = other.documentation;
    into.hasDefault |= other.hasDefault;
}

} // namespace

void VocabularyBuilder::mergeAttributes(VocabularyElement& element, const ElementDeclaration& declaration,
                                        bool isFirst) {
    std::set<ExpandedName> required;
    for (const auto& [attribute, isRequired] : declaration.attributes) {
        if (isRequired)
            required.insert(attribute.name);
        const auto use = std::ranges::find(element.attributes, attribute.name,
                                           [this](const AttributeUse& u) -> const ExpandedName& {
                                               return vocabulary_->attributes_[u.attribute].name;
                                           });
        if (use == element.attributes.end()) {
            element.attributes.push_back({attributeNumber(attribute), isFirst && isRequired});
        } else {
            VocabularyAttribute united = vocabulary_->attributes_[use->attribute];
            unite(united, attribute);
            use->attribute = attributeNumber(united);
        }
    }
    for (AttributeUse& use : element.attributes)
        use.isRequired &= required.contains(vocabulary_->attributes_[use.attribute].name);
}

int VocabularyBuilder::attributeNumber(const VocabularyAttribute& attribute) {
    std::vector<int>& numbers = attributesByName_[attribute.name];
    for (const int number : numbers)
        if (vocabulary_->attributes_[number] == attribute)
            return number;
    numbers.push_back(static_cast<int>(vocabulary_->attributes_.size()));
    vocabulary_->attributes_.push_back(attribute);
    return numbers.back();
}

std::vector<ExpandedName> VocabularyBuilder::undeclared() const {
    std::vector<ExpandedName> names;
    for (int id = 0; id < vocabulary_->elementCount(); ++id)
        if (!declared_[id])
            names.push_back(vocabulary_->elements_[id].name);
    return names;
}

void VocabularyBuilder::collectChildren(VocabularyElement& element) const {
    std::set<int> seenNodes;
    std::set<int> seenChildren;
    std::vector<int> open = {element.content.root};
    while (!open.empty()) {
        const int node = open.back();
        open.pop_back();
        if (!seenNodes.insert(node).second)
            continue;
        const Particle& particle = vocabulary_->particles_.at(node);
        if (particle.kind == ParticleKind::element) {
            if (declared_[particle.index] && seenChildren.insert(particle.index).second)
                element.children.push_back(particle.index);
        } else if (particle.kind == ParticleKind::wildcard) {
            if (std::ranges::find(element.wildcards, particle.index) == element.wildcards.end())
                element.wildcards.push_back(particle.index);
        }
        open.insert(open.end(), particle.parts.rbegin(), particle.parts.rend());
    }
}

void VocabularyBuilder::collectValues(const VocabularyElement& element) {
    for (const AttributeUse& use : element.attributes) {
        const VocabularyAttribute& attribute = vocabulary_->attributes_[use.attribute];
        if (attribute.values.empty())
            continue;
        auto& values = vocabulary_->values_[{element.name.namespaceName, attribute.name}];
        for (const AttributeValue& value : attribute.values)
            if (std::ranges::find(values, value.text, &AttributeValue::text) == values.end())
                values.push_back(value);
    }
}

std::shared_ptr<const Vocabulary> VocabularyBuilder::finish() {
    for (int id = 0; id < vocabulary_->elementCount(); ++id) {
        VocabularyElement& element = vocabulary_->elements_[id];
        if (!declared_[id]) {
            vocabulary_->ids_[element.name.namespaceName].erase(element.name.localName);
            continue;
        }
        collectChildren(element);
        collectValues(element);
        if (element.isRoot)
            vocabulary_->roots_.push_back(id);
        auto& elements = vocabulary_->byNamespace_[element.name.namespaceName];
        if (elements.empty())
            vocabulary_->namespaces_.push_back(element.name.namespaceName);
        elements.push_back(id);
    }
    std::shared_ptr<const Vocabulary> result = std::move(vocabulary_);
    *this = VocabularyBuilder();
    return result;
}

} // namespace tavrin
