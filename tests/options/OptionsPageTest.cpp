#include "options/ColourPresets.h"
#include "options/XmlEditorOptionsDlgPage.h"
#include "platform/headless/HeadlessControls.h"
#include "platform/headless/HeadlessPlatform.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tavrin::test {
namespace {

using Page = XmlEditorOptionsDlgPage;

constexpr int unset = -77;

class OptionsPage : public testing::Test {
  protected:
    void open() {
        page_ = std::make_unique<Page>(platform_);
        ASSERT_TRUE(page_->Create(nullptr));
    }
    HeadlessControls& controls() { return dynamic_cast<HeadlessControls&>(*page_->controls()); }
    int stored(std::string_view key) {
        return platform_.settings().getIntValue(settings::section, key, unset);
    }

    HeadlessPlatform platform_;
    std::unique_ptr<Page> page_;
};

TEST_F(OptionsPage, savesEveryKeyWithItsTypeAndNothingBefore) {
    UserSettings& store = platform_.settings();
    open();
    controls().get<HeadlessEditBox>(Page::fontSizeBox).enter(u"11");
    controls().get<HeadlessListBox>(Page::displayItemList).choose(u"Line Numbers");
    controls().get<HeadlessColourBox>(Page::backColourBox).choose(0x123456);
    const auto unwritten = [&](std::string_view key) { return stored(key) == unset; };
    for (const auto& item : settings::itemColours)
        EXPECT_TRUE(unwritten(item.foreKey) && unwritten(item.backKey)) << item.foreKey;
    EXPECT_EQ(stored(settings::fontSize), unset);

    EXPECT_TRUE(page_->confirm());
    for (const auto& item : settings::itemColours) {
        EXPECT_EQ(stored(item.foreKey), static_cast<int>(item.defaultFore)) << item.foreKey;
        EXPECT_EQ(stored(item.backKey), static_cast<int>(item.defaultBack)) << item.backKey;
    }
    EXPECT_EQ(stored("Fore Line Numbers"), 0xFFFFFF);
    EXPECT_EQ(stored("Back Line Numbers"), 0x123456);
    EXPECT_EQ(stored("Font Size"), 11);
    EXPECT_EQ(store.getStringValue(settings::section, "Font Family", u""), u"Courier New");
    EXPECT_TRUE(store.getBoolValue(settings::section, "Display Line Numbers", false));
}

TEST_F(OptionsPage, aRefusedSizeStopsWhatComesAfterItAndTakesTheFocus) {
    open();
    auto& size = controls().get<HeadlessEditBox>(Page::fontSizeBox);
    auto& preview = controls().get<HeadlessTextPanel>(Page::previewPanel);
    controls().get<HeadlessCheckBox>(Page::lineNumbersBox).setChecked(false);
    controls().setFocus(Page::fontListBox);
    size.enter(u"101");
    EXPECT_EQ(controls().focus(), Page::fontSizeBox);
    EXPECT_EQ(controls().takeMessages().size(), 1U);
    EXPECT_EQ(page_->fontSize(), 9);
    EXPECT_EQ(preview.size, 9);
    EXPECT_FALSE(page_->confirm());
    EXPECT_EQ(stored("Font Size"), unset);
    page_->save(); // a host that does not ask first
    EXPECT_EQ(stored("Font Size"), 9);
    EXPECT_TRUE(platform_.settings().getBoolValue(settings::section, "Display Line Numbers", false))
        << "the check box was not read";
    size.enter(u"100");
    page_->save();
    EXPECT_EQ(stored("Font Size"), 100);
    EXPECT_FALSE(platform_.settings().getBoolValue(settings::section, "Display Line Numbers", true));
}

TEST_F(OptionsPage, readsLineNumbersWhenMadeAndTheRestWhenShown) {
    UserSettings& store = platform_.settings();
    store.setBoolValue(settings::section, "Display Line Numbers", false);
    page_ = std::make_unique<Page>(platform_);
    store.setBoolValue(settings::section, "Display Line Numbers", true);
    store.setIntValue(settings::section, "Font Size", 30);
    page_->Create(nullptr);
    EXPECT_FALSE(controls().get<HeadlessCheckBox>(Page::lineNumbersBox).isChecked());
    EXPECT_EQ(controls().get<HeadlessEditBox>(Page::fontSizeBox).text(), u"30");
}

TEST_F(OptionsPage, livesOnWithoutItsWindow) {
    EXPECT_FALSE(Page(platform_).UpdateData(true)) << "before there is one";
    open();
    controls().get<HeadlessEditBox>(Page::fontSizeBox).enter(u"12");
    page_->DestroyWindow();
    EXPECT_EQ(page_->controls(), nullptr);
    EXPECT_FALSE(page_->confirm());
    page_->save();
    EXPECT_EQ(stored("Font Size"), 12);
}

TEST_F(OptionsPage, tellsWhichPresetItsColoursAre) {
    open();
    int told = 0;
    page_->setColoursHandler([&] { ++told; });
    const auto current = [&] { return page_->currentPreset() ? page_->currentPreset()->name : u""; };
    EXPECT_EQ(current(), u"Default");
    for (const ColourPreset& preset : colourPresets()) {
        page_->applyColours(preset);
        EXPECT_EQ(page_->currentPreset(), &preset);
        EXPECT_EQ(controls().get<HeadlessColourBox>(Page::foreColourBox).getColor(), preset.colours[2].fore)
            << "the chosen item is CDATA";
    }
    EXPECT_EQ(told, 3);
    controls().get<HeadlessColourBox>(Page::foreColourBox).choose(0x010203);
    EXPECT_EQ(current(), u"");
    EXPECT_EQ(told, 4);
}

TEST(FontList, theSearchStartsAfterAnEntryAndComesRoundToIt) {
    struct Case {
        std::vector<std::u16string> faces;
        int startAfter;
        std::u16string_view begin;
        int found;
    };
    const std::vector<std::u16string> four{u"Alpha", u"Alpha Mono", u"Beta", u"\u00C9mile"};
    for (const Case& c : {
             Case{four, 0, u"Alpha", 1},
             Case{four, -1, u"Alpha", 0},
             Case{four, 1, u"ALPHA", 0},
             Case{four, 0, u"\u00E9M", 3},
             Case{four, 0, u"Alpha Mono Bold", -1},
             Case{four, 0, u"", 1},
             Case{{u"Alpha"}, 0, u"al", 0},
             Case{{}, 0, u"", -1},
         }) {
        HeadlessPlatform platform;
        platform.setFontFaces(c.faces);
        CWnd dialog(platform);
        HeadlessFontBox box({dialog, 1}, platform);
        EXPECT_EQ(box.SelectString(c.startAfter, c.begin), c.found);
        EXPECT_EQ(box.GetCurSel(), c.found) << "nothing was chosen before";
    }
}

// Contrast as WCAG 2 defines it.

double channel(unsigned value) {
    const double part = value / 255.0;
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double luminance(COLORREF colour) {
    return 0.2126 * channel(colour & 0xFF) + 0.7152 * channel(colour >> 8 & 0xFF) +
           0.0722 * channel(colour >> 16 & 0xFF);
}

double contrast(COLORREF a, COLORREF b) {
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

TEST(ColourPresets, textStandsOutAgainstItsBackground) {
    EXPECT_NEAR(contrast(0x000000, 0xFFFFFF), 21, 0.01);
    const std::pair<std::u16string_view, double> fixed[] = {{u"Dark", 4.5}, {u"High Contrast", 7}};
    ASSERT_EQ(colourPresets().size(), 3U);
    for (std::size_t p = 0; p < std::size(fixed); ++p) {
        const ColourPreset& preset = colourPresets()[p + 1];
        EXPECT_EQ(preset.name, fixed[p].first);
        for (std::size_t i = 0; i < preset.colours.size(); ++i) {
            const auto [fore, back] = preset.colours[i];
            ASSERT_LE(std::max(fore, back), 0xFFFFFFU) << "no colour is left to the system";
            EXPECT_GE(contrast(fore, back), fixed[p].second) << p << " item " << i;
        }
    }
}

TEST(ColourPresets, theDefaultIsWhatTheSettingsHoldAndFallsShortInThreeItems) {
    // On black and white as system colours.
    const ColourPreset& preset = colourPresets().front();
    std::vector<std::size_t> weak;
    for (std::size_t i = 0; i < preset.colours.size(); ++i) {
        auto [fore, back] = preset.colours[i];
        fore = fore == settings::systemColour ? 0x000000 : fore;
        back = back == settings::systemColour ? 0xFFFFFF : back;
        if (contrast(fore, back) < 4.5)
            weak.push_back(i);
    }
    using settings::DisplayItem;
    EXPECT_EQ(weak, (std::vector<std::size_t>{static_cast<std::size_t>(DisplayItem::CDATA),
                                              static_cast<std::size_t>(DisplayItem::XmlAttribute),
                                              settings::displayItemCount}));
}

} // namespace
} // namespace tavrin::test
