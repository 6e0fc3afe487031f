#pragma once

#include "platform/ui/CImageList.h"
#include "platform/ui/CScrollView.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// NM_CUSTOMDRAW: asked of a list before it draws as a whole (CDDS_PREPAINT) and, if the answer to that is
/// CDRF_NOTIFYITEMDRAW, before it draws or measures an item (CDDS_ITEMPREPAINT). The handler may select a
/// font (and answer CDRF_NEWFONT) and set the colour of the text where the item is not selected.
struct NMCUSTOMDRAW : NMHDR {
    UINT stage = CDDS_PREPAINT;
    int item = -1;
    CDC* dc = nullptr;
    COLORREF textColour = 0;
};

/// A list of one column without a header: rows of a picture and a text. At most one item has the focus; it is
/// the selected one. The keys Up, Down, Page Up, Page Down, Home and End move it, and so does the pointer.
/// Text that does not fit ends in an ellipsis and is shown as a tip.
class CListCtrl : public CScrollView {
  public:
    using CScrollView::CScrollView;

    /// As a popup, hidden; the rectangle is on the screen.
    bool CreateList(CWnd* parent, const CRect& rect);
    [[nodiscard]] const CFont* GetFont() const { return font_.get(); }
    /// Null for none. The caller keeps the pictures alive. Items that are there keep their heights until the
    /// column is measured.
    void SetImageList(const CImageList* images) { images_ = images; }
    /// Returns the item's index.
    int AddItem(std::u16string text, int image = -1);

    [[nodiscard]] int GetItemCount() const { return static_cast<int>(items_.size()); }
    [[nodiscard]] const std::u16string& GetItemText(int item) const { return items_[index(item)].text; }
    /// The row in the client area, whether it is visible or not.
    [[nodiscard]] CRect GetItemRect(int item) const;
    [[nodiscard]] int GetItemHeight() const { return itemHeight_; }
    /// The width that the widest item needs. Measures the items anew.
    [[nodiscard]] int MeasureColumn();
    void SetColumnWidth(int width);

    /// The first item whose text begins with `prefix`, ignoring case; -1 when there is none.
    [[nodiscard]] int FindItem(std::u16string_view prefix) const;
    /// -1 for none.
    [[nodiscard]] int GetFocusedItem() const { return focused_; }
    /// Focuses and selects the item, and scrolls it into view; -1 for none.
    void SetFocusedItem(int item);
    /// The item at a point of the client area; -1 when there is none.
    [[nodiscard]] int HitTest(CPoint point) const;

    void OnDraw(CDC* dc) override;
    bool OnScrollBy(CSize displacement, bool doScroll) override;

  protected:
    [[nodiscard]] const MessageMap& GetMessageMap() const override;
    void OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags);
    void OnMouseMove(UINT flags, CPoint point);
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    bool OnEraseBkgnd(CDC* dc);

    static const MessageMap theMessageMap;

  private:
    struct Item {
        std::u16string text;
        int image;
        int width = 0; ///< of the text
    };

    [[nodiscard]] static std::size_t index(int item) { return static_cast<std::size_t>(item); }
    [[nodiscard]] int textLeft() const;
    /// How many rows the client area shows wholly, at least 1.
    [[nodiscard]] int pageRows() const;
    [[nodiscard]] int itemAfterKey(UINT key) const;
    NMCUSTOMDRAW prepareItem(CDC& dc, int item, bool custom);
    void drawItem(CDC& dc, int item, bool custom);
    void drawText(CDC& dc, int item, CPoint at, int room);
    void invalidateItem(int item);
    void showTipFor(int item);

    std::unique_ptr<CFont> font_;
    const CImageList* images_ = nullptr;
    std::vector<Item> items_;
    int itemHeight_ = 1;
    int textHeight_ = 1;
    int columnWidth_ = 0;
    int focused_ = -1;
    int tipItem_ = -1;
    std::optional<CPoint> pointer_; ///< on the screen, where it was seen last
};

} // namespace tavrin
