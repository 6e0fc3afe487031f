#include "TestWindows.h"

#include <gtest/gtest.h>

namespace tavrin::test {
namespace {

// The client area is 100 x 60.

TEST(CScrollView, limitsAreTheContentThatDoesNotFit) {
    HeadlessPlatform platform;
    TestView view(platform, nullptr);
    view.SetScrollSizes({250, 40});
    EXPECT_EQ(view.GetScrollLimit(SB_HORZ), 150);
    EXPECT_EQ(view.GetScrollLimit(SB_VERT), 0);
    view.ScrollToPosition({9999, 9999});
    EXPECT_EQ(view.position(), (CPoint{150, 0}));
    view.ScrollToPosition({-5, -5});
    EXPECT_EQ(view.position(), (CPoint{0, 0}));
    EXPECT_TRUE(view.record().invalidated().empty()) << "the caller repaints";
    EXPECT_TRUE(view.record().scrolls().empty());
}

TEST(CScrollView, everyBarCodeBecomesADisplacementInsideTheRange) {
    struct Case {
        UINT code;
        int thumb;
        int from;
        int to;
    };
    HeadlessPlatform platform;
    TestView view(platform, nullptr);
    view.SetScrollSizes({1000, 1000}, {90, 48}, {8, 16});
    for (const Case& c : {
             Case{SB_LINEUP, 0, 100, 84},
             Case{SB_LINEDOWN, 0, 100, 116},
             Case{SB_PAGEUP, 0, 100, 52},
             Case{SB_PAGEDOWN, 0, 100, 148},
             Case{SB_THUMBTRACK, 333, 100, 333},
             Case{SB_THUMBPOSITION, 70000, 100, 940},
             Case{SB_TOP, 0, 100, 0},
             Case{SB_BOTTOM, 0, 100, 940},
             Case{SB_ENDSCROLL, 0, 100, 100},
             Case{SB_LINEUP, 0, 5, 0},
             Case{SB_LINEDOWN, 0, 939, 940},
         }) {
        SCOPED_TRACE(c.code);
        view.ScrollToPosition({0, c.from});
        MSG message{.message = WM_VSCROLL, .key = c.code};
        message.delta = c.thumb;
        view.SendMessage(message);
        EXPECT_EQ(view.position(), (CPoint{0, c.to}));
    }
    view.ScrollToPosition({100, 7});
    view.SendMessage({.message = WM_HSCROLL, .key = SB_LINEDOWN});
    EXPECT_EQ(view.position(), (CPoint{108, 7}));
}

TEST(CScrollView, stepsThatAreNotSetAreTenthsOfTheView) {
    HeadlessPlatform platform;
    TestView view(platform, nullptr, {1000, 600});
    view.SetScrollSizes({5000, 5000});
    view.SendMessage({.message = WM_VSCROLL, .key = SB_PAGEDOWN});
    EXPECT_EQ(view.position().y, 60);
    view.SendMessage({.message = WM_VSCROLL, .key = SB_LINEDOWN});
    EXPECT_EQ(view.position().y, 66);
}

TEST(CScrollView, scrollingMovesPixelsAndTellsTheBars) {
    HeadlessPlatform platform;
    TestView view(platform, nullptr);
    view.SetScrollSizes({1000, 1000}, {90, 48}, {8, 16});
    EXPECT_TRUE(view.OnScrollBy({0, 10}, false)) << "would move";
    EXPECT_EQ(view.position(), (CPoint{0, 0}));
    EXPECT_TRUE(view.OnScrollBy({8, 10}, true));
    EXPECT_EQ(view.record().scrolls(), (std::vector{HeadlessWindow::Scroll{-8, -10, {0, 0, 100, 60}}}));
    EXPECT_EQ(view.record().scrollInfo(SB_VERT).position, 10);
    EXPECT_EQ(view.record().scrollInfo(SB_HORZ).position, 8);
    EXPECT_EQ(view.record().scrollInfo(SB_VERT).page, 48);
    EXPECT_EQ(view.record().uncovered(), (std::vector<CRect>{{0, 50, 100, 60}, {92, 0, 100, 50}}));
    EXPECT_FALSE(view.OnScrollBy({-100, -100}, true) && view.OnScrollBy({-1, -1}, true));
}

TEST(CScrollView, aDisabledBarHoldsItsDirection) {
    HeadlessPlatform platform;
    TestView view(platform, nullptr);
    view.SetScrollSizes({1000, 1000});
    view.record().enableScrollBar(SB_VERT, false);
    EXPECT_FALSE(view.OnScrollBy({0, 10}, true));
    EXPECT_TRUE(view.OnScrollBy({10, 10}, true));
    EXPECT_EQ(view.position(), (CPoint{10, 0}));
}

TEST(CScrollView, positionsFollowAShrinkingRangeWithARepaint) {
    HeadlessPlatform platform;
    TestView view(platform, nullptr);
    view.SetScrollSizes({1000, 1000});
    view.ScrollToPosition({500, 500});
    view.SetScrollSizes({1000, 560});
    EXPECT_EQ(view.position(), (CPoint{500, 500}));
    EXPECT_TRUE(view.record().invalidated().empty());
    view.SetScrollSizes({1000, 400});
    EXPECT_EQ(view.position(), (CPoint{500, 340}));
    EXPECT_EQ(view.record().invalidated(), (std::vector<CRect>{{0, 0, 100, 60}}));
    view.MoveWindow({0, 0, 600, 390});
    EXPECT_EQ(view.position(), (CPoint{400, 10}));
    EXPECT_EQ(view.record().scrollInfo(SB_VERT).position, 10);
}

TEST(CScrollView, theWheelScrollsLinesAndKeepsPartsOfAPixel) {
    struct Case {
        std::string_view name;
        WheelScroll wheel;
        std::vector<int> rotations;
        int to;
    };
    HeadlessPlatform platform;
    TestView view(platform, nullptr);
    view.SetScrollSizes({1000, 1000}, {90, 48}, {8, 16});
    const std::vector<Case> cases{
        {"a notch is three lines", {}, {-120}, 248},
        {"away from the user is up", {}, {120}, 152},
        {"one line a notch", {.linesPerNotch = 1}, {-120}, 216},
        {"a page a notch", {.byPage = true}, {-120}, 248},
        {"a third of a notch", {}, {-40}, 216},
        {"five quarters of a pixel make one, four make five", {}, {-3, -3}, 202},
        {"less than a pixel", {}, {-2}, 200},
        {"less than a pixel adds up", {}, {-2, -2, -2, -2, -2}, 204},
        {"what is left does not delay the other direction", {}, {-2, 3}, 199},
        {"to the end and not beyond", {}, {-32767, -32767}, 940},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        platform.setWheelScroll(c.wheel);
        view.DoMouseWheel(SB_VERT, 1); // clear what the case before left
        view.DoMouseWheel(SB_VERT, -1);
        view.DoMouseWheel(SB_VERT, 1);
        view.ScrollToPosition({0, 200});
        for (const int rotation : c.rotations)
            platform.turnWheel(view, rotation);
        EXPECT_EQ(view.position().y, c.to);
    }
    MSG sideways{.message = WM_MOUSEHWHEEL};
    sideways.delta = WHEEL_DELTA;
    view.SendMessage(sideways);
    EXPECT_EQ(view.position().x, 24) << "to the right";
}

TEST(CScrollView, paintDrawsIntoTheContextOfTheMessage) {
    HeadlessPlatform platform;
    TestView view(platform, nullptr);
    RecordingDC dc;
    view.record().paint(dc);
    ASSERT_EQ(dc.texts().size(), 1U);
    EXPECT_EQ(dc.texts()[0].text, u"drawn");
    view.OnInitialUpdate();
    EXPECT_EQ(view.record().invalidated(), (std::vector<CRect>{{0, 0, 100, 60}}));
}

} // namespace
} // namespace tavrin::test
