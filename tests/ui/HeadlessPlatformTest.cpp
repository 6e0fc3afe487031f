#include "TestWindows.h"

#include <gtest/gtest.h>

#include <array>

namespace tavrin::test {
namespace {

using Log = std::vector<std::string>;

TEST(HeadlessPlatform, focusMovesWithAMessageToEachSide) {
    HeadlessPlatform platform;
    Log log;
    LoggingWindow first(platform, "first", log);
    LoggingWindow second(platform, "second", log);
    first.CreateWindowIn(nullptr, {});
    second.CreateWindowIn(nullptr, {});
    log.clear();
    first.SetFocus();
    first.SetFocus();
    second.SetFocus();
    platform.setFocus(nullptr);
    EXPECT_EQ(log, (Log{"first focus", "first blur", "second focus", "second blur"}));
}

TEST(HeadlessPlatform, focusStaysWhereAHandlerMovedIt) {
    HeadlessPlatform platform;
    Log log;
    LoggingWindow first(platform, "first", log);
    LoggingWindow second(platform, "second", log);
    first.CreateWindowIn(nullptr, {});
    second.CreateWindowIn(nullptr, {});
    first.SetFocus();
    first.onMessage = [&](const MSG& message) {
        if (message.message == WM_KILLFOCUS && message.other == &second)
            first.SetFocus();
    };
    log.clear();
    second.SetFocus();
    EXPECT_TRUE(first.HasFocus());
    EXPECT_EQ(log, (Log{"first blur", "second blur", "first focus"}));
}

TEST(HeadlessPlatform, hidingAWindowHidesWhatLiesInItAndFreesFocusAndCapture) {
    HeadlessPlatform platform;
    Log log;
    LoggingWindow outer(platform, "outer", log);
    LoggingWindow inner(platform, "inner", log);
    outer.CreateWindowIn(nullptr, {});
    inner.CreateWindowIn(&outer, {});
    inner.SetFocus();
    inner.peer()->setCapture();
    log.clear();
    outer.ShowWindow(false);
    EXPECT_FALSE(inner.IsWindowVisible());
    EXPECT_EQ(log, (Log{"inner capture", "inner blur"}));
    outer.ShowWindow(true);
    EXPECT_TRUE(inner.IsWindowVisible());
}

TEST(HeadlessPlatform, onlyANewSizeIsTold) {
    HeadlessPlatform platform;
    Log log;
    LoggingWindow outer(platform, "outer", log);
    LoggingWindow inner(platform, "inner", log);
    outer.CreateWindowIn(nullptr, {.rect = {0, 0, 20, 20}});
    inner.CreateWindowIn(&outer, {.rect = {0, 0, 20, 20}});
    log.clear();
    outer.MoveWindow({10, 10, 30, 30});
    EXPECT_EQ(log, Log{});
    outer.MoveWindow({10, 10, 50, 5});
    EXPECT_EQ(log, Log{"outer size"}) << "what lies inside stays as it is";
    EXPECT_EQ(outer.GetClientRect(), (CRect{0, 0, 40, 0}));
    EXPECT_EQ(inner.peer()->clientToScreen({1, 2}), (CPoint{11, 12}));
}

TEST(HeadlessPlatform, mouseMessagesGoToTheWindowWithTheCapture) {
    HeadlessPlatform platform;
    Log log;
    LoggingWindow outer(platform, "outer", log);
    LoggingWindow inner(platform, "inner", log);
    outer.CreateWindowIn(nullptr, {.rect = {0, 0, 100, 100}});
    inner.CreateWindowIn(&outer, {.rect = {30, 40, 100, 100}});
    CPoint seen;
    inner.onMessage = [&](const MSG& message) { seen = message.point; };
    log.clear();
    platform.sendMouse(outer, WM_MOUSEMOVE, {1, 1});
    inner.peer()->setCapture();
    platform.sendMouse(outer, WM_MOUSEMOVE, {10, 10});
    EXPECT_EQ(seen, (CPoint{-20, -30}));
    inner.peer()->releaseCapture();
    EXPECT_EQ(log, (Log{"outer cursor", "outer move", "inner move", "inner capture"}));
}

/// Takes one key before it is dispatched to any window inside.
class TakingWindow : public LoggingWindow {
  public:
    using LoggingWindow::LoggingWindow;
    UINT takes = 0;
    bool PreTranslateMessage(const MSG& message) override {
        return message.message == WM_KEYDOWN && message.key == takes;
    }
};

TEST(HeadlessPlatform, keysPassPreTranslationFromTheInsideOutwards) {
    HeadlessPlatform platform;
    Log log;
    TakingWindow outer(platform, "outer", log);
    LoggingWindow inner(platform, "inner", log);
    outer.CreateWindowIn(nullptr, {});
    inner.CreateWindowIn(&outer, {});
    outer.takes = 'Z';
    bool ctrl = false;
    inner.onMessage = [&](const MSG&) { ctrl = platform.GetKeyState(VK_CONTROL); };
    log.clear();
    platform.pressKey(inner, {.key = 'Z', .character = 26, .ctrl = true});
    EXPECT_EQ(log, Log{}) << "a key that was taken gives no character";
    platform.pressKey(inner, {.key = 'Y', .character = 25, .ctrl = true});
    EXPECT_EQ(log, (Log{"inner key", "inner char"}));
    EXPECT_TRUE(ctrl);
    EXPECT_FALSE(platform.GetKeyState(VK_CONTROL));
}

TEST(HeadlessPlatform, scrollingUncoversWhatTheMovedPixelsLeave) {
    struct Case {
        int dx;
        int dy;
        std::vector<CRect> uncovered;
    };
    HeadlessPlatform platform;
    TestView view(platform, nullptr);
    const CRect area{10, 20, 50, 60};
    for (const Case& c : {
             Case{5, 0, {{10, 20, 15, 60}}},
             Case{-5, 0, {{45, 20, 50, 60}}},
             Case{0, 5, {{10, 20, 50, 25}}},
             Case{0, -5, {{10, 55, 50, 60}}},
             Case{3, -5, {{10, 55, 50, 60}, {10, 20, 13, 55}}},
             Case{40, 0, {area}},
             Case{1, -1000, {area}},
             Case{0, 0, {}},
         }) {
        view.record().clearRecord();
        view.peer()->scrollWindow(c.dx, c.dy, area);
        EXPECT_EQ(view.record().uncovered(), c.uncovered) << c.dx << " " << c.dy;
        EXPECT_TRUE(view.record().invalidated().empty());
    }
    view.record().clearRecord();
    view.peer()->scrollWindow(1, 1, {0, 0, 0, 60});
    EXPECT_TRUE(view.record().uncovered().empty()) << "nothing moves in an empty rectangle";
}

TEST(HeadlessPlatform, aBusyClipboardRefusesEverything) {
    HeadlessPlatform platform;
    Clipboard& clipboard = platform.clipboard();
    EXPECT_FALSE(clipboard.hasText());
    EXPECT_EQ(clipboard.text(), std::nullopt);
    EXPECT_TRUE(clipboard.setText(u"kept"));
    platform.headlessClipboard().setBusy(true);
    EXPECT_FALSE(clipboard.setText(u"lost"));
    EXPECT_FALSE(clipboard.hasText());
    EXPECT_EQ(clipboard.text(), std::nullopt);
    platform.headlessClipboard().setBusy(false);
    EXPECT_EQ(clipboard.text(), u"kept");
}

TEST(HeadlessPlatform, registryValuesNeedTheirKey) {
    HeadlessPlatform platform;
    Registry& registry = platform.registry();
    EXPECT_FALSE(registry.writeString("A\\B", "name", u"value"));
    platform.headlessRegistry().createKey("A\\B");
    EXPECT_EQ(registry.readString("A\\B", "name"), std::nullopt);
    EXPECT_TRUE(registry.writeString("A\\B", "name", u"value"));
    platform.headlessRegistry().createKey("A\\B");
    EXPECT_EQ(registry.readString("A\\B", "name"), u"value") << "making a key again keeps its values";
    EXPECT_EQ(registry.readString("A", "name"), std::nullopt);
}

TEST(RecordingDC, recordsWhatIsDrawnInDeviceCoordinates) {
    RecordingDC dc;
    dc.SetTextColor(0x112233);
    dc.SetBkColor(0x445566);
    dc.TextOut(1, 2, u"ab");
    dc.SetBkMode(BackgroundMode::Transparent);
    dc.SetViewportOrg({100, 200});
    dc.SelectClipRect({0, 0, 5, 5});
    dc.DrawTextRight(u"123", {0, 10, 50, 26});
    dc.TextOut(0, 0, u"");
    dc.FillSolidRect({0, 0, 3, 4}, 0xABCDEF);

    const auto texts = dc.texts();
    ASSERT_EQ(texts.size(), 2U) << "empty text draws nothing";
    EXPECT_EQ(texts[0].x, 1);
    EXPECT_EQ(texts[0].fore, 0x112233U);
    EXPECT_EQ(texts[0].back, 0x445566U);
    EXPECT_EQ(texts[1].x, 100 + 50 - 24);
    EXPECT_EQ(texts[1].y, 210);
    EXPECT_EQ(texts[1].back, std::nullopt);
    EXPECT_EQ(texts[1].clip, (CRect{0, 0, 5, 5}));
    const auto fills = dc.fills();
    ASSERT_EQ(fills.size(), 1U);
    EXPECT_EQ(fills[0].rect, (CRect{100, 200, 103, 204}));
    EXPECT_EQ(dc.drawings().size(), 3U);
}

TEST(RecordingDC, measuresByTheCellOfItsFontOrItsDevice) {
    HeadlessPlatform platform;
    platform.setCellSize(u"Narrow", 90, {5, 11});
    const auto narrow = platform.createPointFont(90, u"Narrow");
    const auto plain = platform.createPointFont(100, u"Narrow");
    const auto screen = platform.createMeasureDC();
    EXPECT_EQ(screen->GetTextExtent(u"abc"), (CSize{24, 16}));
    EXPECT_EQ(screen->SelectObject(narrow.get()), nullptr);
    EXPECT_EQ(screen->GetTextExtent(u"abc"), (CSize{15, 11}));
    EXPECT_EQ(screen->SelectObject(plain.get()), narrow.get());
    EXPECT_EQ(screen->GetTextMetrics().tmMaxCharWidth, 8);
    std::array<int, 3> widths{};
    screen->GetTextExtentExPoint(u"abc", widths);
    EXPECT_EQ(widths, (std::array{8, 16, 24}));

    RecordingDC paper({.printing = true, .cell = CSize{60, 120}});
    paper.SelectObject(narrow.get());
    EXPECT_TRUE(paper.IsPrinting());
    EXPECT_EQ(paper.GetTextExtent(u"ab"), (CSize{120, 120}));
}

} // namespace
} // namespace tavrin::test
