#include "EditorFixture.h"

namespace tavrin::test {
namespace {

constexpr std::string_view section = "Xml Editor";
constexpr int systemColour = 0x2000000;

using EditorSettings = Editor;

TEST_F(EditorSettings, emptyStoreGivesTheDefaults) {
    const auto* font = dynamic_cast<const HeadlessFont*>(ctrl_->getEditorNormalFont());
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(font->family(), u"Courier New");
    EXPECT_EQ(font->tenthsOfPoint(), 90);
    EXPECT_TRUE(ctrl_->displayLineNumbers());
    const COLORREF windowText = platform_.GetSysColor(COLOR_WINDOWTEXT);
    const COLORREF window = platform_.GetSysColor(COLOR_WINDOW);
    const COLORREF highlightText = platform_.GetSysColor(COLOR_HIGHLIGHTTEXT);
    const COLORREF highlight = platform_.GetSysColor(COLOR_HIGHLIGHT);
    struct Colours {
        int code;
        COLORREF fore;
        COLORREF back;
    };
    const Colours expected[] = {
        {0, windowText, window},       // normal
        {1, highlightText, highlight}, // selection
        {2, 0xFFFFFF, 0x808080},       // line numbers
        {3, 0x008000, window},         // comment
        {5, 0xFF0000, window},         // string
        {7, 0x000080, window},         // tag
        {8, 0x0000FF, window},         // attribute
        {9, 0xFF00FF, window},         // CDATA
        {10, 0xFF0000, window},        // punctuation
        {4, 0x000000, 0xFFFFFF},       {6, 0x000000, 0xFFFFFF},
        {-1, 0x000000, 0xFFFFFF},      {11, 0x000000, 0xFFFFFF},
    };
    for (const Colours& item : expected) {
        EXPECT_EQ(ctrl_->getTextColor(item.code), item.fore) << item.code;
        EXPECT_EQ(ctrl_->getBackgroundColor(item.code), item.back) << item.code;
    }
}

TEST_F(EditorSettings, systemColourFallsBackByRole) {
    UserSettings& store = platform_.settings();
    store.setIntValue(section, "Fore Color Normal", 0x111111);
    store.setIntValue(section, "Back Color Normal", 0x222222);
    store.setIntValue(section, "Fore Color Comments", systemColour);
    store.setIntValue(section, "Back Color CDATA", 0x333333);
    store.setIntValue(section, "Fore Line Numbers", systemColour);
    store.setIntValue(section, "Back Line Numbers", systemColour);
    ctrl_->OnUpdate();
    EXPECT_EQ(ctrl_->getTextColor(0), 0x111111U);
    EXPECT_EQ(ctrl_->getTextColor(3), platform_.GetSysColor(COLOR_WINDOWTEXT))
        << "never the normal text colour";
    EXPECT_EQ(ctrl_->getBackgroundColor(3), 0x222222U) << "the normal background";
    EXPECT_EQ(ctrl_->getBackgroundColor(9), 0x333333U);
    EXPECT_EQ(ctrl_->getBackgroundColor(1), platform_.GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_EQ(ctrl_->getTextColor(2), platform_.GetSysColor(COLOR_WINDOWTEXT));
    EXPECT_EQ(ctrl_->getBackgroundColor(2), 0x222222U);
}

TEST_F(EditorSettings, areReadAgainAtTheNextUpdateOnly) {
    platform_.settings().setIntValue(section, "Fore Color String", 0x123456);
    platform_.settings().setBoolValue(section, "Display Line Numbers", false);
    EXPECT_EQ(ctrl_->getTextColor(5), 0xFF0000U);
    EXPECT_TRUE(ctrl_->displayLineNumbers());
    ctrl_->OnUpdate();
    EXPECT_EQ(ctrl_->getTextColor(5), 0x123456U);
    EXPECT_EQ(ctrl_->getLineNumbersArea(), CRect{});
    EXPECT_EQ(ctrl_->getEditArea().left, 0);
}

TEST_F(EditorSettings, valuesOfAWrongTypeCountAsMissing) {
    UserSettings& store = platform_.settings();
    store.setStringValue(section, "Font Size", u"large");
    store.setIntValue(section, "Font Family", 3);
    store.setStringValue(section, "Back Color String", u"red");
    store.setStringValue(section, "Display Line Numbers", u"perhaps");
    ctrl_->OnUpdate();
    const auto* font = dynamic_cast<const HeadlessFont*>(ctrl_->getEditorNormalFont());
    EXPECT_EQ(font->family(), u"Courier New");
    EXPECT_EQ(font->tenthsOfPoint(), 90);
    EXPECT_EQ(ctrl_->getBackgroundColor(5), platform_.GetSysColor(COLOR_WINDOW));
    EXPECT_TRUE(ctrl_->displayLineNumbers());
}

TEST(EditorFont, lineHeightIsEstimatedFromTheSizeUntilTheFontIsMeasured) {
    const std::pair<int, int> sizes[] = {{9, 14}, {10, 16}, {12, 19}, {15, 24}, {1, 1}, {0, 1}, {-5, 1}};
    for (const auto& [size, lineHeight] : sizes) {
        HeadlessPlatform platform;
        platform.settings().setIntValue(section, "Font Size", size);
        TextEditorCtrl ctrl(platform);
        EXPECT_EQ(ctrl.getLineHeight(), 9) << "before anything was read";
        EXPECT_NE(ctrl.getEditorNormalFont(), nullptr);
        EXPECT_EQ(ctrl.getLineHeight(), lineHeight) << size;
        ctrl.OnUpdate();
        EXPECT_EQ(ctrl.getLineHeight(), 16) << "the cell";
    }
}

TEST(EditorFont, absurdSizesKeepLinesPaintable) {
    for (const int size : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), 0}) {
        HeadlessPlatform platform;
        platform.setCellSize({0, 0});
        platform.settings().setIntValue(section, "Font Size", size);
        TextEditorCtrl ctrl(platform);
        ctrl.setText(u"a\tb\nc");
        ctrl.OnUpdate();
        EXPECT_EQ(ctrl.getLineHeight(), 1);
        RecordingDC dc;
        ctrl.OnDraw(&dc);
        EXPECT_FALSE(dc.texts().empty());
        EXPECT_GE(ctrl.getTabbedStringWidth(u"a\tb", 3, 4), 0);
    }
}

TEST(LastSearchText, livesInTheRegistryBetweenRuns) {
    constexpr std::string_view key = "SOFTWARE\\Tavrin\\Xml Editor";
    HeadlessPlatform platform;
    { const TextEditorCtrl ctrl(platform); }
    EXPECT_FALSE(platform.registry().readString(key, "Find String")) << "the key is never made";

    platform.headlessRegistry().createKey(key);
    platform.registry().writeString(key, "Find String", u"needle");
    {
        const TestedCtrl ctrl(platform);
        EXPECT_EQ(TestedCtrl::findText(), u"needle");
        TestedCtrl::setFindText(u"hay");
        const TestedCtrl second(platform);
        EXPECT_EQ(TestedCtrl::findText(), u"hay") << "read only while there is none";
    }
    EXPECT_EQ(platform.registry().readString(key, "Find String"), u"hay");

    TestedCtrl::setFindText({});
    platform.registry().writeString(key, "Find String", std::u16string(300, u'x'));
    {
        const TestedCtrl ctrl(platform);
        EXPECT_EQ(TestedCtrl::findText(), u"");
        EXPECT_EQ(platform.registry().readString(key, "Find String"), u"") << "an unreadable value is reset";
    }
    TestedCtrl::setFindText({});
}

} // namespace
} // namespace tavrin::test
