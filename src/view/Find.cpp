// The find dialog, its requests, and the commands that go on with the last search text, which all views share
// and the registry keeps.

#include "buffer/Buffer.h"
#include "platform/ui/CFindReplaceDialog.h"
#include "platform/ui/CFrameWnd.h"
#include "view/CTextEditorView.h"
#include "view/EditCommand.h"
#include "view/EditorSettings.h"
#include "view/LongSearch.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tavrin {

namespace {

/// Longer values count as unreadable.
constexpr std::size_t maximumStoredLength = 259;

/// The options of a find dialog as search flags.
int searchOptions(UINT flags) {
    int options = FIND_WRAP;
    if (flags & FR_MATCHCASE)
        options |= FIND_MATCH_CASE;
    if (flags & FR_WHOLEWORD)
        options |= FIND_WHOLE_WORD;
    return options | (flags & FR_DOWN ? FIND_DOWN : FIND_UP);
}

UINT dialogFlags(int searchFlags) {
    UINT flags = 0;
    if (searchFlags & FIND_MATCH_CASE)
        flags |= FR_MATCHCASE;
    if (searchFlags & FIND_WHOLE_WORD)
        flags |= FR_WHOLEWORD;
    return searchFlags & FIND_DOWN ? flags | FR_DOWN : flags;
}

std::u16string replacedText(int count) {
    const std::string number = std::to_string(count);
    return u"Replaced " + std::u16string(number.begin(), number.end()) + u" occurences";
}

} // namespace

// Registry

std::u16string CTextEditorView::getfindStringFromKey() {
    Registry& registry = platform().registry();
    if (std::optional<std::u16string> text = registry.readString(settings::findKey, settings::findValue))
        if (text->size() <= maximumStoredLength)
            return *std::move(text);
    registry.writeString(settings::findKey, settings::findValue,
                         {}); // heals a value of another kind; fails without the key
    return {};
}

void CTextEditorView::setFindStringKey(std::u16string_view text) {
    platform().registry().writeString(settings::findKey, settings::findValue, text);
}

// The dialog

std::u16string CTextEditorView::getfindString() {
    if (hasSelection())
        return getSelectedText();
    if (findStr.empty())
        findStr = getfindStringFromKey();
    return findStr;
}

void CTextEditorView::showFindDialog(bool findOnly, std::u16string_view findWhat, UINT flags) {
    platform().createFindReplaceDialog()->Create(
        findOnly, findWhat, findOnly ? std::u16string_view() : std::u16string_view(replaceStr_), flags, this);
}

void CTextEditorView::OnEditFind() {
    normalizePositions();
    showFindDialog(true, getfindString(), dialogFlags(searchFlags_));
}

void CTextEditorView::OnEditReplace() {
    normalizePositions();
    showFindDialog(false, getfindString(), dialogFlags(searchFlags_));
}

LRESULT CTextEditorView::OnFindReplace(const MSG& message) {
    const auto* request = static_cast<const FINDREPLACE*>(message.data);
    if (!request)
        return 0;
    const UINT flags = request->Flags;
    if (flags & FR_DIALOGTERM) {
        showStatus(u"Ready");
    } else if (flags & FR_FINDNEXT) {
        takeRequest(*request);
        if (!find(findStr, searchFlags_) && !searchStopped_)
            report(searchFlags_ & FIND_DOWN ? u"Searched to the end of page, text not found"
                                            : u"Searched to the top of page, text not found");
    } else if (flags & FR_REPLACE) {
        takeRequest(*request);
        replaceStr_ = request->lpstrReplaceWith;
        replace(findStr, replaceStr_, searchFlags_);
    } else if (flags & FR_REPLACEALL) {
        takeRequest(*request);
        replaceStr_ = request->lpstrReplaceWith;
        const int count = replaceAll(findStr, replaceStr_, searchFlags_);
        report(count == 0 ? std::u16string(u"No occurences of the text found") : replacedText(count));
    }
    return 0;
}

void CTextEditorView::takeRequest(const FINDREPLACE& request) {
    searchFlags_ = searchOptions(request.Flags);
    findStr = request.lpstrFindWhat;
}

// Finding

/// `text` by value: it may be the shared search text, which another view changes while the user waits.
bool CTextEditorView::find(std::u16string text, int flags) {
    normalizePositions();
    searchStopped_ = false;
    if (lastLine() < 0 || !LongSearch::canFind(text))
        return false;
    const Position start = flags & FIND_DOWN ? selectionEnd() : selectionStart();
    std::optional<TextMatch> match;
    {
        const std::unique_ptr<Progress> progress = platform().beginProgress(*this, LongTask::Search);
        LongSearch search(getBuffer(), text, flags, *progress);
        match = search.find(start.line, start.col);
        searchStopped_ = search.wasStopped();
    }
    if (!match)
        return false;
    Position pivot{match->line, match->col};
    Position caret{match->endLine, match->endCol};
    if (!(flags & FIND_DOWN))
        std::swap(pivot, caret);
    EditCommand command(*this);
    invalidateSelection();
    setCaret(pivot.line, pivot.col, true);
    updatePivot();
    setCaret(caret.line, caret.col, true);
    invalidateSelection();
    command.commit();
    return true;
}

void CTextEditorView::findAgain(int direction) {
    find(findStr, (searchFlags_ & ~(FIND_DOWN | FIND_UP)) | direction);
}

void CTextEditorView::OnEditFindNext() {
    if (findStr.empty())
        OnEditFind();
    else
        findAgain(FIND_DOWN);
}

void CTextEditorView::OnEditFindPrevious() {
    if (findStr.empty())
        showFindDialog(true, findStr, FR_DOWN);
    else
        findAgain(FIND_UP);
}

/// Makes the selection the search text. False when it is empty or takes more than one line.
bool CTextEditorView::takeSelectedText() {
    normalizePositions();
    if (!hasSelection() || caretLine_ != pivotLine_)
        return false;
    findStr = getSelectedText();
    return true;
}

void CTextEditorView::OnEditFindSelectedNext() {
    if (!takeSelectedText())
        return;
    if (caretCol_ < pivotCol_)
        std::swap(caretCol_, pivotCol_);
    findAgain(FIND_DOWN);
}

void CTextEditorView::OnEditFindSelectedPrev() {
    if (takeSelectedText())
        findAgain(FIND_UP);
}

// Telling the user

void CTextEditorView::OnMemoryExhausted() {
    report(u"There is not enough memory for this.");
}

/// The frame around the window that the view lies in, else that window itself.
CFrameWnd* CTextEditorView::statusFrame() const {
    for (const CWnd* window = GetParent() ? GetParent()->GetParent() : nullptr; window;
         window = window->GetParent())
        if (auto* frame = dynamic_cast<const CFrameWnd*>(window))
            return const_cast<CFrameWnd*>(frame);
    return GetParentFrame();
}

void CTextEditorView::showStatus(std::u16string_view text) {
    if (CFrameWnd* frame = statusFrame())
        frame->SetMessageText(text);
}

void CTextEditorView::report(std::u16string_view text) {
    platform().MessageBeep();
    showStatus(text);
}

} // namespace tavrin
