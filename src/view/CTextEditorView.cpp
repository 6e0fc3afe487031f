#include "view/CTextEditorView.h"

#include "buffer/Buffer.h"
#include "document/TextDocument.h"
#include "platform/ui/CFindReplaceDialog.h"

#include <algorithm>
#include <stdexcept>

namespace tavrin {

std::u16string CTextEditorView::findStr;
UINT CTextEditorView::findMsgId = 0;

CTextEditorView::CTextEditorView(Platform& platform)
    : ScrollView(platform), searchFlags_(FIND_DOWN | FIND_WRAP) {
    if (findMsgId == 0)
        findMsgId = Platform::RegisterWindowMessage(CFindReplaceDialog::messageName);
    if (findStr.empty())
        findStr = getfindStringFromKey();
}

CTextEditorView::~CTextEditorView() {
    setFindStringKey(findStr);
}

const MessageMap& CTextEditorView::GetMessageMap() const {
    using V = CTextEditorView;
    static const MessageMapEntry entries[] = {
        route<&V::OnKeyDown>(WM_KEYDOWN, "OnKeyDown"),
        route<&V::OnChar>(WM_CHAR, "OnChar"),
        route<&V::OnSetFocus>(WM_SETFOCUS, "OnSetFocus"),
        route<&V::OnKillFocus>(WM_KILLFOCUS, "OnKillFocus"),
        route<&V::OnLButtonDown>(WM_LBUTTONDOWN, "OnLButtonDown"),
        route<&V::OnMouseWheel>(WM_MOUSEWHEEL, "OnMouseWheel"),
        route<&V::OnSize>(WM_SIZE, "OnSize"),
        route<&V::OnEraseBkgnd>(WM_ERASEBKGND, "OnEraseBkgnd"),
        route<&V::OnContextMenu>(WM_CONTEXTMENU, "OnContextMenu"),
        route<&V::OnSetCursor>(WM_SETCURSOR, "OnSetCursor"),
        route<&V::OnVScroll>(WM_VSCROLL, "OnVScroll"),
        routeCommand<&V::OnEditCopy>(ID_EDIT_COPY, "OnEditCopy"),
        routeCommand<&V::OnEditCut>(ID_EDIT_CUT, "OnEditCut"),
        routeCommand<&V::OnEditPaste>(ID_EDIT_PASTE, "OnEditPaste"),
        routeCommand<&V::OnEditSelectAll>(ID_EDIT_SELECT_ALL, "OnEditSelectAll"),
        routeCommand<&V::OnEditUndo>(ID_EDIT_UNDO, "OnEditUndo"),
        routeCommand<&V::OnEditRedo>(ID_EDIT_REDO, "OnEditRedo"),
        routeUpdate<&V::OnUpdateOnEditPaste>(ID_EDIT_PASTE, "OnUpdateOnEditPaste"),
        routeUpdate<&V::OnUpdateOnEditUndo>(ID_EDIT_UNDO, "OnUpdateOnEditUndo"),
        routeUpdate<&V::OnUpdateOnEditRedo>(ID_EDIT_REDO, "OnUpdateOnEditRedo"),
        routeCommand<&V::OnEditFind>(ID_EDIT_FIND, "OnEditFind"),
        routeCommand<&V::OnEditReplace>(ID_EDIT_REPLACE, "OnEditReplace"),
        routeRegistered<&V::OnFindReplace>(findMsgId, "OnFindReplace"),
        routeCommand<&V::OnFilePrint>(ID_FILE_PRINT, "OnFilePrint"),
        routeCommand<&V::OnFilePrint>(ID_FILE_PRINT_DIRECT, "OnFilePrint"),
        routeCommand<&V::OnFilePrintPreview>(ID_FILE_PRINT_PREVIEW, "OnFilePrintPreview"),
        route<&V::OnLButtonDblClk>(WM_LBUTTONDBLCLK, "OnLButtonDblClk"),
        route<&V::OnRButtonDown>(WM_RBUTTONDOWN, "OnRButtonDown"),
        route<&V::OnRButtonDown>(WM_RBUTTONDBLCLK, "OnRButtonDown"),
        routeCommand<&V::OnAutocompleteListmembers>(ID_AUTOCOMPLETE_LISTMEMBERS, "OnAutocompleteListmembers"),
        // the drag selection
        route<&V::OnMouseMove>(WM_MOUSEMOVE, "OnMouseMove"),
        route<&V::OnLButtonUp>(WM_LBUTTONUP, "OnLButtonUp"),
        route<&V::OnCaptureChanged>(WM_CAPTURECHANGED, "OnCaptureChanged"),
    };
    static const MessageMap map{&CScrollView::theMessageMap, entries};
    return map;
}

bool CTextEditorView::PreCreateWindow(CREATESTRUCT& how) {
    how.visible = false; // the host shows it
    return ScrollView::PreCreateWindow(how);
}

Buffer& CTextEditorView::getBuffer() {
    return getDocument().getBuffer();
}

int CTextEditorView::lastLine() {
    return getBuffer().getLineCount() - 1;
}

CTextEditorView::Position CTextEditorView::limited(Position position) {
    const Buffer& buffer = getBuffer();
    if (buffer.getLineCount() == 0)
        return {0, 0};
    const int line = std::clamp(position.line, 0, buffer.getLineCount() - 1);
    return {line, std::clamp(position.col, 0, buffer.getLineLength(line))};
}

CTextEditorView::Position CTextEditorView::selectionStart() const {
    return std::min(Position{caretLine_, caretCol_}, Position{pivotLine_, pivotCol_});
}

CTextEditorView::Position CTextEditorView::selectionEnd() const {
    return std::max(Position{caretLine_, caretCol_}, Position{pivotLine_, pivotCol_});
}

void CTextEditorView::normalizePositions() {
    const Position caret = limited({caretLine_, caretCol_});
    const Position pivot = limited({pivotLine_, pivotCol_});
    caretLine_ = caret.line;
    caretCol_ = caret.col;
    pivotLine_ = pivot.line;
    pivotCol_ = pivot.col;
}

void CTextEditorView::checkInvariants() {
    const auto require = [](bool holds, const char* what) {
        if (!holds)
            throw std::logic_error(what);
    };
    const Position caret{caretLine_, caretCol_};
    const Position pivot{pivotLine_, pivotCol_};
    require(limited(caret) == caret, "the caret lies outside the text");
    require(limited(pivot) == pivot, "the pivot lies outside the text");
    require(navColumn_ >= 0, "the navigation column is negative");
    require(lineHeight_ >= 1, "lines have no height");
    require(charWidth_ >= 0, "the scroll unit is negative");
    for (const ScrollBarKind bar : {SB_HORZ, SB_VERT})
        require(GetScrollPos(bar) >= 0 && GetScrollPos(bar) <= GetScrollLimit(bar),
                "a scroll position lies outside its range");
    require(!dragging_ || !peer() || peer()->hasCapture(), "a drag goes on without the mouse capture");
    require(incSearchActive_ || incSearchText_.empty(), "an ended incremental search kept its text");
}

} // namespace tavrin
