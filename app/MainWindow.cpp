#include "MainWindow.h"

#include "FileLoad.h"
#include "FileWatch.h"
#include "Prompts.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/widget/XmlEditorWidget.h"
#include "platform/schema/DocumentSchemas.h"
#include "recovery/EditJournal.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QSessionManager>
#include <QSettings>
#include <QStackedWidget>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <chrono>

namespace tavrin::app {

namespace {

constexpr auto placeKey = "Window/Place";

QStringList localFiles(const QMimeData& data) {
    QStringList paths;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile())
            paths += url.toLocalFile();
    return paths;
}

} // namespace

MainWindow::MainWindow(const Services& services)
    : services_(services),
      recent_(services.settings),
      pages_(new QStackedWidget(this)),
      editor_(new qt::XmlEditorWidget(services.platform, pages_)),
      document_(std::make_unique<FileDocument>(editor_->control().getBuffer(), services_.backups)),
      watch_(new FileWatch(this)),
      claim_(services_.openFiles) {
    setAttribute(Qt::WA_DeleteOnClose);
    setAcceptDrops(true);
    pages_->addWidget(editor_);
    setCentralWidget(pages_);
    createFileMenu();
    createEditMenu();
    createViewMenu();
    createDocumentMenu();
    createToolsMenu();
    createHelpMenu();
    createStatusLine();
    createSchemas();
    createJournal();
    connect(editor_, &qt::XmlEditorWidget::modificationChanged, this, &QWidget::setWindowModified);
    connect(watch_, &FileWatch::touched, this, &MainWindow::checkDisk);
    connect(qApp, &QGuiApplication::commitDataRequest, this, &MainWindow::endSession, Qt::DirectConnection);
    restorePlace();
    document_->startNew();
    documentReplaced();
    editor_->gotoLineCol(1, 0);
    editor_->setFocus();
}

MainWindow::~MainWindow() {
    editor_->control().setSchemaSource(nullptr);
}

void MainWindow::memoryExhausted() {
    editor_->control().MemoryExhausted();
}

void MainWindow::restorePlace() {
    if (!restoreGeometry(services_.settings.value(placeKey).toByteArray()))
        resize(1000, 700);
}

// Opening

void MainWindow::newFile() {
    if (!mayDiscard())
        return;
    document_->startNew();
    documentReplaced();
    editor_->gotoLineCol(1, 0);
}

void MainWindow::open() {
    const QString folder =
        document_->path().isEmpty() ? QString() : QFileInfo(document_->path()).absolutePath();
    const QString path = services_.prompts.askFileToOpen(this, folder);
    if (!path.isEmpty())
        openFile(path);
}

void MainWindow::documentReplaced() {
    overruledDeclaration_.clear();
    acceptedLostBytes_ = 0;
    editor_->documentLoaded();
    startJournal();
    showDocument();
}

void MainWindow::showDocument() {
    followFile();
    showTitle();
    showPosition();
    showSize();
    message_->clear();
    recallBindings();
}

// Saving

bool MainWindow::save() {
    if (refusesWhileLoading())
        return false;
    if (document_->path().isEmpty())
        return saveAs();
    if (!mayReplaceOnDisk())
        return false;
    const std::optional<int> encoding = encodingToSave();
    return encoding && saveIn(document_->path(), {*encoding});
}

bool MainWindow::saveAs() {
    if (refusesWhileLoading())
        return false;
    const QString proposal =
        document_->path().isEmpty() ? QDir::current().filePath(document_->displayName()) : document_->path();
    const auto target = services_.prompts.askWhereToSave(this, {proposal, namedEncoding()});
    if (!target || !mayWriteTo(target->path) || !saveIn(target->path, {target->encoding, true}))
        return false;
    recent_.add(document_->path());
    return true;
}

bool MainWindow::writeFile(const QString& path) {
    if (journal_)
        static_cast<void>(journal_->flush()); // a disk that can't take the journal may still take the file
    if (const Failure failure = document_->save(path)) {
        services_.prompts.showError(this, *failure);
        QTimer::singleShot(0, this, &MainWindow::checkDisk); // another program may be why
        return false;
    }
    editor_->setModified(false);
    if (journal_)
        journal_->saved(document_->path().toStdString(), document_->fileState());
    followFile();
    rememberBindings();
    schemas_->update();
    showTitle();
    showSize();
    message_->setText(tr("Saved"));
    return true;
}

// Losing and keeping

bool MainWindow::mayDiscard() {
    stopLoading();
    if (!editor_->isModified())
        return true;
    switch (services_.prompts.askSaveChanges(this, document_->displayName())) {
    case SaveAnswer::Save:
        return save();
    case SaveAnswer::Discard:
        return true;
    case SaveAnswer::Cancel:
        return false;
    }
    return false;
}

void MainWindow::endSession(QSessionManager& manager) {
    if (!editor_->isModified())
        return;
    if (!manager.allowsInteraction())
        return;
    const bool mayEnd = mayDiscard();
    manager.release();
    if (!mayEnd)
        manager.cancel();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!mayDiscard()) {
        event->ignore();
        return;
    }
    if (journal_)
        journal_->discard();
    services_.settings.setValue(placeKey, saveGeometry());
    event->accept();
}

void MainWindow::changeEvent(QEvent* event) {
    // Not every file system tells of changes; coming back from another program is when they count.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        QTimer::singleShot(0, this, &MainWindow::checkDisk);
    QMainWindow::changeEvent(event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!localFiles(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QStringList paths = localFiles(*event->mimeData());
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    // The program that dropped them waits until this handler returns: no dialog may open in it.
    QTimer::singleShot(0, this, [this, paths] { openFiles(paths); });
}

} // namespace tavrin::app
