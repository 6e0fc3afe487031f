// The file on disk and who else uses it: other programs, other windows of ours.

#include "FileLoad.h"
#include "FileWatch.h"
#include "MainWindow.h"
#include "Prompts.h"
#include "TextDifferences.h"
#include "control/TextEditorCtrl.h"
#include "document/ReloadAction.h"
#include "platform/qt/widget/XmlEditorWidget.h"
#include "recovery/EditJournal.h"

#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QScopedValueRollback>
#include <QTimer>

#include <chrono>
#include <filesystem>

namespace tavrin::app {

namespace {

constexpr std::chrono::milliseconds askAgainAfter{500};

/// Also by way of links of any kind, and for files that are not there any more.
bool isSameFile(const QString& one, const QString& other) {
    std::error_code error;
    return QFileInfo(one).absoluteFilePath() == QFileInfo(other).absoluteFilePath() ||
           std::filesystem::equivalent(one.toStdString(), other.toStdString(), error);
}

} // namespace

// Other programs

void MainWindow::checkDisk() {
    if (busy_ || load_)
        return;
    if (editor_->isBusy()) { // a search that shows its progress; the text must stay meanwhile
        QTimer::singleShot(askAgainAfter, this, &MainWindow::checkDisk);
        return;
    }
    switch (document_->newDiskChange()) {
    case DiskChange::None:
        return;
    case DiskChange::Gone:
        document_->noteDiskChange();
        document_->acceptDiskChange();
        editor_->setModified(true);
        message_->setText(tr("The file has been moved or deleted; saving writes it anew."));
        return;
    case DiskChange::Changed:
        if (settleDiskChange(false)) // the text is in no file now
            editor_->setModified(true);
        return;
    }
}

bool MainWindow::mayReplaceOnDisk() {
    switch (document_->diskChange()) {
    case DiskChange::Changed:
        return settleDiskChange(true);
    case DiskChange::Gone:
        document_->noteDiskChange();
        document_->acceptDiskChange();
        return true;
    case DiskChange::None:
        break;
    }
    return true;
}

bool MainWindow::settleDiskChange(bool isSaving) {
    const QScopedValueRollback busy(busy_, true);
    for (;;) {
        document_->noteDiskChange();
        switch (services_.prompts.askAboutDiskChange(
            this, {document_->displayName(), editor_->isModified(), isSaving})) {
        case DiskAnswer::Reload:
            reloadFile();
            return false;
        case DiskAnswer::KeepMine:
            document_->acceptDiskChange();
            return true;
        case DiskAnswer::Cancel:
            return false;
        case DiskAnswer::Compare:
            compareWithDisk();
        }
    }
}

void MainWindow::reloadFile() {
    if (refusesWhileLoading())
        return;
    if (auto read = readOrBeginLoading(document_->path(), true))
        showReread(std::move(*read));
}

bool MainWindow::showReread(FileDocument::ReadResult read) {
    if (read.status == FileDocument::LoadResult::Failed)
        services_.prompts.showError(this, read.error);
    if (!read.contents)
        return false;
    const DecodeReport decoded = read.contents->text().report();
    editor_->control().reload(*FileDocument::takeText(*read.contents));
    acceptedLostBytes_ = 0;
    document_->takeOver(*read.contents);
    editor_->setModified(false);
    if (journal_)
        journal_->saved(document_->path().toStdString(), document_->fileState());
    showDocument();
    const QLocale locale;
    message_->setText(decoded.invalidCount == 0
                          ? tr("Reloaded; Undo brings back the text from before")
                          : tr("Reloaded; bytes that are not valid: %1, the first at byte %2")
                                .arg(locale.toString(static_cast<qulonglong>(decoded.invalidCount)),
                                     locale.toString(static_cast<qulonglong>(decoded.firstInvalid))));
    return true;
}

void MainWindow::compareWithDisk() {
    const FileDocument::ReadResult read = FileDocument::read(document_->path(), {.device = services_.device});
    if (!read.contents)
        services_.prompts.showError(this, read.error);
    else
        services_.prompts.showDifferences(this, document_->displayName(),
                                          lineDifferences(editor_->control().getBuffer(),
                                                          FileDocument::takeText(*read.contents)->hidden()));
}

// Other windows, other running programs of ours

void MainWindow::followFile() {
    watch_->watch(document_->path());
    claim_.claim(document_->path().toStdString());
}

QList<MainWindow*> MainWindow::all() {
    QList<MainWindow*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* window = qobject_cast<MainWindow*>(widget))
            windows += window;
    return windows;
}

MainWindow* MainWindow::windowOf(const QString& path) {
    const auto shows = [&](const QString& shown) { return !shown.isEmpty() && isSameFile(shown, path); };
    for (MainWindow* window : all())
        if (shows(window->load_ ? window->load_->path() : window->document_->path()))
            return window;
    return nullptr;
}

bool MainWindow::showsOpenFile(const QString& path) {
    MainWindow* const window = windowOf(path);
    if (!window)
        return false;
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->raise();
    window->activateWindow();
    const bool isOutdated = window->document_->diskChange() == DiskChange::Changed;
    if (isOutdated && !window->editor_->isModified() && !window->busy_)
        window->reloadFile(); // whoever opens a file wants to see what is in it
    else
        window->checkDisk();
    return true;
}

bool MainWindow::mayOpen(const QString& path) {
    return !claim_.isHeldByOthers(path.toStdString()) ||
           services_.prompts.confirm(
               this, tr("“%1” is open in another running editor. Open it here too?").arg(path),
               tr("Whoever saves last replaces what the other has saved; you will be asked before that."),
               tr("Open"));
}

bool MainWindow::mayWriteTo(const QString& path) {
    const MainWindow* const window = windowOf(path);
    if (window && window != this) {
        services_.prompts.showError(
            this,
            tr("“%1” is open in another window. Close it there, or save under another name.").arg(path));
        return false;
    }
    return !claim_.isHeldByOthers(path.toStdString()) ||
           services_.prompts.confirm(
               this, tr("“%1” is open in another running editor. Replace it all the same?").arg(path),
               tr("The other editor will ask its user what to do."), tr("Replace"));
}

} // namespace tavrin::app
