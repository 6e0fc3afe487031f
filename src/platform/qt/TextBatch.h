#pragma once

#include "platform/qt/TextRenderer.h"

#include <QRect>

#include <vector>

namespace tavrin::qt {

/// Fills and glyphs that wait to be drawn together: the fills first, then all glyphs of one colour at once,
/// which costs a fraction of drawing run by run. The result is as if each had been drawn when it was added.
class TextBatch {
  public:
    explicit TextBatch(QPainter& painter) : painter_(painter) {}
    TextBatch(const TextBatch&) = delete;
    TextBatch& operator=(const TextBatch&) = delete;

    void fill(const QRect& rect, const QColor& colour);
    /// Text whose cells are `cells`; false when it holds more than ASCII: the caller then draws it, after a
    /// flush.
    [[nodiscard]] bool add(TextRenderer& renderer, const QRect& cells, std::u16string_view text,
                           const QColor& colour);
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

    QPainter& painter_;
    std::vector<Fill> fills_;
    std::vector<Glyphs> glyphs_;
    TextRenderer* renderer_ = nullptr; ///< of the glyphs that wait
    QRect row_;                        ///< the cells of the lowest row that waits
};

} // namespace tavrin::qt
