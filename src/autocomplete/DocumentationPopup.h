#pragma once

#include "platform/ui/CWnd.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// A small window beside a list that shows plain text, wrapped; takes no input. Text that is too long ends in
/// an ellipsis.
class DocumentationPopup : public CWnd {
  public:
    using CWnd::CWnd;

    /// Shows the text beside a window of this platform, made on first use as a popup of it; hides what is
    /// shown when the text is empty or there is no room on either side.
    void showBeside(CWnd& list, std::u16string_view text);
    /// What is shown; empty for nothing.
    [[nodiscard]] const std::u16string& text() const { return text_; }

  protected:
    [[nodiscard]] const MessageMap& GetMessageMap() const override;
    LRESULT OnPaint(const MSG& message);

  private:
    void layOut(std::u16string_view text);

    std::u16string text_;
    std::unique_ptr<CFont> font_;
    std::vector<std::u16string> lines_;
    int lineHeight_ = 1;
    CSize size_{};
};

} // namespace tavrin
