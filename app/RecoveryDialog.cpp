#include "RecoveryDialog.h"

#include "DifferencesView.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tavrin::app {

RecoveryDialog::RecoveryDialog(const QList<RecoveryOffer>& offers, QWidget* parent)
    : QDialog(parent),
      offers_(offers),
      list_(new QListWidget(this)),
      remark_(new QLabel(this)),
      differences_(new DifferencesView(this)) {
    setWindowTitle(tr("Unsaved Changes"));
    auto* intro = new QLabel(tr("The program ended without saving these documents. What was typed has been "
                                "kept, with its undo history."),
                             this);
    intro->setWordWrap(true);
    for (const RecoveryOffer& offer : offers) {
        const QString where = offer.file.isEmpty() ? tr("never saved") : offer.file;
        list_->addItem(tr("%1, last change %2\n%3")
                           .arg(offer.name, QLocale().toString(offer.when, QLocale::ShortFormat), where));
    }
    list_->setMaximumHeight(130);
    remark_->setWordWrap(true);
    auto* label = new QLabel(tr("Compared with the file as it &is now:"), this);
    label->setBuddy(differences_);

    auto* buttons = new QDialogButtonBox(this);
    const auto add = [&](const QString& text, QDialogButtonBox::ButtonRole role, RecoveryAction action) {
        QPushButton* button = buttons->addButton(text, role);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, action] { choose(action); });
        return button;
    };
    QPushButton* recover = add(tr("&Recover"), QDialogButtonBox::AcceptRole, RecoveryAction::Recover);
    needText_ = {recover,
                 add(tr("Save a &Copy…"), QDialogButtonBox::ActionRole, RecoveryAction::SaveElsewhere)};
    add(tr("&Keep for Later"), QDialogButtonBox::RejectRole, RecoveryAction::Keep);
    add(tr("&Discard…"), QDialogButtonBox::DestructiveRole, RecoveryAction::Discard);
    recover->setDefault(true);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(list_);
    layout->addWidget(remark_);
    layout->addWidget(label);
    layout->addWidget(differences_, 1);
    layout->addWidget(buttons);
    resize(720, 520);
    connect(list_, &QListWidget::currentRowChanged, this, &RecoveryDialog::showOffer);
    list_->setCurrentRow(0);
}

void RecoveryDialog::showOffer() {
    const RecoveryOffer& offer = offers_.at(std::max(list_->currentRow(), 0));
    remark_->setText(offer.remark);
    remark_->setVisible(!offer.remark.isEmpty());
    for (QPushButton* button : needText_)
        button->setEnabled(offer.isReadable);
    const QList<DifferenceLine> lines = offer.isReadable ? offer.differences() : QList<DifferenceLine>();
    differences_->showLines(lines, offer.isReadable
                                       ? tr("The text is the same; only the undo history differs.")
                                       : tr("Nothing can be shown."));
}

void RecoveryDialog::choose(RecoveryAction action) {
    choice_ = {std::max(list_->currentRow(), 0), action};
    accept();
}

} // namespace tavrin::app
