// A host of the editor: a plain dialog with two of them, a default button and a Cancel button. While an
// editor has the focus, Tab, Return and Escape are its own. Prints both texts on OK.

#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTextStream>
#include <QVBoxLayout>

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
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);

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
