#pragma once

#include "platform/qt/BlinkingCaret.h"
#include "platform/qt/Preedit.h"
#include "platform/qt/QtWindowPeer.h"
#include "platform/qt/RowMemory.h"
#include "platform/qt/ScrollBars.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QFont>

#include <deque>
#include <memory>

class QKeyEvent;

namespace tavrin::qt {

class QtPlatform;
class ViewClient;

/// The widget of a view: turns Qt's events into window messages, and shows caret, preedit text and scroll
/// bars.
class ViewWidget final : public QAbstractScrollArea, public PeerWidget {
  public:
    ViewWidget(QtPlatform& platform, QWidget* parent, const CREATESTRUCT& how);
    ~ViewWidget() override;

    [[nodiscard]] BlinkingCaret& caret() { return caret_; }
    [[nodiscard]] ScrollBars& bars() { return bars_; }
    void setClient(ViewClient* client) { client_ = client; }
    [[nodiscard]] ViewClient* client() const { return client_; }
    void moveCaret(CPoint position);
    /// Paints again what looks otherwise in the area, before the next event from outside.
    void invalidate(const QRect& area);
    void scrollContent(int dx, int dy, const QRect& rect);
    void setCapture(bool on);
    /// To be called when the view has handled input of the user's that did not come as an event of its own.
    void finishInput();
    [[nodiscard]] bool hasCapture() const { return captured_; }
    /// Keeps a key or text that came while a popup was closing that had the keyboard: who opened it has to
    /// finish first.
    void holdInput(std::unique_ptr<QEvent> event);
    /// Handles the oldest of it, and the view may be gone afterwards. False when there is none.
    bool handleHeldInput();
    /// Handles what there is of it when nothing else is being done.
    void handleHeldInputLater();

    /// A dialog of the view's has had its request answered.
    void requestHandled() { finishInput(); }

    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

  protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void scrollContentsBy(int, int) override {}
    bool focusNextPrevChild(bool) override { return false; } // Tab is text
    void timerEvent(QTimerEvent* event) override;

    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    LRESULT send(const MSG& message);
    LRESULT sendMouse(UINT message, const QMouseEvent& event);
    void sendSize();
    /// One character through PreTranslateMessage, then WM_CHAR.
    void sendCharacter(char16_t character);
    /// Offers a keyboard message to PreTranslateMessage, then sends it.
    bool translateOrSend(const MSG& message);
    template <class Handle>
    bool handle(Handle how);
    bool handleEvent(QEvent* event);
    [[nodiscard]] bool claimsKey(const QKeyEvent& event) const;
    bool handleKey(const QKeyEvent& event);
    void beAPopup();
    void updateChangedRows();
    void commitPreedit();
    void pasteAt(const QMouseEvent& event);
    void handleAllHeldInput();

    QtPlatform& platform_;
    ViewClient* client_ = nullptr;
    BlinkingCaret caret_;
    ScrollBars bars_;
    Preedit preedit_;
    RowMemory rows_;
    QRegion invalid_; ///< not yet looked at
    QFont textFont_;  ///< of the text last painted
    QBasicTimer dragTimer_;
    MSG lastDrag_{};
    bool captured_ = false;
    std::deque<std::unique_ptr<QEvent>> held_;
};

} // namespace tavrin::qt
