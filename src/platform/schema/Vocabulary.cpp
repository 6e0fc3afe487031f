#include "platform/schema/Vocabulary.h"

namespace tavrin {

int Vocabulary::findElement(std::u16string_view namespaceName, std::u16string_view localName) const {
    const auto names = ids_.find(namespaceName);
    if (names == ids_.end())
        return -1;
    const auto id = names->second.find(localName);
    return id == names->second.end() ? -1 : id->second;
}

std::span<const int> Vocabulary::elementsOf(std::u16string_view namespaceName) const {
    const auto elements = byNamespace_.find(namespaceName);
    return elements == byNamespace_.end() ? std::span<const int>() : elements->second;
}

std::span<const AttributeValue> Vocabulary::attributeValues(std::u16string_view elementNamespace,
                                                            const ExpandedName& attribute) const {
    const auto values = values_.find({std::u16string(elementNamespace), attribute});
    return values == values_.end() ? std::span<const AttributeValue>() : values->second;
}

const VocabularyAttribute* Vocabulary::findAttribute(int element, const ExpandedName& name) const {
    for (const AttributeUse& use : elements_[element].attributes)
        if (attributes_[use.attribute].name == name)
            return &attributes_[use.attribute];
    return nullptr;
}

std::u16string_view Vocabulary::prefixOf(std::u16string_view namespaceName) const {
    const auto prefix = prefixes_.find(namespaceName);
    return prefix == prefixes_.end() ? std::u16string_view() : prefix->second;
}

} // namespace tavrin
