#include "platform/qt/BlinkingCaret.h"

#include <QApplication>
#include <QPainter>
#include <QTimerEvent>

namespace tavrin::qt {

void BlinkingCaret::create(CSize size) {
    destroy();
    rect_.setSize(QSize(size.cx, size.cy));
}

void BlinkingCaret::destroy() {
    timer_.stop();
    if (shown_)
        update_(rect_);
    shown_ = lit_ = false;
}

void BlinkingCaret::show() {
    shown_ = true;
    restartBlinking();
}

void BlinkingCaret::moveTo(CPoint position) {
    if (shown_)
        update_(rect_);
    rect_.moveTopLeft(QPoint(position.x, position.y));
    if (shown_)
        restartBlinking();
}

void BlinkingCaret::contentScrolled(int dx, int dy, const QRect& rect) {
    if (!rect.intersects(rect_))
        return;
    // The scrolled pixels hold a picture of the caret, which belongs to the text there.
    if (shown_)
        update_(rect_);
    rect_.translate(dx, dy);
    if (shown_)
        update_(rect_);
}

void BlinkingCaret::restartBlinking() {
    lit_ = true;
    update_(rect_);
    const int flashTime = QApplication::cursorFlashTime();
    if (flashTime >= 2)
        timer_.start(flashTime / 2, this);
    else
        timer_.stop();
}

void BlinkingCaret::timerEvent(QTimerEvent* event) {
    if (event->timerId() != timer_.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    lit_ = !lit_;
    update_(rect_);
}

void BlinkingCaret::paint(QPainter& painter) const {
    if (!shown_ || !lit_)
        return;
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Difference);
    painter.fillRect(rect_, Qt::white);
    painter.restore();
}

} // namespace tavrin::qt
