#pragma once

#include "platform/ui/CFindReplaceDialog.h"

#include <string>

namespace tavrin {

class HeadlessPlatform;

/// A find dialog in memory: what it shows, and buttons that a script or a test presses.
class HeadlessFindDialog final : public CFindReplaceDialog {
  public:
    explicit HeadlessFindDialog(HeadlessPlatform& platform) : platform_(platform) {}

    bool Create(bool findDialogOnly, std::u16string_view findWhat, std::u16string_view replaceWith,
                UINT flags, CWnd* parent) override;

    [[nodiscard]] bool isFindOnly() const { return findOnly_; }
    /// Null before Create.
    [[nodiscard]] CWnd* parent() const { return parent_; }

    std::u16string findWhat;
    std::u16string replaceWith;
    UINT options = 0; ///< FR_DOWN, FR_WHOLEWORD, FR_MATCHCASE

    /// Presses the button of FR_FINDNEXT, FR_REPLACE or FR_REPLACEALL.
    void press(UINT action);
    /// Closes the dialog, which deletes it.
    void close();

  private:
    HeadlessPlatform& platform_;
    bool findOnly_ = false;
    CWnd* parent_ = nullptr;
};

} // namespace tavrin
