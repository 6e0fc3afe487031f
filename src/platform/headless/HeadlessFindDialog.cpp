#include "platform/headless/HeadlessFindDialog.h"

#include "platform/headless/HeadlessPlatform.h"
#include "platform/ui/CWnd.h"

#include <utility>

namespace tavrin {

bool HeadlessFindDialog::Create(bool findDialogOnly, std::u16string_view initialFind,
                                std::u16string_view initialReplacement, UINT flags, CWnd* parent) {
    if (!parent || !parent->peer()) {
        platform_.discardDialog(*this);
        return false;
    }
    findOnly_ = findDialogOnly;
    findWhat = initialFind;
    replaceWith = initialReplacement;
    options = flags & (FR_DOWN | FR_WHOLEWORD | FR_MATCHCASE);
    parent_ = parent;
    return true;
}

void HeadlessFindDialog::press(UINT action) {
    const std::u16string find = findWhat; // the request may close the dialog
    const std::u16string replacement = replaceWith;
    send(*parent_, {options | action, find, replacement});
}

void HeadlessFindDialog::close() {
    CWnd& window = *parent_;
    const UINT flags = options | FR_DIALOGTERM;
    const std::u16string find = std::move(findWhat);
    const std::u16string replacement = std::move(replaceWith);
    platform_.discardDialog(*this); // this object is gone
    send(window, {flags, find, replacement});
}

} // namespace tavrin
