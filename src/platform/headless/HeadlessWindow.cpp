#include "platform/headless/HeadlessWindow.h"

#include "platform/headless/HeadlessPlatform.h"
#include "platform/ui/CWnd.h"

#include <algorithm>
#include <cstdlib>

namespace tavrin {

namespace {

/// Sizes are never negative, as no window system makes such windows.
CRect normalized(CRect rect) {
    rect.right = std::max(rect.left, rect.right);
    rect.bottom = std::max(rect.top, rect.bottom);
    return rect;
}

} // namespace

HeadlessWindow::HeadlessWindow(HeadlessPlatform& platform, CWnd& window, HeadlessWindow* parent,
                               const CREATESTRUCT& how)
    : platform_(platform), window_(window), parent_(parent), rect_(normalized(how.rect)), popup_(how.popup) {
    horizontal_.present = how.horizontalScrollBar;
    vertical_.present = how.verticalScrollBar;
    if (parent_)
        parent_->children_.reserve(parent_->children_.size() + 1); // a window is in both lists or in none
    platform_.onWindowCreated(*this);
    if (parent_)
        parent_->children_.push_back(this);
}

HeadlessWindow::~HeadlessWindow() {
    if (destroyed_)
        return;
    destroyed_ = true;
    platform_.forget(*this);
    destroyChildren();
    leaveTree();
}

bool HeadlessWindow::contains(const HeadlessWindow* other) const {
    while (other && other != this)
        other = other->parent_;
    return other == this;
}

void HeadlessWindow::clearRecord() {
    invalidated_.clear();
    uncovered_.clear();
    scrolls_.clear();
}

void HeadlessWindow::paint(RecordingDC& dc) {
    MSG message{.message = WM_ERASEBKGND};
    message.dc = &dc;
    window_.SendMessage(message);
    message.message = WM_PAINT;
    window_.SendMessage(message);
}

void HeadlessWindow::moveWindow(const CRect& rectInParent) {
    const CSize before = clientSize();
    rect_ = normalized(rectInParent);
    if (clientSize() == before)
        return;
    MSG message{.message = WM_SIZE};
    message.size = clientSize();
    window_.SendMessage(message);
}

void HeadlessWindow::show(bool visible) {
    shown_ = visible;
    if (!visible)
        platform_.leaveWindow(*this);
}

bool HeadlessWindow::isVisible() const {
    return shown_ && (!parent_ || parent_->isVisible());
}

void HeadlessWindow::setFocus() {
    platform_.setFocus(this);
}

bool HeadlessWindow::hasFocus() const {
    return platform_.focus() == this;
}

void HeadlessWindow::scrollWindow(int dx, int dy, const CRect& rect) {
    scrolls_.push_back({dx, dy, rect});
    if (rect.IsRectEmpty())
        return;
    if (std::abs(dx) >= rect.Width() || std::abs(dy) >= rect.Height()) {
        uncovered_.push_back(rect);
        return;
    }
    const CRect moved = rect.intersect({rect.left + dx, rect.top + dy, rect.right + dx, rect.bottom + dy});
    if (dy > 0)
        uncovered_.push_back({rect.left, rect.top, rect.right, moved.top});
    if (dy < 0)
        uncovered_.push_back({rect.left, moved.bottom, rect.right, rect.bottom});
    if (dx > 0)
        uncovered_.push_back({rect.left, moved.top, moved.left, moved.bottom});
    if (dx < 0)
        uncovered_.push_back({moved.right, moved.top, rect.right, moved.bottom});
}

std::unique_ptr<CDC> HeadlessWindow::clientDC() {
    RecordingDevice device;
    device.caps[static_cast<std::size_t>(DeviceCap::HorzRes)] = rect_.Width();
    device.caps[static_cast<std::size_t>(DeviceCap::VertRes)] = rect_.Height();
    return std::make_unique<RecordingDC>(device);
}

bool HeadlessWindow::isScrollBarEnabled(ScrollBarKind bar) const {
    return barOf(bar).present && barOf(bar).enabled;
}

void HeadlessWindow::showCaret() {
    if (caret_)
        caret_->shown = true;
}

void HeadlessWindow::setCapture() {
    platform_.setCapture(this);
}

void HeadlessWindow::releaseCapture() {
    if (hasCapture())
        platform_.setCapture(nullptr);
}

bool HeadlessWindow::hasCapture() const {
    return platform_.capture() == this;
}

CPoint HeadlessWindow::clientToScreen(CPoint point) const {
    for (const HeadlessWindow* window = this; window; window = window->popup_ ? nullptr : window->parent_) {
        point.x += window->rect_.left;
        point.y += window->rect_.top;
    }
    return point;
}

CRect HeadlessWindow::windowRect() const {
    const CPoint corner = clientToScreen({});
    return {corner.x, corner.y, corner.x + rect_.Width(), corner.y + rect_.Height()};
}

void HeadlessWindow::movePopup(CPoint corner) {
    moveWindow({corner.x, corner.y, corner.x + rect_.Width(), corner.y + rect_.Height()});
}

void HeadlessWindow::destroy() {
    if (destroyed_)
        return;
    platform_.leaveWindow(*this);
    destroyed_ = true;
    platform_.forget(*this);
    destroyChildren();
    leaveTree();
    window_.SendMessage({.message = WM_NCDESTROY}); // deletes this object
}

void HeadlessWindow::destroyChildren() {
    while (!children_.empty())
        children_.back()->destroy();
}

void HeadlessWindow::leaveTree() {
    if (parent_)
        std::erase(parent_->children_, this);
    parent_ = nullptr;
}

} // namespace tavrin
