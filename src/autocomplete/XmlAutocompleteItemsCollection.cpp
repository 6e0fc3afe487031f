#include "autocomplete/XmlAutocompleteItemsCollection.h"

#include "autocomplete/CompletionIcons.h"
#include "platform/core/XmlNamespaces.h"

#include <algorithm>

namespace tavrin {

namespace {

constexpr int elementImage = 0;
constexpr int attributeImage = 1;

} // namespace

XmlAutocompleteItemsCollection::XmlAutocompleteItemsCollection() : imageList_(makeCompletionIcons()) {}

// Filling

void XmlAutocompleteItemsCollection::addAttribute(const std::u16string& name, bool isMarked,
                                                  bool isEmphasised) {
    const int kind = Attribute + (isMarked ? MarkedAttribute : 0) + (isEmphasised ? EmphasisedAttribute : 0);
    candidates_.push_back({kind, {}, name, name});
}

void XmlAutocompleteItemsCollection::addElement(const std::u16string& text, const std::u16string& localName,
                                                const std::u16string& namespaceName) {
    candidates_.push_back({Element, namespaceName, text, localName});
}

void XmlAutocompleteItemsCollection::addValue(const std::u16string& text, const std::u16string& extra,
                                              bool isDescription) {
    candidates_.push_back({isDescription ? ValueDescription : Value, extra, text, text});
}

void XmlAutocompleteItemsCollection::addElements(SmartPtr<SchemaElementEnum> elements, bool skipNameless) {
    while (elements->next()) {
        const std::u16string localName = elements->getLocalName();
        if (skipNameless && localName.empty())
            continue;
        const std::u16string prefix = elements->getPrefix();
        addElement(prefix.empty() ? localName : prefix + u":" + localName, localName,
                   elements->getNamespace());
        candidates_.back().documentation = elements->getDocumentation();
        candidates_.back().allowedHere = elements->isAllowedHere();
    }
}

void XmlAutocompleteItemsCollection::fillRootElements() {
    addElements(XSchema::get()->getRootElements(), true);
    sortItems({});
}

void XmlAutocompleteItemsCollection::fillChildElements(const char16_t* localName,
                                                       const char16_t* namespaceName) {
    const std::u16string_view parentNamespace = namespaceName;
    addElements(XSchema::get()->getChildElements(namespaceName, localName), false);
    if (parentNamespace == xsltNamespace)
        fillNamespaceElements(xslFoNamespace);
    else if (parentNamespace == xslFoNamespace)
        fillNamespaceElements(xsltNamespace);
    sortItems(parentNamespace);
}

void XmlAutocompleteItemsCollection::fillNamespaceElements(std::u16string_view namespaceName) {
    addElements(XSchema::get()->getNamespaceElements(std::u16string(namespaceName)), false);
    sortItems({});
}

void XmlAutocompleteItemsCollection::fillAttributes(const std::u16string& localName,
                                                    const std::u16string& namespaceName) {
    const SmartPtr<SchemaAttributeEnum> attributes =
        XSchema::get()->getElementAttributes(namespaceName, localName);
    while (attributes->next()) {
        addAttribute(attributes->getName(), attributes->isMarked(), attributes->isEmphasised());
        candidates_.back().documentation = attributes->getDocumentation();
    }
    sortItems({});
}

void XmlAutocompleteItemsCollection::fillAttributeValues(const std::u16string& namespaceName,
                                                         const std::u16string& attributeName) {
    const SmartPtr<SchemaValueEnum> values = XSchema::get()->getAttributeValues(namespaceName, attributeName);
    while (values->next()) {
        addValue(values->getValue(), values->getExtra(), values->isDescription());
        candidates_.back().documentation = values->getDocumentation();
    }
}

void XmlAutocompleteItemsCollection::removeNotAllowedHere() {
    std::erase_if(candidates_, [](const AutocompleteItem& item) { return !item.allowedHere; });
}

/// Those of the preferred namespace first, in the order of their texts; without such a namespace, all in that
/// order. The others keep the order that they have.
void XmlAutocompleteItemsCollection::sortItems(std::u16string_view preferredNamespace) {
    const bool all = preferredNamespace.empty();
    std::ranges::stable_sort(candidates_, [&](const AutocompleteItem& a, const AutocompleteItem& b) {
        const bool preferA = all || a.namespaceName == preferredNamespace;
        const bool preferB = all || b.namespaceName == preferredNamespace;
        return preferA && (!preferB || a.text < b.text);
    });
}

// Reading

std::u16string XmlAutocompleteItemsCollection::getAutofillText(int i) const {
    return XSchema::get()->getElementTemplate(candidate(i).namespaceName, candidate(i).localName);
}

int XmlAutocompleteItemsCollection::getItemImage(int i) const {
    const std::int32_t kind = candidate(i).kind;
    if (kind > ValueDescription)
        throwUnreachable("XmlAutocompleteItemsCollection", __LINE__);
    return kind == Element ? elementImage : attributeImage;
}

int XmlAutocompleteItemsCollection::getItemStyle(int i) const {
    switch (candidate(i).kind) {
    case EmphasisedAttribute:
    case EmphasisedAttribute + MarkedAttribute:
        return 1;
    case ValueDescription:
        return 2;
    default:
        return 0;
    }
}

bool XmlAutocompleteItemsCollection::canAcceptItem(int i) const {
    return candidate(i).kind != ValueDescription;
}

std::u16string XmlAutocompleteItemsCollection::getItemDocumentation(int i) const {
    return candidate(i).documentation;
}

} // namespace tavrin
