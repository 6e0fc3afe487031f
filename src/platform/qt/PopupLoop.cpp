#include "platform/qt/PopupLoop.h"

#include "platform/qt/AccessibleEvents.h"
#include "platform/qt/Conversions.h"
#include "platform/qt/KeyTranslation.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/QtWindowPeer.h"
#include "platform/qt/ViewWidget.h"
#include "platform/ui/CWnd.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>

namespace tavrin::qt {

PopupLoop::PopupLoop(QtPlatform& platform, CWnd& popup)
    : platform_(platform), popup_(popup), widget_(&QtWindowPeer::of(popup)->widget()) {
    if (const QtWindowPeer* owner = popup.GetParent() ? QtWindowPeer::of(*popup.GetParent()) : nullptr) {
        view_ = dynamic_cast<ViewWidget*>(&owner->widget());
        window_ = owner->widget().window();
    }
}

bool PopupLoop::isUp() const {
    return popup_.peer() != nullptr;
}

void PopupLoop::close() {
    if (isUp())
        popup_.DestroyWindow();
    loop_.quit();
}

void PopupLoop::run() {
    if (view_ && !view_->hasFocus())
        view_->setFocus(Qt::OtherFocusReason);
    connect(widget_, &QObject::destroyed, &loop_, &QEventLoop::quit);
    qApp->installEventFilter(this);
    tellFocus();
    while (isUp() && view_ && view_->handleHeldInput()) { // which was typed behind what opened the popup
    }
    if (isUp())
        loop_.exec();
    qApp->removeEventFilter(this);
    close(); // the application is quitting
    if (view_ && told_ != 0) {
        QAccessibleEvent back(view_, QAccessible::Focus);
        sendAccessible(back);
    }
    if (view_)
        view_->handleHeldInputLater();
    // A command that came by a shortcut finds the view as it is without a popup.
    for (Postponed& shortcut : postponed_)
        if (shortcut.receiver)
            QCoreApplication::postEvent(shortcut.receiver, shortcut.event.release());
}

bool PopupLoop::isInside(const QObject* object) const {
    while (object && object != widget_)
        object = object->parent();
    return object != nullptr;
}

bool PopupLoop::eventFilter(QObject* watched, QEvent* event) {
    if (!isUp())
        return filterWhileClosing(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
        if (watched->isWidgetType() && !isInside(watched))
            close();
        return false;
    case QEvent::ApplicationStateChange:
        if (QGuiApplication::applicationState() != Qt::ApplicationActive)
            close();
        return false;
    case QEvent::WindowDeactivate:
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Hide:
        if (watched == window_ || (watched == view_ && event->type() == QEvent::Hide))
            close();
        return false;
    case QEvent::Shortcut:
        postpone(watched, static_cast<const QShortcutEvent&>(*event));
        close();
        return true;
    default:
        return watched == view_ && filterForView(event);
    }
}

void PopupLoop::postpone(QObject* receiver, const QShortcutEvent& shortcut) {
    postponed_.push_back({receiver, std::make_unique<QShortcutEvent>(shortcut.key(), shortcut.shortcutId(),
                                                                     shortcut.isAmbiguous())});
}

/// The popup has gone, but what follows from that is only done when the loop has ended, and events may come
/// before: what the user typed must not overtake what the popup was closed with.
bool PopupLoop::filterWhileClosing(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::Shortcut:
        postpone(watched, static_cast<const QShortcutEvent&>(*event));
        return true;
    case QEvent::KeyPress:
    case QEvent::InputMethod:
        if (watched != view_)
            return false;
        view_->holdInput(std::unique_ptr<QEvent>(event->clone()));
        return true;
    default:
        return false;
    }
}

bool PopupLoop::filterForView(QEvent* event) {
    switch (event->type()) {
    case QEvent::ShortcutOverride: {
        auto& key = static_cast<QKeyEvent&>(*event);
        key.setAccepted(outranksShortcuts(key));
        return true;
    }
    case QEvent::KeyPress:
        playKey(static_cast<const QKeyEvent&>(*event));
        return true;
    case QEvent::InputMethod:
        playText(static_cast<const QInputMethodEvent&>(*event));
        return true;
    case QEvent::FocusOut:
        close();
        return false;
    default:
        return false;
    }
}

void PopupLoop::play(unsigned message, unsigned key) {
    const MSG input{.message = message, .key = key};
    if (isUp() && !popup_.TranslateMessage(input))
        popup_.SendMessage(input);
}

void PopupLoop::playKey(const QKeyEvent& event) {
    const QtPlatform::ModifierScope scope(platform_, event.modifiers());
    const KeyPress press = translateKey(event);
    if (press.virtualKey != 0)
        play(WM_KEYDOWN, press.virtualKey);
    for (const char16_t character : press.characters)
        play(WM_CHAR, character);
    finishInput();
}

void PopupLoop::playText(const QInputMethodEvent& event) {
    const QtPlatform::ModifierScope scope(platform_, Qt::NoModifier);
    for (const char16_t character : toU16(event.commitString()))
        play(WM_CHAR, character);
    finishInput();
}

void PopupLoop::finishInput() {
    if (view_)
        view_->finishInput();
    if (isUp())
        tellFocus();
    else
        loop_.quit();
}

void PopupLoop::tellFocus() {
    const QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(widget_);
    QAccessibleInterface* const item = list ? list->focusChild() : nullptr;
    if (!item || QAccessible::uniqueId(item) == told_)
        return;
    told_ = QAccessible::uniqueId(item);
    QAccessibleEvent focus(item, QAccessible::Focus);
    sendAccessible(focus);
}

} // namespace tavrin::qt
