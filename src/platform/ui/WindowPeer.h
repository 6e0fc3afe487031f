#pragma once

#include "platform/ui/CDC.h"
#include "platform/ui/Constants.h"
#include "platform/ui/Geometry.h"

#include <memory>
#include <string_view>

namespace tavrin {

enum class CursorShape { Arrow, IBeam, Gutter };

/// What a scroll bar shows; pixels.
struct ScrollInfo {
    int total = 0;    ///< content size
    int page = 0;     ///< page step
    int line = 0;     ///< line step
    int position = 0; ///< 0 to max(0, total - client size)
};

/// The platform's side of one CWnd: a real widget, or a record of one. It delivers messages by
/// CWnd::SendMessage and offers the operations below. Coordinates are client pixels.
///
/// A peer and its CWnd die apart. When the window system destroys the window first, the peer sends
/// WM_NCDESTROY and the CWnd deletes the peer. When the CWnd goes first it deletes its peer, which then
/// destroys the window, and the child windows with their messages, but sends its own CWnd nothing.
class WindowPeer {
  public:
    WindowPeer() = default;
    WindowPeer(const WindowPeer&) = delete;
    WindowPeer& operator=(const WindowPeer&) = delete;
    virtual ~WindowPeer() = default;

    [[nodiscard]] virtual CSize clientSize() const = 0;
    /// The whole window with its border and its bars, on the screen.
    [[nodiscard]] virtual CRect windowRect() const = 0;
    virtual void moveWindow(const CRect& rectInParent) = 0;
    /// The top left corner of a popup with its border, on the screen.
    virtual void movePopup(CPoint corner) = 0;
    virtual void show(bool visible) = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    virtual void setFocus() = 0;
    [[nodiscard]] virtual bool hasFocus() const = 0;

    virtual void invalidate(const CRect& rect) = 0;
    /// Moves the pixels of `rect` by (dx, dy), drawing nothing outside it; what this uncovers is invalidated.
    virtual void scrollWindow(int dx, int dy, const CRect& rect) = 0;
    /// A context on the client area, for measuring and immediate drawing.
    [[nodiscard]] virtual std::unique_ptr<CDC> clientDC() = 0;

    /// Shows the bar's state. A bar whose content fits is hidden; this may resize the client area.
    virtual void setScrollInfo(ScrollBarKind bar, const ScrollInfo& info) = 0;
    /// The position of a thumb being dragged, in pixels.
    [[nodiscard]] virtual int trackPosition(ScrollBarKind bar) const = 0;
    /// False while the host has disabled the bar or the window has none.
    [[nodiscard]] virtual bool isScrollBarEnabled(ScrollBarKind bar) const = 0;

    /// One caret a window; a new one is hidden until shown.
    virtual void createCaret(int width, int height) = 0;
    virtual void destroyCaret() = 0;
    virtual void setCaretPos(CPoint position) = 0;
    virtual void showCaret() = 0;

    virtual void setCursor(CursorShape shape) = 0;
    virtual void setCapture() = 0;
    virtual void releaseCapture() = 0;
    [[nodiscard]] virtual bool hasCapture() const = 0;

    [[nodiscard]] virtual CPoint clientToScreen(CPoint point) const = 0;
    /// Shows a text in a small window of its own while the pointer rests on `area`; empty shows none.
    virtual void showTip(const CRect& area, std::u16string_view text) = 0;
    /// The line of text that a frame shows below its content; empty clears it.
    virtual void setStatusText(std::u16string_view text) = 0;
    /// Destroys the platform's window, its children first. Ends with WM_NCDESTROY, in which the CWnd deletes
    /// this object: sending it must be the last thing that a peer does, here and when the window system
    /// destroys the window.
    virtual void destroy() = 0;
};

} // namespace tavrin
