#include "platform/qt/ViewPeer.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/ViewWidget.h"

namespace tavrin::qt {

ViewPeer::ViewPeer(QtPlatform& platform, CWnd& window, QWidget* parent, const CREATESTRUCT& how)
    : QtWindowPeer(platform, window, new ViewWidget(platform, parent, how)) {}

ViewWidget& ViewPeer::view() const {
    return static_cast<ViewWidget&>(widget());
}

QWidget& ViewPeer::clientWidget() const {
    return *view().viewport();
}

void ViewPeer::setClient(ViewClient* client) {
    view().setClient(client);
}

void ViewPeer::moveWindow(const CRect& rectInParent) {
    if (!view().isWindow()) {
        QtWindowPeer::moveWindow(rectInParent);
        return;
    }
    const int border = 2 * view().frameWidth();
    view().setGeometry(rectInParent.left, rectInParent.top, rectInParent.Width() + border,
                       rectInParent.Height() + border);
}

void ViewPeer::invalidate(const CRect& rect) {
    if (!rect.IsRectEmpty())
        view().invalidate(toQRect(rect));
}

void ViewPeer::scrollWindow(int dx, int dy, const CRect& rect) {
    if (!rect.IsRectEmpty())
        view().scrollContent(dx, dy, toQRect(rect));
}

void ViewPeer::setScrollInfo(ScrollBarKind bar, const ScrollInfo& info) {
    view().bars().setInfo(bar, info);
}

int ViewPeer::trackPosition(ScrollBarKind bar) const {
    return view().bars().trackPosition(bar);
}

bool ViewPeer::isScrollBarEnabled(ScrollBarKind bar) const {
    return view().bars().isEnabled(bar);
}

void ViewPeer::createCaret(int width, int height) {
    view().caret().create({width, height});
}

void ViewPeer::destroyCaret() {
    view().caret().destroy();
}

void ViewPeer::setCaretPos(CPoint position) {
    view().moveCaret(position);
}

void ViewPeer::showCaret() {
    view().caret().show();
}

void ViewPeer::setCapture() {
    view().setCapture(true);
}

void ViewPeer::releaseCapture() {
    view().setCapture(false);
}

bool ViewPeer::hasCapture() const {
    return view().hasCapture();
}

} // namespace tavrin::qt
