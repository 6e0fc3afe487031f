#pragma once

#include "autocomplete/IAutoCompleteListItemsCollection.h"
#include "platform/schema/XSchema.h"
#include "platform/ui/CImageList.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tavrin {

/// What a candidate is. An attribute's kind is the sum of Attribute and the two flags below it.
enum AutocompleteItemKind : std::int32_t {
    Attribute = 0,
    MarkedAttribute = 1,
    EmphasisedAttribute = 2,
    Element = 4,
    Value = 6,
    ValueDescription = 7,
};

struct AutocompleteItem {
    std::int32_t kind = Element;
    std::u16string namespaceName; ///< of a value: the schema's extra string
    std::u16string text;          ///< shown, searched and inserted
    std::u16string localName;
    std::u16string documentation = {};
    bool allowedHere = true;
};

/// The candidates of one completion in an XML document, from the schema service in force (XSchema::get). Made
/// for one completion and filled by one of the fill operations, which throw NullPointerException when there
/// is no service.
///
/// Elements are sorted by text, by code units; those of a preferred namespace come first. XSLT and XSL-FO are
/// partners: below an element of one all elements of the other are offered too.
class XmlAutocompleteItemsCollection final : public IAutoCompleteListItemsCollection,
                                             public IAutoCompleteListItemDetails {
  public:
    XmlAutocompleteItemsCollection();

    void fillRootElements();
    /// What may stand in an element.
    void fillChildElements(const char16_t* localName, const char16_t* namespaceName);
    void fillAttributes(const std::u16string& localName, const std::u16string& namespaceName);
    /// In the schema's order.
    void fillAttributeValues(const std::u16string& namespaceName, const std::u16string& attributeName);
    /// Leaves only what the schema has room for at the place.
    void removeNotAllowedHere();

    /// What follows the name of an accepted element, in the template language of the schema service.
    [[nodiscard]] std::u16string getAutofillText(int i) const;

    [[nodiscard]] int getCount() const override { return static_cast<int>(candidates_.size()); }
    [[nodiscard]] const CImageList* getImageList() const override { return &imageList_; }
    [[nodiscard]] std::u16string getItemText(int i) const override { return candidate(i).text; }
    [[nodiscard]] int getItemImage(int i) const override;
    [[nodiscard]] int getItemStyle(int i) const override;
    [[nodiscard]] bool canAcceptItem(int i) const override;
    [[nodiscard]] std::u16string getItemDocumentation(int i) const override;
    [[nodiscard]] bool isItemAllowedHere(int i) const override { return candidate(i).allowedHere; }

    [[nodiscard]] const AutocompleteItem& candidate(int i) const {
        return candidates_[static_cast<std::size_t>(i)];
    }

  private:
    void addAttribute(const std::u16string& name, bool isMarked, bool isEmphasised);
    void addElement(const std::u16string& text, const std::u16string& localName,
                    const std::u16string& namespaceName);
    void addValue(const std::u16string& text, const std::u16string& extra, bool isDescription);
    void addElements(SmartPtr<SchemaElementEnum> elements, bool skipNameless);
    void fillNamespaceElements(std::u16string_view namespaceName);
    void sortItems(std::u16string_view preferredNamespace);

    std::vector<AutocompleteItem> candidates_;
    CImageList imageList_;
};

} // namespace tavrin
