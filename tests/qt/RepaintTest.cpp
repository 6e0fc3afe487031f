// What an edit leaves unchanged is not painted again, and what is on the screen is nevertheless the whole
// truth.

#include "QtFixture.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/widget/XmlEditorWidget.h"
#include "view/EditorSettings.h"

#include <QAbstractScrollArea>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QScreen>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <random>

namespace tavrin::qt {
namespace {

class RepaintTest : public QtFixture {
  protected:
    RepaintTest() {
        QApplication::setCursorFlashTime(0);
        QString text = "<list>\n\n\t<!- almost a comment\n";
        for (int i = 0; i < 200; ++i)
            text += QString("\t<item id=\"%1\">%2 &amp;\tone%3</item>\n")
                        .arg(i)
                        .arg(QString(i * i % 37, 'W'), i % 50 == 30 ? " \u6F22\u5B57" : "");
        editor_.setText(text + "</list>");
        editor_.resize(700, 400);
        editor_.show();
        editor_.activateWindow();
        editor_.setFocus();
        EXPECT_TRUE(waitFor([this] { return view().hasFocus(); }));
        client().installEventFilter(&painted_);
        onScreen();
    }
    ~RepaintTest() override { QApplication::setCursorFlashTime(flashTime_); }

    [[nodiscard]] QWidget& view() const { return *editor_.focusProxy(); }
    [[nodiscard]] QWidget& client() { return QtWindowPeer::of(editor_.control())->clientWidget(); }

    QImage onScreen() {
        QApplication::processEvents();
        return editor_.screen()->grabWindow(editor_.winId()).toImage();
    }
    QImage repainted() {
        client().repaint();
        return onScreen();
    }
    /// The view down to its last line. A scroll leaves there what it moved in of one more line, which
    /// painting does not draw.
    [[nodiscard]] QImage lines(const QImage& window) {
        TextEditorCtrl& control = editor_.control();
        const int last = control.getLastVisibleLineIdx();
        int bottom = client().height();
        if (last + 1 < control.getBuffer().getLineCount())
            bottom = std::min(bottom, (last + 1) * control.getLineHeight() - control.GetScrollPos(SB_VERT));
        return window.copy(0, 0, client().width(), bottom);
    }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QApplication::sendEvent(&view(), &event);
    }
    void turnWheel(int delta) {
        QWheelEvent event({100, 100}, client().mapToGlobal(QPointF(100, 100)), {}, {0, delta}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&client(), &event);
    }
    /// The area painted by one action.
    template <class Action>
    QRegion paintedBy(Action action) {
        onScreen();
        painted_.area = {};
        action();
        onScreen();
        return painted_.area;
    }

    class PaintedArea final : public QObject {
      public:
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint)
                area += static_cast<QPaintEvent*>(event)->region();
            return false;
        }
        QRegion area;
    };

    int flashTime_ = QApplication::cursorFlashTime();
    PaintedArea painted_;
    XmlEditorWidget editor_{platform_};
};

TEST_F(RepaintTest, onlyRowsThatLookOtherwiseArePainted) {
    const int row = editor_.control().getLineHeight();
    const auto type = [this](const QString& text) {
        return paintedBy([&] { press(0, Qt::NoModifier, text); }).boundingRect().height();
    };
    editor_.gotoLineCol(2, 6);
    EXPECT_LE(type("x"), 2 * row) << "the row, and nothing below it";
    const QRegion typed = paintedBy([&] { press(0, Qt::NoModifier, "x"); });
    EXPECT_LT(typed.boundingRect().right(), client().width() / 2) << "of the row as far as it has text";
    editor_.gotoLineCol(2, 4);
    EXPECT_GT(type("-"), 5 * row) << "a comment opens: all that it takes in";

    editor_.gotoLineCol(5, 3);
    const QRegion broken = paintedBy([&] { press(Qt::Key_Return, Qt::NoModifier, "\r"); });
    EXPECT_FALSE(broken.intersects(QRect(0, row, client().width(), 3 * row))) << "rows above the break";
    EXPECT_TRUE(broken.intersects(QRect(0, 9 * row, client().width(), row))) << "rows below it";

    const QRegion coloured = paintedBy([&] {
        platform_.settings().setIntValue(settings::section, settings::itemColours[0].backKey, 0xC0FFFF);
        editor_.settingsChanged();
    });
    EXPECT_EQ(coloured, QRegion(client().rect())) << "where there is no text too";
}

TEST_F(RepaintTest, afterAnyInputTheScreenShowsWhatPaintingEverythingShows) {
    const unsigned seed = 20261123;
    std::mt19937 random(seed);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    for (int step = 0; step < 400; ++step) {
        // Several inputs may come before a paint.
        for (int inputs = 1 + below(3); inputs > 0; --inputs) {
            switch (below(12)) {
            case 0:
                press(Qt::Key_Return, Qt::NoModifier, "\r");
                break;
            case 1:
                press(Qt::Key_Backspace, Qt::NoModifier, "\b");
                break;
            case 2:
                press(Qt::Key_Down, below(2) ? Qt::ShiftModifier : Qt::NoModifier);
                break;
            case 3:
                turnWheel(below(2) ? -120 : 45);
                break;
            case 4:
                press(below(2) ? Qt::Key_PageDown : Qt::Key_PageUp);
                break;
            case 5:
                editor_.undo();
                break;
            case 6:
                press(Qt::Key_End, below(4) ? Qt::NoModifier : Qt::ControlModifier);
                break;
            case 7:
                editor_.gotoLineCol(below(20), 0);
                break;
            case 8:
                press(Qt::Key_Up, Qt::ShiftModifier);
                break;
            case 9:
                editor_.resize(600 + below(3) * 50, 400);
                break;
            case 10:
                platform_.settings().setIntValue(settings::section, settings::fontSize, 9 + below(2));
                platform_.settings().setIntValue(settings::section, settings::itemColours[0].backKey,
                                                 below(2) ? 0xFFFFFF : 0xC0FFFF);
                editor_.settingsChanged();
                break;
            default:
                press(0, Qt::NoModifier, QString("x-!> ")[below(5)]);
                break;
            }
        }
        const QImage shown = lines(onScreen());
        ASSERT_EQ(shown, lines(repainted())) << "seed " << seed << ", step " << step;
    }
}

TEST_F(RepaintTest, scrollBarsShowWherePagesAndJumpsLead) {
    editor_.resize(200, 400); // both bars
    onScreen();
    QScrollBar& bar = *static_cast<QAbstractScrollArea&>(view()).verticalScrollBar();
    const auto barShown = [&] {
        const QPoint corner = bar.mapTo(&editor_, QPoint());
        return onScreen().copy(QRect(corner, bar.size()));
    };
    const struct {
        int key;
        Qt::KeyboardModifiers modifiers;
    } moves[] = {{Qt::Key_End, Qt::ControlModifier},
                 {Qt::Key_PageUp, {}},
                 {Qt::Key_Home, Qt::ControlModifier},
                 {Qt::Key_PageDown, {}},
                 {Qt::Key_PageDown, {}},
                 {Qt::Key_PageUp, {}},
                 {Qt::Key_PageUp, {}},
                 {Qt::Key_End, Qt::ControlModifier}};
    for (const auto& [key, modifiers] : moves) {
        const int before = bar.value();
        press(key, modifiers);
        EXPECT_NE(bar.value(), before);
        const QImage shown = barShown();
        bar.repaint();
        EXPECT_EQ(shown, barShown()) << "at " << bar.value() << " after " << before;
    }
}

} // namespace
} // namespace tavrin::qt
