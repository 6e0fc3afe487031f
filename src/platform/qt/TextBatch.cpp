#include "platform/qt/TextBatch.h"

#include "platform/qt/AsciiPictures.h"

#include <QPaintEngine>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace tavrin::qt {

namespace {

int pictureScale(const QPainter& painter) {
    const QTransform transform = painter.deviceTransform();
    const bool even = transform.type() <= QTransform::TxScale && transform.m11() == transform.m22() &&
                      transform.m11() == std::round(transform.m11()) && transform.m11() > 0;
    return even && painter.paintEngine()->type() == QPaintEngine::Raster ? qRound(transform.m11()) : 0;
}

} // namespace

TextBatch::TextBatch(QPainter& painter, const QRect& area)
    : painter_(painter), area_(area), scale_(pictureScale(painter)) {}

/// Draws what waits when something in `rect` may cover it.
void TextBatch::makeRoom(const QRect& rect) {
    const bool below = rect.top() > row_.bottom() && renderer_ && renderer_->glyphsFitRow();
    const bool beside = rect.top() >= row_.top() && rect.left() > row_.right();
    if (renderer_ && !below && !beside)
        flush();
}

void TextBatch::fill(const QRect& rect, const QColor& colour) {
    makeRoom(rect);
    if (pictured_.intersects(rect))
        drawPicture();
    if (!fills_.empty()) {
        Fill& last = fills_.back();
        if (last.colour == colour && last.rect.top() == rect.top() && last.rect.bottom() == rect.bottom() &&
            last.rect.right() + 1 == rect.left()) {
            last.rect.setRight(rect.right());
            return;
        }
    }
    fills_.push_back({rect, colour});
}

bool TextBatch::add(TextRenderer& renderer, const QRect& cells, std::u16string_view text,
                    const QColor& colour) {
    const bool sameRow = cells.top() == row_.top();
    if (renderer_ && (renderer_ != &renderer || (!sameRow && cells.top() <= row_.bottom())))
        flush();
    TextRenderer::GlyphList& list = glyphsOf(colour).list;
    const std::size_t before = list.glyphs.size();
    if (!renderer.addAscii(list, cells.x(), cells.y(), text))
        return false;
    if (list.glyphs.size() > before) {
        row_ = renderer_ && sameRow ? row_.united(cells) : cells;
        renderer_ = &renderer;
    }
    return true;
}

bool TextBatch::addOpaque(TextRenderer& renderer, const QRect& cells, std::u16string_view text,
                          const QColor& colour, const QColor& back) {
    if (scale_ == 0 || !TextRenderer::isAscii(text))
        return false;
    if (renderer_ && renderer_ != &renderer)
        flush();
    makeRoom(cells);
    const bool continues = cells.top() == pictured_.top() && cells.height() == pictured_.height() &&
                           cells.left() == pictured_.right() + 1;
    if (!continues) {
        drawPicture();
        preparePicture(renderer);
    }

    const AsciiPictures& pictures = renderer.pictures(colour, back, scale_);
    const auto stride = static_cast<std::size_t>(picture_.bytesPerLine()) / sizeof(QRgb);
    QRgb* const pixels = reinterpret_cast<QRgb*>(picture_.bits());
    // A character beside the area may lean into it.
    const int leftmost = area_.left() - renderer.widestAdvance();
    const int rightmost = area_.right() + renderer.widestAdvance();
    int x = cells.left();
    for (const char16_t c : text) {
        if (x > rightmost)
            break;
        const int right = x + renderer.advance(c);
        if (right > leftmost) {
            pictures.copy(c, pixels + (x - area_.left() + margin_) * scale_, stride);
            if (pictures.leansOut(c))
                (void)add(renderer, QRect(QPoint(x, cells.top()), cells.bottomRight()), {&c, 1}, colour);
        }
        x = right;
    }
    if (!continues)
        pictured_ = cells;
    pictured_.setRight(cells.right());
    return true;
}

void TextBatch::preparePicture(const TextRenderer& renderer) {
    margin_ = 2 * renderer.widestAdvance();
    const QSize size =
        QSize(area_.width() + 2 * margin_ + AsciiPictures::overshoot, renderer.metrics().tmHeight) * scale_;
    if (picture_.size() == size)
        return;
    picture_ = QImage(size, QImage::Format_RGB32);
    if (picture_.isNull())
        throw std::bad_alloc();
    picture_.setDevicePixelRatio(scale_);
}

void TextBatch::drawPicture() {
    drawFills(); // are below it
    const QRect pictured = std::exchange(pictured_, {});
    const int left = std::max(pictured.left(), area_.left());
    const int right = std::min(pictured.right(), area_.right());
    if (left > right)
        return;
    const QRect source((left - area_.left() + margin_) * scale_, 0, (right - left + 1) * scale_,
                       pictured.height() * scale_);
    painter_.drawImage(QPoint(left, pictured.top()), picture_, source);
}

TextBatch::Glyphs& TextBatch::glyphsOf(const QColor& colour) {
    const auto found = std::ranges::find(glyphs_, colour, &Glyphs::colour);
    return found != glyphs_.end() ? *found : glyphs_.emplace_back(Glyphs{colour, {}});
}

void TextBatch::drawFills() {
    for (const Fill& fill : fills_)
        painter_.fillRect(fill.rect, fill.colour);
    fills_.clear();
}

void TextBatch::flush() {
    drawPicture();
    for (Glyphs& glyphs : glyphs_) {
        if (glyphs.list.glyphs.empty())
            continue;
        painter_.setPen(glyphs.colour);
        renderer_->drawGlyphs(painter_, glyphs.list);
        glyphs.list.glyphs.clear();
        glyphs.list.positions.clear();
    }
    renderer_ = nullptr;
    row_ = {};
}

} // namespace tavrin::qt
