#include "platform/qt/widget/XmlEditorOptionsPage.h"

#include "options/ColourPresets.h"
#include "options/XmlEditorOptionsDlgPage.h"
#include "platform/qt/Conversions.h"
#include "platform/qt/QtWindowPeer.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

namespace tavrin::qt {

class XmlEditorOptionsPage::Private {
  public:
    explicit Private(Platform& platform) : page(platform) {}

    /// Names the scheme that has the colours chosen at present, or none.
    void showScheme() const {
        const ColourPreset* preset = page.currentPreset();
        schemes->setCurrentIndex(preset ? schemes->findText(toQString(preset->name)) : -1);
    }

    XmlEditorOptionsDlgPage page;
    QComboBox* schemes = nullptr;
};

XmlEditorOptionsPage::XmlEditorOptionsPage(Platform& platform, QWidget* parent)
    : QWidget(parent), d(std::make_unique<Private>(platform)) {
    d->schemes = new QComboBox(this);
    d->schemes->addItems(schemes());
    d->schemes->setPlaceholderText(tr("Your own"));
    auto* label = new QLabel(tr("Colour sc&heme:"), this);
    label->setBuddy(d->schemes);
    auto* row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(d->schemes);
    row->addStretch(1);

    d->page.Create(nullptr);
    QWidget& page = QtWindowPeer::of(d->page)->widget();
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addSpacing(8);
    layout->addWidget(&page, 1);
    d->page.ShowWindow(true);

    d->showScheme();
    d->page.setColoursHandler([this] { d->showScheme(); });
    connect(d->schemes, &QComboBox::textActivated, this, &XmlEditorOptionsPage::applyScheme);
}

XmlEditorOptionsPage::~XmlEditorOptionsPage() = default;

XmlEditorOptionsDlgPage& XmlEditorOptionsPage::page() {
    return d->page;
}

QStringList XmlEditorOptionsPage::schemes() {
    QStringList names;
    for (const ColourPreset& preset : colourPresets())
        names += toQString(preset.name);
    return names;
}

void XmlEditorOptionsPage::applyScheme(const QString& name) {
    const auto presets = colourPresets();
    const auto preset = std::ranges::find(presets, toU16(name), &ColourPreset::name);
    if (preset != presets.end())
        d->page.applyColours(*preset);
}

bool XmlEditorOptionsPage::save() {
    if (!d->page.confirm())
        return false;
    emit saved();
    return true;
}

} // namespace tavrin::qt
