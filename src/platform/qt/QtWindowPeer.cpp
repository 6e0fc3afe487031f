#include "platform/qt/QtWindowPeer.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/Cursors.h"
#include "platform/qt/QtPlatform.h"

#include <QToolTip>

#include <utility>

namespace tavrin::qt {

void PeerWidget::windowDestroyed() {
    for (EventScope* scope = std::exchange(handling_, nullptr); scope; scope = scope->outer_)
        scope->widget_ = nullptr;
    if (QtWindowPeer* peer = std::exchange(peer_, nullptr))
        peer->onWidgetDestroyed();
}

QtWindowPeer::~QtWindowPeer() {
    discardWidget();
}

void QtWindowPeer::discardWidget() {
    if (!widget_)
        return;
    QWidget* widget = std::exchange(widget_, nullptr);
    PeerWidget* link = std::exchange(link_, nullptr);
    link->attach(nullptr);
    if (link->isBusy()) {
        widget->hide();
        widget->setParent(nullptr);
        widget->deleteLater();
    } else {
        delete widget;
    }
}

void QtWindowPeer::onWidgetDestroyed() {
    // Windows go from the inside out: a child may still ask its parents for something.
    qDeleteAll(clientWidget().findChildren<QWidget*>(Qt::FindDirectChildrenOnly));
    widget_ = nullptr;
    link_ = nullptr;
    window_.SendMessage({.message = WM_NCDESTROY}); // the last: deletes this object
}

void QtWindowPeer::destroy() {
    qDeleteAll(clientWidget().findChildren<QWidget*>(Qt::FindDirectChildrenOnly));
    discardWidget();
    window_.SendMessage({.message = WM_NCDESTROY}); // the last: deletes this object
}

CSize QtWindowPeer::clientSize() const {
    return {clientWidget().width(), clientWidget().height()};
}

void QtWindowPeer::moveWindow(const CRect& rectInParent) {
    widget_->setGeometry(toQRect(rectInParent));
}

CRect QtWindowPeer::windowRect() const {
    const QPoint corner = widget_->mapToGlobal(QPoint(0, 0));
    return {corner.x(), corner.y(), corner.x() + widget_->width(), corner.y() + widget_->height()};
}

void QtWindowPeer::movePopup(CPoint corner) {
    widget_->move(corner.x, corner.y);
}

void QtWindowPeer::showTip(const CRect& area, std::u16string_view text) {
    if (text.empty()) {
        QToolTip::hideText();
        return;
    }
    QWidget& client = clientWidget();
    const QRect place = toQRect(area);
    // Names hold no markup, but look like it.
    const QString plain =
        QStringLiteral("<p style='white-space:pre'>%1</p>").arg(toQString(text).toHtmlEscaped());
    QToolTip::showText(client.mapToGlobal(place.topLeft()), plain, &client, place);
}

void QtWindowPeer::show(bool visible) {
    widget_->setVisible(visible);
}

bool QtWindowPeer::isVisible() const {
    return widget_->isVisible();
}

void QtWindowPeer::setFocus() {
    widget_->setFocus(Qt::OtherFocusReason);
}

bool QtWindowPeer::hasFocus() const {
    return widget_->hasFocus();
}

void QtWindowPeer::invalidate(const CRect& rect) {
    if (!rect.IsRectEmpty())
        clientWidget().update(toQRect(rect));
}

void QtWindowPeer::scrollWindow(int dx, int dy, const CRect& rect) {
    if (!rect.IsRectEmpty())
        clientWidget().scroll(dx, dy, toQRect(rect));
}

std::unique_ptr<CDC> QtWindowPeer::clientDC() {
    return platform_.createMeasureDC();
}

void QtWindowPeer::setCursor(CursorShape shape) {
    if (std::exchange(cursor_, shape) != shape)
        clientWidget().setCursor(cursorFor(shape));
}

CPoint QtWindowPeer::clientToScreen(CPoint point) const {
    return toCPoint(clientWidget().mapToGlobal(QPoint(point.x, point.y)));
}

} // namespace tavrin::qt
