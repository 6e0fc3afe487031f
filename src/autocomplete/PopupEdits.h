#pragma once

#include "view/CTextEditorView.h"

#include <string>

namespace tavrin {

/// Knows a view's caret line as it is before a popup list edits it, so that the edits can be taken back when
/// a candidate takes the place of what was typed.
class PopupEdits {
  public:
    /// `hasPrefix`: the list filters by text that stands in the line already.
    PopupEdits(CTextEditorView& view, bool hasPrefix);

    [[nodiscard]] bool isViewAlive() const { return watch_.isAlive(); }
    /// Removes what was typed between the former caret and the present one, and puts the caret back. With a
    /// prefix also undoes what was done to that. False, and nothing is changed, when the text is no more what
    /// it was. REQUIRES: the view is alive.
    [[nodiscard]] bool takeBack();

  private:
    void restoreLine();

    CTextEditorView& view_;
    CWnd::Watch watch_;
    bool hasPrefix_;
    unsigned generation_;
    int lineCount_;
    int line_;
    int col_;
    std::u16string text_; ///< of the caret's line
};

} // namespace tavrin
