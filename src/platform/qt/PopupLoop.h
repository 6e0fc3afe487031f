#pragma once

#include <QAccessible>
#include <QEventLoop>
#include <QObject>
#include <QPointer>
#include <QShortcutEvent>

#include <memory>
#include <vector>

class QInputMethodEvent;
class QKeyEvent;

namespace tavrin {
class CWnd;
} // namespace tavrin

namespace tavrin::qt {

class QtPlatform;
class ViewWidget;

/// Runs the application while a popup, shown and without the focus, has the keyboard of the view that it
/// belongs to. The popup closes when the user turns to something else: presses or turns the wheel outside,
/// moves or leaves the view's window, gives the focus to another widget, uses a shortcut of the host's.
class PopupLoop final : public QObject {
  public:
    /// The popup's parent is a view of this platform.
    PopupLoop(QtPlatform& platform, CWnd& popup);

    /// Returns when the popup's window is gone. View and host may be gone by then too.
    void run();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Postponed {
        QPointer<QObject> receiver;
        std::unique_ptr<QShortcutEvent> event;
    };

    [[nodiscard]] bool isUp() const;
    void close();
    /// Whether the object is the popup, or lies in it or in a window of its own.
    [[nodiscard]] bool isInside(const QObject* object) const;
    bool filterWhileClosing(QObject* watched, QEvent* event);
    bool filterForView(QEvent* event);
    void postpone(QObject* receiver, const QShortcutEvent& shortcut);
    void playKey(const QKeyEvent& event);
    void playText(const QInputMethodEvent& event);
    void play(unsigned message, unsigned key);
    void finishInput();
    /// Tells assistive technology of the list's item that the keyboard is at, unless it was told of it.
    void tellFocus();

    QtPlatform& platform_;
    CWnd& popup_;
    QPointer<QWidget> widget_; ///< of the popup
    QPointer<ViewWidget> view_;
    QPointer<QWidget> window_; ///< that the view lies in
    QEventLoop loop_;
    QAccessible::Id told_ = 0;
    std::vector<Postponed> postponed_; ///< shortcuts, until the popup has gone
};

} // namespace tavrin::qt
