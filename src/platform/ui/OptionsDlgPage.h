#pragma once

#include "platform/ui/CDialog.h"

namespace tavrin {

/// One page of a dialog of options.
class OptionsDlgPage : public CDialog {
  public:
    using CDialog::CDialog;

    /// Writes the page's fields to the settings.
    virtual void save() = 0;
    /// What the dialog's OK does on this page: reads the controls and saves. False when the content of a
    /// control was refused; nothing is written then.
    bool confirm() {
        if (!UpdateData(true))
            return false;
        save();
        return true;
    }
};

} // namespace tavrin
