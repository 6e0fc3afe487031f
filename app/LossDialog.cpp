#include "LossDialog.h"

#include "Encodings.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace tavrin::app {

namespace {

QString nameOf(XmlPlace kind) {
    switch (kind) {
    case XmlPlace::Name:
        return LossDialog::tr("name or other part of a tag");
    case XmlPlace::Comment:
        return LossDialog::tr("comment");
    case XmlPlace::Section:
        return LossDialog::tr("CDATA section");
    case XmlPlace::Instruction:
        return LossDialog::tr("processing instruction");
    case XmlPlace::Declaration:
        return LossDialog::tr("document type");
    case XmlPlace::Text:
    case XmlPlace::AttributeValue:
        break;
    }
    return LossDialog::tr("no XML character");
}

/// The character and its number; alone when it can't be shown.
QString shown(char32_t character) {
    const QString number = "U+" + QString::number(character, 16).toUpper().rightJustified(4, '0');
    const bool isShown = QChar::isPrint(character) && !QChar::isSurrogate(character);
    return isShown ? QString::fromUcs4(&character, 1) + "  " + number : number;
}

QLabel* wrapped(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

} // namespace

LossDialog::LossDialog(const CharacterLoss& loss, QWidget* parent) : QDialog(parent) {
    setWindowTitle(tr("Characters That %1 Lacks").arg(encodingLabel(loss.encoding)));
    auto* column = new QVBoxLayout(this);
    const QLocale locale;
    auto* heading = wrapped(
        loss.count == 1 ? tr("%1 does not have one character of the text.").arg(encodingLabel(loss.encoding))
                        : tr("%1 does not have %2 characters of the text.")
                              .arg(encodingLabel(loss.encoding), locale.toString(loss.count)),
        this);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    column->addWidget(heading);
    const qsizetype references = loss.count - loss.withoutReference;
    if (loss.withoutReference == 0) {
        column->addWidget(
            wrapped(tr("They all stand in text or attribute values: numeric character references such as "
                       "&amp;#x20AC; can be written instead. That is an edit like others."),
                    this));
    } else {
        const QString others =
            tr("%1 other characters can become references.").arg(locale.toString(references));
        column->addWidget(
            wrapped(tr("XML has numeric character references only in text and attribute values. It has "
                       "none in the places below (%1). %2")
                        .arg(locale.toString(loss.withoutReference), references > 0 ? others : QString()),
                    this));
        addPlaces(loss);
        column->addWidget(places_, 1);
        if (loss.withoutReference > loss.places.size())
            column->addWidget(
                wrapped(tr("The first %1 are shown.").arg(locale.toString(loss.places.size())), this));
    }

    auto* row = new QHBoxLayout;
    encodings_ = new QComboBox(this);
    for (const int code : offeredEncodings(loss.encoding))
        if (code != loss.encoding)
            encodings_->addItem(encodingLabel(code), code);
    auto* label = new QLabel(tr("&Other encoding:"), this);
    label->setBuddy(encodings_);
    auto* other = new QPushButton(tr("&Use This Encoding"), this);
    row->addWidget(label);
    row->addWidget(encodings_);
    row->addWidget(other);
    row->addStretch();
    column->addLayout(row);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    auto* refer = buttons->addButton(tr("Write &References"), QDialogButtonBox::AcceptRole);
    refer->setEnabled(references > 0);
    auto* show = buttons->addButton(tr("&Show Place"), QDialogButtonBox::ActionRole);
    column->addWidget(buttons);
    buttons->button(QDialogButtonBox::Cancel)->setDefault(true);
    connect(refer, &QPushButton::clicked, this, [this] { finish(LossAction::WriteReferences); });
    connect(other, &QPushButton::clicked, this, [this] { finish(LossAction::UseEncoding); });
    connect(show, &QPushButton::clicked, this, [this] { finish(LossAction::ShowPlace); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resize(places_ ? QSize(560, 400) : QSize(520, 200));
}

void LossDialog::addPlaces(const CharacterLoss& loss) {
    places_ = new QTreeWidget(this);
    places_->setRootIsDecorated(false);
    places_->setUniformRowHeights(true);
    places_->setHeaderLabels({tr("Line"), tr("Column"), tr("Character"), tr("Part of")});
    const QLocale locale;
    for (const CharacterLoss::Place& place : loss.places)
        places_->addTopLevelItem(new QTreeWidgetItem(
            QStringList{locale.toString(place.line + 1), locale.toString(place.column + 1),
                        shown(place.character), nameOf(place.kind)}));
    places_->setCurrentItem(places_->topLevelItem(0));
    for (int i = 0; i < places_->columnCount(); ++i)
        places_->resizeColumnToContents(i);
    connect(places_, &QTreeWidget::itemActivated, this, [this] { finish(LossAction::ShowPlace); });
}

void LossDialog::finish(LossAction action) {
    answer_.action = action;
    answer_.encoding = encodings_->currentData().toInt();
    answer_.place = places_ ? places_->indexOfTopLevelItem(places_->currentItem()) : -1;
    accept();
}

} // namespace tavrin::app
