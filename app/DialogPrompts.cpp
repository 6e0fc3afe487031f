#include "DialogPrompts.h"

#include "Encodings.h"
#include "LossDialog.h"
#include "RecoveryDialog.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

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

std::optional<RecoveryChoice> DialogPrompts::askRecovery(QWidget* window,
                                                         const QList<RecoveryOffer>& offers) {
    RecoveryDialog dialog(offers, window);
    dialog.exec();
    return dialog.choice();
}

LossAnswer DialogPrompts::askAboutLoss(QWidget* window, const CharacterLoss& loss) {
    LossDialog dialog(loss, window);
    dialog.exec();
    return dialog.answer();
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
