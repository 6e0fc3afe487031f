#include "SchemaRuleDialog.h"

#include "Prompts.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tavrin::app {

QString ruleKindText(SchemaRule::Kind kind) {
    switch (kind) {
    case SchemaRule::Kind::namespaceName:
        return SchemaRuleDialog::tr("Namespace");
    case SchemaRule::Kind::rootElement:
        return SchemaRuleDialog::tr("Root element");
    case SchemaRule::Kind::filePattern:
        break;
    }
    return SchemaRuleDialog::tr("File name");
}

SchemaRuleDialog::SchemaRuleDialog(const SchemaRule& rule, Prompts& prompts, QWidget* parent)
    : QDialog(parent),
      kind_(new QComboBox(this)),
      hint_(new QLabel(this)),
      pattern_(new QLineEdit(this)),
      schema_(new QLineEdit(this)) {
    using Kind = SchemaRule::Kind;
    for (const Kind kind : {Kind::namespaceName, Kind::rootElement, Kind::filePattern})
        kind_->addItem(ruleKindText(kind));
    kind_->setCurrentIndex(static_cast<int>(rule.kind));
    pattern_->setText(QString::fromStdString(rule.pattern));
    pattern_->setMinimumWidth(420);
    schema_->setText(QString::fromStdString(rule.schema));
    schema_->setPlaceholderText(tr("A file, or a URI that a catalog knows"));
    hint_->setWordWrap(true);

    auto* browse = new QPushButton(tr("&Browse…"), this);
    auto* schemaLine = new QHBoxLayout;
    schemaLine->addWidget(schema_);
    schemaLine->addWidget(browse);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    accept_ = buttons->button(QDialogButtonBox::Ok);
    auto* form = new QFormLayout(this);
    form->addRow(tr("&For"), kind_);
    form->addRow(tr("&Is"), pattern_);
    form->addRow(QString(), hint_);
    auto* schemaLabel = new QLabel(tr("&Schema"), this);
    schemaLabel->setBuddy(schema_);
    form->addRow(schemaLabel, schemaLine);
    form->addRow(buttons);

    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(kind_, &QComboBox::currentIndexChanged, this, &SchemaRuleDialog::explain);
    connect(pattern_, &QLineEdit::textChanged, this, &SchemaRuleDialog::explain);
    connect(schema_, &QLineEdit::textChanged, this, &SchemaRuleDialog::explain);
    connect(browse, &QPushButton::clicked, this, [this, &prompts] {
        const QString file =
            prompts.askSchema(this, tr("Choose a Schema"), QFileInfo(schema_->text()).absolutePath());
        if (!file.isEmpty())
            schema_->setText(file);
    });
    explain();
}

SchemaRule SchemaRuleDialog::rule() const {
    return {static_cast<SchemaRule::Kind>(kind_->currentIndex()), pattern_->text().trimmed().toStdString(),
            schema_->text().trimmed().toStdString()};
}

void SchemaRuleDialog::explain() {
    switch (rule().kind) {
    case SchemaRule::Kind::namespaceName:
        hint_->setText(tr("The name of a namespace; empty for elements in none."));
        break;
    case SchemaRule::Kind::rootElement:
        hint_->setText(tr("The name of a document's outermost element, without a prefix."));
        break;
    case SchemaRule::Kind::filePattern:
        hint_->setText(
            tr("A file's name, where * stands for any characters and ? for one; with a / the whole path."));
        break;
    }
    const SchemaRule now = rule();
    const bool mayBeEmpty = now.kind == SchemaRule::Kind::namespaceName;
    accept_->setEnabled(!now.schema.empty() && (mayBeEmpty || !now.pattern.empty()));
}

} // namespace tavrin::app
