#include "PageSetupDialog.h"

#include "platform/core/MemorySettings.h"
#include "platform/qt/PageSetup.h"
#include "view/EditorSettings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPageLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tavrin::app {

namespace {

constexpr QPageSize::PageSizeId offeredPapers[] = {
    QPageSize::A3,     QPageSize::A4,    QPageSize::A5,        QPageSize::B4,      QPageSize::B5,
    QPageSize::Letter, QPageSize::Legal, QPageSize::Executive, QPageSize::Tabloid,
};

} // namespace

PageSetupDialog::PageSetupDialog(UserSettings& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
    setWindowTitle(tr("Page Setup"));
    auto* paper = new QGroupBox(tr("Paper"), this);
    auto* margins = new QGroupBox(tr("Margins"), this);
    auto* content = new QGroupBox(tr("Beside the text"), this);
    createPaper(paper);
    createMargins(margins);
    createContent(content);
    auto* buttons = new QDialogButtonBox(
        QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::RestoreDefaults, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            &PageSetupDialog::restoreDefaults);
    auto* page = new QHBoxLayout;
    page->addWidget(paper);
    page->addWidget(margins);
    auto* all = new QVBoxLayout(this);
    all->addLayout(page);
    all->addWidget(content);
    all->addStretch();
    all->addWidget(buttons);
    all->setSizeConstraint(QLayout::SetFixedSize);

    show(qt::readPageLayout(settings_));
    const auto on = [this](std::string_view key) {
        return settings_.getBoolValue(settings::section, key, false);
    };
    wrap_->setChecked(on(settings::printWrappedLines));
    numbers_->setChecked(on(settings::printLineNumbers));
    header_->setChecked(on(settings::printHeader));
}

void PageSetupDialog::createPaper(QWidget* group) {
    paper_ = new QComboBox(group);
    for (const QPageSize::PageSizeId id : offeredPapers)
        paper_->addItem(QPageSize::name(id), id);
    portrait_ = new QRadioButton(tr("&Portrait"), group);
    landscape_ = new QRadioButton(tr("&Landscape"), group);
    auto* form = new QFormLayout(group);
    form->addRow(tr("&Size:"), paper_);
    form->addRow(portrait_);
    form->addRow(landscape_);
}

void PageSetupDialog::createMargins(QWidget* group) {
    auto* grid = new QGridLayout(group);
    const auto margin = [&](const QString& text, int row, int column) {
        auto* box = new QDoubleSpinBox(group);
        box->setRange(0, qt::maximumMargin);
        box->setDecimals(1);
        box->setSuffix(tr(" mm"));
        auto* label = new QLabel(text, group);
        label->setBuddy(box);
        grid->addWidget(label, row, 2 * column);
        grid->addWidget(box, row, 2 * column + 1);
        return box;
    };
    left_ = margin(tr("L&eft:"), 0, 0);
    right_ = margin(tr("&Right:"), 0, 1);
    top_ = margin(tr("&Top:"), 1, 0);
    bottom_ = margin(tr("&Bottom:"), 1, 1);
    grid->setRowStretch(2, 1);
}

void PageSetupDialog::createContent(QWidget* group) {
    wrap_ =
        new QCheckBox(tr("&Wrap long lines at the edge, with a mark, instead of cutting them off"), group);
    numbers_ = new QCheckBox(tr("Line &numbers"), group);
    header_ = new QCheckBox(tr("&Header with file name and page number"), group);
    auto* column = new QVBoxLayout(group);
    column->addWidget(wrap_);
    column->addWidget(numbers_);
    column->addWidget(header_);
}

void PageSetupDialog::show(const QPageLayout& layout) {
    const QPageSize::PageSizeId id = layout.pageSize().id();
    if (paper_->findData(id) < 0)
        paper_->addItem(layout.pageSize().name(), id); // set by other means
    paper_->setCurrentIndex(paper_->findData(id));
    const bool landscape = layout.orientation() == QPageLayout::Landscape;
    (landscape ? landscape_ : portrait_)->setChecked(true);
    const QMarginsF margins = layout.margins(QPageLayout::Millimeter);
    left_->setValue(margins.left());
    top_->setValue(margins.top());
    right_->setValue(margins.right());
    bottom_->setValue(margins.bottom());
}

QPageLayout PageSetupDialog::layoutShown() const {
    const auto id = static_cast<QPageSize::PageSizeId>(paper_->currentData().toInt());
    return {QPageSize(id), landscape_->isChecked() ? QPageLayout::Landscape : QPageLayout::Portrait,
            QMarginsF(left_->value(), top_->value(), right_->value(), bottom_->value()),
            QPageLayout::Millimeter};
}

void PageSetupDialog::restoreDefaults() {
    show(qt::readPageLayout(MemorySettings()));
    for (QCheckBox* box : {wrap_, numbers_, header_})
        box->setChecked(false);
}

void PageSetupDialog::accept() {
    qt::writePageLayout(settings_, layoutShown());
    settings_.setBoolValue(settings::section, settings::printWrappedLines, wrap_->isChecked());
    settings_.setBoolValue(settings::section, settings::printLineNumbers, numbers_->isChecked());
    settings_.setBoolValue(settings::section, settings::printHeader, header_->isChecked());
    QDialog::accept();
}

} // namespace tavrin::app
