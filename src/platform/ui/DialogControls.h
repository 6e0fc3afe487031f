#pragma once

#include "platform/ui/Constants.h"

#include <string>
#include <string_view>
#include <vector>

/// The controls of dialogs. What a program does to them by these operations notifies nobody; what their user
/// does is sent to the dialog's window.
namespace tavrin {

class DialogControl {
  public:
    DialogControl() = default;
    DialogControl(const DialogControl&) = delete;
    DialogControl& operator=(const DialogControl&) = delete;
    virtual ~DialogControl() = default;
};

/// Notifies EN_CHANGE.
class EditBox : public DialogControl {
  public:
    [[nodiscard]] virtual std::u16string text() const = 0;
    virtual void setText(std::u16string_view text) = 0;
};

class CheckBox : public DialogControl {
  public:
    [[nodiscard]] virtual bool isChecked() const = 0;
    virtual void setChecked(bool checked) = 0;
};

/// Entries sorted by their text without regard to case, each with a number of its owner. Notifies
/// LBN_SELCHANGE.
class ListBox : public DialogControl {
  public:
    [[nodiscard]] int GetCount() const { return static_cast<int>(entries_.size()); }
    /// REQUIRES here and below: 0 <= index < GetCount().
    [[nodiscard]] const std::u16string& GetText(int index) const { return entries_[at(index)].text; }
    [[nodiscard]] int GetItemData(int index) const { return entries_[at(index)].data; }
    void SetItemData(int index, int data) { entries_[at(index)].data = data; }
    /// Returns where the entry came to stand: after those of equal text.
    int AddString(std::u16string_view text);
    /// -1: none.
    [[nodiscard]] virtual int GetCurSel() const = 0;
    virtual void SetCurSel(int index) = 0;

  protected:
    /// Shows an entry that was added. What was chosen before stays so.
    virtual void showEntry(int index, std::u16string_view text) = 0;

  private:
    struct Entry {
        std::u16string text;
        int data = 0;
    };

    [[nodiscard]] static std::size_t at(int index) { return static_cast<std::size_t>(index); }

    std::vector<Entry> entries_;
};

/// A drop-down list of font faces, sorted. Notifies CBN_SELCHANGE.
class FontComboBox : public DialogControl {
  public:
    [[nodiscard]] virtual std::vector<std::u16string> faces() const = 0;
    /// -1: none.
    [[nodiscard]] virtual int GetCurSel() const = 0;
    virtual void SetCurSel(int index) = 0;
    /// The chosen face; empty when none is.
    [[nodiscard]] std::u16string text() const;
    /// Chooses the first face that begins with the text, letters compared without regard to case, in the
    /// order from the entry after `startAfter` (-1: from the first) round to that entry. Without one the
    /// choice stays and the answer is -1.
    int SelectString(int startAfter, std::u16string_view begin);
    /// Tells the face in use before it is looked for. A list that leaves out some faces adds them if it lacks
    /// this one, and while nothing is chosen the box shows the name.
    virtual void announceFace(std::u16string_view name) = 0;
};

/// A drop-down list of colours, 0x00BBGGRR or automaticColour. Notifies CBN_SELCHANGE.
class ColorComboBox : public DialogControl {
  public:
    /// Stands for "the system's colour of this role".
    static constexpr COLORREF automaticColour = 0x2000000;

    virtual void selectColor(COLORREF colour) = 0;
    [[nodiscard]] virtual COLORREF getColor() const = 0;
};

/// Shows the template's text as a sample.
class TextPanel : public DialogControl {
  public:
    /// `size` in points; a platform limits what it can't show.
    virtual void setFont(std::u16string_view face, int size) = 0;
    virtual void setForeColor(COLORREF colour) = 0;
    virtual void setBkColor(COLORREF colour) = 0;
};

/// The controls of one dialog. Lives as long as the dialog's window or shorter.
class DialogControls {
  public:
    DialogControls() = default;
    DialogControls(const DialogControls&) = delete;
    DialogControls& operator=(const DialogControls&) = delete;
    virtual ~DialogControls() = default;

    /// Null when the dialog has no such control, or one without an id.
    [[nodiscard]] virtual DialogControl* find(UINT id) const = 0;
    /// Tells the user in words why the content of a control is refused, and gives the control the focus.
    virtual void refuse(UINT id, std::u16string_view message) = 0;
};

} // namespace tavrin
