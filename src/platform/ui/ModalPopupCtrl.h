#pragma once

#include "platform/ui/CWnd.h"

namespace tavrin {

/// Where a window of `size` goes that belongs to a line of text, whose box on the screen is `line`: its top
/// left corner below the line's left end; above the line when there is no room below and more above; always
/// inside `area`, as far as it fits.
[[nodiscard]] CRect placeAtLine(const CRect& line, CSize size, const CRect& area);
/// Where a window goes that explains another: right of it, or left of it when there is no room; empty when
/// there is none on either side.
[[nodiscard]] CRect placeBeside(const CRect& window, CSize size, const CRect& area);

/// A popup that is shown at a line of text and has the keyboard until its window is destroyed.
class ModalPopupCtrl {
  public:
    explicit ModalPopupCtrl(CWnd& owner) : owner_(owner) {}
    ModalPopupCtrl(const ModalPopupCtrl&) = delete;
    ModalPopupCtrl& operator=(const ModalPopupCtrl&) = delete;
    virtual ~ModalPopupCtrl() = default;

    /// Creates the window, shows it below or above the line of text whose middle `point` lies on (on the
    /// screen), and returns when the window has been destroyed: by what the user chose, or since the user
    /// turned to something else. The owner may be gone by then. Must not be called while it runs.
    void Track(CPoint point, CSize size, int lineHeight, bool reserved);

  protected:
    /// Makes the window, hidden, as a popup of `parent` and as large as it should be, and returns it; null
    /// when that can't be done.
    virtual CWnd* Create(CWnd* parent, CSize size) = 0;

    /// The window stands where it belongs.
    virtual void OnShown() {}

  private:
    CWnd& owner_;
};

} // namespace tavrin
