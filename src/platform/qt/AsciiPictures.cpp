#include "platform/qt/AsciiPictures.h"

#include <QColor>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cstring>
#include <new>

namespace tavrin::qt {

namespace {

/// Pixels that are copied at once.
constexpr std::size_t chunk = AsciiPictures::overshoot + 1;

constexpr char16_t first = TextRenderer::firstAscii;
constexpr char16_t last = TextRenderer::lastAscii;

std::size_t chunksOf(int pixels) {
    return (static_cast<std::size_t>(pixels) + chunk - 1) / chunk;
}

/// Rows of a known width are copied without a loop over it.
template <std::size_t Chunks>
void copyRows(const QRgb* from, std::size_t stride, QRgb* to, std::size_t toStride, std::size_t rows) {
    for (; rows > 0; --rows, from += stride, to += toStride)
        std::memcpy(to, from, Chunks * chunk * sizeof(QRgb));
}

} // namespace

AsciiPictures::AsciiPictures(const TextRenderer& renderer, const QColor& text, const QColor& back, int scale)
    : text_(text.rgb()),
      back_(back.rgb()),
      scale_(scale),
      rows_(static_cast<std::size_t>(renderer.metrics().tmHeight * scale)) {
    for (char16_t c = first; c <= last; ++c) {
        chunks_[c] = chunksOf(renderer.advance(c) * scale);
        stride_ = std::max(stride_, chunks_[c] * chunk);
    }
    pixels_.assign((last - first + 1) * rows_ * stride_, back_);
    // One below the other, with room around each that shows what leans out.
    const int width = renderer.widestAdvance();
    const int height = renderer.metrics().tmHeight;
    const auto place = [&](char16_t c) { return QPoint(width, (2 * (c - first) + 1) * height); };
    QImage sheet(QSize(3 * width, place(last + 1).y()) * scale, QImage::Format_RGB32);
    if (sheet.isNull())
        throw std::bad_alloc();
    sheet.setDevicePixelRatio(scale);
    sheet.fill(back);
    {
        QPainter painter(&sheet);
        painter.setPen(text);
        TextRenderer::GlyphList list;
        for (char16_t c = first; c <= last; ++c)
            (void)renderer.addAscii(list, place(c).x(), place(c).y(), {&c, 1});
        renderer.drawGlyphs(painter, list);
    }
    for (char16_t c = first; c <= last; ++c)
        take(c, sheet, QRect(place(c), QSize(renderer.advance(c), height)));
}

void AsciiPictures::take(char16_t c, const QImage& sheet, const QRect& cell) {
    const auto row = [&](int y) { return reinterpret_cast<const QRgb*>(sheet.constScanLine(y)); };
    const int left = cell.left() * scale_;
    const int right = left + cell.width() * scale_;
    const int top = cell.top() * scale_;
    const int bottom = top + cell.height() * scale_;
    const int room = cell.height() / 2 * scale_;
    const auto isBack = [this](QRgb pixel) { return pixel == back_; };
    for (int y = top - room; y < bottom + room && !leansOut_[c]; ++y) {
        const bool beside = y >= top && y < bottom;
        leansOut_[c] = !std::all_of(row(y), row(y) + (beside ? left : right), isBack) ||
                       !std::all_of(row(y) + right, row(y) + sheet.width(), isBack);
    }
    if (leansOut_[c])
        return;
    QRgb* to = pixels_.data() + (c - first) * rows_ * stride_;
    for (int y = top; y < bottom; ++y, to += stride_)
        std::copy(row(y) + left, row(y) + right, to);
}

void AsciiPictures::copy(char16_t c, QRgb* target, std::size_t targetStride) const {
    const QRgb* from = pixels_.data() + (c - first) * rows_ * stride_;
    switch (chunks_[c]) {
    case 1:
        return copyRows<1>(from, stride_, target, targetStride, rows_);
    case 2:
        return copyRows<2>(from, stride_, target, targetStride, rows_);
    case 3:
        return copyRows<3>(from, stride_, target, targetStride, rows_);
    default:
        break;
    }
    const std::size_t width = chunks_[c] * chunk;
    for (std::size_t row = 0; row < rows_; ++row, from += stride_, target += targetStride)
        for (std::size_t x = 0; x < width; x += chunk)
            std::memcpy(target + x, from + x, chunk * sizeof(QRgb));
}

} // namespace tavrin::qt
