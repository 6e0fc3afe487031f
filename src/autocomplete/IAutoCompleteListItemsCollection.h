#pragma once

#include <string>

namespace tavrin {

class CImageList;

/// The candidates of one completion, as a popup list shows them; numbered from 0.
class IAutoCompleteListItemsCollection {
  public:
    [[nodiscard]] virtual int getCount() const = 0;
    /// Null: the list shows no pictures.
    [[nodiscard]] virtual const CImageList* getImageList() const = 0;
    /// What is shown, searched and inserted.
    [[nodiscard]] virtual std::u16string getItemText(int i) const = 0;
    [[nodiscard]] virtual int getItemImage(int i) const = 0;
    /// 1 bold, 2 italic, 3 both, anything else regular.
    [[nodiscard]] virtual int getItemStyle(int i) const = 0;
    /// False for what is there to be read only.
    [[nodiscard]] virtual bool canAcceptItem(int i) const = 0;

  protected:
    ~IAutoCompleteListItemsCollection() = default;
};

/// What more there is to know of the same candidates, for lists that show it.
class IAutoCompleteListItemDetails {
  public:
    /// Plain text; empty when there is none.
    [[nodiscard]] virtual std::u16string getItemDocumentation(int i) const = 0;
    /// False for what the schema knows but has no room for at this place: shown in grey.
    [[nodiscard]] virtual bool isItemAllowedHere(int i) const = 0;

  protected:
    ~IAutoCompleteListItemDetails() = default;
};

} // namespace tavrin
