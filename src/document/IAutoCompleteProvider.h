#pragma once

namespace tavrin {

class CTextEditorView;

/// Completion for a document. Hears of every key and character after the view has handled it.
class IAutoCompleteProvider {
  public:
    virtual ~IAutoCompleteProvider() = default;

    /// Offers what may stand at the caret, as if asked for by the user.
    virtual void autoCompleteAtCrtPosition(CTextEditorView* view) = 0;
    virtual void onKeyDown(CTextEditorView* view, unsigned key) = 0;
    virtual void onChar(CTextEditorView* view, unsigned character) = 0;
};

} // namespace tavrin
