#pragma once

#include "platform/ui/DialogControls.h"
#include "platform/ui/DialogTemplate.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavrin {

class CWnd;
class HeadlessPlatform;

/// Passes what the user does with a control on to its dialog.
class HeadlessNotifier {
  public:
    HeadlessNotifier(CWnd& dialog, UINT id) : dialog_(dialog), id_(id) {}
    void notify(UINT notification) const;

  private:
    CWnd& dialog_;
    UINT id_;
};

class HeadlessEditBox final : public EditBox {
  public:
    explicit HeadlessEditBox(HeadlessNotifier notifier) : notifier_(notifier) {}
    [[nodiscard]] std::u16string text() const override { return text_; }
    void setText(std::u16string_view text) override { text_ = text; }
    /// The user replaces the text.
    void enter(std::u16string_view text);

  private:
    HeadlessNotifier notifier_;
    std::u16string text_;
};

class HeadlessCheckBox final : public CheckBox {
  public:
    [[nodiscard]] bool isChecked() const override { return checked_; }
    /// Also what the user does: a check box tells nobody.
    void setChecked(bool checked) override { checked_ = checked; }

  private:
    bool checked_ = false;
};

class HeadlessListBox final : public ListBox {
  public:
    explicit HeadlessListBox(HeadlessNotifier notifier) : notifier_(notifier) {}
    [[nodiscard]] int GetCurSel() const override { return chosen_; }
    void SetCurSel(int index) override { chosen_ = index; }
    /// The user chooses the entry of this text. False: there is none.
    bool choose(std::u16string_view text);

  protected:
    void showEntry(int index, std::u16string_view text) override;

  private:
    HeadlessNotifier notifier_;
    int chosen_ = -1;
};

class HeadlessFontBox final : public FontComboBox {
  public:
    HeadlessFontBox(HeadlessNotifier notifier, const HeadlessPlatform& platform);
    [[nodiscard]] std::vector<std::u16string> faces() const override { return faces_; }
    [[nodiscard]] int GetCurSel() const override { return chosen_; }
    void SetCurSel(int index) override { chosen_ = index; }
    void announceFace(std::u16string_view name) override { announced_ = name; }
    /// The user chooses a face. As every face exists on this platform, one that the list lacks is added.
    void choose(std::u16string_view face);
    /// What the box shows.
    [[nodiscard]] std::u16string shown() const { return chosen_ < 0 ? announced_ : text(); }

  private:
    HeadlessNotifier notifier_;
    std::vector<std::u16string> faces_;
    std::u16string announced_;
    int chosen_ = -1;
};

class HeadlessColourBox final : public ColorComboBox {
  public:
    explicit HeadlessColourBox(HeadlessNotifier notifier) : notifier_(notifier) {}
    void selectColor(COLORREF colour) override { colour_ = colour; }
    [[nodiscard]] COLORREF getColor() const override { return colour_; }
    /// The user chooses a colour.
    void choose(COLORREF colour);

  private:
    HeadlessNotifier notifier_;
    COLORREF colour_ = automaticColour;
};

/// Keeps what it was told to show.
class HeadlessTextPanel final : public TextPanel {
  public:
    explicit HeadlessTextPanel(std::u16string_view sample) : text(sample) {}
    void setFont(std::u16string_view newFace, int newSize) override {
        face = newFace;
        size = newSize;
    }
    void setForeColor(COLORREF colour) override { fore = colour; }
    void setBkColor(COLORREF colour) override { back = colour; }

    const std::u16string text;
    std::u16string face;
    int size = 0; ///< points
    COLORREF fore = 0;
    COLORREF back = 0;
};

/// The controls of a dialog as records; a script or a test plays the user by their operations.
class HeadlessControls final : public DialogControls {
  public:
    HeadlessControls(const HeadlessPlatform& platform, CWnd& dialog, const DialogTemplate& layout);

    [[nodiscard]] DialogControl* find(UINT id) const override;
    void refuse(UINT id, std::u16string_view message) override;

    /// REQUIRES: the template has the id, for a control of that kind.
    template <class Control>
    [[nodiscard]] Control& get(UINT id) const {
        return dynamic_cast<Control&>(*find(id));
    }
    /// The control that has the focus; 0: none of these.
    [[nodiscard]] UINT focus() const { return focus_; }
    void setFocus(UINT id) { focus_ = id; }
    /// What the user was told since the last call.
    [[nodiscard]] std::vector<std::u16string> takeMessages() { return std::exchange(messages_, {}); }

  private:
    std::map<UINT, std::unique_ptr<DialogControl>> controls_;
    UINT focus_ = 0;
    std::vector<std::u16string> messages_;
};

} // namespace tavrin
