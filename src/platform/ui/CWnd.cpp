#include "platform/ui/CWnd.h"

#include <new>
#include <stdexcept>
#include <utility>

namespace tavrin {

const MessageMap CWnd::theMessageMap{nullptr, {}};

/// One message being handled, on the stack of whoever sends it. A window that is deleted in its own handler
/// takes itself out of the whole chain, so that nobody on the way back touches it.
struct CWnd::Dispatch {
    Dispatch(CWnd& handling, const MSG& handled)
        : window(&handling), message(handled), outer(std::exchange(handling.current_, this)) {}
    Dispatch(const Dispatch&) = delete;
    Dispatch& operator=(const Dispatch&) = delete;
    ~Dispatch() {
        if (window)
            window->current_ = outer;
    }

    CWnd* window; ///< null once it was deleted
    const MSG& message;
    Dispatch* outer;
};

CWnd::~CWnd() {
    life_.reset();
    for (Dispatch* handled = current_; handled; handled = handled->outer)
        handled->window = nullptr;
    leaveParent();
    peer_.reset();
}

bool CWnd::CreateWindowIn(CWnd* parent, CREATESTRUCT how) {
    if (peer_ || !PreCreateWindow(how))
        return false;
    const bool visible = std::exchange(how.visible, false);
    peer_ = platform_.createWindow(*this, parent, how);
    if (!peer_)
        return false;
    parent_ = parent;

    MSG size{.message = WM_SIZE};
    size.size = peer_->clientSize();
    SendMessage(size);
    if (visible)
        ShowWindow(true);
    return true;
}

void CWnd::DestroyWindow() {
    if (peer_)
        peer_->destroy();
}

LRESULT CWnd::SendMessage(const MSG& message) {
    const auto kind = message.message < WM_REGISTERED_FIRST ? RouteKind::Message : RouteKind::Registered;
    const MessageMapEntry* row = GetMessageMap().find(kind, message.message);
    return dispatch(message, row, nullptr);
}

bool CWnd::SendCommand(UINT command) {
    const MessageMapEntry* row = GetMessageMap().find(RouteKind::Command, command);
    if (!row)
        return false;
    dispatch({.key = command}, row, nullptr);
    return true;
}

bool CWnd::SendNotification(UINT control, UINT notification) {
    const MessageMapEntry* row =
        GetMessageMap().find(RouteKind::Control, controlRoute(control, notification));
    if (!row)
        return false;
    dispatch(MSG{}, row, nullptr);
    return true;
}

bool CWnd::UpdateCommand(CCmdUI& state) {
    const bool handled = GetMessageMap().find(RouteKind::Command, state.m_nID) != nullptr;
    if (const MessageMapEntry* row = GetMessageMap().find(RouteKind::UpdateCommand, state.m_nID))
        dispatch(MSG{}, row, &state);
    else if (!handled)
        state.Enable(false);
    return handled;
}

LRESULT CWnd::dispatch(const MSG& message, const MessageMapEntry* row, CCmdUI* state) {
    LRESULT result = 0;
    {
        const Dispatch handled(*this, message);
        const bool isPaint = message.message == WM_PAINT || message.message == WM_ERASEBKGND;
        if (updateDue_ && !isPaint)
            makeUpUpdate();
        bool exhausted = false;
        try {
            result = row ? row->call(*this, message, state) : DefWindowProc(message);
        } catch (const std::bad_alloc&) {
            exhausted = true;
        } catch (const std::length_error&) { // more than any memory could hold
            exhausted = true;
        }
        if (handled.window && exhausted && isPaint)
            UpdateLater();
        else if (handled.window && exhausted)
            MemoryExhausted();
        if (!handled.window)
            return result;
    }
    if (message.message == WM_NCDESTROY && peer_)
        onPeerGone();
    return result;
}

/// What the handler held is free again, so that telling the user is likely to work; what does not is made up.
void CWnd::MemoryExhausted() noexcept {
    UpdateLater();
    try {
        OnMemoryExhausted();
    } catch (const std::bad_alloc&) {
    }
}

void CWnd::OnMemoryExhausted() {
    if (parent_)
        parent_->OnMemoryExhausted();
}

void CWnd::makeUpUpdate() noexcept {
    updateDue_ = false;
    try {
        UpdateAgain();
    } catch (const std::bad_alloc&) {
        updateDue_ = true;
    }
}

LRESULT CWnd::Reflect(NMHDR& notification) {
    const MessageMapEntry* row = GetMessageMap().find(RouteKind::Reflected, notification.code);
    if (!row)
        return 0;
    MSG message;
    message.notification = &notification;
    return dispatch(message, row, nullptr);
}

void CWnd::leaveParent() {
    for (CWnd* ancestor = parent_; ancestor; ancestor = ancestor->parent_)
        ancestor->OnDescendantGone(*this);
    parent_ = nullptr;
}

void CWnd::onPeerGone() {
    // The peer is still on the stack, but done; it goes last because PostNcDestroy may delete this object.
    const std::unique_ptr<WindowPeer> gone = std::move(peer_);
    leaveParent();
    PostNcDestroy();
}

bool CWnd::PreTranslateMessage(const MSG&) {
    return false;
}

bool CWnd::TranslateMessage(const MSG& message) {
    const Watch watch(*this);
    try {
        return PreTranslateMessage(message);
    } catch (const std::bad_alloc&) {
        if (watch.isAlive())
            MemoryExhausted();
        return true;
    }
}

bool CWnd::IsAccelerator(const MSG&) const {
    return false;
}

void CWnd::Invalidate() {
    InvalidateRect(GetClientRect());
}

void CWnd::InvalidateRect(const CRect& rect) {
    if (peer_)
        peer_->invalidate(rect);
}

CRect CWnd::GetClientRect() const {
    if (!peer_)
        return {};
    const CSize size = peer_->clientSize();
    return {0, 0, size.cx, size.cy};
}

void CWnd::ShowWindow(bool visible) {
    if (peer_)
        peer_->show(visible);
}

void CWnd::SetFocus() {
    if (peer_)
        peer_->setFocus();
}

void CWnd::MoveWindow(const CRect& rectInParent) {
    if (peer_)
        peer_->moveWindow(rectInParent);
}

const MessageMap& CWnd::GetMessageMap() const {
    return theMessageMap;
}

bool CWnd::PreCreateWindow(CREATESTRUCT&) {
    return true;
}

LRESULT CWnd::DefWindowProc(const MSG&) {
    return 0;
}

LRESULT CWnd::Default() {
    return current_ ? DefWindowProc(current_->message) : 0;
}

const MSG* CWnd::GetCurrentMessage() const {
    return current_ ? &current_->message : nullptr;
}

} // namespace tavrin
