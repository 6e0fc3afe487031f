#pragma once

#include "platform/ui/CFrameWnd.h"

namespace tavrin {

class TextEditorCtrl;

/// The small frame between a host's window and the editor in it. Help requests go up to the host. Deletes
/// itself with its window, which goes with the host's, and tells the control, which may outlive it.
class TextEditorCtrlFrameWnd : public CFrameWnd {
  public:
    TextEditorCtrlFrameWnd(Platform& platform, TextEditorCtrl& control)
        : CFrameWnd(platform), control_(&control) {}
    /// Without telling the control. Whoever made a frame that never got a window deletes it.
    ~TextEditorCtrlFrameWnd() override = default;

    /// The control is going.
    void forgetControl();

  protected:
    [[nodiscard]] const MessageMap& GetMessageMap() const override;
    /// Asks the windows around, innermost first; 1 when one of them answered, 0 when none did.
    LRESULT OnCommandHelp(const MSG& message);
    void PostNcDestroy() override;

  private:
    TextEditorCtrl* control_;
};

} // namespace tavrin
