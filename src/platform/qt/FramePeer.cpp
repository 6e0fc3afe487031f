#include "platform/qt/FramePeer.h"

#include "platform/qt/QtDC.h"
#include "platform/qt/QtPlatform.h"

#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>

namespace tavrin::qt {

namespace {

class FrameWidget final : public QWidget, public PeerWidget {
  public:
    explicit FrameWidget(QWidget* parent) : QWidget(parent) {
        setFocusPolicy(Qt::NoFocus);
        hide();
    }
    ~FrameWidget() override { windowDestroyed(); }

  protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::DeferredDelete)
            return QWidget::event(event); // this widget is gone afterwards
        const EventScope scope(*this);
        return QWidget::event(event);
    }
    void resizeEvent(QResizeEvent* event) override {
        MSG message{.message = WM_SIZE};
        message.size = {event->size().width(), event->size().height()};
        send(message);
    }
    void focusInEvent(QFocusEvent*) override { send({.message = WM_SETFOCUS}); }
    void focusOutEvent(QFocusEvent*) override { send({.message = WM_KILLFOCUS}); }
    void paintEvent(QPaintEvent* event) override {
        if (!peer())
            return;
        QPainter painter(this);
        QtDC dc(painter, event->region(), peer()->platform().defaultFont());
        MSG message{.message = WM_PAINT};
        message.dc = &dc;
        send(message);
    }

  private:
    void send(const MSG& message) {
        if (peer())
            peer()->window().SendMessage(message);
    }
};

} // namespace

FramePeer::FramePeer(QtPlatform& platform, CWnd& window, QWidget* parent)
    : QtWindowPeer(platform, window, new FrameWidget(parent)) {}

void FramePeer::setStatusText(std::u16string_view text) {
    if (statusHandler_)
        statusHandler_(text);
}

} // namespace tavrin::qt
