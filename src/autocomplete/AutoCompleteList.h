#pragma once

#include "autocomplete/DocumentationPopup.h"
#include "platform/ui/AcceleratorTable.h"
#include "platform/ui/CListCtrl.h"
#include "platform/ui/ModalPopupCtrl.h"

#include <memory>
#include <string>

namespace tavrin {

class CTextEditorView;
class IAutoCompleteListItemDetails;
class IAutoCompleteListItemsCollection;

/// A popup list of candidates at the caret. While it is up it has the keyboard: what is typed goes into the
/// text through the view and at the same time into the prefix that the list focuses candidates by.
///
/// Return, a double-click, a blank, "=", ">" and a double quote accept the candidate in focus; Escape, "!",
/// "[", and moving or deleting beyond either end of what was typed cancel. The character that accepts is not
/// typed: whoever shows the list asks for it.
class AutoCompleteList : public CListCtrl, public ModalPopupCtrl {
  public:
    /// The view and the items outlive the tracking of the list; at least one item. `prefix` stands before the
    /// caret already. `forwardToMainWindow`: the shortcuts of the application's main window work, and
    /// cancel.
    AutoCompleteList(CTextEditorView* view, const IAutoCompleteListItemsCollection* items,
                     const std::u16string& prefix, bool forwardToMainWindow);

    /// Shows what more there is to know of the items; null (the default): nothing.
    void setDetails(const IAutoCompleteListItemDetails* details) { details_ = details; }

    CWnd* Create(CWnd* parent, CSize size) override;

    /// The accepted candidate; -1 for none.
    [[nodiscard]] int getSelIdx() const { return selIdx_; }
    /// The character that accepted; 0 for none.
    [[nodiscard]] unsigned short getAcceptChangesChar() const { return acceptChar_; }

    /// What has been typed since completion began, with what stood there before.
    [[nodiscard]] const std::u16string& getPrefix() const { return prefix_; }
    [[nodiscard]] const IAutoCompleteListItemsCollection& getItems() const { return *items_; }
    [[nodiscard]] const DocumentationPopup& getDocumentation() const { return documentation_; }

    bool PreTranslateMessage(const MSG& message) override;

  protected:
    [[nodiscard]] const MessageMap& GetMessageMap() const override;
    void OnChar(UINT nChar, UINT nRepCnt, UINT nFlags);
    void OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags);
    void OnMouseMove(UINT flags, CPoint point);
    void OnAcceptChanges();
    void OnCancelEdit();
    void OnNMDblclk(NMHDR* notification, LRESULT* result);
    void OnNMCustomdraw(NMHDR* notification, LRESULT* result);
    void OnItemChanged(NMHDR* notification, LRESULT* result);
    /// Focuses the first candidate that begins with the prefix; none when there is no such candidate.
    void selectNearestString();
    void OnShown() override;

  private:
    [[nodiscard]] bool takeEditKey(UINT key);
    [[nodiscard]] const CFont* fontOf(int style) const;

    AcceleratorTable acceleratorTable_;
    int selIdx_ = -1;
    const IAutoCompleteListItemsCollection* items_;
    const IAutoCompleteListItemDetails* details_ = nullptr;
    CTextEditorView* view_;
    std::unique_ptr<CFont> boldFont_;
    std::unique_ptr<CFont> italicFont_;
    std::unique_ptr<CFont> boldItalicFont_;
    std::u16string prefix_;
    std::size_t prefixPos_; ///< where the text's caret stands in prefix_
    unsigned short acceptChar_ = 0;
    bool forwardToMainWindow_;
    DocumentationPopup documentation_;
};

} // namespace tavrin
