// The last search text, which all views share and the registry keeps, and the end of an incremental search.
// Nothing starts a search yet: the platform has no find dialog.

#include "view/CTextEditorView.h"

#include <optional>
#include <utility>

namespace tavrin {

namespace {

constexpr std::string_view registryKey = "SOFTWARE\\Tavrin\\Xml Editor";
constexpr std::string_view registryValue = "Find String";
/// Longer values count as unreadable.
constexpr std::size_t maximumStoredLength = 259;

} // namespace

std::u16string CTextEditorView::getfindStringFromKey() {
    Registry& registry = platform().registry();
    if (std::optional<std::u16string> text = registry.readString(registryKey, registryValue))
        if (text->size() <= maximumStoredLength)
            return *std::move(text);
    registry.writeString(registryKey, registryValue,
                         {}); // heals a value of another kind; fails without the key
    return {};
}

void CTextEditorView::setFindStringKey(std::u16string_view text) {
    platform().registry().writeString(registryKey, registryValue, text);
}

void CTextEditorView::OnEditFind() {}

void CTextEditorView::OnEditReplace() {}

LRESULT CTextEditorView::OnFindReplace(const MSG&) {
    return 0;
}

void CTextEditorView::incrementalSearch(UINT, UINT) {
    onEndIncSearch();
}

void CTextEditorView::onEndIncSearch() {
    incSearchActive_ = false;
    incSearchText_.clear();
}

void CTextEditorView::OnDeleteEndIncSearch() {
    onEndIncSearch();
}

} // namespace tavrin
