#pragma once

#include "platform/ui/CWnd.h"
#include "platform/ui/DialogControls.h"
#include "platform/ui/DialogTemplate.h"

#include <string_view>

namespace tavrin {

class CDialog;

/// One pass of values between a dialog's controls and its fields.
class CDataExchange {
  public:
    CDataExchange(CDialog& dialog, bool saveAndValidate)
        : m_bSaveAndValidate(saveAndValidate), dialog_(dialog) {}

    /// True: from the controls to the fields.
    const bool m_bSaveAndValidate;

    [[nodiscard]] CDialog& dialog() const { return dialog_; }
    /// Refuses the content of a control: tells the user why, gives the control the focus and ends the pass.
    [[noreturn]] void Fail(UINT control, std::u16string_view message);

  private:
    CDialog& dialog_;
};

/// A window with controls, laid out by a template, and fields that the controls show.
class CDialog : public CWnd {
  public:
    /// `layout` outlives the dialog.
    CDialog(Platform& platform, const DialogTemplate& layout) : CWnd(platform), layout_(layout) {}
    ~CDialog() override;

    /// Makes the window in its parent and the controls, runs OnInitDialog and shows the window. Without a
    /// parent the caller places and shows it. False when the platform makes no window.
    bool Create(CWnd* parent);
    /// Carries all values in one direction. False when the content of a control was refused; what comes
    /// after it in the exchange is then not carried.
    bool UpdateData(bool saveAndValidate = true);

    [[nodiscard]] const DialogTemplate& layout() const { return layout_; }
    /// Null while there is no window.
    [[nodiscard]] DialogControls* controls() const { return controls_.get(); }

    /// Brings the values to the controls. True: the dialog gives the focus to the first control.
    virtual bool OnInitDialog();
    /// Names the pairs of control and field, by the functions below.
    virtual void DoDataExchange(CDataExchange* exchange);

  protected:
    void PostNcDestroy() override;

  private:
    const DialogTemplate& layout_;
    std::unique_ptr<DialogControls> controls_;
};

/// Lets `control` point at the control with this id. REQUIRES: the template has one of that kind.
template <class Control>
void DDX_Control(CDataExchange* exchange, UINT id, Control*& control) {
    control = &dynamic_cast<Control&>(*exchange->dialog().controls()->find(id));
}
/// A whole number as the text of an edit box. Reading refuses other text and what lies outside
/// [low, high], and then leaves the field alone.
void DDX_Text(CDataExchange* exchange, UINT id, int& value, int low, int high);
/// 0 or 1 as the mark of a check box.
void DDX_Check(CDataExchange* exchange, UINT id, int& value);

} // namespace tavrin
