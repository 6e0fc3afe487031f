// Search while the text is typed. Every step looks from the same start for all that was typed.

#include "buffer/Buffer.h"
#include "view/CTextEditorView.h"

#include <utility>

namespace tavrin {

void CTextEditorView::setStartIncSrcLineCol(int line, int col) {
    incSearchStartLine_ = line;
    incSearchStartCol_ = col;
}

void CTextEditorView::startIncrementalSearch(int line, int col) {
    endIncrementalSearch();
    setStartIncSrcLineCol(line, col);
    incSearchActive_ = true;
}

void CTextEditorView::startIncrementalSearch() {
    endIncrementalSearch();
    normalizePositions();
    invalidateSelection();
    updatePivot(); // steps start at the later of start and pivot
    startIncrementalSearch(caretLine_, caretCol_);
    setstatusbar(incSearchText_);
}

void CTextEditorView::endIncrementalSearch() {
    if (incSearchActive_)
        onEndIncSearch();
}

void CTextEditorView::incrementalSearch(UINT nChar, UINT nRepCnt) {
    normalizePositions();
    invalidateSelection();
    const Position before{caretLine_, caretCol_};
    const Position start = limited({incSearchStartLine_, incSearchStartCol_});
    caretLine_ = start.line;
    caretCol_ = start.col;
    if (nChar != VK_BACK)
        incSearchText_.append(nRepCnt, static_cast<char16_t>(nChar));
    if (!find(incSearchText_, FIND_DOWN)) {
        setCaret(before.line, before.col, false);
        invalidateSelection();
        updatePivot();
    }
    setstatusbar(incSearchText_);
}

void CTextEditorView::OnDeleteEndIncSearch() {
    findStr = std::exchange(incSearchText_, {});
    incSearchActive_ = false;
    setstatusbar({});
}

void CTextEditorView::onEndIncSearch() {
    OnDeleteEndIncSearch();
    invalidateSelection();
}

void CTextEditorView::setstatusbar(std::u16string_view text) {
    if (incSearchActive_)
        showStatus(u"Search for: " + std::u16string(text));
    else
        showStatus(u"Ready");
}

} // namespace tavrin
