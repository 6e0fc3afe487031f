// Keys and characters, and which command each of them means.

#include "buffer/Buffer.h"
#include "document/IAutoCompleteProvider.h"
#include "document/TextDocument.h"
#include "document/TextUndoScope.h"
#include "view/CTextEditorView.h"
#include "view/EditCommand.h"

namespace tavrin {

namespace {

constexpr UINT firstPrintable = 0x20;

} // namespace

CTextEditorView::Move CTextEditorView::navigationOf(UINT key) {
    using V = CTextEditorView;
    switch (key) {
    case VK_PRIOR:
        return &V::handlePageUp;
    case VK_NEXT:
        return &V::handlePageDown;
    case VK_END:
        return &V::handleEnd;
    case VK_HOME:
        return &V::handleHome;
    case VK_LEFT:
        return &V::handleLeft;
    case VK_UP:
        return &V::handleUp;
    case VK_RIGHT:
        return &V::handleRight;
    case VK_DOWN:
        return &V::handleDown;
    default:
        return nullptr;
    }
}

/// The keys during an incremental search. True: the key was the search's own.
bool CTextEditorView::takeIncSearchKey(UINT key, UINT repeat) {
    if (navigationOf(key) || key == VK_RETURN || key == VK_ESCAPE) {
        onEndIncSearch();
        return false;
    }
    if (key == VK_DELETE) {
        OnDeleteEndIncSearch();
        return false;
    }
    if (key == VK_BACK) {
        invalidateSelection();
        updatePivot();
        for (; repeat > 0 && !incSearchText_.empty(); --repeat)
            incSearchText_.pop_back();
        incrementalSearch(VK_BACK, 0);
    }
    return true;
}

void CTextEditorView::OnKeyDown(UINT nChar, UINT nRepCnt, UINT) {
    if (isDragging()) { // a platform that translates no messages
        if (nChar == VK_ESCAPE)
            endDrag();
        return;
    }
    const bool ctrl = platform().GetKeyState(VK_CONTROL);
    const bool shift = platform().GetKeyState(VK_SHIFT);
    const Move move = navigationOf(nChar);
    const bool edits = nChar == VK_BACK || nChar == VK_RETURN || nChar == VK_DELETE;
    if (incSearchActive_ || move || edits)
        normalizePositions();
    if (incSearchActive_ && takeIncSearchKey(nChar, nRepCnt))
        return;
    if (move) {
        EditCommand command(*this);
        (this->*move)(ctrl, shift);
        command.commit();
    } else if (nChar == VK_BACK) {
        handleBackspace();
    } else if (nChar == VK_RETURN) {
        handleReturn();
    } else if (nChar == VK_DELETE) {
        handleDelete();
    }
}

void CTextEditorView::OnChar(UINT nChar, UINT nRepCnt, UINT) {
    if (isDragging())
        return;
    if (incSearchActive_) {
        incrementalSearch(nChar, nRepCnt);
        return;
    }
    const bool tab = nChar == VK_TAB;
    if (nChar < firstPrintable && !tab)
        return;
    normalizePositions();
    if (tab && caretLine_ != pivotLine_) {
        if (platform().GetKeyState(VK_SHIFT))
            OnUnindentSelection();
        else
            OnIndentSelection();
    } else if (nChar == VK_SPACE && platform().GetKeyState(VK_CONTROL)) {
        OnAutocompleteListmembers();
    } else {
        typeCharacter(static_cast<char16_t>(nChar));
    }
}

void CTextEditorView::typeCharacter(char16_t ch) {
    EditCommand command(*this);
    const TextUndoScope scope(getDocument());
    invalidateSelection();
    eraseSelection();
    moveCaretToSelectionStart();
    insert(caretLine_, caretCol_, ch);
    placeEmptySelection({caretLine_, caretCol_ + 1});
    command.finish([&] {
        showCaretMoved();
        updateNav();
        updateScrollbars();
        redrawToEOP(caretLine_);
    });
}

void CTextEditorView::OnAutocompleteListmembers() {
    normalizePositions();
    if (IAutoCompleteProvider* provider = getDocument().getAutoCompleteProvider())
        provider->autoCompleteAtCrtPosition(this);
}

void CTextEditorView::insertChar(char16_t ch) {
    if (!getDocument().getAutoCompleteProvider())
        return;
    normalizePositions();
    EditCommand command(*this);
    insert(caretLine_, caretCol_, ch);
    placeEmptySelection({caretLine_, caretCol_ + 1});
    command.finish([&] {
        showCaretMoved();
        updateScrollbars();
        redrawToEOP(caretLine_);
    });
}

void CTextEditorView::deleteChar(bool backspace) {
    if (!getDocument().getAutoCompleteProvider())
        return;
    normalizePositions();
    if (backspace)
        handleBackspace();
    else
        handleDelete();
}

void CTextEditorView::moveCaretLeft() {
    if (!getDocument().getAutoCompleteProvider())
        return;
    normalizePositions();
    handleLeft(false, false);
}

void CTextEditorView::moveCaretRight() {
    if (!getDocument().getAutoCompleteProvider())
        return;
    normalizePositions();
    handleRight(false, false);
}

} // namespace tavrin
