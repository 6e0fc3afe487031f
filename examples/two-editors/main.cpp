// A host of the editor: a plain dialog with two of them, a default button and a Cancel button. While an
// editor has the focus, Tab, Return and Escape are its own. Options opens the editor's page in a dialog of
// this host, and what is saved there shows in both editors. Prints both texts on OK.

#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorOptionsPage.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTextStream>
#include <QVBoxLayout>

namespace {

using tavrin::qt::XmlEditorOptionsPage;
using tavrin::qt::XmlEditorWidget;

void showOptions(tavrin::Platform& platform, QDialog& host, const QList<XmlEditorWidget*>& editors) {
    auto* dialog = new QDialog(&host);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle("Editor options");
    auto* page = new XmlEditorOptionsPage(platform);
    for (XmlEditorWidget* editor : editors)
        QObject::connect(page, &XmlEditorOptionsPage::saved, editor, &XmlEditorWidget::settingsChanged);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, [page, dialog] {
        if (page->save())
            dialog->accept();
    });
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(dialog);
    layout->addWidget(page);
    layout->addWidget(buttons);
    dialog->open();
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    tavrin::qt::QtPlatform platform;

    QDialog dialog;
    dialog.setWindowTitle("Two editors");
    auto* first = new tavrin::qt::XmlEditorWidget(platform);
    auto* second = new tavrin::qt::XmlEditorWidget(platform);
    first->setText("<first/>");
    second->setText("<second/>");

    auto* buttons = new QDialogButtonBox;
    buttons->addButton("&OK", QDialogButtonBox::AcceptRole)->setDefault(true);
    buttons->addButton("&Cancel", QDialogButtonBox::RejectRole);
    QPushButton* options = buttons->addButton("O&ptions…", QDialogButtonBox::ResetRole);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    QObject::connect(options, &QPushButton::clicked, &dialog, [&] {
        showOptions(platform, dialog, {first, second});
    });

    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(first);
    layout->addWidget(second);
    layout->addWidget(buttons);
    first->setFocus();

    if (dialog.exec() != QDialog::Accepted)
        return EXIT_FAILURE;
    QTextStream(stdout) << first->text() << '\n' << second->text() << '\n';
    return EXIT_SUCCESS;
}
