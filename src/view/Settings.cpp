// Font, colours and the gutter switch: read from the settings, measured, answered.

#include "view/CTextEditorView.h"
#include "view/EditorSettings.h"

#include <algorithm>
#include <memory>
#include <string>

namespace tavrin {

namespace {

/// Larger sizes would overflow pixel arithmetic long before a character fits a screen.
constexpr int maximumFontSize = 1000;

} // namespace

void CTextEditorView::loadSettings() {
    const UserSettings& store = platform().settings();
    const std::u16string family =
        store.getStringValue(settings::section, settings::fontFamily, settings::defaultFontFamily);
    const int fontSize =
        std::clamp(store.getIntValue(settings::section, settings::fontSize, settings::defaultFontSize), 1,
                   maximumFontSize);
    // An estimate, until the next update measures the font. The factor is a single-precision constant.
    lineHeight_ = std::max(1, static_cast<int>(fontSize * static_cast<double>(1.6F)));
    measure_.setFont(platform(), fontSize, family);
    colours_.load(store);
    showLineNumbers_ = store.getBoolValue(settings::section, settings::displayLineNumbers,
                                          settings::defaultDisplayLineNumbers);
    gutterLineCount_ = -1;
    settingsChanged_ = false;
    ++settingsRead_;
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
    return colours_.text(code, platform());
}

COLORREF CTextEditorView::getBackgroundColor(int code) {
    if (settingsChanged_)
        loadSettings();
    return colours_.background(code, platform());
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
