#pragma once

#include <QApplication>

namespace tavrin::app {

/// What lacks memory in menus, dialogs and the window around the editor ends that event only; the editor's
/// own events don't get this far.
class EditorApplication final : public QApplication {
  public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override;
};

} // namespace tavrin::app
