#include "platform/qt/Preedit.h"

#include <QPainter>
#include <QPalette>
#include <QTextCharFormat>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace tavrin::qt {

void Preedit::set(const QInputMethodEvent& event, const QFont& font, const QPalette& palette) {
    const QString& text = event.preeditString();
    if (text.isEmpty()) {
        clear();
        return;
    }
    const int length = static_cast<int>(text.size());
    cursor_ = length;
    cursorVisible_ = true;

    QList<QTextLayout::FormatRange> looks;
    QTextCharFormat underlined;
    underlined.setFontUnderline(true);
    underlined.setForeground(palette.text());
    looks.append({0, length, underlined});
    for (const QInputMethodEvent::Attribute& attribute : event.attributes()) {
        if (attribute.type == QInputMethodEvent::Cursor) {
            cursor_ = std::clamp(attribute.start, 0, length);
            cursorVisible_ = attribute.length > 0;
        } else if (attribute.type == QInputMethodEvent::TextFormat) {
            const QTextCharFormat format = qvariant_cast<QTextFormat>(attribute.value).toCharFormat();
            if (format.isValid())
                looks.append({attribute.start, attribute.length, format});
        }
    }

    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    layout_ = std::make_unique<QTextLayout>(text, font);
    layout_->setTextOption(option);
    layout_->setFormats(looks);
    layout_->setCacheEnabled(true);
    layout_->beginLayout();
    layout_->createLine().setPosition(QPointF());
    layout_->endLayout();
}

QRect Preedit::area(const QRect& caret, int width) const {
    const QTextLine line = layout_->lineAt(0);
    const int textWidth = static_cast<int>(std::ceil(line.naturalTextWidth())) + caret.width();
    const int height = std::max(caret.height(), static_cast<int>(std::ceil(line.height())));
    return {std::max(0, std::min(caret.x(), width - textWidth)), caret.y(), textWidth, height};
}

QRect Preedit::cursor(const QRect& caret, int width) const {
    const int x = static_cast<int>(layout_->lineAt(0).cursorToX(cursor_));
    return caret.translated(area(caret, width).x() - caret.x() + x, 0);
}

void Preedit::paint(QPainter& painter, const QRect& caret, int width, const QPalette& palette) const {
    const QRect place = area(caret, width);
    painter.fillRect(place, palette.base());
    painter.setPen(palette.color(QPalette::Text));
    layout_->draw(&painter, place.topLeft());
    if (cursorVisible_)
        painter.fillRect(cursor(caret, width), palette.text());
}

} // namespace tavrin::qt
