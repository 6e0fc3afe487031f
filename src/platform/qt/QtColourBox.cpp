#include "platform/qt/QtColourBox.h"

#include "platform/qt/Conversions.h"

#include <QColorDialog>
#include <QComboBox>
#include <QIcon>
#include <QKeyEvent>
#include <QPainter>
#include <QPointer>
#include <QWheelEvent>

namespace tavrin::qt {

namespace {

struct NamedColour {
    const char* name;
    QRgb colour;
};

constexpr NamedColour usualColours[] = {
    {QT_TR_NOOP("Black"), 0x000000}, {QT_TR_NOOP("Dark red"), 0x800000},  {QT_TR_NOOP("Green"), 0x008000},
    {QT_TR_NOOP("Olive"), 0x808000}, {QT_TR_NOOP("Dark blue"), 0x000080}, {QT_TR_NOOP("Purple"), 0x800080},
    {QT_TR_NOOP("Teal"), 0x008080},  {QT_TR_NOOP("Grey"), 0x808080},      {QT_TR_NOOP("Silver"), 0xC0C0C0},
    {QT_TR_NOOP("Red"), 0xFF0000},   {QT_TR_NOOP("Lime"), 0x00FF00},      {QT_TR_NOOP("Yellow"), 0xFFFF00},
    {QT_TR_NOOP("Blue"), 0x0000FF},  {QT_TR_NOOP("Magenta"), 0xFF00FF},   {QT_TR_NOOP("Cyan"), 0x00FFFF},
    {QT_TR_NOOP("White"), 0xFFFFFF},
};

constexpr QSize swatchSize(20, 12);

/// A field of one colour, or of two side by side.
QIcon swatch(const QColor& left, const QColor& right) {
    QPixmap pixmap(swatchSize);
    pixmap.fill(left);
    QPainter painter(&pixmap);
    painter.fillRect(swatchSize.width() / 2, 0, swatchSize.width(), swatchSize.height(), right);
    painter.setPen(QColor(Qt::darkGray));
    painter.drawRect(0, 0, swatchSize.width() - 1, swatchSize.height() - 1);
    return QIcon(pixmap);
}

} // namespace

/// Knows whether a choice was made in the open list. Keys and the wheel on a closed one pass over its last
/// entry, which then must not open a dialog.
class QtColourBox::Combo final : public QComboBox {
  public:
    using QComboBox::QComboBox;

    void showPopup() override {
        fromList = true;
        QComboBox::showPopup();
    }

    bool fromList = false;

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        fromList = false;
        QComboBox::keyPressEvent(event);
    }
    void wheelEvent(QWheelEvent* event) override {
        fromList = false;
        QComboBox::wheelEvent(event);
    }
};

QtColourBox::QtColourBox(QWidget* parent, Notify notify)
    : combo_(new Combo(parent)), notify_(std::move(notify)) {
    combo_->setIconSize(swatchSize);
    const QPalette palette = combo_->palette();
    combo_->addItem(swatch(palette.color(QPalette::Base), palette.color(QPalette::Text)),
                    QObject::tr("Automatic"), automaticColour);
    for (const NamedColour& usual : usualColours)
        combo_->addItem(swatch(QColor(usual.colour), QColor(usual.colour)), QObject::tr(usual.name),
                        toColorRef(QColor(usual.colour)));
    combo_->addItem(QObject::tr("Other…"));
    combo_->setMaxVisibleItems(combo_->count());
    QObject::connect(combo_, &QComboBox::activated, &context_, [this](int index) { onActivated(index); });
}

QWidget& QtColourBox::widget() const {
    return *combo_;
}

void QtColourBox::selectColor(COLORREF colour) {
    colour_ = colour;
    int index = combo_->findData(colour);
    if (index < 0) {
        const QColor shown = toQColor(colour);
        index = combo_->count() - 1; // before "Other…"
        combo_->insertItem(index, swatch(shown, shown), shown.name().toUpper(), colour);
    }
    combo_->setCurrentIndex(index);
}

void QtColourBox::onActivated(int index) {
    const QVariant colour = combo_->itemData(index);
    if (colour.isValid()) {
        colour_ = colour.toUInt();
        notify_();
    } else if (combo_->fromList) {
        chooseOther();
    } else {
        selectColor(colour_);
    }
}

void QtColourBox::chooseOther() {
    selectColor(colour_); // while the dialog is open and when it is cancelled
    const QPointer<QComboBox> box(combo_);
    const QColor start = colour_ == automaticColour ? QColor(Qt::black) : toQColor(colour_);
    const QColor chosen = QColorDialog::getColor(start, combo_->window(), QObject::tr("Choose a Colour"));
    if (!box || !chosen.isValid())
        return;
    selectColor(toColorRef(chosen));
    notify_();
}

} // namespace tavrin::qt
