// The journal of unsaved changes, and what is left of sessions that did not end properly.

#include "Encodings.h"
#include "MainWindow.h"
#include "Prompts.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/widget/XmlEditorWidget.h"
#include "recovery/EditJournal.h"
#include "recovery/Recovery.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>

#include <chrono>
#include <vector>

namespace tavrin::app {

namespace {

QString toPath(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}

QString nameOf(const AbandonedJournal& journal) {
    return journal.about().file.empty() ? MainWindow::tr("Untitled.xml")
                                        : QFileInfo(toPath(journal.about().file)).fileName();
}

} // namespace

void MainWindow::createJournal() {
    if (services_.journals.empty())
        return;
    journal_ = std::make_unique<EditJournal>(
        services_.journals, editor_->control(), [this](const std::string& what) {
            // From the journal's thread, which ends before this window does.
            QMetaObject::invokeMethod(this, [this, text = QString::fromStdString(what)] {
                message_->setText(tr("Not protected against a crash: %1").arg(text));
            });
        });
}

void MainWindow::startJournal() {
    if (!journal_)
        return;
    if (document_->path().isEmpty())
        journal_->startWithText({}, {});
    else
        journal_->startWithFile(document_->path().toStdString(), document_->fileState());
}

void MainWindow::offerBackups() {
    const FileReplacement replacement(services_.backups);
    for (const InterruptedSave& save : replacement.interruptedSaves()) {
        const QString file = toPath(save.file);
        if (services_.prompts.confirm(this,
                                      tr("Saving “%1” was cut off. Put back what it held before?").arg(file),
                                      tr("The file may hold parts of the old and of the new text. The old "
                                         "one is kept until you decide."),
                                      tr("Put Back"))) {
            if (const auto failure = replacement.restore(save))
                services_.prompts.showError(
                    this,
                    tr("“%1” could not be put back: %2").arg(file, QString::fromStdString(failure->what)));
        } else if (services_.prompts.confirm(this, tr("Remove the old contents of “%1”?").arg(file),
                                             tr("They can't be put back then."), tr("Remove"))) {
            replacement.discard(save);
        }
    }
}

void MainWindow::offerRecovery() {
    std::vector<AbandonedJournal> journals = findAbandonedJournals(services_.journals);
    while (!journals.empty()) {
        QList<RecoveryOffer> offers;
        for (const AbandonedJournal& journal : journals)
            offers += offerOf(journal);
        const auto choice = services_.prompts.askRecovery(this, offers);
        if (!choice || choice->offer < 0 || choice->offer >= offers.size())
            return;
        const auto chosen = journals.begin() + choice->offer;
        if (carryOut(choice->action, *chosen))
            journals.erase(chosen);
    }
}

RecoveryOffer MainWindow::offerOf(const AbandonedJournal& journal) {
    RecoveryOffer offer;
    offer.name = nameOf(journal);
    offer.file = toPath(journal.about().file);
    offer.when = QDateTime::fromMSecsSinceEpoch(
        std::chrono::duration_cast<std::chrono::milliseconds>(journal.lastWritten().time_since_epoch())
            .count());
    offer.isReadable = journal.isReadable();
    if (!journal.isReadable())
        offer.remark = tr("The text from which the changes started is not there any more.");
    else if (!journal.fitsFile())
        offer.remark = QFileInfo::exists(offer.file)
                           ? tr("The file has been changed by another program since.")
                           : tr("The file is not there any more.");
    offer.differences = [this, &journal, file = offer.file] {
        qt::XmlEditorWidget before(services_.platform);
        qt::XmlEditorWidget after(services_.platform);
        if (!file.isEmpty())
            FileDocument(before.control().getBuffer()).load(file);
        static_cast<void>(recover(journal, after.control(), after.control()));
        return lineDifferences(before.text(), after.text());
    };
    return offer;
}

bool MainWindow::carryOut(RecoveryAction action, AbandonedJournal& journal) {
    switch (action) {
    case RecoveryAction::Recover: {
        MainWindow* window = journal.about().file.empty() ? nullptr : windowOf(toPath(journal.about().file));
        if (!window && document_->path().isEmpty())
            window = this;
        const bool isFree =
            window && !window->load_ && !window->editor_->isModified() && !window->editor_->canUndo();
        if (!isFree)
            window = new MainWindow(services_);
        if (!isFree) {
            window->move(pos() + QPoint(24, 24));
            window->show();
        }
        window->recoverHere(std::move(journal));
        return true;
    }
    case RecoveryAction::SaveElsewhere:
        return saveElsewhere(journal);
    case RecoveryAction::Keep:
        return true;
    case RecoveryAction::Discard:
        if (!services_.prompts.confirm(this, tr("Discard the unsaved changes to “%1”?").arg(nameOf(journal)),
                                       tr("They can't be brought back."), tr("Discard")) ||
            !services_.prompts.confirm(
                this, tr("Really discard them?"),
                tr("What was typed into “%1” and not saved is gone then.").arg(nameOf(journal)),
                tr("Discard for Good")))
            return false;
        journal.remove();
        return true;
    }
    return true;
}

void MainWindow::recoverHere(AbandonedJournal journal) {
    if (journal_)
        journal_->discard();
    TextEditorCtrl& control = editor_->control();
    const RecoveredSession session = recover(journal, control, control);
    if (!session.hasText) {
        services_.prompts.showError(this, tr("“%1” could not be recovered: %2. The journal is kept as “%3”.")
                                              .arg(nameOf(journal), QString::fromStdString(*session.problem),
                                                   toPath(journal.path())));
        startJournal();
        return;
    }
    document_->takeOver(toPath(session.about.file), session.about.state);
    if (session.problem) {
        services_.prompts.showError(
            this,
            tr("Not everything in “%1” could be recovered: %2. The journal is kept as “%3”.")
                .arg(nameOf(journal), QString::fromStdString(*session.problem), toPath(journal.path())));
        control.ClearUndo(&control); // the new journal starts here
        if (journal_)
            journal_->startWithText(session.about.file, session.about.state);
    } else if (journal_) {
        journal_->adopt(std::move(journal), session);
    }
    control.updateScrollbars();
    control.redraw();
    editor_->gotoLineCol(control.getCurrentLine(), control.getCurrentColoumn());
    showDocument();
    setWindowModified(editor_->isModified());
    message_->setText(tr("Recovered"));
}

bool MainWindow::saveElsewhere(const AbandonedJournal& journal) {
    qt::XmlEditorWidget editor(services_.platform);
    Buffer& buffer = editor.control().getBuffer();
    const RecoveredSession session = recover(journal, editor.control(), editor.control());
    if (!session.hasText) {
        services_.prompts.showError(this,
                                    tr("“%1” could not be recovered: %2.")
                                        .arg(nameOf(journal), QString::fromStdString(*session.problem)));
        return false;
    }
    const QString proposal =
        session.about.file.empty() ? QDir::home().filePath(nameOf(journal)) : toPath(session.about.file);
    const auto target = services_.prompts.askWhereToSave(this, {proposal, buffer.getEncoding()});
    if (!target || !mayWriteTo(target->path))
        return false;
    int line = 0;
    int column = 0;
    if (buffer.checkEncoding(target->encoding, line, column).lostCount > 0) {
        services_.prompts.showError(
            this, tr("%1 cannot represent every character of the text. Choose another encoding.")
                      .arg(encodingLabel(target->encoding)));
        return false;
    }
    buffer.setEncoding(target->encoding);
    if (const Failure failure = FileDocument(buffer, services_.backups).save(target->path)) {
        services_.prompts.showError(this, *failure);
        return false;
    }
    return false; // a copy: what becomes of the journal is still to be decided
}

} // namespace tavrin::app
