#include "EditorFixture.h"

namespace tavrin::test {
namespace {

/// Cells are 8 pixels wide and the gutter is 26 ("10" and 5 pixels on each side, for the nine lines below).
class Drag : public Editor {
  protected:
    Drag() { setText(u"one two\nthree\nfour\n\n\n\n\n\nlast"); }

    static CPoint at(int line, int col) { return {26 + col * 8, line * 16 + 8}; }

    [[nodiscard]] std::u16string selected() const { return ctrl_->getSelectedText(); }
};

TEST_F(Drag, pressMovesAndReleaseSelectWhatLiesBetween) {
    mouse(WM_LBUTTONDOWN, at(0, 4));
    EXPECT_TRUE(ctrl_->isDragging());
    EXPECT_TRUE(window().hasCapture());
    EXPECT_FALSE(ctrl_->hasSelection());
    mouse(WM_MOUSEMOVE, at(1, 3));
    EXPECT_EQ(selected(), u"two\nthr");
    mouse(WM_LBUTTONUP, at(1, 5));
    EXPECT_EQ(selected(), u"two\nthree") << "the release places the caret a last time";
    EXPECT_FALSE(ctrl_->isDragging());
    EXPECT_FALSE(window().hasCapture());
    mouse(WM_MOUSEMOVE, at(0, 0));
    EXPECT_EQ(selected(), u"two\nthree");
}

TEST_F(Drag, escapeAndRightPressEndItAndLeaveTheCaret) {
    for (const bool byKey : {true, false}) {
        mouse(WM_LBUTTONDOWN, at(0, 0));
        mouse(WM_MOUSEMOVE, at(0, 3));
        if (byKey)
            key(VK_ESCAPE);
        else
            mouse(WM_RBUTTONDOWN, at(2, 2));
        EXPECT_FALSE(ctrl_->isDragging());
        EXPECT_FALSE(window().hasCapture());
        EXPECT_EQ(selected(), u"one");
        mouse(WM_LBUTTONUP, at(2, 2));
        EXPECT_EQ(selected(), u"one") << "a late release is not a placement";
    }
}

TEST_F(Drag, otherKeysAreDiscardedWhileItLasts) {
    mouse(WM_LBUTTONDOWN, at(0, 0));
    mouse(WM_MOUSEMOVE, at(0, 3));
    key(VK_DELETE);
    key(VK_RIGHT);
    key('X', true); // a shortcut
    type(u"z");
    EXPECT_TRUE(ctrl_->isDragging());
    EXPECT_EQ(selected(), u"one");
    EXPECT_FALSE(ctrl_->CanUndo());
    mouse(WM_LBUTTONUP, at(0, 3));
    type(u"z");
    EXPECT_EQ(ctrl_->getText().substr(0, 5), u"z two");
}

TEST_F(Drag, losingTheCaptureEndsIt) {
    mouse(WM_LBUTTONDOWN, at(0, 0));
    mouse(WM_MOUSEMOVE, at(0, 3));
    platform_.setCapture(nullptr);
    EXPECT_FALSE(ctrl_->isDragging());
    mouse(WM_MOUSEMOVE, at(2, 0));
    EXPECT_EQ(selected(), u"one");
    type(u"z");
    EXPECT_EQ(ctrl_->getText().substr(0, 5), u"z two");
}

TEST_F(Drag, pointerBeyondTheEdgeScrollsOnlyWhenItMoves) {
    std::u16string lines;
    for (int i = 0; i < 40; ++i)
        lines += u"line\n";
    setText(lines + u"end");
    mouse(WM_LBUTTONDOWN, at(0, 0));
    mouse(WM_MOUSEMOVE, {100, 200});
    EXPECT_EQ(ctrl_->GetScrollPos(SB_VERT), 3 * 16) << "line 12 becomes the last one in view";
    mouse(WM_MOUSEMOVE, {100, 200});
    EXPECT_EQ(ctrl_->GetScrollPos(SB_VERT), 6 * 16);
    mouse(WM_MOUSEMOVE, {100, -1000});
    EXPECT_EQ(ctrl_->GetScrollPos(SB_VERT), 0);
    EXPECT_EQ(caret().first, 0);
}

TEST_F(Drag, pressInAnUnfocusedViewTakesTheFocus) {
    platform_.setFocus(nullptr);
    ASSERT_FALSE(ctrl_->HasFocus());
    mouse(WM_LBUTTONDOWN, at(1, 1));
    EXPECT_TRUE(ctrl_->HasFocus());
    EXPECT_EQ(caret(), std::pair(1, 1));
    ASSERT_TRUE(window().caret());
    EXPECT_TRUE(window().caret()->shown);
}

TEST_F(Drag, windowMayVanishDuringIt) {
    mouse(WM_LBUTTONDOWN, at(0, 0));
    host_->DestroyWindow();
    EXPECT_FALSE(ctrl_->isDragging());
    EXPECT_EQ(platform_.capture(), nullptr);
    ctrl_->SendMessage({.message = WM_MOUSEMOVE, .point = at(1, 1)});
    EXPECT_EQ(caret(), std::pair(0, 0));
}

} // namespace
} // namespace tavrin::test
