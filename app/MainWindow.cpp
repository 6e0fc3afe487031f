#include "MainWindow.h"

#include "Encodings.h"
#include "FileLoad.h"
#include "FileWatch.h"
#include "Prompts.h"
#include "XmlDeclaration.h"
#include "control/TextEditorCtrl.h"
#include "document/TextUndoScope.h"
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
    if (!encoding || !acceptsLoss(*encoding))
        return false;
    Buffer& buffer = editor_->control().getBuffer();
    const int before = buffer.getEncoding();
    buffer.setEncoding(*encoding);
    if (writeFile(document_->path()))
        return true;
    buffer.setEncoding(before);
    return false;
}

std::optional<int> MainWindow::encodingToSave() {
    const Buffer& buffer = editor_->control().getBuffer();
    const QString name = QString::fromStdU16String(declaredEncoding(buffer));
    if (name.isEmpty())
        return buffer.getEncoding();
    if (const auto code = encodingFromName(name.toStdString()))
        return code;
    const QString used = encodingLabel(buffer.getEncoding());
    if (!services_.prompts.confirm(
            this, tr("The XML declaration names the encoding “%1”, which is not known here.").arg(name),
            tr("The file would be written in %1, and other programs may fail to read it.").arg(used),
            tr("Save in %1").arg(used)))
        return {};
    return buffer.getEncoding();
}

bool MainWindow::acceptsLoss(int encoding) {
    int line = 0;
    int column = 0;
    const EncodeReport report = editor_->control().getBuffer().checkEncoding(encoding, line, column);
    if (report.lostCount == 0)
        return true;
    const bool accepted = services_.prompts.confirm(
        this,
        tr("%1 cannot represent every character of the text. Save all the same?")
            .arg(encodingLabel(encoding)),
        tr("Characters that would be replaced: %1, the first in line %2, column %3.")
            .arg(QLocale().toString(static_cast<qulonglong>(report.lostCount)))
            .arg(line + 1)
            .arg(column + 1),
        tr("Save"));
    if (!accepted)
        editor_->gotoLineCol(line, column);
    return accepted;
}

bool MainWindow::saveAs() {
    if (refusesWhileLoading())
        return false;
    Buffer& buffer = editor_->control().getBuffer();
    const int before = buffer.getEncoding();
    const QString proposal =
        document_->path().isEmpty() ? QDir::current().filePath(document_->displayName()) : document_->path();
    const auto target = services_.prompts.askWhereToSave(this, {proposal, before});
    if (!target || !mayWriteTo(target->path) || !acceptsLoss(target->encoding))
        return false;
    const bool declared = declare(target->encoding);
    buffer.setEncoding(target->encoding);
    if (writeFile(target->path)) {
        recent_.add(document_->path());
        return true;
    }
    buffer.setEncoding(before);
    if (declared)
        editor_->undo();
    return false;
}

bool MainWindow::declare(int encoding) {
    TextEditorCtrl& control = editor_->control();
    const auto edit = declareEncoding(control.getBuffer(), encoding);
    if (!edit)
        return false;
    int line = editor_->currentLine();
    int column = editor_->currentColumn();
    {
        TextUndoScope step(control);
        if (edit->length > 0)
            control.erase(edit->line, edit->column, edit->line, edit->column + edit->length);
        control.insert(edit->line, edit->column, edit->text);
    }
    // The caret stays with its text.
    if (edit->text.ends_with(u'\n'))
        ++line;
    else if (line == edit->line && column >= edit->column + edit->length)
        column += static_cast<int>(edit->text.size()) - edit->length;
    editor_->gotoLineCol(line, std::min(column, control.getBuffer().getLineLength(line)));
    control.Invalidate();
    return true;
}

bool MainWindow::writeFile(const QString& path) {
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
