#pragma once

#include "platform/ui/CWnd.h"

#include <QWidget>

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
    [[nodiscard]] bool isBusy() const { return busy_ > 0; }

  protected:
    ~PeerWidget() = default;

    /// Marks the handling of one event.
    class EventScope {
      public:
        explicit EventScope(PeerWidget& widget) : widget_(widget) { ++widget_.busy_; }
        EventScope(const EventScope&) = delete;
        EventScope& operator=(const EventScope&) = delete;
        ~EventScope() { --widget_.busy_; }

      private:
        PeerWidget& widget_;
    };

    /// To be called first by the destructor: lets the windows inside go, then this one.
    void windowDestroyed();

  private:
    QtWindowPeer* peer_ = nullptr;
    int busy_ = 0;
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
    void moveWindow(const CRect& rectInParent) override;
    void show(bool visible) override;
    [[nodiscard]] bool isVisible() const override;
    void setFocus() override;
    [[nodiscard]] bool hasFocus() const override;
    void invalidate(const CRect& rect) override;
    void scrollWindow(int dx, int dy, const CRect& rect) override;
    [[nodiscard]] std::unique_ptr<CDC> clientDC() override;
    void setCursor(CursorShape shape) override;
    [[nodiscard]] CPoint clientToScreen(CPoint point) const override;
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
