#pragma once

#include "platform/ui/Constants.h"

#include <string_view>

namespace tavrin {

class CWnd;

/// What a find dialog asks for, and with which options.
enum FindReplaceFlags : UINT {
    FR_DOWN = 0x1, ///< otherwise up
    FR_WHOLEWORD = 0x2,
    FR_MATCHCASE = 0x4,
    FR_FINDNEXT = 0x8,
    FR_REPLACE = 0x10,
    FR_REPLACEALL = 0x20,
    FR_DIALOGTERM = 0x40, ///< it closes; nothing is asked for
};

/// A request of a find dialog: one of the last four flags, the options, and the texts in the dialog.
struct FINDREPLACE {
    UINT Flags = 0;
    std::u16string_view lpstrFindWhat{};
    std::u16string_view lpstrReplaceWith{};
};

/// The desktop's dialog for finding and replacing: modeless, so the text can be used while it is open. Made
/// by Platform::createFindReplaceDialog; deletes itself when it is closed or its parent's window goes, and
/// when Create fails. Any number of them may be open.
class CFindReplaceDialog {
  public:
    /// Messages of this name bring the dialog's requests: the message's data is a FINDREPLACE, valid while it
    /// is handled.
    static constexpr std::string_view messageName = "commdlg_FindReplace";

    CFindReplaceDialog() = default;
    CFindReplaceDialog(const CFindReplaceDialog&) = delete;
    CFindReplaceDialog& operator=(const CFindReplaceDialog&) = delete;
    virtual ~CFindReplaceDialog() = default;

    /// Shows the dialog, with or without what replacing needs. Its requests go to `parent`, a window of the
    /// same platform; its end is the request FR_DIALOGTERM, unless the parent went first. `flags`: the
    /// options that it shows at first. False when it can't be shown.
    virtual bool Create(bool findDialogOnly, std::u16string_view findWhat, std::u16string_view replaceWith,
                        UINT flags, CWnd* parent) = 0;

    /// Sends a request to a window.
    static void send(CWnd& window, const FINDREPLACE& request);
};

} // namespace tavrin
