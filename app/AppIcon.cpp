#include "AppIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace tavrin::app {

namespace {

/// A tag's brackets around a slash, on a rounded square; drawn on a grid of 64 units.
QPixmap drawIcon(int pixels) {
    QPixmap picture(pixels, pixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(pixels / 64.0, pixels / 64.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x1f, 0x4e, 0x79));
    painter.drawRoundedRect(QRectF(3, 3, 58, 58), 12, 12);

    QPainterPath brackets;
    brackets.moveTo(22, 20);
    brackets.lineTo(11, 32);
    brackets.lineTo(22, 44);
    brackets.moveTo(42, 20);
    brackets.lineTo(53, 32);
    brackets.lineTo(42, 44);
    QPainterPath slash;
    slash.moveTo(36, 17);
    slash.lineTo(28, 47);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(brackets);
    painter.setPen(QPen(QColor(0xff, 0xb0, 0x3b), 5, Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(slash);
    return picture;
}

} // namespace

QIcon appIcon() {
    QIcon icon;
    for (const int pixels : {16, 24, 32, 48, 64, 128, 256})
        icon.addPixmap(drawIcon(pixels));
    return icon;
}

} // namespace tavrin::app
