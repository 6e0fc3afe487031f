#pragma once

#include "platform/ui/CWnd.h"

#include <QWidget>

#include <utility>

namespace tavrin::qt {

class QtPlatform;
class QtWindowPeer;

/// The widget's end of the link between a widget and its peer, either of which may go first.
class PeerWidget {
  public:
    PeerWidget() = default;
    PeerWidget(const PeerWidget&) = delete;
    PeerWidget& operator=(const PeerWidget&) = delete;

    /// Null once the window is gone; the widget is then an empty shell.
    [[nodiscard]] QtWindowPeer* peer() const { return peer_; }
    void attach(QtWindowPeer* peer) { peer_ = peer; }
    /// Whether the widget is handling an event, and so must not be deleted yet.
    [[nodiscard]] bool isBusy() const { return handling_ != nullptr; }

  protected:
    ~PeerWidget() = default;

    /// Marks the handling of one event. The widget may be deleted meanwhile, when its host is while a popup
    /// is up.
    class EventScope {
      public:
        explicit EventScope(PeerWidget& widget)
            : widget_(&widget), outer_(std::exchange(widget.handling_, this)) {}
        EventScope(const EventScope&) = delete;
        EventScope& operator=(const EventScope&) = delete;
        ~EventScope() {
            if (widget_)
                widget_->handling_ = outer_;
        }

      private:
        friend class PeerWidget;
        PeerWidget* widget_;
        EventScope* outer_;
    };

    /// To be called first by the destructor: lets the windows inside go, then this one.
    void windowDestroyed();

  private:
    QtWindowPeer* peer_ = nullptr;
    EventScope* handling_ = nullptr; ///< the innermost event
};

/// What frames and views have in common: a window that is a QWidget. Client pixels are Qt's logical pixels.
class QtWindowPeer : public WindowPeer {
  public:
    ~QtWindowPeer() override;

    /// The peer of a window of this platform; null when it has none.
    [[nodiscard]] static QtWindowPeer* of(const CWnd& window) {
        return dynamic_cast<QtWindowPeer*>(window.peer());
    }

    [[nodiscard]] QtPlatform& platform() const { return platform_; }
    [[nodiscard]] CWnd& window() const { return window_; }
    [[nodiscard]] QWidget& widget() const { return *widget_; }
    /// The widget whose area is the client area: the viewport of one with scroll bars.
    [[nodiscard]] virtual QWidget& clientWidget() const { return *widget_; }
    /// The widget is being destroyed by its parent. Sends WM_NCDESTROY, which ends this object.
    void onWidgetDestroyed();

    [[nodiscard]] CSize clientSize() const override;
    [[nodiscard]] CRect windowRect() const override;
    void moveWindow(const CRect& rectInParent) override;
    void movePopup(CPoint corner) override;
    void show(bool visible) override;
    [[nodiscard]] bool isVisible() const override;
    void setFocus() override;
    [[nodiscard]] bool hasFocus() const override;
    void invalidate(const CRect& rect) override;
    void scrollWindow(int dx, int dy, const CRect& rect) override;
    [[nodiscard]] std::unique_ptr<CDC> clientDC() override;
    void setCursor(CursorShape shape) override;
    [[nodiscard]] CPoint clientToScreen(CPoint point) const override;
    void showTip(const CRect& area, std::u16string_view text) override;
    void setStatusText(std::u16string_view) override {}
    void destroy() override;

    // What only a view has.
    void setScrollInfo(ScrollBarKind, const ScrollInfo&) override {}
    [[nodiscard]] int trackPosition(ScrollBarKind) const override { return 0; }
    [[nodiscard]] bool isScrollBarEnabled(ScrollBarKind) const override { return false; }
    void createCaret(int, int) override {}
    void destroyCaret() override {}
    void setCaretPos(CPoint) override {}
    void showCaret() override {}
    void setCapture() override {}
    void releaseCapture() override {}
    [[nodiscard]] bool hasCapture() const override { return false; }

  protected:
    /// Takes a new widget that is also a PeerWidget.
    template <class Widget>
    QtWindowPeer(QtPlatform& platform, CWnd& window, Widget* widget)
        : platform_(platform), window_(window), widget_(widget), link_(widget) {
        link_->attach(this);
    }

  private:
    /// Cuts the link and deletes the widget, later if it is handling an event.
    void discardWidget();

    QtPlatform& platform_;
    CWnd& window_;
    QWidget* widget_;
    PeerWidget* link_;
    CursorShape cursor_ = CursorShape::Arrow;
};

} // namespace tavrin::qt
