#include "EditorFixture.h"

namespace tavrin::test {
namespace {

std::u16string numberedLines(int count) {
    std::u16string text = u"0";
    for (int i = 1; i < count; ++i)
        text += u"\nline";
    return text;
}

using Scrolling = Editor;

TEST_F(Scrolling, documentThatFitsDoesNotMove) {
    setText(u"one\ntwo");
    EXPECT_EQ(ctrl_->GetScrollLimit(SB_HORZ), 0);
    EXPECT_EQ(ctrl_->GetScrollLimit(SB_VERT), 0);
    EXPECT_FALSE(ctrl_->OnScrollBy({50, 50}, true));
    ctrl_->SendMessage({.message = WM_VSCROLL, .key = SB_PAGEDOWN});
    platform_.turnWheel(*ctrl_, -WHEEL_DELTA);
    EXPECT_TRUE(window().scrolls().empty());
}

TEST_F(Scrolling, gutterFollowsUpAndDownButNotSideways) {
    setText(numberedLines(99) + std::u16string(100, u'x'));
    const CRect gutter = ctrl_->getLineNumbersArea();
    const CRect text = ctrl_->getEditArea();
    EXPECT_EQ(gutter, (CRect{0, 0, 34, 160}));
    using Scrolls = std::vector<HeadlessWindow::Scroll>;
    window().clearRecord();
    ctrl_->SendMessage({.message = WM_HSCROLL, .key = SB_LINEDOWN});
    EXPECT_EQ(window().scrolls(), (Scrolls{{-8, 0, text}}));
    window().clearRecord();
    ctrl_->SendMessage({.message = WM_VSCROLL, .key = SB_LINEDOWN});
    EXPECT_EQ(window().scrolls(), (Scrolls{{0, -16, text}, {0, -16, gutter}}));
    EXPECT_TRUE(window().invalidated().empty()) << "only the uncovered strips are painted";
}

TEST_F(Scrolling, stepsAreWholeLinesAndCharacters) {
    setText(numberedLines(99) + std::u16string(100, u'x'));
    ctrl_->getFrame()->MoveWindow({0, 0, 34 + 8 * 10 + 7, 16 * 5 + 9});
    const auto send = [this](UINT message, UINT code) {
        ctrl_->SendMessage({.message = message, .key = code});
        return std::pair(ctrl_->GetScrollPos(SB_HORZ), ctrl_->GetScrollPos(SB_VERT));
    };
    EXPECT_EQ(send(WM_VSCROLL, SB_PAGEDOWN), std::pair(0, 80));
    EXPECT_EQ(send(WM_VSCROLL, SB_LINEUP), std::pair(0, 64));
    EXPECT_EQ(send(WM_HSCROLL, SB_PAGEDOWN), std::pair(80, 64));
    EXPECT_EQ(send(WM_HSCROLL, SB_LINEUP), std::pair(72, 64));
    EXPECT_EQ(send(WM_VSCROLL, SB_BOTTOM), std::pair(72, 99 * 16 - 89));
    EXPECT_EQ(send(WM_VSCROLL, SB_TOP), std::pair(72, 0));
}

TEST_F(Scrolling, draggedThumbReachesBeyondSixteenBits) {
    setText(numberedLines(10000));
    window().setTrackPosition(SB_VERT, 100'000);
    MSG drag{.message = WM_VSCROLL, .key = SB_THUMBTRACK};
    drag.delta = 100'000 & 0xFFFF;
    ctrl_->SendMessage(drag);
    EXPECT_EQ(ctrl_->GetScrollPos(SB_VERT), 100'000);
}

TEST_F(Scrolling, disabledBarBlocksItsDirection) {
    setText(numberedLines(99) + std::u16string(100, u'x'));
    window().enableScrollBar(SB_VERT, false);
    EXPECT_FALSE(ctrl_->OnScrollBy({0, 16}, true));
    EXPECT_TRUE(ctrl_->OnScrollBy({8, 16}, true));
    EXPECT_EQ(ctrl_->GetScrollPos(SB_HORZ), 8);
    EXPECT_EQ(ctrl_->GetScrollPos(SB_VERT), 0);
}

TEST_F(Scrolling, askingWhetherItWouldMovesNothing) {
    setText(numberedLines(99));
    EXPECT_TRUE(ctrl_->OnScrollBy({0, 16}, false));
    EXPECT_EQ(ctrl_->GetScrollPos(SB_VERT), 0);
    EXPECT_TRUE(window().scrolls().empty());
}

TEST_F(Scrolling, lineAtTheTopIsWholeOnlyAtItsEdge) {
    platform_.setCellSize({8, 14});
    ctrl_->OnUpdate();
    setText(numberedLines(99));
    ctrl_->OnScrollBy({0, 20}, true);
    EXPECT_EQ(ctrl_->getLineIndexInPage(1), 0);
    EXPECT_EQ(ctrl_->getFirstCompletellyVisibleLineIdx(), 2);
    ctrl_->OnScrollBy({0, 8}, true);
    EXPECT_EQ(ctrl_->getLineIndexInPage(1), -1);
    EXPECT_EQ(ctrl_->getFirstCompletellyVisibleLineIdx(), 2);
}

TEST_F(Scrolling, touchPadMovesByPixels) {
    setText(numberedLines(99));
    for (int i = 0; i < 5; ++i)
        platform_.turnWheel(*ctrl_, -3); // 40 to a line
    EXPECT_EQ(ctrl_->GetScrollPos(SB_VERT), 6);
}

TEST_F(Scrolling, beforeTheFontIsMeasuredThereIsNoRange) {
    TextEditorCtrl unmeasured(platform_);
    unmeasured.setText(numberedLines(99));
    unmeasured.updateScrollbars();
    EXPECT_EQ(unmeasured.GetTotalSize(), (CSize{0, 0}));
    EXPECT_FALSE(unmeasured.OnScrollBy({0, 16}, true));
}

TEST_F(Scrolling, initialUpdateMeasuresTheText) {
    setText(numberedLines(50));
    ctrl_->SetScrollSizes({10, 10});
    ctrl_->OnInitialUpdate();
    EXPECT_EQ(ctrl_->GetTotalSize(), (CSize{26 + 4 * 8, 50 * 16}));
    ctrl_->ShowWindow(false);
    ctrl_->OnInitialUpdate();
    EXPECT_EQ(ctrl_->GetTotalSize(), (CSize{10, 10})) << "provisional until it is shown";
}

} // namespace
} // namespace tavrin::test
