// Files on their way into the window.

#include "Encodings.h"
#include "FileLoad.h"
#include "FirstPage.h"
#include "LoadProgress.h"
#include "MainWindow.h"
#include "Prompts.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QStackedWidget>
#include <QTimer>
#include <QToolButton>

#include <chrono>

namespace tavrin::app {

namespace {

/// Files of this size are shown page by page; smaller ones only when their disk is slow.
constexpr qint64 largeFile = 10 << 20;
/// What is there after so long needs no first page.
constexpr std::chrono::milliseconds atOnce{30};
constexpr std::chrono::milliseconds patience{500};

} // namespace

bool MainWindow::openFile(const QString& path) {
    if (showsOpenFile(path))
        return true;
    if (!mayOpen(path) || !mayDiscard())
        return false;
    auto read = readOrBeginLoading(path, false);
    return !read || showRead(path, std::move(*read));
}

std::optional<FileDocument::ReadResult> MainWindow::readOrBeginLoading(const QString& path, bool isReload) {
    auto load = std::make_unique<FileLoad>(path, document_->lineScan(), services_.device);
    if (load->wait(atOnce) || (load->progress().total < largeFile && load->wait(patience)))
        return load->takeResult();
    load_ = std::move(load);
    isReload_ = isReload;
    beginLoading();
    return std::nullopt;
}

void MainWindow::openFiles(const QStringList& paths) {
    for (qsizetype i = 0; i < paths.size(); ++i) {
        if (i == 0 || windowOf(paths[i])) {
            openFile(paths[i]);
            continue;
        }
        auto* other = new MainWindow(services_);
        other->move(pos() + static_cast<int>(i) * QPoint(24, 24));
        other->show();
        other->openFile(paths[i]);
    }
}

bool MainWindow::showRead(const QString& path, FileDocument::ReadResult read) {
    if (read.status == FileDocument::LoadResult::Failed) {
        recent_.remove(QFileInfo(path).absoluteFilePath());
        services_.prompts.showError(this, read.error);
    }
    if (!read.contents || !acceptsDamage(path, read.contents->text()))
        return false;
    document_->adopt(std::move(read.contents));
    documentReplaced();
    recent_.add(document_->path());
    return true;
}

void MainWindow::beginLoading() {
    connect(load_.get(), &FileLoad::advanced, this, &MainWindow::followLoading);
    enableDocument(false);
    showTitle();
    encoding_->setText({});
    lineEnd_->setText({});
    size_->clear();
    message_->setText(
        (isReload_ ? tr("Reloading “%1”…") : tr("Opening “%1”…")).arg(QFileInfo(load_->path()).fileName()));
    progress_->show();
    followLoading();
}

void MainWindow::followLoading() {
    if (load_->hasEnded()) {
        finishLoading();
        return;
    }
    progress_->report(load_->progress());
    if (!isReload_ && !firstPage_ && !load_->beginning().isEmpty())
        showFirstPage();
}

void MainWindow::finishLoading() {
    FileLoad* const load = load_.release();
    load->deleteLater(); // it is its signal that has led here
    load->disconnect(this);
    const QPointer<FirstPage> page = firstPage_;
    endLoading();
    const bool isShown =
        isReload_ ? showReread(load->takeResult()) : showRead(load->path(), load->takeResult());
    if (!isShown)
        QTimer::singleShot(0, this, &MainWindow::checkDisk);
    else if (page)
        page->movePositionTo(*editor_);
}

void MainWindow::stopLoading() {
    if (!load_)
        return;
    load_.reset();
    endLoading();
    message_->setText(tr("Cancelled"));
    QTimer::singleShot(0, this, &MainWindow::checkDisk);
}

void MainWindow::enableDocument(bool enabled) {
    for (const QMenu* menu : documentMenus_)
        menu->menuAction()->setEnabled(enabled);
    for (QDialog* dialog : findChildren<QDialog*>())
        dialog->setEnabled(enabled);
    editor_->setEnabled(enabled);
    encoding_->setEnabled(enabled);
    lineEnd_->setEnabled(enabled);
}

void MainWindow::showFirstPage() {
    firstPage_ = new FirstPage(services_.platform, load_->beginning(), pages_);
    connect(&firstPage_->editor(), &qt::XmlEditorWidget::cursorPositionChanged, this,
            &MainWindow::showPosition);
    pages_->addWidget(firstPage_);
    pages_->setCurrentWidget(firstPage_);
    firstPage_->setFocus();
    showPosition();
}

void MainWindow::endLoading() {
    if (FirstPage* const page = std::exchange(firstPage_, nullptr)) {
        pages_->removeWidget(page);
        page->deleteLater();
    }
    progress_->hide();
    enableDocument(true);
    editor_->setFocus();
    showTitle();
    showPosition();
    showSize();
    message_->clear();
}

qt::XmlEditorWidget& MainWindow::shownEditor() {
    return firstPage_ ? firstPage_->editor() : *editor_;
}

bool MainWindow::refusesWhileLoading() {
    if (load_)
        message_->setText((isReload_ ? tr("“%1” is still being reloaded; Escape cancels.")
                                     : tr("“%1” is still being opened; Escape cancels."))
                              .arg(QFileInfo(load_->path()).fileName()));
    return load_ != nullptr;
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (load_ && event->key() == Qt::Key_Escape)
        stopLoading();
    else if (event->text().isEmpty() || !refusesWhileLoading())
        QMainWindow::keyPressEvent(event);
}

} // namespace tavrin::app
