#pragma once

#include "platform/qt/TextRenderer.h"

#include <QImage>
#include <QRect>

#include <vector>

namespace tavrin::qt {

/// Fills and glyphs that wait to be drawn together: the fills first, then all glyphs of one colour at once,
/// which costs a fraction of drawing run by run. The runs of a row that have a background are put together in
/// a picture first. The result is as if each had been drawn when it was added.
class TextBatch {
  public:
    /// What lies outside of `area` need not be drawn.
    TextBatch(QPainter& painter, const QRect& area);
    TextBatch(const TextBatch&) = delete;
    TextBatch& operator=(const TextBatch&) = delete;

    void fill(const QRect& rect, const QColor& colour);
    /// Text whose cells are `cells`; false when it holds more than ASCII: the caller then draws it, after a
    /// flush.
    [[nodiscard]] bool add(TextRenderer& renderer, const QRect& cells, std::u16string_view text,
                           const QColor& colour);
    /// The same with a background. False as well where pictures are not drawn pixel by pixel.
    [[nodiscard]] bool addOpaque(TextRenderer& renderer, const QRect& cells, std::u16string_view text,
                                 const QColor& colour, const QColor& back);
    /// Draws what waits.
    void flush();

  private:
    struct Fill {
        QRect rect;
        QColor colour;
    };
    struct Glyphs {
        QColor colour;
        TextRenderer::GlyphList list;
    };

    [[nodiscard]] Glyphs& glyphsOf(const QColor& colour);
    void makeRoom(const QRect& rect);
    void preparePicture(const TextRenderer& renderer);
    void drawFills();
    void drawPicture();

    QPainter& painter_;
    const QRect area_;
    const int scale_; ///< device pixels for a pixel; 0 when they do not fit each other
    QImage picture_;  ///< of one row, wider than the area by two characters at both sides
    QRect pictured_;  ///< what it shows and waits to be drawn
    int margin_ = 0;  ///< left of the area
    std::vector<Fill> fills_;
    std::vector<Glyphs> glyphs_;
    TextRenderer* renderer_ = nullptr; ///< of the glyphs that wait
    QRect row_;                        ///< the cells of the lowest row that waits
};

} // namespace tavrin::qt
