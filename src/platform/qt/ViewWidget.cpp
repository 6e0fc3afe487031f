#include "platform/qt/ViewWidget.h"

#include "platform/qt/AccessibleList.h"
#include "platform/qt/Conversions.h"
#include "platform/qt/KeyTranslation.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/ViewClient.h"
#include "platform/ui/CListCtrl.h"
#include "platform/ui/CScrollView.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethod>
#include <QKeyEvent>
#include <QPainter>
#include <QPointer>
#include <QScrollBar>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace tavrin::qt {

namespace {

/// How often a drag that has left the window goes on, in milliseconds.
constexpr int dragInterval = 40;

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* const view = dynamic_cast<ViewWidget*>(object);
    if (view && view->client())
        return view->client()->makeAccessible(*view);
    const auto* const list =
        view && view->peer() ? dynamic_cast<const CListCtrl*>(&view->peer()->window()) : nullptr;
    return list ? new AccessibleList(*view, *list) : nullptr;
}

UINT mouseFlags(Qt::KeyboardModifiers modifiers) {
    return (modifiers.testFlag(Qt::ShiftModifier) ? MK_SHIFT : 0) |
           (modifiers.testFlag(Qt::ControlModifier) ? MK_CONTROL : 0);
}

/// Posted by a view to itself.
QEvent::Type changedRowsEvent() {
    static const int type = QEvent::registerEventType();
    return static_cast<QEvent::Type>(type);
}

} // namespace

ViewWidget::ViewWidget(QtPlatform& platform, QWidget* parent, const CREATESTRUCT& how)
    : QAbstractScrollArea(parent),
      platform_(platform),
      caret_([this](const QRect& area) { viewport()->update(area); }),
      bars_(*this, how,
            [this](UINT message, UINT code, int position) {
                const EventScope scope(*this);
                send({.message = message, .key = code, .delta = position});
            }),
      textFont_(platform.defaultFont().renderer().font()) {
    QAccessible::installFactory(makeAccessible); // once, however often it is called
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent); // scrolling moves pixels only then
    viewport()->setAutoFillBackground(false);
    viewport()->setMouseTracking(true);
    if (how.popup)
        beAPopup();
    hide();
}

/// A window of its own that takes neither focus nor activation, with a thin border. On X11 no window manager
/// has a say in it; on Wayland its place follows from the parent.
void ViewWidget::beAPopup() {
    setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_InputMethodEnabled, false);
    setFocusPolicy(Qt::NoFocus);
    viewport()->setFocusPolicy(Qt::NoFocus);
    verticalScrollBar()->setFocusPolicy(Qt::NoFocus);
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, colours.color(QPalette::Mid)); // of the border
    setPalette(colours);
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setLineWidth(1);
}

ViewWidget::~ViewWidget() {
    client_ = nullptr;
    windowDestroyed();
}

LRESULT ViewWidget::send(const MSG& message) {
    return peer() ? peer()->window().SendMessage(message) : 0;
}

void ViewWidget::finishInput() {
    if (client_)
        client_->inputHandled();
    if (peer() && hasFocus())
        updateMicroFocus(Qt::ImQueryInput);
}

// Events

/// What throws for want of memory must not pass through Qt.
template <class Handle>
bool ViewWidget::handle(Handle how) {
    const QPointer<ViewWidget> alive(this);
    try {
        return how();
    } catch (const std::bad_alloc&) {
        if (alive && peer())
            peer()->window().MemoryExhausted();
        return true;
    }
}

bool ViewWidget::event(QEvent* event) {
    if (event->type() == QEvent::DeferredDelete)
        return QAbstractScrollArea::event(event); // this widget is gone afterwards
    const EventScope scope(*this);
    return handle([&] { return handleEvent(event); });
}

bool ViewWidget::handleEvent(QEvent* event) {
    if (event->type() == changedRowsEvent()) {
        updateChangedRows();
        return true;
    }
    if (event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event);
        key->setAccepted(claimsKey(*key));
        return key->isAccepted();
    }
    return QAbstractScrollArea::event(event);
}

bool ViewWidget::viewportEvent(QEvent* event) {
    const EventScope scope(*this);
    return handle([&] { return QAbstractScrollArea::viewportEvent(event); });
}

void ViewWidget::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() != QEvent::PaletteChange || !peer())
        return;
    if (auto* view = dynamic_cast<CScrollView*>(&peer()->window()))
        view->OnUpdate();
}

void ViewWidget::showEvent(QShowEvent* event) {
    QAbstractScrollArea::showEvent(event);
    sendSize(); // a view measures itself only while it is visible
}

void ViewWidget::hideEvent(QHideEvent* event) {
    setCapture(false);
    QAbstractScrollArea::hideEvent(event);
}

void ViewWidget::resizeEvent(QResizeEvent*) {
    sendSize();
}

void ViewWidget::sendSize() {
    MSG message{.message = WM_SIZE};
    message.size = {viewport()->width(), viewport()->height()};
    send(message);
}

void ViewWidget::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    if (!peer()) {
        painter.fillRect(event->rect(), palette().base());
        return;
    }
    {
        RowPainter dc(painter, event->region(), platform_.defaultFont(), rows_);
        MSG message{.message = WM_PAINT};
        message.dc = &dc;
        send(message);
        textFont_ = dc.currentFont();
    }

    painter.setClipping(false);
    if (preedit_.isEmpty())
        caret_.paint(painter);
    else
        preedit_.paint(painter, caret_.rect(), viewport()->width(), palette());
}

void ViewWidget::invalidate(const QRect& area) {
    if (rows_.isEmpty()) {
        viewport()->update(area);
        return;
    }
    if (invalid_.isEmpty())
        QCoreApplication::postEvent(this, new QEvent(changedRowsEvent()));
    invalid_ += area;
}

void ViewWidget::updateChangedRows() {
    const QRegion area = std::exchange(invalid_, {});
    if (area.isEmpty() || !peer())
        return;
    RowComparison dc(platform_.defaultFont(), rows_);
    MSG message{.message = WM_PAINT};
    message.dc = &dc;
    send(message);
    viewport()->update(dc.changed(area));
}

void ViewWidget::scrollContent(int dx, int dy, const QRect& rect) {
    viewport()->update(std::exchange(invalid_, {}));
    rows_.clear();
    viewport()->scroll(dx, dy, rect);
    caret_.contentScrolled(dx, dy, rect);
    if (!preedit_.isEmpty())
        viewport()->update();
}

void ViewWidget::moveCaret(CPoint position) {
    caret_.moveTo(position);
    if (!preedit_.isEmpty())
        viewport()->update();
}

void ViewWidget::focusInEvent(QFocusEvent*) {
    send({.message = WM_SETFOCUS});
    finishInput();
}

void ViewWidget::focusOutEvent(QFocusEvent* event) {
    commitPreedit();
    if (event->reason() == Qt::ActiveWindowFocusReason)
        setCapture(false);
    send({.message = WM_KILLFOCUS});
}

// Keys

bool ViewWidget::claimsKey(const QKeyEvent& event) const {
    if (!peer())
        return false;
    const QtPlatform::ModifierScope scope(platform_, event.modifiers());
    const CWnd& window = peer()->window();
    const MSG message{.message = WM_KEYDOWN, .key = translateKey(event).virtualKey};
    if (outranksShortcuts(event) || window.IsAccelerator(message))
        return true;
    const auto command = desktopCommand(event);
    return command && window.GetMessageMap().find(RouteKind::Command, *command) != nullptr;
}

void ViewWidget::keyPressEvent(QKeyEvent* event) {
    const QtPlatform::ModifierScope scope(platform_, event->modifiers());
    const QPointer<ViewWidget> alive(this); // a popup may run, and the host go meanwhile
    event->setAccepted(handleKey(*event));
    if (alive)
        finishInput();
    if (alive)
        handleAllHeldInput();
}

bool ViewWidget::handleKey(const QKeyEvent& event) {
    if (!peer())
        return false;
    const KeyPress press = translateKey(event);
    const MSG down{.message = WM_KEYDOWN, .key = press.virtualKey};
    const QPointer<ViewWidget> alive(this);
    if (press.virtualKey != 0 && peer()->window().TranslateMessage(down))
        return true;
    if (!alive)
        return true;
    if (const auto command = desktopCommand(event);
        command && peer() && peer()->window().SendCommand(*command))
        return true;
    if (press.virtualKey != 0)
        send(down);
    for (const char16_t character : press.characters)
        if (alive)
            sendCharacter(character);
    return !alive || isEditingKey(event);
}

void ViewWidget::sendCharacter(char16_t character) {
    const MSG message{.message = WM_CHAR, .key = character};
    if (peer() && !peer()->window().TranslateMessage(message))
        send(message);
}

// Input that had to wait

void ViewWidget::holdInput(std::unique_ptr<QEvent> event) {
    held_.push_back(std::move(event));
}

bool ViewWidget::handleHeldInput() {
    if (held_.empty())
        return false;
    const std::unique_ptr<QEvent> event = std::move(held_.front());
    held_.pop_front();
    QCoreApplication::sendEvent(this, event.get());
    return true;
}

void ViewWidget::handleAllHeldInput() {
    const QPointer<ViewWidget> alive(this);
    while (alive && handleHeldInput()) {
    }
}

void ViewWidget::handleHeldInputLater() {
    const auto handle = [this] {
        const QPointer<ViewWidget> alive(this);
        for (std::size_t count = held_.size(); alive && count > 0; --count) // it may be held once more
            handleHeldInput();
    };
    if (!held_.empty())
        QMetaObject::invokeMethod(this, handle, Qt::QueuedConnection);
}

// Input methods

void ViewWidget::inputMethodEvent(QInputMethodEvent* event) {
    const QtPlatform::ModifierScope scope(platform_, Qt::NoModifier);
    if (event->replacementLength() > 0 && client_)
        client_->removeAroundCaret(event->replacementStart(), event->replacementLength());
    preedit_.clear();
    const QPointer<ViewWidget> alive(this);
    for (const char16_t character : toU16(event->commitString())) {
        if (character == u'\n' || character == u'\r')
            send({.message = WM_KEYDOWN, .key = VK_RETURN});
        else
            sendCharacter(character);
        if (!alive)
            return;
    }
    preedit_.set(*event, textFont_, palette());
    viewport()->update();
    event->accept();
    finishInput();
    if (alive)
        handleAllHeldInput();
}

void ViewWidget::commitPreedit() {
    if (!preedit_.isEmpty())
        QGuiApplication::inputMethod()->commit();
}

QVariant ViewWidget::inputMethodQuery(Qt::InputMethodQuery query) const {
    switch (query) {
    case Qt::ImEnabled:
        return true;
    case Qt::ImHints:
        return static_cast<int>(Qt::ImhMultiLine | Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText);
    case Qt::ImFont:
        return textFont_;
    case Qt::ImCursorRectangle:
    case Qt::ImAnchorRectangle: {
        const QRect caret = caret_.rect();
        const QRect shown = preedit_.isEmpty() ? caret : preedit_.cursor(caret, viewport()->width());
        return shown.translated(viewport()->pos());
    }
    default:
        break;
    }
    if (!client_)
        return QAbstractScrollArea::inputMethodQuery(query);
    switch (query) {
    case Qt::ImSurroundingText:
        return client_->surroundingText().text;
    case Qt::ImCursorPosition:
        return client_->surroundingText().cursor;
    case Qt::ImAnchorPosition:
        return client_->surroundingText().anchor;
    case Qt::ImCurrentSelection:
        return client_->selectedText();
    default:
        return QAbstractScrollArea::inputMethodQuery(query);
    }
}

// Mouse

LRESULT ViewWidget::sendMouse(UINT message, const QMouseEvent& event) {
    const QtPlatform::ModifierScope scope(platform_, event.modifiers());
    MSG mouse{.message = message, .flags = mouseFlags(event.modifiers())};
    mouse.point = toCPoint(event.position().toPoint());
    return send(mouse);
}

void ViewWidget::mousePressEvent(QMouseEvent* event) {
    commitPreedit();
    if (event->button() == Qt::LeftButton)
        sendMouse(WM_LBUTTONDOWN, *event);
    else if (event->button() == Qt::RightButton)
        sendMouse(WM_RBUTTONDOWN, *event);
    else if (event->button() == Qt::MiddleButton)
        pasteAt(*event);
    else
        event->ignore();
    finishInput();
}

void ViewWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        sendMouse(WM_LBUTTONDBLCLK, *event);
    else if (event->button() == Qt::RightButton)
        sendMouse(WM_RBUTTONDBLCLK, *event);
    else
        event->ignore();
    finishInput();
    if (event->button() == Qt::LeftButton && client_)
        client_->mouseSelectionDone();
}

void ViewWidget::mouseMoveEvent(QMouseEvent* event) {
    MSG cursor{.message = WM_SETCURSOR, .key = HTCLIENT, .flags = WM_MOUSEMOVE};
    cursor.point = toCPoint(event->position().toPoint());
    send(cursor);
    sendMouse(WM_MOUSEMOVE, *event);
    if (captured_) {
        lastDrag_ = {.message = WM_MOUSEMOVE, .flags = mouseFlags(event->modifiers())};
        lastDrag_.point = cursor.point;
        if (viewport()->rect().contains(event->position().toPoint()))
            dragTimer_.stop();
        else if (!dragTimer_.isActive())
            dragTimer_.start(dragInterval, this);
        finishInput();
    }
}

void ViewWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const bool selecting = captured_;
    sendMouse(WM_LBUTTONUP, *event);
    finishInput();
    if (selecting && client_)
        client_->mouseSelectionDone();
}

void ViewWidget::timerEvent(QTimerEvent* event) {
    if (event->timerId() != dragTimer_.timerId()) {
        QAbstractScrollArea::timerEvent(event);
        return;
    }
    send(lastDrag_);
    finishInput();
}

void ViewWidget::setCapture(bool on) {
    if (std::exchange(captured_, on) == on || on)
        return;
    dragTimer_.stop();
    send({.message = WM_CAPTURECHANGED});
}

void ViewWidget::pasteAt(const QMouseEvent& event) {
    if (!client_ || !QGuiApplication::clipboard()->supportsSelection())
        return;
    const QtPlatform::ModifierScope scope(platform_, Qt::NoModifier);
    MSG place{.message = WM_LBUTTONDOWN};
    place.point = toCPoint(event.position().toPoint());
    send(place);
    place.message = WM_LBUTTONUP;
    send(place);
    if (client_)
        client_->primaryPasteRequested();
}

void ViewWidget::wheelEvent(QWheelEvent* event) {
    event->ignore();
    if (!peer() || event->modifiers().testFlag(Qt::ControlModifier))
        return; // zooming is the host's
    QPoint rotation = event->angleDelta();
    if (event->modifiers().testFlag(Qt::ShiftModifier) && rotation.x() == 0)
        rotation = rotation.transposed();

    const QtPlatform::ModifierScope scope(platform_, event->modifiers());
    const auto turn = [&](UINT message, ScrollBarKind bar, int delta) {
        // A view that fits leaves the wheel to a scrolling host around it.
        if (delta == 0 || !bars_.canScroll(bar))
            return;
        MSG wheel{.message = message, .flags = mouseFlags(event->modifiers())};
        wheel.delta =
            std::clamp<int>(delta, std::numeric_limits<short>::min(), std::numeric_limits<short>::max());
        wheel.point = toCPoint(event->position().toPoint());
        send(wheel);
        event->accept();
    };
    turn(WM_MOUSEWHEEL, SB_VERT, rotation.y());
    turn(WM_MOUSEHWHEEL, SB_HORZ, -rotation.x()); // Qt counts to the left
    finishInput();
}

void ViewWidget::contextMenuEvent(QContextMenuEvent* event) {
    const QPoint position = event->reason() == QContextMenuEvent::Mouse
                                ? event->globalPos()
                                : viewport()->mapToGlobal(caret_.rect().bottomLeft());
    MSG message{.message = WM_CONTEXTMENU};
    message.point = toCPoint(position);
    send(message);
    if (client_)
        client_->contextMenuRequested(position);
    finishInput();
}

} // namespace tavrin::qt
