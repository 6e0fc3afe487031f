#pragma once

#include "platform/ui/CWnd.h"

#include <string>

namespace tavrin {

/// A window around a view: knows the active view, which fills its client area and gets its focus, and shows a
/// line of status text. Deletes itself when its window is destroyed, so it lives on the heap.
class CFrameWnd : public CWnd {
  public:
    using CWnd::CWnd;

    void SetActiveView(CWnd* view) { activeView_ = view; }
    [[nodiscard]] CWnd* GetActiveView() const { return activeView_; }

    void SetMessageText(std::u16string_view text);
    [[nodiscard]] const std::u16string& GetMessageText() const { return messageText_; }

  protected:
    [[nodiscard]] const MessageMap& GetMessageMap() const override;
    void OnSize(UINT kind, int width, int height);
    void OnSetFocus(CWnd* previous);
    void OnDescendantGone(CWnd& window) override;
    void PostNcDestroy() override { delete this; }

    static const MessageMap theMessageMap;

  private:
    CWnd* activeView_ = nullptr;
    std::u16string messageText_;
};

} // namespace tavrin
