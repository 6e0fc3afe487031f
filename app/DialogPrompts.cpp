#include "DialogPrompts.h"

#include "DifferencesView.h"
#include "Encodings.h"
#include "RecoveryDialog.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace tavrin::app {

namespace {

constexpr auto fileFilters = QT_TRANSLATE_NOOP(
    "DialogPrompts",
    "XML documents (*.xml *.xsl *.xslt *.xsd *.fo *.rng *.dbk *.svg *.xhtml *.html);;All files (*)");

QString tr(const char* text) {
    return QCoreApplication::translate("DialogPrompts", text);
}

/// Qt's own dialog: the desktop's has no room for a choice of encoding.
class SaveDialog : public QFileDialog {
  public:
    SaveDialog(QWidget* window, const SaveTarget& proposal) : QFileDialog(window, tr("Save As")) {
        setOption(DontUseNativeDialog);
        setAcceptMode(AcceptSave);
        setFileMode(AnyFile);
        setNameFilters(tr(fileFilters).split(";;"));
        const QFileInfo file(proposal.path);
        setDirectory(file.absolutePath());
        selectFile(file.fileName());
        if (!file.fileName().endsWith(".xml", Qt::CaseInsensitive))
            selectNameFilter(nameFilters().last());
        else
            setDefaultSuffix("xml");

        encodings_ = new QComboBox(this);
        for (const int code : offeredEncodings(proposal.encoding)) {
            encodings_->addItem(encodingLabel(code), code);
            if (code == proposal.encoding)
                encodings_->setCurrentIndex(encodings_->count() - 1);
        }
        auto* label = new QLabel(tr("&Encoding:"), this);
        label->setBuddy(encodings_);
        if (auto* grid = qobject_cast<QGridLayout*>(layout())) {
            const int row = grid->rowCount();
            grid->addWidget(label, row, 0);
            grid->addWidget(encodings_, row, 1);
        }
    }

    [[nodiscard]] SaveTarget target() const {
        return {selectedFiles().value(0), encodings_->currentData().toInt()};
    }

  private:
    QComboBox* encodings_;
};

} // namespace

SaveAnswer DialogPrompts::askSaveChanges(QWidget* window, const QString& documentName) {
    QMessageBox box(QMessageBox::Warning, QString(), tr("Save the changes to “%1”?").arg(documentName),
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, window);
    box.setInformativeText(tr("They are lost otherwise."));
    box.setDefaultButton(QMessageBox::Save);
    switch (box.exec()) {
    case QMessageBox::Save:
        return SaveAnswer::Save;
    case QMessageBox::Discard:
        return SaveAnswer::Discard;
    default:
        return SaveAnswer::Cancel;
    }
}

bool DialogPrompts::confirm(QWidget* window, const QString& question, const QString& details,
                            const QString& accept) {
    QMessageBox box(QMessageBox::Warning, QString(), question, QMessageBox::Cancel, window);
    box.setInformativeText(details);
    const QPushButton* yes = box.addButton(accept, QMessageBox::AcceptRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    return box.clickedButton() == yes;
}

bool DialogPrompts::choose(QWidget* window, const QString& question, const QString& accept,
                           const QString& other) {
    QMessageBox box(QMessageBox::Question, QString(), question, QMessageBox::NoButton, window);
    const QPushButton* yes = box.addButton(accept, QMessageBox::AcceptRole);
    QPushButton* no = box.addButton(other, QMessageBox::RejectRole);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}

DiskAnswer DialogPrompts::askAboutDiskChange(QWidget* window, const DiskQuestion& question) {
    const QString what =
        question.isChangedHere
            ? tr("“%1” has been changed by another program, and it has changes here that are "
                 "not saved.")
            : tr("“%1” has been changed by another program.");
    QMessageBox box(QMessageBox::Warning, QString(), what.arg(question.name), QMessageBox::NoButton, window);
    QList<std::pair<QPushButton*, DiskAnswer>> answers;
    const auto add = [&](const QString& text, QMessageBox::ButtonRole role, DiskAnswer answer) {
        answers.append({box.addButton(text, role), answer});
        return answers.last().first;
    };
    add(tr("&Reload"), QMessageBox::AcceptRole, DiskAnswer::Reload);
    QPushButton* stay = nullptr;
    if (question.isSaving) {
        box.setInformativeText(tr("Saving replaces what the other program wrote. Reload shows it instead of "
                                  "the text here, in one step that Undo takes back."));
        add(tr("&Save Anyway"), QMessageBox::DestructiveRole, DiskAnswer::KeepMine);
        stay = box.addButton(QMessageBox::Cancel);
        answers.append({stay, DiskAnswer::Cancel});
    } else {
        box.setInformativeText(
            tr("Reload shows the other version, in one step that Undo takes back. Keep Mine "
               "leaves the text as it is, to be saved over the other version."));
        stay = add(tr("&Keep Mine"), QMessageBox::RejectRole, DiskAnswer::KeepMine);
    }
    add(tr("&Compare…"), QMessageBox::ActionRole, DiskAnswer::Compare);
    box.setDefaultButton(stay);
    box.setEscapeButton(stay);
    box.exec();
    for (const auto& [button, answer] : answers)
        if (box.clickedButton() == button)
            return answer;
    return question.isSaving ? DiskAnswer::Cancel : DiskAnswer::KeepMine;
}

void DialogPrompts::showDifferences(QWidget* window, const QString& documentName,
                                    const QList<DifferenceLine>& lines) {
    QDialog dialog(window);
    dialog.setWindowTitle(tr("Changes by the Other Program"));
    auto* label = new QLabel(
        tr("What the other program made of “%1”: − as it is here, + as it is in the file.").arg(documentName),
        &dialog);
    label->setWordWrap(true);
    auto* view = new DifferencesView(&dialog);
    view->showLines(lines, tr("The text is the same; only line ends or the encoding differ."));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(label);
    layout->addWidget(view, 1);
    layout->addWidget(buttons);
    dialog.resize(720, 480);
    dialog.exec();
}

std::optional<RecoveryChoice> DialogPrompts::askRecovery(QWidget* window,
                                                         const QList<RecoveryOffer>& offers) {
    RecoveryDialog dialog(offers, window);
    dialog.exec();
    return dialog.choice();
}

void DialogPrompts::showError(QWidget* window, const QString& message) {
    QMessageBox(QMessageBox::Critical, QString(), message, QMessageBox::Ok, window).exec();
}

QString DialogPrompts::askFileToOpen(QWidget* window, const QString& folder) {
    return QFileDialog::getOpenFileName(window, tr("Open"), folder, tr(fileFilters));
}

QString DialogPrompts::askSchema(QWidget* window, const QString& title, const QString& folder) {
    return QFileDialog::getOpenFileName(window, title, folder,
                                        tr("Schemas and catalogs (*.xsd *.rng *.dtd *.xml);;All files (*)"));
}

std::optional<SaveTarget> DialogPrompts::askWhereToSave(QWidget* window, const SaveTarget& proposal) {
    SaveDialog dialog(window, proposal);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.target();
}

std::optional<int> DialogPrompts::askLine(QWidget* window, int current, int last) {
    bool accepted = false;
    const int line = QInputDialog::getInt(window, tr("Go to Line"), tr("Line (1 to %1):").arg(last), current,
                                          1, last, 1, &accepted);
    return accepted ? std::optional(line) : std::nullopt;
}

} // namespace tavrin::app
