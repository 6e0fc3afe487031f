#include "platform/ui/CListCtrl.h"

#include "platform/core/CharacterClass.h"

#include <algorithm>

namespace tavrin {

namespace {

/// Pixels left and right of a picture and of a text.
constexpr int cellMargin = 3;

bool beginsWith(std::u16string_view text, std::u16string_view prefix) {
    return text.size() >= prefix.size() &&
           std::ranges::equal(prefix, text.substr(0, prefix.size()), {}, foldCase, foldCase);
}

} // namespace

const MessageMap CListCtrl::theMessageMap = [] {
    static constexpr MessageMapEntry rows[] = {
        route<&CListCtrl::OnKeyDown>(WM_KEYDOWN, "OnKeyDown"),
        route<&CListCtrl::OnMouseMove>(WM_MOUSEMOVE, "OnMouseMove"),
        route<&CListCtrl::OnLButtonDown>(WM_LBUTTONDOWN, "OnLButtonDown"),
        route<&CListCtrl::OnLButtonDblClk>(WM_LBUTTONDBLCLK, "OnLButtonDblClk"),
        route<&CListCtrl::OnEraseBkgnd>(WM_ERASEBKGND, "OnEraseBkgnd"),
    };
    return MessageMap{&CScrollView::theMessageMap, rows};
}();

const MessageMap& CListCtrl::GetMessageMap() const {
    return theMessageMap;
}

bool CListCtrl::CreateList(CWnd* parent, const CRect& rect) {
    font_ = platform().createListFont();
    return CreateWindowIn(parent, {.rect = rect, .visible = false, .verticalScrollBar = true, .popup = true});
}

// Items

int CListCtrl::AddItem(std::u16string text, int image) {
    items_.push_back({std::move(text), image});
    return GetItemCount() - 1;
}

int CListCtrl::textLeft() const {
    return cellMargin + (images_ ? images_->GetImageSize().cx + cellMargin : 0);
}

CRect CListCtrl::GetItemRect(int item) const {
    const int top = item * itemHeight_ - GetScrollPos(SB_VERT);
    return {0, top, std::max(columnWidth_, GetClientRect().right), top + itemHeight_};
}

int CListCtrl::MeasureColumn() {
    const std::unique_ptr<CDC> dc = platform().createMeasureDC();
    dc->SelectObject(font_.get());
    textHeight_ = dc->GetTextMetrics().tmHeight;
    itemHeight_ = std::max({1, textHeight_, images_ ? images_->GetImageSize().cy : 0}) +
                  platform().GetSystemMetrics(SM_CYROWSPACE);

    NMCUSTOMDRAW whole{{NM_CUSTOMDRAW}};
    whole.dc = dc.get();
    const bool custom = Reflect(whole) == CDRF_NOTIFYITEMDRAW;
    int widest = 0;
    for (int i = 0; i < GetItemCount(); ++i) {
        prepareItem(*dc, i, custom);
        Item& item = items_[index(i)];
        item.width = dc->GetTextExtent(item.text).cx;
        widest = std::max(widest, item.width);
    }
    return textLeft() + widest + cellMargin;
}

void CListCtrl::SetColumnWidth(int width) {
    columnWidth_ = width;
    const int rows = pageRows();
    SetScrollSizes({width, GetItemCount() * itemHeight_}, {width, rows * itemHeight_}, {1, itemHeight_});
}

int CListCtrl::FindItem(std::u16string_view prefix) const {
    const auto found =
        std::ranges::find_if(items_, [&](const Item& item) { return beginsWith(item.text, prefix); });
    return found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
}

void CListCtrl::SetFocusedItem(int item) {
    if (item != focused_) {
        invalidateItem(focused_);
        focused_ = item;
        invalidateItem(focused_);
        NMHDR changed{LVN_ITEMCHANGED};
        const Watch watch(*this);
        Reflect(changed);
        if (!watch.isAlive())
            return;
    }
    if (item < 0 || !peer())
        return;
    const CRect row = GetItemRect(item);
    const CRect client = GetClientRect();
    if (row.top < 0)
        OnScrollBy({0, row.top}, true);
    else if (row.bottom > client.bottom)
        OnScrollBy({0, row.bottom - std::max(client.bottom, itemHeight_)}, true);
}

int CListCtrl::HitTest(CPoint point) const {
    if (!GetClientRect().PtInRect(point))
        return -1;
    const int item = (point.y + GetScrollPos(SB_VERT)) / itemHeight_;
    return item < GetItemCount() ? item : -1;
}

// Keyboard and mouse

int CListCtrl::pageRows() const {
    return std::max(1, GetClientRect().Height() / itemHeight_);
}

int CListCtrl::itemAfterKey(UINT key) const {
    const int last = GetItemCount() - 1;
    const int top = GetScrollPos(SB_VERT) / itemHeight_;
    const int bottom = std::min(last, top + pageRows() - 1);
    switch (key) {
    case VK_UP:
        return std::max(0, focused_ - 1);
    case VK_DOWN:
        return std::min(last, focused_ + 1);
    case VK_PRIOR: // first to the edge of the page, then by pages that share a row
        return focused_ == top ? std::max(0, top - pageRows() + 1) : top;
    case VK_NEXT:
        return focused_ == bottom ? std::min(last, bottom + pageRows() - 1) : bottom;
    case VK_HOME:
        return 0;
    case VK_END:
        return last;
    default:
        return focused_;
    }
}

void CListCtrl::OnKeyDown(UINT nChar, UINT, UINT) {
    if (!items_.empty())
        SetFocusedItem(itemAfterKey(nChar));
}

void CListCtrl::OnMouseMove(UINT, CPoint point) {
    if (!peer())
        return;
    // A list that appears or scrolls under a pointer at rest does not follow it.
    const CPoint screen = peer()->clientToScreen(point);
    const bool moved = pointer_ && *pointer_ != screen;
    pointer_ = screen;
    const int item = HitTest(point);
    if (moved && item >= 0) {
        const Watch watch(*this);
        SetFocusedItem(item);
        if (!watch.isAlive())
            return;
    }
    showTipFor(item);
}

void CListCtrl::OnLButtonDown(UINT, CPoint point) {
    if (const int item = HitTest(point); item >= 0)
        SetFocusedItem(item);
}

void CListCtrl::OnLButtonDblClk(UINT flags, CPoint point) {
    const Watch watch(*this);
    OnLButtonDown(flags, point);
    if (!watch.isAlive() || HitTest(point) < 0)
        return;
    NMHDR clicked{NM_DBLCLK};
    Reflect(clicked);
}

void CListCtrl::showTipFor(int item) {
    if (item == tipItem_ || !peer())
        return;
    tipItem_ = item;
    const bool cutOff = item >= 0 && textLeft() + items_[index(item)].width + cellMargin > columnWidth_;
    if (cutOff)
        peer()->showTip(GetItemRect(item), items_[index(item)].text);
    else
        peer()->showTip({}, {});
}

bool CListCtrl::OnScrollBy(CSize displacement, bool doScroll) {
    // Rows are drawn anew: what shines through from a moved tip or selection is not worth the saving.
    const int target = std::clamp(GetScrollPos(SB_VERT) + displacement.cy, 0, GetScrollLimit(SB_VERT));
    if (target == GetScrollPos(SB_VERT))
        return false;
    if (doScroll) {
        SetScrollPos(SB_VERT, target);
        Invalidate();
    }
    return true;
}

// Drawing

void CListCtrl::invalidateItem(int item) {
    if (item >= 0)
        InvalidateRect(GetItemRect(item));
}

bool CListCtrl::OnEraseBkgnd(CDC*) {
    return true; // rows and what is below them fill the client area
}

NMCUSTOMDRAW CListCtrl::prepareItem(CDC& dc, int item, bool custom) {
    NMCUSTOMDRAW draw{{NM_CUSTOMDRAW}};
    draw.stage = CDDS_ITEMPREPAINT;
    draw.item = item;
    draw.dc = &dc;
    draw.textColour = platform().GetSysColor(COLOR_WINDOWTEXT);
    dc.SelectObject(font_.get());
    if (custom)
        Reflect(draw);
    return draw;
}

void CListCtrl::OnDraw(CDC* dc) {
    const CRect client = GetClientRect();
    NMCUSTOMDRAW whole{{NM_CUSTOMDRAW}};
    whole.dc = dc;
    const bool custom = Reflect(whole) == CDRF_NOTIFYITEMDRAW;
    int item = GetScrollPos(SB_VERT) / itemHeight_;
    for (; item < GetItemCount() && GetItemRect(item).top < client.bottom; ++item)
        drawItem(*dc, item, custom);
    dc->SelectClipRect(client);
    const int below = item * itemHeight_ - GetScrollPos(SB_VERT);
    dc->FillSolidRect({0, below, client.right, client.bottom}, platform().GetSysColor(COLOR_WINDOW));
}

void CListCtrl::drawItem(CDC& dc, int item, bool custom) {
    const CRect row = GetItemRect(item);
    const NMCUSTOMDRAW draw = prepareItem(dc, item, custom);
    const bool selected = item == focused_;
    dc.SelectClipRect(row);
    dc.FillSolidRect(row, platform().GetSysColor(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
    if (images_ && items_[index(item)].image >= 0) {
        const int height = images_->GetImageSize().cy;
        dc.DrawImage(*images_, items_[index(item)].image, {cellMargin, row.top + (itemHeight_ - height) / 2});
    }
    dc.SetTextColor(selected ? platform().GetSysColor(COLOR_HIGHLIGHTTEXT) : draw.textColour);
    dc.SetBkMode(BackgroundMode::Transparent);
    drawText(dc, item, {textLeft(), row.top + (itemHeight_ - textHeight_) / 2},
             columnWidth_ - textLeft() - cellMargin);
}

void CListCtrl::drawText(CDC& dc, int item, CPoint at, int room) {
    const Item& drawn = items_[index(item)];
    if (drawn.width <= room) {
        dc.TextOut(at.x, at.y, drawn.text);
        return;
    }
    const std::u16string ellipsis = u"\u2026";
    std::vector<int> widths(drawn.text.size());
    dc.GetTextExtentExPoint(drawn.text, widths);
    const int roomBefore = room - dc.GetTextExtent(ellipsis).cx;
    const auto fitting = std::ranges::upper_bound(widths, roomBefore) - widths.begin();
    dc.TextOut(at.x, at.y, drawn.text.substr(0, static_cast<std::size_t>(fitting)) + ellipsis);
}

} // namespace tavrin
