#include "QtFixture.h"

#include <QPalette>
#include <QScreen>

namespace tavrin::qt {
namespace {

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
