#include "platform/qt/QtFontBox.h"

#include "platform/qt/Conversions.h"

#include <QFontComboBox>
#include <QFontDatabase>
#include <QFontInfo>
#include <QHBoxLayout>
#include <QToolButton>

namespace tavrin::qt {

namespace {

/// The face that the system shows text in when it is asked for one that is not installed.
QString substituteFor(const QString& face) {
    QFont font(face);
    font.setStyleHint(QFont::Monospace);
    return QFontInfo(font).family();
}

} // namespace

QtFontBox::QtFontBox(QWidget* parent, Notify notify)
    : row_(new QWidget(parent)), combo_(new QFontComboBox(row_)), all_(new QToolButton(row_)) {
    combo_->setEditable(false);
    combo_->setFontFilters(QFontComboBox::MonospacedFonts);
    combo_->setMinimumContentsLength(16); // a long face name need not widen the dialog
    combo_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    all_->setText(QObject::tr("All"));
    all_->setToolTip(QObject::tr("List all fonts, not only those whose characters have one width"));
    all_->setAccessibleName(QObject::tr("All fonts"));
    all_->setCheckable(true);
    all_->setFocusPolicy(Qt::StrongFocus);
    row_->setFocusProxy(combo_);
    auto* layout = new QHBoxLayout(row_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(combo_, 1);
    layout->addWidget(all_);
    combo_->setCurrentIndex(-1);
    QObject::connect(combo_, &QComboBox::activated, &context_, [notify = std::move(notify)] { notify(); });
    QObject::connect(all_, &QToolButton::toggled, &context_, [this](bool all) { listFaces(all); });
}

void QtFontBox::listFaces(bool all) {
    const QString chosen = combo_->currentIndex() < 0 ? QString() : combo_->currentText();
    combo_->setFontFilters(all ? QFontComboBox::AllFonts : QFontComboBox::MonospacedFonts);
    combo_->setCurrentIndex(chosen.isEmpty() ? -1 : combo_->findText(chosen, Qt::MatchExactly));
    if (!chosen.isEmpty())
        combo_->setPlaceholderText(chosen);
}

std::vector<std::u16string> QtFontBox::faces() const {
    std::vector<std::u16string> result;
    for (int i = 0; i < combo_->count(); ++i)
        result.push_back(toU16(combo_->itemText(i)));
    return result;
}

int QtFontBox::GetCurSel() const {
    return combo_->currentIndex();
}

void QtFontBox::SetCurSel(int index) {
    combo_->setCurrentIndex(index);
}

void QtFontBox::announceFace(std::u16string_view name) {
    const QString face = toQString(name);
    const bool installed = QFontDatabase::hasFamily(face);
    const QString shown = installed ? face : QObject::tr("%1 (as %2)").arg(face, substituteFor(face));
    combo_->setPlaceholderText(shown);
    combo_->setToolTip(
        installed ? QString()
                  : QObject::tr("%1 is not installed; text is shown in %2.").arg(face, substituteFor(face)));
    const auto listed = [&] { return combo_->findText(face, Qt::MatchStartsWith) >= 0; };
    if (installed && !listed())
        all_->setChecked(true);
}

} // namespace tavrin::qt
