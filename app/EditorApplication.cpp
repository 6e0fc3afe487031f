#include "EditorApplication.h"

#include "MainWindow.h"

#include <new>

namespace tavrin::app {

bool EditorApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::bad_alloc&) {
        for (QWidget* widget = activeWindow(); widget; widget = widget->parentWidget())
            if (auto* window = qobject_cast<MainWindow*>(widget))
                window->memoryExhausted();
        return true;
    }
}

} // namespace tavrin::app
