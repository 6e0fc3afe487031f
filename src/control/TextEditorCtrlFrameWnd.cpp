#include "control/TextEditorCtrlFrameWnd.h"

#include "control/TextEditorCtrl.h"

namespace tavrin {

const MessageMap& TextEditorCtrlFrameWnd::GetMessageMap() const {
    static const MessageMapEntry entries[] = {
        route<&TextEditorCtrlFrameWnd::OnCommandHelp>(WM_COMMANDHELP, "OnCommandHelp"),
    };
    static const MessageMap map{&CFrameWnd::theMessageMap, entries};
    return map;
}

LRESULT TextEditorCtrlFrameWnd::OnCommandHelp(const MSG&) {
    MSG request;
    request.message = WM_COMMANDHELP;
    for (CWnd* window = GetParent(); window; window = window->GetParent())
        if (window->SendMessage(request) != 0)
            return 1;
    return 0;
}

void TextEditorCtrlFrameWnd::forgetControl() {
    control_ = nullptr;
}

void TextEditorCtrlFrameWnd::PostNcDestroy() {
    if (control_)
        control_->frameDestroyed();
    CFrameWnd::PostNcDestroy();
}

} // namespace tavrin
