// Cut, copy and paste. On the clipboard lines are divided by CR LF, in the editor by LF.

#include "buffer/Buffer.h"
#include "view/CTextEditorView.h"

#include <optional>

namespace tavrin {

bool CTextEditorView::setClipboardText(std::u16string_view text) {
    std::u16string converted;
    converted.reserve(text.size());
    for (const char16_t c : text) {
        if (c == u'\n')
            converted += u'\r';
        converted += c;
    }
    return platform().clipboard().setText(converted);
}

bool CTextEditorView::hasClipboardText() {
    return platform().clipboard().hasText();
}

bool CTextEditorView::getClipboardText(std::u16string& text) {
    const std::optional<std::u16string> found = platform().clipboard().text();
    if (!found)
        return false;
    char16_t previous = 0;
    for (const char16_t c : *found) {
        if (c == 0)
            break;
        if (c == u'\r')
            text += u'\n';
        else if (c != u'\n' || previous != u'\r')
            text += c;
        previous = c;
    }
    return true;
}

void CTextEditorView::OnEditCopy() {
    normalizePositions();
    if (lastLine() < 0)
        return;
    std::u16string text = getSelectedText();
    if (!hasSelection()) { // the whole line, so that pasting it inserts a complete one
        text = getBuffer().getLineText(caretLine_);
        text += u'\n';
    }
    setClipboardText(text);
}

void CTextEditorView::OnEditCut() {
    normalizePositions();
    if (!hasSelection())
        return;
    if (setClipboardText(getSelectedText()))
        eraseAndShow(selectionStart(), selectionEnd());
}

void CTextEditorView::OnEditPaste() {
    std::u16string text;
    if (getClipboardText(text))
        replaceSelection(text, false);
}

void CTextEditorView::OnUpdateOnEditPaste(CCmdUI* state) {
    state->Enable(hasClipboardText());
}

} // namespace tavrin
