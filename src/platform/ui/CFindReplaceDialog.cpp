#include "platform/ui/CFindReplaceDialog.h"

#include "platform/ui/CWnd.h"

namespace tavrin {

void CFindReplaceDialog::send(CWnd& window, const FINDREPLACE& request) {
    MSG message{.message = Platform::RegisterWindowMessage(messageName)};
    message.data = &request;
    window.SendMessage(message);
}

} // namespace tavrin
