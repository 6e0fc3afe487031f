#include "platform/qt/TextBatch.h"

#include "QtFixture.h"
#include "platform/qt/AsciiPictures.h"
#include "platform/qt/RowMemory.h"

#include <QPainter>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace tavrin::qt {
namespace {

struct Piece {
    int x;
    int y;
    std::u16string text;
    QColor colour;
    QColor back;
};

class TextBatchTest : public QtFixture {
  protected:
    TextRenderer& renderer(const char16_t* family, int tenths) {
        font_ = platform_.createPointFont(tenths, family);
        return static_cast<const QtFont*>(font_.get())->renderer();
    }

    static constexpr QRect shown{10, 20, 300, 90};

    template <class Draw>
    static QImage drawn(qreal scale, Draw draw) {
        QImage image(QSize(340, 140) * scale, QImage::Format_RGB32);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::lightGray);
        QPainter painter(&image);
        painter.setClipRect(shown);
        draw(painter);
        return image;
    }
    static QRect cellsOf(TextRenderer& renderer, const Piece& piece) {
        return {piece.x, piece.y, renderer.width(piece.text), renderer.metrics().tmHeight};
    }
    /// All cells, then all glyphs.
    static QImage oneByOne(TextRenderer& renderer, const std::vector<Piece>& runs, qreal scale) {
        return drawn(scale, [&](QPainter& painter) {
            for (const Piece& piece : runs)
                painter.fillRect(cellsOf(renderer, piece), piece.back);
            for (const Piece& piece : runs) {
                painter.setPen(piece.colour);
                renderer.draw(painter, piece.x, piece.y, piece.text);
            }
        });
    }
    static QImage inABatch(TextRenderer& renderer, const std::vector<Piece>& runs, qreal scale) {
        return drawn(scale, [&](QPainter& painter) {
            TextBatch batch(painter, shown);
            for (const Piece& piece : runs) {
                const QRect cells = cellsOf(renderer, piece);
                if (batch.addOpaque(renderer, cells, piece.text, piece.colour, piece.back))
                    continue;
                batch.fill(cells, piece.back);
                EXPECT_TRUE(batch.add(renderer, cells, piece.text, piece.colour));
            }
            batch.flush();
        });
    }
    static int largestDifference(const QImage& one, const QImage& other) {
        int largest = 0;
        for (int y = 0; y < one.height(); ++y) {
            for (int x = 0; x < one.width(); ++x) {
                const QRgb a = one.pixel(x, y);
                const QRgb b = other.pixel(x, y);
                largest = std::max({largest, std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                                    std::abs(qBlue(a) - qBlue(b))});
            }
        }
        return largest;
    }

    std::unique_ptr<CFont> font_;
};

/// Rows of runs side by side, some of which begin or end outside of what is shown. Where there is a gap the
/// colours change.
std::vector<Piece> randomPieces(TextRenderer& renderer, std::mt19937& random) {
    static const QColor colours[] = {Qt::black, Qt::darkRed, QColor(1, 120, 200)};
    static const QColor backs[] = {Qt::white, Qt::yellow, QColor(40, 42, 54)};
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    std::vector<Piece> pieces;
    const int gap = 2 * renderer.advance(u' ');
    for (int y = 10; y < 110; y += renderer.metrics().tmHeight) {
        Piece piece{below(120) - 60, y, {}, colours[below(3)], backs[below(3)]};
        for (int i = 0; i < 6; ++i) {
            piece.text.clear();
            for (int length = 1 + below(12); length > 0; --length)
                piece.text += static_cast<char16_t>(u' ' + below(95));
            pieces.push_back(piece);
            piece.x += renderer.width(piece.text);
            if (below(2) == 0) {
                piece.x += gap;
                piece.colour = colours[below(3)];
                piece.back = backs[below(3)];
            }
        }
    }
    return pieces;
}

TEST_F(TextBatchTest, looksAsIfDrawnOneByOne) {
    std::mt19937 random(20261123);
    // Where glyphs reach into each other's cells, the order in which they are drawn shows a little.
    constexpr int order = 16;
    const struct {
        const char16_t* family;
        int tenths;
        int tolerance;
    } fonts[] = {
        {u"Courier New", 75, 0},          {u"Courier New", 100, 0},          {u"Liberation Mono", 130, order},
        {u"Liberation Sans", 100, order}, {u"Liberation Serif", 160, order},
    };
    for (const auto& [family, tenths, tolerance] : fonts) {
        TextRenderer& text = renderer(family, tenths);
        for (const qreal scale : {1.0, 1.25, 2.0}) {
            for (int round = 0; round < 5; ++round) {
                const std::vector<Piece> pieces = randomPieces(text, random);
                EXPECT_LE(largestDifference(inABatch(text, pieces, scale), oneByOne(text, pieces, scale)),
                          tolerance)
                    << QString::fromUtf16(family).toStdString() << " " << tenths << " at " << scale;
            }
        }
    }
}

TEST_F(TextBatchTest, textIsPicturedWherePixelsFit) {
    TextRenderer& text = renderer(u"Courier New", 100);
    const auto isTaken = [&](const Piece& piece, qreal scale) {
        bool taken = false;
        drawn(scale, [&](QPainter& painter) {
            TextBatch batch(painter, shown);
            taken = batch.addOpaque(text, cellsOf(text, piece), piece.text, piece.colour, piece.back);
            batch.flush();
        });
        return taken;
    };
    const Piece ascii{20, 30, u"<a b='c'/>", Qt::blue, Qt::white};
    EXPECT_TRUE(isTaken(ascii, 1));
    EXPECT_TRUE(isTaken(ascii, 2));
    EXPECT_FALSE(isTaken(ascii, 1.5)) << "cells begin between pixels";
    EXPECT_FALSE(isTaken({20, 30, u"caf\u00E9", Qt::blue, Qt::white}, 1));
}

TEST_F(TextBatchTest, whatCoversARunIsDrawnOverIt) {
    TextRenderer& text = renderer(u"Courier New", 100);
    const Piece piece{20, 30, u"covered", Qt::black, Qt::white};
    const QRect cover(cellsOf(text, piece).adjusted(10, 0, 0, 0));
    const auto image = [&](bool batched) {
        return drawn(1, [&](QPainter& painter) {
            TextBatch batch(painter, shown);
            EXPECT_TRUE(batch.addOpaque(text, cellsOf(text, piece), piece.text, piece.colour, piece.back));
            if (!batched)
                batch.flush();
            batch.fill(cover, Qt::red);
            batch.flush();
        });
    };
    EXPECT_EQ(image(true), image(false));
    EXPECT_EQ(image(true).pixelColor(cover.center()), QColor(Qt::red));
}

TEST_F(TextBatchTest, textOnAnyGroundLooksAsIfBlended) {
    font_ = platform_.createPointFont(100, u"Courier New");
    static constexpr CRect left{0, 0, 60, 140};
    static constexpr CRect right{60, 0, 340, 140};
    const struct {
        const char* ground;
        void (*draw)(CDC& dc);
    } grounds[] = {
        {"one fill", [](CDC& dc) { dc.TextOut(80, 40, u"11"); }},
        {"two fills", [](CDC& dc) { dc.TextOut(50, 40, u"1111"); }},
        {"none", [](CDC& dc) { dc.TextOut(330, 40, u"11"); }},
        {"a fill above a fill",
         [](CDC& dc) {
             dc.FillSolidRect({90, 30, 130, 70}, 0x804020);
             dc.TextOut(100, 40, u"11");
             dc.TextOut(80, 50, u"1111");
         }},
        {"other text",
         [](CDC& dc) {
             dc.TextOut(80, 40, u"MWM");
             dc.TextOut(83, 45, u"11");
             dc.TextOut(80, 70, u"11");
         }},
        {"a fill after text",
         [](CDC& dc) {
             dc.TextOut(80, 40, u"11");
             dc.FillSolidRect(right, 0x00FF00);
             dc.TextOut(80, 40, u"11");
         }},
        {"a fill that was clipped",
         [](CDC& dc) {
             dc.SelectClipRect(left);
             dc.FillSolidRect(right, 0x00FF00);
             dc.SelectClipRect(right);
             dc.TextOut(80, 40, u"11");
         }},
    };
    for (const auto& [ground, draw] : grounds) {
        const auto drawAll = [&, draw = draw](CDC& dc) {
            dc.SelectObject(font_.get());
            dc.SetBkMode(BackgroundMode::Transparent);
            dc.SetTextColor(0x0000C0);
            dc.FillSolidRect(left, 0xFFFFFF);
            dc.FillSolidRect(right, 0x80FFFF);
            draw(dc);
        };
        RowMemory memory;
        const QImage inBatches = drawn(1, [&](QPainter& painter) {
            RowPainter dc(painter, shown, platform_.defaultFont(), memory);
            drawAll(dc);
        });
        const QImage blended = drawn(1, [&](QPainter& painter) {
            QtDC dc(painter, shown, platform_.defaultFont());
            drawAll(dc);
        });
        EXPECT_EQ(inBatches, blended) << ground;
    }
}

} // namespace
} // namespace tavrin::qt
