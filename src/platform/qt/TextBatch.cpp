#include "platform/qt/TextBatch.h"

#include <QPainter>

#include <algorithm>

namespace tavrin::qt {

void TextBatch::fill(const QRect& rect, const QColor& colour) {
    const bool below = rect.top() > row_.bottom() && renderer_ && renderer_->glyphsFitRow();
    const bool beside = rect.top() >= row_.top() && rect.left() > row_.right();
    if (renderer_ && !below && !beside)
        flush(); // the fill may cover what was drawn before
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

TextBatch::Glyphs& TextBatch::glyphsOf(const QColor& colour) {
    const auto found = std::ranges::find(glyphs_, colour, &Glyphs::colour);
    return found != glyphs_.end() ? *found : glyphs_.emplace_back(Glyphs{colour, {}});
}

void TextBatch::flush() {
    for (const Fill& fill : fills_)
        painter_.fillRect(fill.rect, fill.colour);
    fills_.clear();
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
