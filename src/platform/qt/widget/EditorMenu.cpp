#include "platform/qt/widget/EditorMenu.h"

#include "platform/ui/CWnd.h"

#include <QCoreApplication>
#include <QIcon>
#include <QKeySequence>
#include <QMenu>

namespace tavrin::qt {

namespace {

struct Entry {
    UINT command; ///< 0: a line between groups
    const char* text;
    const char* icon;
    Qt::Key key; ///< with Ctrl
};

constexpr Entry entries[] = {
    {ID_EDIT_UNDO, QT_TRANSLATE_NOOP("EditorMenu", "&Undo"), "edit-undo", Qt::Key_Z},
    {ID_EDIT_REDO, QT_TRANSLATE_NOOP("EditorMenu", "&Redo"), "edit-redo", Qt::Key_Y},
    {0, nullptr, nullptr, Qt::Key_unknown},
    {ID_EDIT_CUT, QT_TRANSLATE_NOOP("EditorMenu", "Cu&t"), "edit-cut", Qt::Key_X},
    {ID_EDIT_COPY, QT_TRANSLATE_NOOP("EditorMenu", "&Copy"), "edit-copy", Qt::Key_C},
    {ID_EDIT_PASTE, QT_TRANSLATE_NOOP("EditorMenu", "&Paste"), "edit-paste", Qt::Key_V},
    {0, nullptr, nullptr, Qt::Key_unknown},
    {ID_EDIT_SELECT_ALL, QT_TRANSLATE_NOOP("EditorMenu", "Select &All"), "edit-select-all", Qt::Key_A},
};

} // namespace

QMenu* makeEditorMenu(CWnd& window, QWidget& parent, std::function<void(UINT command)> run) {
    auto* menu = new QMenu(&parent);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const Entry& entry : entries) {
        if (entry.command == 0) {
            menu->addSeparator();
            continue;
        }
        // The keys are the editor's own: shown here, not bound a second time.
        const QString keys = QKeySequence(Qt::CTRL | entry.key).toString(QKeySequence::NativeText);
        QAction* action =
            menu->addAction(QIcon::fromTheme(QLatin1String(entry.icon)),
                            QCoreApplication::translate("EditorMenu", entry.text) + u'\t' + keys);
        CCmdUI state(entry.command);
        window.UpdateCommand(state);
        action->setEnabled(state.isEnabled());
        QObject::connect(action, &QAction::triggered, &parent,
                         [run, command = entry.command] { run(command); });
    }
    return menu;
}

} // namespace tavrin::qt
