#pragma once

#include "platform/qt/TextRenderer.h"

#include <QRgb>

#include <array>
#include <cstddef>
#include <vector>

class QColor;
class QImage;
class QRect;

namespace tavrin::qt {

/// The ASCII characters of a font as opaque pictures of their cells, in one colour on another: a row of them
/// is copied several times as fast as its glyphs are blended. The pixels are those that the renderer draws.
class AsciiPictures {
  public:
    /// `scale` is the number of device pixels a pixel has in each direction.
    AsciiPictures(const TextRenderer& renderer, const QColor& text, const QColor& back, int scale);

    [[nodiscard]] bool isFor(QRgb text, QRgb back, int scale) const {
        return text_ == text && back_ == back && scale_ == scale;
    }
    /// Whether the glyph reaches out of its cell. Its picture is the empty cell then: the glyph itself has to
    /// be drawn when its neighbours are there.
    [[nodiscard]] bool leansOut(char16_t c) const { return leansOut_[c]; }
    /// Copies the picture of an ASCII character to `target`, in device pixels. Up to `overshoot` pixels to
    /// the right of the cell are overwritten too.
    void copy(char16_t c, QRgb* target, std::size_t targetStride) const;

    static constexpr int overshoot = 3;

  private:
    void take(char16_t c, const QImage& sheet, const QRect& cell);

    QRgb text_;
    QRgb back_;
    int scale_;
    std::size_t rows_ = 0;
    std::size_t stride_ = 0;                                        ///< of the widest cell's rows
    std::vector<QRgb> pixels_;                                      ///< cell by cell, row by row
    std::array<std::size_t, TextRenderer::lastAscii + 1> chunks_{}; ///< that are copied for a row
    std::array<bool, TextRenderer::lastAscii + 1> leansOut_{};
};

} // namespace tavrin::qt
