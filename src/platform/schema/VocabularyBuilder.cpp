#include "platform/schema/VocabularyBuilder.h"

#include "platform/schema/DatatypeValues.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace tavrin {

VocabularyBuilder::VocabularyBuilder() : vocabulary_(std::make_unique<Vocabulary>()) {}

int VocabularyBuilder::reference(const ExpandedName& name) {
    const int next = vocabulary_->elementCount();
    const auto [at, isNew] = vocabulary_->ids_[name.namespaceName].try_emplace(name.localName, next);
    if (isNew) {
        vocabulary_->elements_.push_back({.name = name});
        contents_.emplace_back();
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
    std::vector<int>& contents = contents_[reference(declaration.name)];
    if (contents.empty() || contents.back() != declaration.content)
        contents.push_back(declaration.content);
}

namespace {

/// A vocabulary that is larger in one of these is made to take memory.
constexpr std::size_t maxUses = 1'000'000;
constexpr std::size_t maxChildren = 2'000'000;
constexpr std::size_t maxSteps = 20'000'000;
constexpr std::size_t maxValues = 300'000;

void unite(VocabularyAttribute& into, const VocabularyAttribute& other) {
    addValues(into.values, other.values);
    if (into.documentation.empty())
        into.documentation = other.documentation;
    into.hasDefault |= other.hasDefault;
}

} // namespace

bool VocabularyBuilder::spend(std::size_t& spent, std::size_t count, std::size_t limit) {
    isCutShort_ |= spent + count > limit;
    if (spent + count > limit)
        return false;
    spent += count;
    return true;
}

void VocabularyBuilder::mergeAttributes(VocabularyElement& element, const ElementDeclaration& declaration,
                                        bool isFirst) {
    std::unordered_map<const ExpandedName*, std::size_t> places;
    for (std::size_t i = 0; i < element.attributes.size(); ++i)
        places.emplace(attributeNames_[element.attributes[i].attribute], i);
    std::unordered_set<const ExpandedName*> required;
    for (const auto& [attribute, isRequired] : declaration.attributes) {
        const ExpandedName* name = &attributesByName_.try_emplace(attribute.name).first->first;
        if (isRequired)
            required.insert(name);
        const auto [place, isNew] = places.try_emplace(name, element.attributes.size());
        if (!isNew) {
            AttributeUse& use = element.attributes[place->second];
            if (vocabulary_->attributes_[use.attribute] == attribute)
                continue;
            VocabularyAttribute united = vocabulary_->attributes_[use.attribute];
            unite(united, attribute);
            use.attribute = attributeNumber(united);
        } else if (spend(uses_, 1, maxUses)) {
            element.attributes.push_back({attributeNumber(attribute), isFirst && isRequired});
        } else {
            return;
        }
    }
    for (AttributeUse& use : element.attributes)
        use.isRequired &= required.contains(attributeNames_[use.attribute]);
}

int VocabularyBuilder::attributeNumber(const VocabularyAttribute& attribute) {
    const auto named = attributesByName_.try_emplace(attribute.name).first;
    std::vector<int>& numbers = named->second;
    for (const int number : numbers)
        if (vocabulary_->attributes_[number] == attribute)
            return number;
    numbers.push_back(static_cast<int>(vocabulary_->attributes_.size()));
    vocabulary_->attributes_.push_back(attribute);
    attributeNames_.push_back(&named->first);
    if (!spend(valueCount_, attribute.values.size(), maxValues))
        vocabulary_->attributes_.back().values.clear();
    return numbers.back();
}

std::vector<ExpandedName> VocabularyBuilder::undeclared() const {
    std::vector<ExpandedName> names;
    for (int id = 0; id < vocabulary_->elementCount(); ++id)
        if (!declared_[id])
            names.push_back(vocabulary_->elements_[id].name);
    return names;
}

void VocabularyBuilder::collectChildren(VocabularyElement& element, Marks& nodes, Marks& children) {
    std::vector<int> open = {element.content.root};
    while (!open.empty() && spend(steps_, 1, maxSteps)) {
        const int node = open.back();
        open.pop_back();
        if (!nodes.insert(node))
            continue;
        const Particle& particle = vocabulary_->particles_.at(node);
        if (particle.kind == ParticleKind::element) {
            if (declared_[particle.index] && children.insert(particle.index) &&
                spend(childCount_, 1, maxChildren))
                element.children.push_back(particle.index);
        } else if (particle.kind == ParticleKind::wildcard) {
            if (std::ranges::find(element.wildcards, particle.index) == element.wildcards.end())
                element.wildcards.push_back(particle.index);
        }
        open.insert(open.end(), particle.parts.rbegin(), particle.parts.rend());
    }
}

void VocabularyBuilder::collectValues(const VocabularyElement& element, SeenValues& seen) {
    for (const AttributeUse& use : element.attributes) {
        const VocabularyAttribute& attribute = vocabulary_->attributes_[use.attribute];
        if (attribute.values.empty() || !seen.attributes.insert(use.attribute).second)
            continue;
        auto& values = vocabulary_->values_[{element.name.namespaceName, attribute.name}];
        auto& texts = seen.texts[attributeNames_[use.attribute]];
        for (const AttributeValue& value : attribute.values)
            if (texts.insert(value.text).second && spend(collectedValues_, 1, maxValues))
                values.push_back(value);
    }
}

std::shared_ptr<const Vocabulary> VocabularyBuilder::finish() {
    Marks nodes(particles().size());
    Marks children(vocabulary_->elementCount());
    std::map<std::u16string_view, SeenValues> seen;
    for (int id = 0; id < vocabulary_->elementCount(); ++id) {
        VocabularyElement& element = vocabulary_->elements_[id];
        if (!declared_[id]) {
            vocabulary_->ids_[element.name.namespaceName].erase(element.name.localName);
            continue;
        }
        element.content.root = particles().group(ParticleKind::choice, std::move(contents_[id]));
        nodes.clear(particles().size());
        children.clear(vocabulary_->elementCount());
        collectChildren(element, nodes, children);
        collectValues(element, seen[element.name.namespaceName]);
        if (element.isRoot)
            vocabulary_->roots_.push_back(id);
        auto& elements = vocabulary_->byNamespace_[element.name.namespaceName];
        if (elements.empty())
            vocabulary_->namespaces_.push_back(element.name.namespaceName);
        elements.push_back(id);
    }
    std::shared_ptr<const Vocabulary> result = std::move(vocabulary_);
    const bool isCutShort = isCutShort_;
    *this = VocabularyBuilder();
    isCutShort_ = isCutShort;
    return result;
}

} // namespace tavrin
