#include "QtFixture.h"
#include "platform/qt/ViewClient.h"

#include <QAbstractScrollArea>
#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

namespace tavrin::qt {
namespace {

class ViewInputTest : public ViewFixture {
  protected:
    bool press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QApplication::sendEvent(&widget(), &event);
        return event.isAccepted();
    }
    bool claims(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {}) {
        QKeyEvent event(QEvent::ShortcutOverride, key, modifiers, text);
        event.ignore();
        QApplication::sendEvent(&widget(), &event);
        return event.isAccepted();
    }
    void mouse(QEvent::Type type, QPoint at, Qt::MouseButton button = Qt::LeftButton,
               Qt::MouseButtons held = Qt::LeftButton) {
        QMouseEvent event(type, at, client().mapToGlobal(at), button, held, Qt::NoModifier);
        QApplication::sendEvent(&client(), &event);
    }
    bool wheel(QPoint rotation, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        const QPointF at(20, 20);
        QWheelEvent event(at, client().mapToGlobal(at), {}, rotation, Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        event.ignore();
        QApplication::sendEvent(&client(), &event);
        return event.isAccepted();
    }
    [[nodiscard]] QPoint position() const {
        return {view_.GetScrollPos(SB_HORZ), view_.GetScrollPos(SB_VERT)};
    }
    [[nodiscard]] QScrollBar& bar(ScrollBarKind kind) const {
        auto& area = static_cast<QAbstractScrollArea&>(widget());
        return kind == SB_HORZ ? *area.horizontalScrollBar() : *area.verticalScrollBar();
    }
};

TEST_F(ViewInputTest, keyGoesBeforeItsCharacters) {
    press(Qt::Key_A, Qt::NoModifier, "a");
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    press(0, Qt::NoModifier, QString::fromUcs4(U"\U0001F600"));
    EXPECT_EQ(view_.takeLog(), "key 65; char 97; key 9; char 9; char 55357; char 56832; ");
}

TEST_F(ViewInputTest, tabReturnAndEscapeStayInTheEditor) {
    for (const int key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Return, Qt::Key_Escape})
        EXPECT_TRUE(press(key)) << key;
    EXPECT_TRUE(view_.HasFocus());
    EXPECT_FALSE(press(Qt::Key_F5));
    EXPECT_FALSE(press(Qt::Key_S, Qt::ControlModifier, "\x13"));
}

TEST_F(ViewInputTest, shortcutsOfTheControlOutrankTheHosts) {
    view_.shortcuts = {'Z'};
    EXPECT_TRUE(claims(Qt::Key_Z, Qt::ControlModifier));
    EXPECT_EQ(view_.takeLog(), "") << "claiming runs nothing";
    EXPECT_TRUE(press(Qt::Key_Z, Qt::ControlModifier, "\x1A"));
    EXPECT_EQ(view_.takeLog(), "command 90; ");
    EXPECT_TRUE(claims(Qt::Key_Insert, Qt::ShiftModifier)) << "the view has a handler for Paste";
    EXPECT_TRUE(press(Qt::Key_Insert, Qt::ShiftModifier));
    EXPECT_EQ(view_.takeLog(), "paste; ");
    EXPECT_FALSE(claims(Qt::Key_S, Qt::ControlModifier));
    EXPECT_FALSE(claims(Qt::Key_Insert, Qt::ControlModifier)) << "no handler for Copy";
    EXPECT_TRUE(claims(Qt::Key_Delete)) << "typing is not a host's shortcut";
}

TEST_F(ViewInputTest, modifiersAreThoseOfTheEvent) {
    static bool shift;
    view_.onKey = [](RecordingView& view) -> LRESULT {
        return shift = view.platform().GetKeyState(VK_SHIFT);
    };
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_TRUE(shift);
    press(Qt::Key_Left);
    EXPECT_FALSE(shift);
}

TEST_F(ViewInputTest, inputMethodCommitsCharactersAndShowsWhatItComposes) {
    view_.peer()->createCaret(2, 16);
    view_.peer()->setCaretPos({100, 32});
    view_.peer()->showCaret();
    const QImage before = widget().grab().toImage();

    QInputMethodEvent composing(QString::fromUtf8("かな"), {});
    QApplication::sendEvent(&widget(), &composing);
    EXPECT_EQ(view_.takeLog(), "") << "composed text is not in the document yet";
    EXPECT_NE(widget().grab().toImage().copy(100, 32, 40, 16), before.copy(100, 32, 40, 16));
    const QRect caret = widget().inputMethodQuery(Qt::ImCursorRectangle).toRect();
    EXPECT_GT(caret.x(), 102) << "after what is composed";

    QInputMethodEvent committing;
    committing.setCommitString(QString::fromUtf8("仮\nz"));
    QApplication::sendEvent(&widget(), &committing);
    EXPECT_EQ(view_.takeLog(), "char 20206; key 13; char 122; ");
    EXPECT_EQ(widget().grab().toImage().copy(110, 32, 30, 16), before.copy(110, 32, 30, 16));
}

TEST_F(ViewInputTest, wheelTurnsNotchesAndPartsOfThem) {
    const int lines = QApplication::wheelScrollLines() * RecordingView::lineHeight;
    EXPECT_TRUE(wheel({0, -120}));
    EXPECT_EQ(position(), QPoint(0, lines));
    for (int part = 0; part < 8; ++part)
        wheel({0, -15});
    EXPECT_EQ(position(), QPoint(0, 2 * lines));
    wheel({0, 120});
    EXPECT_EQ(position(), QPoint(0, lines));
    wheel({0, -120}, Qt::ShiftModifier);
    EXPECT_GT(position().x(), 0);
    const int right = position().x();
    wheel({120, 0}); // to the left
    EXPECT_LT(position().x(), right);
    EXPECT_FALSE(wheel({0, -120}, Qt::ControlModifier)) << "zooming is the host's";
    EXPECT_EQ(position().y(), lines);
}

TEST_F(ViewInputTest, viewThatFitsLeavesTheWheelToItsHost) {
    view_.SetScrollSizes({100, 100});
    EXPECT_FALSE(wheel({0, -120}));
}

TEST_F(ViewInputTest, scrollBarsMoveTheView) {
    QScrollBar& vertical = bar(SB_VERT);
    struct Step {
        QAbstractSlider::SliderAction action;
        int expected;
    };
    const int page = client().height() / 10;
    const int limit = view_.GetScrollLimit(SB_VERT);
    for (const Step& step :
         {Step{QAbstractSlider::SliderSingleStepAdd, RecordingView::lineHeight},
          Step{QAbstractSlider::SliderSingleStepSub, 0}, Step{QAbstractSlider::SliderPageStepAdd, page},
          Step{QAbstractSlider::SliderToMaximum, limit}, Step{QAbstractSlider::SliderToMinimum, 0}}) {
        vertical.triggerAction(step.action);
        EXPECT_EQ(position().y(), step.expected) << step.action;
        EXPECT_EQ(vertical.value(), step.expected) << step.action;
    }
    vertical.setSliderDown(true);
    vertical.setSliderPosition(12345);
    EXPECT_EQ(position().y(), 12345);
    vertical.setSliderDown(false);
    EXPECT_EQ(vertical.value(), 12345);
    bar(SB_HORZ).triggerAction(QAbstractSlider::SliderSingleStepAdd);
    EXPECT_EQ(position(), QPoint(8, 12345));
}

TEST_F(ViewInputTest, thumbGoesBeyondSixteenBits) {
    view_.SetScrollSizes({900, 2'000'000'000}, {}, {8, 16});
    bar(SB_VERT).setSliderDown(true);
    bar(SB_VERT).setSliderPosition(1'234'567'890);
    EXPECT_EQ(position().y(), 1'234'567'890);
}

TEST_F(ViewInputTest, barsShowOnlyWhatDoesNotFit) {
    struct Case {
        CSize total;
        bool horizontal;
        bool vertical;
    };
    const int extent = bar(SB_VERT).sizeHint().width();
    for (const Case& each : {Case{{400, 200}, false, false}, Case{{401, 100}, true, false},
                             Case{{100, 201}, false, true}, Case{{401, 201}, true, true},
                             Case{{401 - extent, 201}, true, true}, Case{{400 - extent, 201}, false, true}}) {
        view_.SetScrollSizes(each.total);
        EXPECT_EQ(bar(SB_HORZ).isVisible(), each.horizontal) << each.total.cx << ' ' << each.total.cy;
        EXPECT_EQ(bar(SB_VERT).isVisible(), each.vertical) << each.total.cx << ' ' << each.total.cy;
        const CRect inside = view_.GetClientRect();
        EXPECT_EQ(inside.Width(), 400 - (each.vertical ? extent : 0));
        EXPECT_EQ(inside.Height(), 200 - (each.horizontal ? extent : 0));
    }
}

TEST_F(ViewInputTest, dragBeyondTheEdgeGoesOnByItself) {
    mouse(QEvent::MouseButtonPress, {50, 50});
    mouse(QEvent::MouseMove, {60, 150}, Qt::NoButton);
    EXPECT_EQ(view_.takeLog(), "mouse 513; mouse 512; ");
    mouse(QEvent::MouseMove, {60, 260}, Qt::NoButton);
    view_.takeLog();
    std::string moves;
    EXPECT_TRUE(
        waitFor([&] { return (moves += view_.takeLog()).size() >= std::string("mouse 512; ").size() * 3; }));
    EXPECT_EQ(view_.lastPoint, (CPoint{60, 260}));
    mouse(QEvent::MouseButtonRelease, {60, 260}, Qt::LeftButton, Qt::NoButton);
    EXPECT_NE(view_.takeLog().find("message 533; mouse 514; "), std::string::npos);
    EXPECT_FALSE(view_.peer()->hasCapture());
}

TEST_F(ViewInputTest, hiddenViewLosesTheCapture) {
    mouse(QEvent::MouseButtonPress, {50, 50});
    view_.takeLog();
    view_.ShowWindow(false);
    EXPECT_NE(view_.takeLog().find("message 533; "), std::string::npos);
    EXPECT_FALSE(view_.peer()->hasCapture());
}

TEST_F(ViewInputTest, doubleClickFollowsItsFirstClick) {
    mouse(QEvent::MouseButtonPress, {50, 50});
    mouse(QEvent::MouseButtonRelease, {50, 50}, Qt::LeftButton, Qt::NoButton);
    mouse(QEvent::MouseButtonDblClick, {50, 50});
    mouse(QEvent::MouseButtonPress, {50, 50}, Qt::RightButton, Qt::RightButton);
    EXPECT_EQ(view_.takeLog(), "mouse 513; message 533; mouse 514; mouse 515; mouse 516; ");
}

} // namespace
} // namespace tavrin::qt
