#include "autocomplete/AutoCompleteList.h"

#include "autocomplete/IAutoCompleteListItemsCollection.h"
#include "view/CTextEditorView.h"

#include <algorithm>

namespace tavrin {

namespace {

constexpr UINT commandCancel = 1;
constexpr UINT commandAccept = 2;
constexpr int widestColumn = 750; ///< pixels

// Styles of items.
constexpr int bold = 1;
constexpr int italic = 2;
constexpr int boldItalic = 3;

// What an editor of English markup types into a name or a value; the list knows no other characters.
constexpr UINT firstTyped = 0x20;
constexpr UINT lastTyped = 0x7F;

bool accepts(UINT character) {
    return character == u' ' || character == u'=' || character == u'>' || character == u'"';
}

/// A comment, a declaration or a section is being typed.
bool cancels(UINT character) {
    return character == u'!' || character == u'[';
}

} // namespace

AutoCompleteList::AutoCompleteList(CTextEditorView* view, const IAutoCompleteListItemsCollection* items,
                                   const std::u16string& prefix, bool forwardToMainWindow)
    : CListCtrl(view->platform()),
      ModalPopupCtrl(*view),
      acceleratorTable_({{VK_ESCAPE, commandCancel, false}, {VK_RETURN, commandAccept, false}}),
      items_(items),
      view_(view),
      prefix_(prefix),
      prefixPos_(prefix.size()),
      forwardToMainWindow_(forwardToMainWindow),
      documentation_(view->platform()) {}

const MessageMap& AutoCompleteList::GetMessageMap() const {
    using L = AutoCompleteList;
    static const MessageMapEntry entries[] = {
        routeCommand<&L::OnCancelEdit>(commandCancel, "OnCancelEdit"),
        routeCommand<&L::OnAcceptChanges>(commandAccept, "OnAcceptChanges"),
        route<&L::OnMouseMove>(WM_MOUSEMOVE, "OnMouseMove"),
        routeReflected<&L::OnNMDblclk>(NM_DBLCLK, "OnNMDblclk"),
        routeReflected<&L::OnNMCustomdraw>(NM_CUSTOMDRAW, "OnNMCustomdraw"),
        routeReflected<&L::OnItemChanged>(LVN_ITEMCHANGED, "OnItemChanged"),
        route<&L::OnChar>(WM_CHAR, "OnChar"),
        route<&L::OnKeyDown>(WM_KEYDOWN, "OnKeyDown"),
    };
    static const MessageMap map{&CListCtrl::theMessageMap, entries};
    return map;
}

CWnd* AutoCompleteList::Create(CWnd* parent, CSize size) {
    if (!CreateList(parent, {0, 0, size.cx, size.cy}))
        return nullptr;
    boldFont_ = platform().createFontLike(*GetFont(), {.bold = true});
    boldItalicFont_ = platform().createFontLike(*GetFont(), {.bold = true, .italic = true});
    italicFont_ = platform().createFontLike(*GetFont(), {.italic = true});
    const bool hasImages = items_->getImageList() != nullptr;
    SetImageList(items_->getImageList());
    const int count = items_->getCount();
    for (int i = 0; i < count; ++i)
        AddItem(items_->getItemText(i), hasImages ? items_->getItemImage(i) : -1);

    const int width = std::min(MeasureColumn(), widestColumn);
    const int wholeRows = std::max(1, size.cy / GetItemHeight());
    const int height = std::min(wholeRows, count) * GetItemHeight();
    MoveWindow({0, 0, width + platform().GetSystemMetrics(SM_CXVSCROLL), height});
    SetColumnWidth(width);
    if (!prefix_.empty())
        selectNearestString();
    return this;
}

void AutoCompleteList::selectNearestString() {
    SetFocusedItem(FindItem(prefix_));
}

// Keyboard

bool AutoCompleteList::PreTranslateMessage(const MSG& message) {
    if (message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST) {
        if (acceleratorTable_.translate(*this, message))
            return true;
        CWnd* main = forwardToMainWindow_ ? platform().mainWindow() : nullptr;
        if (main && main->PreTranslateMessage(message)) {
            OnCancelEdit();
            return true;
        }
    }
    return CListCtrl::PreTranslateMessage(message);
}

void AutoCompleteList::OnChar(UINT nChar, UINT, UINT) {
    if (nChar < firstTyped || nChar > lastTyped)
        return;
    const auto typed = static_cast<char16_t>(nChar);
    if (accepts(nChar)) {
        acceptChar_ = typed;
        OnAcceptChanges();
    } else if (cancels(nChar)) {
        view_->insertChar(typed);
        OnCancelEdit();
    } else {
        prefix_.reserve(prefix_.size() + 1); // both get the character, or neither
        view_->insertChar(typed);
        prefix_.insert(prefixPos_, 1, typed);
        ++prefixPos_;
        selectNearestString();
    }
}

void AutoCompleteList::OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags) {
    if (!takeEditKey(nChar))
        CListCtrl::OnKeyDown(nChar, nRepCnt, nFlags);
}

/// The keys that act on the text. The text changes first, also when the list then closes.
bool AutoCompleteList::takeEditKey(UINT key) {
    const bool atStart = prefixPos_ == 0;
    const bool atEnd = prefixPos_ == prefix_.size();
    switch (key) {
    case VK_BACK:
        view_->deleteChar(true);
        if (atStart) {
            OnCancelEdit();
            return true;
        }
        prefix_.erase(--prefixPos_, 1);
        selectNearestString();
        return true;
    case VK_DELETE:
        view_->deleteChar(false);
        if (atEnd) {
            OnCancelEdit();
            return true;
        }
        prefix_.erase(prefixPos_, 1);
        selectNearestString();
        return true;
    case VK_LEFT:
        view_->moveCaretLeft();
        if (atStart)
            OnCancelEdit();
        else
            --prefixPos_;
        return true;
    case VK_RIGHT:
        view_->moveCaretRight();
        if (atEnd)
            OnCancelEdit();
        else
            ++prefixPos_;
        return true;
    default:
        return false;
    }
}

// Closing

void AutoCompleteList::OnAcceptChanges() {
    selIdx_ = GetFocusedItem();
    if (selIdx_ != -1 && !items_->canAcceptItem(selIdx_))
        selIdx_ = -1;
    DestroyWindow();
}

void AutoCompleteList::OnCancelEdit() {
    DestroyWindow();
}

void AutoCompleteList::OnNMDblclk(NMHDR*, LRESULT* result) {
    if (GetFocusedItem() != -1)
        OnAcceptChanges();
    *result = 0;
}

// Look

const CFont* AutoCompleteList::fontOf(int style) const {
    switch (style) {
    case bold:
        return boldFont_.get();
    case italic:
        return italicFont_.get();
    case boldItalic:
        return boldItalicFont_.get();
    default:
        return nullptr;
    }
}

void AutoCompleteList::OnNMCustomdraw(NMHDR* notification, LRESULT* result) {
    auto& draw = static_cast<NMCUSTOMDRAW&>(*notification);
    *result = CDRF_DODEFAULT;
    if (draw.stage == CDDS_PREPAINT) {
        *result = CDRF_NOTIFYITEMDRAW;
    } else if (draw.stage == CDDS_ITEMPREPAINT) {
        if (details_ && !details_->isItemAllowedHere(draw.item))
            draw.textColour = platform().GetSysColor(COLOR_GRAYTEXT);
        if (const CFont* font = fontOf(items_->getItemStyle(draw.item))) {
            draw.dc->SelectObject(font);
            *result = CDRF_NEWFONT;
        }
    }
}

void AutoCompleteList::OnShown() {
    if (GetFocusedItem() >= 0)
        OnItemChanged(nullptr, nullptr);
}

void AutoCompleteList::OnItemChanged(NMHDR*, LRESULT*) {
    if (!details_ || !IsWindowVisible())
        return;
    const int item = GetFocusedItem();
    documentation_.showBeside(*this, item < 0 ? std::u16string() : details_->getItemDocumentation(item));
}

void AutoCompleteList::OnMouseMove(UINT flags, CPoint point) {
    CListCtrl::OnMouseMove(flags, point);
    if (peer())
        peer()->setCursor(CursorShape::Arrow);
}

} // namespace tavrin
