#include "platform/qt/Cursors.h"

#include <QPainter>
#include <QPixmap>
#include <QPolygonF>

namespace tavrin::qt {

namespace {

/// An arrow that points up and to the right, towards the text.
QCursor gutterCursor() {
    constexpr int side = 32;
    constexpr QPoint hotSpot(30, 1);
    QPixmap image(side, side);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    const QPoint outline[] = {{0, 0}, {0, 16}, {-4, 12}, {-7, 18}, {-9, 17}, {-6, 11}, {-11, 11}};
    QPolygon arrow;
    for (const QPoint& corner : outline)
        arrow << hotSpot + corner;
    painter.drawPolygon(arrow);
    painter.end();
    return QCursor(image, hotSpot.x(), hotSpot.y());
}

} // namespace

QCursor cursorFor(CursorShape shape) {
    switch (shape) {
    case CursorShape::IBeam:
        return QCursor(Qt::IBeamCursor);
    case CursorShape::Gutter:
        return gutterCursor();
    case CursorShape::Arrow:
        break;
    }
    return QCursor(Qt::ArrowCursor);
}

} // namespace tavrin::qt
