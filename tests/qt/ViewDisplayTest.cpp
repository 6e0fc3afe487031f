#include "QtFixture.h"

#include <QAbstractScrollArea>
#include <QPalette>
#include <QScreen>
#include <QScrollBar>

#include <utility>

namespace tavrin::qt {
namespace {

class PaintCounter final : public QObject {
  public:
    bool eventFilter(QObject*, QEvent* event) override {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int paints = 0;
};

class ViewDisplayTest : public ViewFixture {
  protected:
    /// The window as it stands on the screen, once nothing is left to paint.
    QImage onScreen() {
        QApplication::processEvents();
        return client()
            .screen()
            ->grabWindow(widget().winId(), client().x(), client().y(), client().width(), client().height())
            .toImage();
    }
    /// The same, painted afresh.
    QImage repainted() {
        client().update();
        return onScreen();
    }
    void showCaretAt(CPoint position) {
        view_.peer()->createCaret(2, RecordingView::lineHeight);
        view_.peer()->setCaretPos(position);
        view_.peer()->showCaret();
    }
};

TEST_F(ViewDisplayTest, scrolledPixelsEqualPaintedOnes) {
    showCaretAt({90, 48});
    for (const CSize step : {CSize{0, 7}, CSize{13, 0}, CSize{-5, 40}, CSize{0, -20}, CSize{0, 150}}) {
        view_.OnScrollBy(step, true);
        const QImage scrolled = onScreen();
        EXPECT_EQ(scrolled, repainted()) << step.cx << ' ' << step.cy;
    }
}

TEST_F(ViewDisplayTest, scrollingPaintsOnlyWhatItUncovers) {
    onScreen();
    const int draws = view_.draws;
    view_.OnScrollBy({0, 7}, true);
    view_.OnScrollBy({0, 7}, true);
    onScreen();
    EXPECT_EQ(view_.draws, draws + 1) << "two scrolls, one paint";
}

TEST_F(ViewDisplayTest, barIsPaintedWhenItsThumbMoves) {
    const auto* area = dynamic_cast<QAbstractScrollArea*>(&widget());
    ASSERT_TRUE(area);
    QScrollBar& bar = *area->horizontalScrollBar();
    PaintCounter onBar;
    PaintCounter onClient;
    bar.installEventFilter(&onBar);
    client().installEventFilter(&onClient);
    const auto setWidth = [this](int width) {
        view_.SetScrollSizes({width, 1000 * RecordingView::lineHeight}, {}, {8, RecordingView::lineHeight});
    };
    const auto scrollTo = [this](int x) { view_.ScrollToPosition({x, 0}); };
    const auto barPainted = [&] { return onBar.paints > 0; };
    /// What is painted with the client area.
    const auto barPaintedAfter = [&] {
        client().update();
        EXPECT_TRUE(waitFor([&] { return onClient.paints > 0; }));
        onClient.paints = 0;
        return std::exchange(onBar.paints, 0) > 0;
    };

    setWidth(1'000'000);
    EXPECT_TRUE(waitFor(barPainted));
    (void)barPaintedAfter();

    setWidth(1'000'008);
    EXPECT_FALSE(barPaintedAfter()) << "less than a pixel of the thumb";
    EXPECT_EQ(bar.maximum(), 1'000'008 - client().width());
    scrollTo(500'000);
    EXPECT_TRUE(barPaintedAfter());
    scrollTo(500'008);
    EXPECT_FALSE(barPaintedAfter());
    setWidth(2'000'000);
    EXPECT_TRUE(waitFor(barPainted)) << "though not at once";
}

TEST_F(ViewDisplayTest, barShowsItsThumbWhereItIs) {
    const auto* area = dynamic_cast<QAbstractScrollArea*>(&widget());
    ASSERT_TRUE(area);
    QScrollBar& bar = *area->horizontalScrollBar();
    const char* const withPages = "QScrollBar::add-page { background: red } QScrollBar::sub-page "
                                  "{ background: blue } QScrollBar::handle { background: black }";
    for (const char* style : {"", withPages}) {
        bar.setStyleSheet(style);
        for (const int width : {20'000, 100'000}) {
            view_.SetScrollSizes({width, 1000 * RecordingView::lineHeight}, {}, {8, 1});
            for (const int x : {0, 300, 9'000, 9'500, 19'000, 2'000, width, 0}) {
                view_.ScrollToPosition({x, 0});
                const QImage shown = onScreen();
                bar.repaint();
                EXPECT_EQ(shown, onScreen()) << '"' << style << "\" at " << x << " of " << width;
            }
        }
    }
}

TEST_F(ViewDisplayTest, caretInvertsWhatLiesBelowAndLeavesNoTrace) {
    const QImage before = onScreen();
    const QRect place(100, 32, 2, 16);
    showCaretAt({place.x(), place.y()});
    const QImage with = onScreen();
    for (int y = place.top(); y <= place.bottom(); ++y)
        EXPECT_EQ(with.pixelColor(100, y).red(), 255 - before.pixelColor(100, y).red());
    view_.peer()->setCaretPos({200, 32});
    EXPECT_EQ(onScreen().copy(place), before.copy(place));
    view_.peer()->destroyCaret();
    EXPECT_EQ(onScreen(), before);
}

TEST_F(ViewDisplayTest, caretBlinksAndBeginsAgainWhenItMoves) {
    const int flashTime = QApplication::cursorFlashTime();
    QApplication::setCursorFlashTime(60);
    const QImage before = onScreen();
    showCaretAt({100, 32});
    EXPECT_TRUE(waitFor([&] { return onScreen() == before; }));
    QApplication::setCursorFlashTime(0);
    view_.peer()->setCaretPos({101, 32});
    EXPECT_NE(onScreen(), before) << "shown at once, and for good";
    QApplication::setCursorFlashTime(flashTime);
}

TEST_F(ViewDisplayTest, systemColoursAreThePalettesAndAChangeUpdatesTheView) {
    const QPalette light = QApplication::palette();
    QPalette dark = light;
    dark.setColor(QPalette::Base, QColor(0x20, 0x21, 0x22));
    dark.setColor(QPalette::Text, QColor(0xE0, 0xE1, 0xE2));
    dark.setColor(QPalette::Highlight, QColor(0x30, 0x40, 0x50));
    dark.setColor(QPalette::HighlightedText, QColor(0xFF, 0xFE, 0xFD));
    const int updates = view_.updates;
    QApplication::setPalette(dark);
    EXPECT_TRUE(waitFor([&] { return view_.updates > updates; }));
    EXPECT_EQ(platform_.GetSysColor(COLOR_WINDOW), 0x222120u);
    EXPECT_EQ(platform_.GetSysColor(COLOR_WINDOWTEXT), 0xE2E1E0u);
    EXPECT_EQ(platform_.GetSysColor(COLOR_HIGHLIGHT), 0x504030u);
    EXPECT_EQ(platform_.GetSysColor(COLOR_HIGHLIGHTTEXT), 0xFDFEFFu);
    QApplication::setPalette(light);
}

TEST_F(ViewDisplayTest, contextOutsidePaintingMeasures) {
    const auto dc = view_.peer()->clientDC();
    const auto font = platform_.createPointFont(100, u"Courier New");
    EXPECT_EQ(dc->SelectObject(font.get()), nullptr);
    const CSize one = dc->GetTextExtent(u"x");
    EXPECT_EQ(dc->GetTextExtent(u"xxxxx").cx, 5 * one.cx);
    EXPECT_EQ(one.cy, dc->GetTextMetrics().tmHeight);
    dc->TextOut(0, 0, u"nothing happens");
    EXPECT_EQ(dc->SelectObject(nullptr), font.get());
}

} // namespace
} // namespace tavrin::qt
