#include "OptionsDialog.h"

#include "platform/qt/widget/XmlEditorOptionsPage.h"

#include <QDialogButtonBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tavrin::app {

OptionsDialog::OptionsDialog(Platform& platform, QWidget* parent)
    : QDialog(parent), editorPage_(new qt::XmlEditorOptionsPage(platform, this)) {
    setWindowTitle(tr("Options"));
    auto* pages = new QTabWidget(this);
    pages->addTab(editorPage_, tr("Editor"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(editorPage_, &qt::XmlEditorOptionsPage::saved, this, &OptionsDialog::saved);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(pages);
    layout->addWidget(buttons);
}

void OptionsDialog::accept() {
    if (editorPage_->save())
        QDialog::accept();
}

} // namespace tavrin::app
