// Font, colours and the gutter switch: read from the settings, measured, answered.

#include "view/CTextEditorView.h"

#include <algorithm>

namespace tavrin {

namespace {

using settings::DisplayItem;

/// Larger sizes would overflow pixel arithmetic long before a character fits a screen.
constexpr int maximumFontSize = 1000;

/// The display item of a format code; false for codes that have none.
bool itemOf(int code, DisplayItem& item) {
    switch (code) {
    case 0:
        item = DisplayItem::Normal;
        return true;
    case 1:
        item = DisplayItem::Selection;
        return true;
    case 3:
        item = DisplayItem::Comments;
        return true;
    case 5:
        item = DisplayItem::String;
        return true;
    case 7:
        item = DisplayItem::XmlTag;
        return true;
    case 8:
        item = DisplayItem::XmlAttribute;
        return true;
    case 9:
        item = DisplayItem::CDATA;
        return true;
    case 10:
        item = DisplayItem::Punctuation;
        return true;
    default:
        return false;
    }
}

constexpr int selectionCode = 1;
constexpr int lineNumbersCode = 2;
constexpr COLORREF black = 0x000000;
constexpr COLORREF white = 0xFFFFFF;

} // namespace

void CTextEditorView::loadSettings() {
    const UserSettings& store = platform().settings();
    const auto colour = [&store](std::string_view key, std::uint32_t byDefault) {
        return static_cast<COLORREF>(store.getIntValue(settings::section, key, static_cast<int>(byDefault)));
    };
    const std::u16string family =
        store.getStringValue(settings::section, settings::fontFamily, settings::defaultFontFamily);
    const int fontSize =
        std::clamp(store.getIntValue(settings::section, settings::fontSize, settings::defaultFontSize), 1,
                   maximumFontSize);
    // An estimate, until the next update measures the font. The factor is a single-precision constant.
    lineHeight_ = std::max(1, static_cast<int>(fontSize * static_cast<double>(1.6F)));
    measure_.setFont(platform(), fontSize, family);
    for (std::size_t i = 0; i < settings::displayItemCount; ++i) {
        const settings::ItemColours& item = settings::itemColours[i];
        foreColors_[i] = colour(item.foreKey, item.defaultFore);
        backColors_[i] = colour(item.backKey, item.defaultBack);
    }
    const settings::ItemColours& lineNumbers = settings::lineNumberColours;
    lineNumbersForeColor_ = colour(lineNumbers.foreKey, lineNumbers.defaultFore);
    lineNumbersBackColor_ = colour(lineNumbers.backKey, lineNumbers.defaultBack);
    showLineNumbers_ = store.getBoolValue(settings::section, settings::displayLineNumbers,
                                          settings::defaultDisplayLineNumbers);
    gutterLineCount_ = -1;
    settingsChanged_ = false;
}

const CFont* CTextEditorView::getEditorNormalFont() {
    return measure().font();
}

TextMeasure& CTextEditorView::measure() {
    if (settingsChanged_)
        loadSettings();
    return measure_;
}

bool CTextEditorView::displayLineNumbers() {
    if (settingsChanged_)
        loadSettings();
    return showLineNumbers_;
}

COLORREF CTextEditorView::getTextColor(int code) {
    if (settingsChanged_)
        loadSettings();
    COLORREF colour = lineNumbersForeColor_;
    if (code != lineNumbersCode) {
        DisplayItem item;
        if (!itemOf(code, item))
            return black;
        colour = foreColors_[static_cast<std::size_t>(item)];
    }
    if (colour != settings::systemColour)
        return colour;
    return platform().GetSysColor(code == selectionCode ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT);
}

COLORREF CTextEditorView::getBackgroundColor(int code) {
    if (settingsChanged_)
        loadSettings();
    COLORREF colour = lineNumbersBackColor_;
    if (code != lineNumbersCode) {
        DisplayItem item;
        if (!itemOf(code, item))
            return white;
        colour = backColors_[static_cast<std::size_t>(item)];
    }
    if (colour == settings::systemColour && code == selectionCode)
        return platform().GetSysColor(COLOR_HIGHLIGHT);
    if (colour == settings::systemColour)
        colour = backColors_[static_cast<std::size_t>(DisplayItem::Normal)];
    return colour == settings::systemColour ? platform().GetSysColor(COLOR_WINDOW) : colour;
}

void CTextEditorView::OnInitialUpdate() {
    ScrollView::OnInitialUpdate();
    SetScrollSizes({10, 10}); // provisional, until the text is measured
    if (!IsWindowVisible())
        return;
    setCaret(caretLine_, caretCol_, false);
    updateScrollbars();
}

void CTextEditorView::OnUpdate() {
    settingsChanged_ = true;
    TEXTMETRIC metrics = measure().metrics();
    if (const std::unique_ptr<CDC> dc = peer() ? peer()->clientDC() : nullptr) {
        const CFont* previous = dc->SelectObject(getEditorNormalFont());
        metrics = dc->GetTextMetrics();
        dc->SelectObject(previous);
    }
    lineHeight_ = std::max(1, metrics.tmHeight);
    charWidth_ = metrics.tmMaxCharWidth;
    if (HasFocus()) {
        createCaret();
        setCaret(caretLine_, caretCol_, true);
        peer()->showCaret();
    }
    ScrollView::OnUpdate();
}

} // namespace tavrin
