#include "FileLoad.h"
#include "LoadProgress.h"
#include "MainWindow.h"
#include "OptionsDialog.h"
#include "PageSetupDialog.h"
#include "Prompts.h"
#include "control/TextEditorCtrl.h"
#include "platform/core/UserSettings.h"
#include "platform/qt/widget/XmlEditorWidget.h"
#include "view/EditorSettings.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>

namespace tavrin::app {

using qt::XmlEditorWidget;

namespace {

/// The desktop's icon of that name, or one that every style brings along.
QIcon standardIcon(const char* name, QStyle::StandardPixmap fallback) {
    return QIcon::fromTheme(name, QApplication::style()->standardIcon(fallback));
}

/// `slot` may be a member of the receiver or a function object.
template <class Receiver, class Slot>
QAction* addCommand(QMenu* menu, const QString& text, const QList<QKeySequence>& keys, Receiver* receiver,
                    Slot slot) {
    QAction* action = menu->addAction(text);
    action->setShortcuts(keys);
    QObject::connect(action, &QAction::triggered, receiver, slot);
    return action;
}

} // namespace

void MainWindow::createFileMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    const auto add = [&](const QString& text, const QKeySequence& key, auto slot) {
        return addCommand(menu, text, {key}, this, slot);
    };
    add(tr("&New"), QKeySequence::New, [this] {
        newFile();
    })->setIcon(standardIcon("document-new", QStyle::SP_FileIcon));
    add(tr("&Open…"), QKeySequence::Open, [this] {
        open();
    })->setIcon(standardIcon("document-open", QStyle::SP_DialogOpenButton));
    QMenu* recent = menu->addMenu(tr("Open &Recent"));
    connect(recent, &QMenu::aboutToShow, this, [this, recent] { fillRecentMenu(recent); });
    menu->addSeparator();
    add(tr("&Save"), QKeySequence::Save, [this] {
        save();
    })->setIcon(standardIcon("document-save", QStyle::SP_DialogSaveButton));
    add(tr("Save &As…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S), [this] { saveAs(); });
    QAction* reload = menu->addAction(tr("Re&load from Disk"));
    reload->setStatusTip(tr("Shows what the file holds now; Undo brings back the present text"));
    connect(reload, &QAction::triggered, this, &MainWindow::reloadFile);
    connect(menu, &QMenu::aboutToShow, reload,
            [this, reload] { reload->setEnabled(!document_->path().isEmpty()); });
    menu->addSeparator();
    add(tr("Page Set&up…"), {}, [this] { pageSetup(); });
    add(tr("Print Pre&view…"), {}, [this] { print(&XmlEditorWidget::printPreview); });
    add(tr("&Print…"), QKeySequence::Print, [this] {
        print(&XmlEditorWidget::print);
    })->setIcon(QIcon::fromTheme("document-print"));
    add(tr("Print &Directly"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P),
        [this] { print(&XmlEditorWidget::printDirectly); });
    menu->addSeparator();
    add(tr("&Close"), QKeySequence(Qt::CTRL | Qt::Key_W), [this] { close(); });
    add(tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), [] { QApplication::closeAllWindows(); });
}

void MainWindow::fillRecentMenu(QMenu* menu) {
    menu->clear();
    const QStringList paths = recent_.paths();
    for (qsizetype i = 0; i < paths.size(); ++i) {
        const QString shown = QFileInfo(paths[i]).fileName() + " — " + QFileInfo(paths[i]).absolutePath();
        const QString number = i < 9 ? QString("&%1  ").arg(i + 1) : QString("    ");
        QAction* action = menu->addAction(number + QString(shown).replace('&', "&&"));
        connect(action, &QAction::triggered, this, [this, path = paths[i]] { openFile(path); });
    }
    menu->addSeparator();
    QAction* clear = menu->addAction(tr("&Clear List"));
    clear->setEnabled(!paths.isEmpty());
    connect(clear, &QAction::triggered, this, [this] { recent_.clear(); });
}

void MainWindow::createEditMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&Edit"));
    documentMenus_ += menu;
    const auto add = [&](const QString& text, const QKeySequence& key, auto slot) {
        return addCommand(menu, text, {key}, editor_, slot);
    };
    // Each acts on what is there, as the editor's own keys do.
    const auto enabledBy = [this](QAction* action, auto signal) {
        action->setEnabled(false);
        connect(editor_, signal, action, &QAction::setEnabled);
    };
    QAction* undo = add(tr("&Undo"), QKeySequence::Undo, &XmlEditorWidget::undo);
    QAction* redo = add(tr("&Redo"), {}, &XmlEditorWidget::redo);
    redo->setShortcuts({Qt::CTRL | Qt::Key_Y, Qt::CTRL | Qt::SHIFT | Qt::Key_Z});
    enabledBy(undo, &XmlEditorWidget::undoAvailable);
    enabledBy(redo, &XmlEditorWidget::redoAvailable);
    undo->setIcon(QIcon::fromTheme("edit-undo"));
    redo->setIcon(QIcon::fromTheme("edit-redo"));
    menu->addSeparator();
    QAction* cut = add(tr("Cu&t"), QKeySequence::Cut, &XmlEditorWidget::cut);
    QAction* copy = add(tr("&Copy"), QKeySequence::Copy, &XmlEditorWidget::copy);
    QAction* paste = add(tr("&Paste"), QKeySequence::Paste, &XmlEditorWidget::paste);
    enabledBy(cut, &XmlEditorWidget::copyAvailable);
    enabledBy(copy, &XmlEditorWidget::copyAvailable);
    cut->setIcon(QIcon::fromTheme("edit-cut"));
    copy->setIcon(QIcon::fromTheme("edit-copy"));
    paste->setIcon(QIcon::fromTheme("edit-paste"));
    add(tr("Select &All"), QKeySequence::SelectAll, &XmlEditorWidget::selectAll);
    menu->addSeparator();
    add(tr("&Find…"), QKeySequence(Qt::CTRL | Qt::Key_F), &XmlEditorWidget::find)
        ->setIcon(QIcon::fromTheme("edit-find"));
    add(tr("R&eplace…"), QKeySequence(Qt::CTRL | Qt::Key_H), &XmlEditorWidget::replace)
        ->setIcon(QIcon::fromTheme("edit-find-replace"));
    add(tr("Find Ne&xt"), QKeySequence(Qt::Key_F3), &XmlEditorWidget::findNext);
    add(tr("Find Pre&vious"), QKeySequence(Qt::SHIFT | Qt::Key_F3), &XmlEditorWidget::findPrevious);
    QAction* selectedNext =
        add(tr("Fin&d Selected"), QKeySequence(Qt::CTRL | Qt::Key_F3), &XmlEditorWidget::findSelectedNext);
    QAction* selectedPrevious =
        add(tr("Find Selected &Backwards"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_F3),
            &XmlEditorWidget::findSelectedPrevious);
    enabledBy(selectedNext, &XmlEditorWidget::copyAvailable);
    enabledBy(selectedPrevious, &XmlEditorWidget::copyAvailable);
    add(tr("Incre&mental Search"), QKeySequence(Qt::CTRL | Qt::Key_I),
        &XmlEditorWidget::startIncrementalSearch);
    add(tr("&Go to Line…"), QKeySequence(Qt::CTRL | Qt::Key_G), [this] { gotoLine(); });
    menu->addSeparator();
    add(tr("&Indent"), QKeySequence(Qt::CTRL | Qt::Key_BracketRight), &XmlEditorWidget::indent);
    add(tr("U&nindent"), QKeySequence(Qt::CTRL | Qt::Key_BracketLeft), &XmlEditorWidget::unindent);
    QAction* upper = add(tr("U&pper Case"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_U),
                         &XmlEditorWidget::makeUpperCase);
    QAction* lower =
        add(tr("&Lower Case"), QKeySequence(Qt::CTRL | Qt::Key_U), &XmlEditorWidget::makeLowerCase);
    enabledBy(upper, &XmlEditorWidget::copyAvailable);
    enabledBy(lower, &XmlEditorWidget::copyAvailable);
}

void MainWindow::createViewMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&View"));
    documentMenus_ += menu;
    const auto zoom = [&](const QString& text, const QList<QKeySequence>& keys, auto change) {
        addCommand(menu, text, keys, this, [this, change] {
            change(editor_);
            refreshOtherWindows();
        });
    };
    zoom(tr("Zoom &In"), {Qt::CTRL | Qt::Key_Plus, Qt::CTRL | Qt::Key_Equal},
         [](auto* editor) { editor->zoomIn(); });
    zoom(tr("Zoom &Out"), {Qt::CTRL | Qt::Key_Minus}, [](auto* editor) { editor->zoomOut(); });
    zoom(tr("&Reset Zoom"), {Qt::CTRL | Qt::Key_0}, [](auto* editor) { editor->resetZoom(); });
    menu->addSeparator();
    QAction* numbers = menu->addAction(tr("&Line Numbers"));
    numbers->setCheckable(true);
    connect(menu, &QMenu::aboutToShow, numbers,
            [this, numbers] { numbers->setChecked(editor_->control().displayLineNumbers()); });
    connect(numbers, &QAction::triggered, this, [this](bool shown) {
        services_.platform.settings().setBoolValue(settings::section, settings::displayLineNumbers, shown);
        editor_->settingsChanged();
        refreshOtherWindows();
    });
}

void MainWindow::refreshOtherWindows() {
    for (MainWindow* window : all())
        if (window != this)
            window->editor_->settingsChanged();
}

void MainWindow::createToolsMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&Tools"));
    documentMenus_ += menu;
    addCommand(menu, tr("&Schemas…"), {}, this, [this] {
        showSchemasDialog();
    })->setEnabled(services_.schemas != nullptr);
    QAction* hide = menu->addAction(tr("&Hide Elements Not Allowed Here"));
    hide->setCheckable(true);
    hide->setStatusTip(tr("Lists of elements leave out what the schema has no room for at the caret"));
    UserSettings& stored = services_.platform.settings();
    connect(menu, &QMenu::aboutToShow, hide, [hide, &stored] { // another window may have changed it
        hide->setChecked(stored.getBoolValue(settings::section, settings::hideNotAllowedHere,
                                             settings::defaultHideNotAllowedHere));
    });
    connect(hide, &QAction::triggered, this, [&stored](bool hidden) { // each completion asks
        stored.setBoolValue(settings::section, settings::hideNotAllowedHere, hidden);
    });
    menu->addSeparator();
    QAction* options =
        addCommand(menu, tr("&Options…"), {Qt::CTRL | Qt::Key_Comma}, this, [this] { showOptions(); });
    options->setMenuRole(QAction::PreferencesRole);
    options->setIcon(QIcon::fromTheme("preferences-system"));
}

void MainWindow::showOptions() {
    auto* dialog = new OptionsDialog(services_.platform, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::ApplicationModal); // the settings are those of all windows
    connect(dialog, &OptionsDialog::saved, this, [this] {
        editor_->settingsChanged();
        refreshOtherWindows();
    });
    dialog->show();
}

void MainWindow::createHelpMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&Help"));
    connect(menu->addAction(tr("&About Tavrin XML Editor")), &QAction::triggered, this, &MainWindow::about);
}

void MainWindow::about() {
    QMessageBox::about(this, tr("About Tavrin XML Editor"),
                       tr("<b>Tavrin XML Editor</b> %1<p>A source-text editor for XML.")
                           .arg(QApplication::applicationVersion()));
}

// Printing

void MainWindow::pageSetup() {
    PageSetupDialog(services_.platform.settings(), this).exec();
}

void MainWindow::print(void (XmlEditorWidget::*slot)()) {
    if (refusesWhileLoading())
        return;
    {
        const QScopedValueRollback busy(busy_, true);
        (editor_->*slot)();
    }
    QTimer::singleShot(0, this, &MainWindow::checkDisk);
}

// Status line and title

void MainWindow::createStatusLine() {
    message_ = new QLabel(this);
    // A long message is cut off instead of widening the window.
    message_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusBar()->addWidget(message_, 1);
    progress_ = new LoadProgress(this);
    progress_->hide();
    statusBar()->addPermanentWidget(progress_);
    connect(progress_, &LoadProgress::cancelled, this, &MainWindow::stopLoading);
    const auto add = [this](QLabel*& label) {
        label = new QLabel(this);
        label->setContentsMargins(6, 0, 6, 0);
        statusBar()->addPermanentWidget(label);
    };
    add(schemaState_);
    add(position_);
    createFormButtons();
    add(size_);
    connect(editor_, &XmlEditorWidget::statusMessage, message_, &QLabel::setText);
    connect(editor_, &XmlEditorWidget::cursorPositionChanged, this, &MainWindow::showPosition);
    connect(editor_, &XmlEditorWidget::textChanged, this, &MainWindow::showSize);
}

void MainWindow::showTitle() {
    // The marker for unsaved changes is "[*]"; the same in a file's name stands for itself when doubled.
    const QString shown = !load_      ? document_->displayName()
                          : isReload_ ? tr("%1 (reloading)").arg(document_->displayName())
                                      : tr("%1 (opening)").arg(QFileInfo(load_->path()).fileName());
    setWindowTitle(tr("%1[*] – Tavrin XML Editor").arg(QString(shown).replace("[*]", "[*][*]")));
    setWindowFilePath(document_->path());
    editor_->setDocumentTitle(document_->displayName());
    setWindowModified((!load_ || isReload_) && editor_->isModified());
}

void MainWindow::showPosition() {
    const XmlEditorWidget& shown = shownEditor();
    position_->setText(tr("Line %1, Column %2").arg(shown.currentLine() + 1).arg(shown.currentColumn() + 1));
}

void MainWindow::showSize() {
    const Buffer& buffer = editor_->control().getBuffer();
    const QLocale locale;
    showForm();
    const auto counted = [&](qint64 count, const QString& one, const QString& many) {
        return (count == 1 ? one : many).arg(locale.toString(count));
    };
    size_->setText(counted(buffer.getLineCount(), tr("%1 line"), tr("%1 lines")) + ", " +
                   counted(buffer.getLength(), tr("%1 character"), tr("%1 characters")));
}

void MainWindow::gotoLine() {
    if (refusesWhileLoading())
        return;
    const int last = std::max(editor_->control().getBuffer().getLineCount(), 1);
    if (const auto line = services_.prompts.askLine(this, editor_->currentLine() + 1, last))
        editor_->gotoLineCol(*line - 1, 0);
}

} // namespace tavrin::app
