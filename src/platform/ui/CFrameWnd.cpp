#include "platform/ui/CFrameWnd.h"

namespace tavrin {

const MessageMap CFrameWnd::theMessageMap = [] {
    static constexpr MessageMapEntry rows[] = {
        route<&CFrameWnd::OnSize>(WM_SIZE, "OnSize"),
        route<&CFrameWnd::OnSetFocus>(WM_SETFOCUS, "OnSetFocus"),
    };
    return MessageMap{&CWnd::theMessageMap, rows};
}();

const MessageMap& CFrameWnd::GetMessageMap() const {
    return theMessageMap;
}

void CFrameWnd::SetMessageText(std::u16string_view text) {
    messageText_ = text;
    if (peer())
        peer()->setStatusText(text);
}

void CFrameWnd::OnSize(UINT, int width, int height) {
    if (activeView_)
        activeView_->MoveWindow({0, 0, width, height});
}

void CFrameWnd::OnSetFocus(CWnd*) {
    if (activeView_)
        activeView_->SetFocus();
}

void CFrameWnd::OnDescendantGone(CWnd& window) {
    if (activeView_ == &window)
        activeView_ = nullptr;
}

} // namespace tavrin
