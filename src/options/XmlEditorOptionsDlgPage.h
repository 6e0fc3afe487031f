#pragma once

#include "platform/ui/OptionsDlgPage.h"
#include "view/EditorSettings.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace tavrin {

struct ColourPreset;

/// The options page of the editor: font, size, the colours of each display item, line numbers, with a
/// sample of what is chosen. Nothing is written before save(); open editors show it at their next update.
class XmlEditorOptionsDlgPage : public OptionsDlgPage {
  public:
    static constexpr UINT IDD = 3000;

    /// Controls of the page.
    enum ControlId : UINT {
        fontSizeBox = 3003,
        displayItemList = 3007,
        fontListBox = 3008,
        foreColourBox = 3010,
        backColourBox = 3014,
        previewPanel = 3015,
        lineNumbersBox = 3019,
    };

    static constexpr int smallestFontSize = 1;
    static constexpr int largestFontSize = 100;

    explicit XmlEditorOptionsDlgPage(Platform& platform);

    bool OnInitDialog() override;
    void DoDataExchange(CDataExchange* exchange) override;
    /// Writes font, colours and the line-number switch to the settings, as they were chosen last.
    void save() override;

    /// Gives all display items the colours of a preset, as if the user had chosen each. REQUIRES: the window
    /// was made.
    void applyColours(const ColourPreset& preset);
    /// The preset that has the colours chosen at present; null when none has.
    [[nodiscard]] const ColourPreset* currentPreset() const;
    /// Is called whenever a colour was chosen.
    void setColoursHandler(std::function<void()> handler) { onColours_ = std::move(handler); }

    [[nodiscard]] const std::u16string& fontFamily() const { return fontFamily_; }
    [[nodiscard]] int fontSize() const { return fontSize_; }

    [[nodiscard]] const MessageMap& GetMessageMap() const override;

  protected:
    void OnCbnSelchangeFontList();
    void OnLbnSelchangeDisplayItemList();
    void OnCbnSelchangeForeColor();
    void OnCbnSelchangeBackColor();
    void OnEnChangeFontSize();

  private:
    /// By settings key.
    using Colours = std::map<std::string_view, COLORREF>;

    void readColours();
    void fillDisplayItems();
    /// The format code of the chosen display item; -1: none is chosen.
    [[nodiscard]] int chosenCode() const;
    void previewFore(int code, COLORREF fore);
    void previewBack(int code, COLORREF back);
    void coloursChosen() const;

    FontComboBox* fontList_ = nullptr;
    int fontSize_ = 1;
    ListBox* displayItems_ = nullptr;
    ColorComboBox* foreColour_ = nullptr;
    ColorComboBox* backColour_ = nullptr;
    TextPanel* preview_ = nullptr;
    int showLineNumbers_;
    std::u16string fontFamily_;
    Colours foreColours_;
    Colours backColours_;
    std::function<void()> onColours_;
};

} // namespace tavrin
