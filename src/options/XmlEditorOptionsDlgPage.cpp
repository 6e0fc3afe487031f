#include "options/XmlEditorOptionsDlgPage.h"

#include "options/ColourPresets.h"

#include <algorithm>

namespace tavrin {

namespace {

using settings::ItemColours;
using settings::systemColour;
static_assert(ColorComboBox::automaticColour == systemColour);

constexpr int normalCode = 0;
constexpr int selectionCode = 1;

constexpr const ItemColours& coloursOf(settings::DisplayItem item) {
    return settings::itemColours[static_cast<std::size_t>(item)];
}

struct DisplayEntry {
    std::u16string_view text;
    int code; ///< format code
    const ItemColours& colours;
};

using settings::DisplayItem;

constexpr DisplayEntry displayEntries[] = {
    {u"Normal", normalCode, coloursOf(DisplayItem::Normal)},
    {u"Selected Text", selectionCode, coloursOf(DisplayItem::Selection)},
    {u"CDATA", 9, coloursOf(DisplayItem::CDATA)},
    {u"Comments", 3, coloursOf(DisplayItem::Comments)},
    {u"Punctuation", 10, coloursOf(DisplayItem::Punctuation)},
    {u"Line Numbers", 2, settings::lineNumberColours},
    {u"String", 5, coloursOf(DisplayItem::String)},
    {u"XML Tag", 7, coloursOf(DisplayItem::XmlTag)},
    {u"XML Attribute", 8, coloursOf(DisplayItem::XmlAttribute)},
};

/// Null for a code that has no colours of its own.
const ItemColours* keysOf(int code) {
    const auto* entry = std::ranges::find(displayEntries, code, &DisplayEntry::code);
    return entry == std::end(displayEntries) ? nullptr : &entry->colours;
}

using Page = XmlEditorOptionsDlgPage;

constexpr DialogItem items[] = {
    {0, ControlKind::Label, u"&Font:", {0, 2}, {20, 10}},
    {Page::fontListBox, ControlKind::FontBox, u"", {20, 0}, {142, 107}},
    {0, ControlKind::Label, u"&Size:", {171, 2}, {16, 8}},
    {Page::fontSizeBox, ControlKind::EditBox, u"", {190, 0}, {26, 12}},
    {0, ControlKind::Label, u"&Display Item:", {0, 18}, {41, 8}},
    {Page::displayItemList, ControlKind::ListBox, u"", {0, 29}, {82, 59}},
    {0, ControlKind::Label, u"Item Fore&ground:", {88, 19}, {54, 8}},
    {Page::foreColourBox, ControlKind::ColourBox, u"", {88, 29}, {74, 76}},
    {0, ControlKind::Label, u"Item &Background:", {88, 50}, {57, 8}},
    {Page::backColourBox, ControlKind::ColourBox, u"", {88, 60}, {74, 76}},
    {0, ControlKind::Label, u"&Preview:", {0, 92}, {28, 8}},
    {Page::previewPanel, ControlKind::TextPanel, u"AbBbCcXxZzYy", {0, 102}, {217, 19}},
    {Page::lineNumbersBox, ControlKind::CheckBox, u"Show Line &Numbers", {0, 126}, {80, 10}},
};

constexpr DialogTemplate layoutOfPage{Page::IDD, {223, 155}, u"MS Sans Serif", 8, items};

/// Calls `visit` with the keys of each display item, in the order of the settings.
template <class Visit>
void forEachItem(Visit visit) {
    for (const ItemColours& item : settings::itemColours)
        visit(item);
    visit(settings::lineNumberColours);
}

} // namespace

XmlEditorOptionsDlgPage::XmlEditorOptionsDlgPage(Platform& platform)
    : OptionsDlgPage(platform, layoutOfPage),
      showLineNumbers_(platform.settings().getBoolValue(settings::section, settings::displayLineNumbers,
                                                        settings::defaultDisplayLineNumbers)) {}

const MessageMap& XmlEditorOptionsDlgPage::GetMessageMap() const {
    static constexpr MessageMapEntry rows[] = {
        routeControl<&Page::OnCbnSelchangeFontList>(CBN_SELCHANGE, fontListBox, "OnCbnSelchangeFontList"),
        routeControl<&Page::OnLbnSelchangeDisplayItemList>(LBN_SELCHANGE, displayItemList,
                                                           "OnLbnSelchangeDisplayItemList"),
        routeControl<&Page::OnCbnSelchangeForeColor>(CBN_SELCHANGE, foreColourBox, "OnCbnSelchangeForeColor"),
        routeControl<&Page::OnCbnSelchangeBackColor>(CBN_SELCHANGE, backColourBox, "OnCbnSelchangeBackColor"),
        routeControl<&Page::OnEnChangeFontSize>(EN_CHANGE, fontSizeBox, "OnEnChangeFontSize"),
    };
    static const MessageMap map{&OptionsDlgPage::theMessageMap, rows};
    return map;
}

void XmlEditorOptionsDlgPage::DoDataExchange(CDataExchange* exchange) {
    OptionsDlgPage::DoDataExchange(exchange);
    DDX_Control(exchange, fontListBox, fontList_);
    DDX_Control(exchange, previewPanel, preview_);
    DDX_Text(exchange, fontSizeBox, fontSize_, smallestFontSize, largestFontSize);
    DDX_Control(exchange, displayItemList, displayItems_);
    DDX_Control(exchange, foreColourBox, foreColour_);
    DDX_Control(exchange, backColourBox, backColour_);
    DDX_Check(exchange, lineNumbersBox, showLineNumbers_);
    preview_->setFont(fontFamily_, fontSize_);
}

bool XmlEditorOptionsDlgPage::OnInitDialog() {
    const UserSettings& store = platform().settings();
    fontFamily_ = store.getStringValue(settings::section, settings::fontFamily, settings::defaultFontFamily);
    fontSize_ = store.getIntValue(settings::section, settings::fontSize, settings::defaultFontSize);
    readColours();
    OptionsDlgPage::OnInitDialog();
    fillDisplayItems();
    fontList_->announceFace(fontFamily_);
    fontList_->SelectString(0, fontFamily_); // one that is not here stays the choice until another is made
    displayItems_->SetCurSel(0);
    OnLbnSelchangeDisplayItemList();
    return true;
}

void XmlEditorOptionsDlgPage::readColours() {
    const UserSettings& store = platform().settings();
    const auto read = [&store](std::string_view key, COLORREF byDefault) {
        return static_cast<COLORREF>(store.getIntValue(settings::section, key, static_cast<int>(byDefault)));
    };
    forEachItem([&](const ItemColours& item) {
        foreColours_[item.foreKey] = read(item.foreKey, item.defaultFore);
        backColours_[item.backKey] = read(item.backKey, item.defaultBack);
    });
}

void XmlEditorOptionsDlgPage::fillDisplayItems() {
    for (const DisplayEntry& entry : displayEntries)
        displayItems_->SetItemData(displayItems_->AddString(entry.text), entry.code);
}

int XmlEditorOptionsDlgPage::chosenCode() const {
    const int chosen = displayItems_->GetCurSel();
    return chosen < 0 ? -1 : displayItems_->GetItemData(chosen);
}

// What the user does

void XmlEditorOptionsDlgPage::OnLbnSelchangeDisplayItemList() {
    const int code = chosenCode();
    if (const ItemColours* keys = keysOf(code)) {
        foreColour_->selectColor(foreColours_.at(keys->foreKey));
        backColour_->selectColor(backColours_.at(keys->backKey));
    }
    previewFore(code, foreColour_->getColor());
    previewBack(code, backColour_->getColor());
}

void XmlEditorOptionsDlgPage::OnCbnSelchangeForeColor() {
    const int code = chosenCode();
    const COLORREF colour = foreColour_->getColor();
    if (const ItemColours* keys = keysOf(code))
        foreColours_[keys->foreKey] = colour;
    previewFore(code, colour);
    coloursChosen();
}

void XmlEditorOptionsDlgPage::OnCbnSelchangeBackColor() {
    const int code = chosenCode();
    const COLORREF colour = backColour_->getColor();
    if (const ItemColours* keys = keysOf(code))
        backColours_[keys->backKey] = colour;
    previewBack(code, colour);
    coloursChosen();
}

void XmlEditorOptionsDlgPage::OnCbnSelchangeFontList() {
    fontFamily_ = fontList_->text();
    preview_->setFont(fontFamily_, fontSize_);
}

void XmlEditorOptionsDlgPage::OnEnChangeFontSize() {
    UpdateData(true);
}

// The sample shows what the editor will, except for selected text, whose system colours here are those of a
// window on the workspace.

void XmlEditorOptionsDlgPage::previewFore(int code, COLORREF fore) {
    if (fore == systemColour)
        fore = platform().GetSysColor(code == selectionCode ? COLOR_WINDOW : COLOR_WINDOWTEXT);
    preview_->setForeColor(fore);
}

void XmlEditorOptionsDlgPage::previewBack(int code, COLORREF back) {
    if (back == systemColour && code != selectionCode)
        back = backColours_.at(keysOf(normalCode)->backKey);
    if (back == systemColour)
        back = platform().GetSysColor(code == selectionCode ? COLOR_APPWORKSPACE : COLOR_WINDOW);
    preview_->setBkColor(back);
}

// Presets

void XmlEditorOptionsDlgPage::applyColours(const ColourPreset& preset) {
    std::size_t i = 0;
    forEachItem([&](const ItemColours& item) {
        foreColours_[item.foreKey] = preset.colours[i].fore;
        backColours_[item.backKey] = preset.colours[i].back;
        ++i;
    });
    OnLbnSelchangeDisplayItemList();
    coloursChosen();
}

const ColourPreset* XmlEditorOptionsDlgPage::currentPreset() const {
    const auto matches = [this](const ColourPreset& preset) {
        bool same = true;
        std::size_t i = 0;
        forEachItem([&](const ItemColours& item) {
            same = same && foreColours_.at(item.foreKey) == preset.colours[i].fore &&
                   backColours_.at(item.backKey) == preset.colours[i].back;
            ++i;
        });
        return same;
    };
    const auto presets = colourPresets();
    const auto found = std::ranges::find_if(presets, matches);
    return found == presets.end() ? nullptr : &*found;
}

void XmlEditorOptionsDlgPage::coloursChosen() const {
    if (onColours_)
        onColours_();
}

void XmlEditorOptionsDlgPage::save() {
    UserSettings& store = platform().settings();
    store.setStringValue(settings::section, settings::fontFamily, fontFamily_);
    store.setIntValue(settings::section, settings::fontSize, fontSize_);
    forEachItem([&](const ItemColours& item) {
        store.setIntValue(settings::section, item.foreKey, static_cast<int>(foreColours_.at(item.foreKey)));
    });
    forEachItem([&](const ItemColours& item) {
        store.setIntValue(settings::section, item.backKey, static_cast<int>(backColours_.at(item.backKey)));
    });
    store.setBoolValue(settings::section, settings::displayLineNumbers, showLineNumbers_ != 0);
}

} // namespace tavrin
