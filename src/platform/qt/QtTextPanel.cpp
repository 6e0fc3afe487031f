#include "platform/qt/QtTextPanel.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/QtPlatform.h"

#include <QPainter>

#include <algorithm>

namespace tavrin::qt {

namespace {

/// Settings may hold any number.
constexpr int largestSize = 1000;

} // namespace

class QtTextPanel::Field final : public QFrame {
  public:
    Field(QWidget* parent, const QString& sample) : QFrame(parent), sample_(toU16(sample)) {
        setFrameStyle(QFrame::Panel | QFrame::Sunken);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        setAccessibleName(sample);
    }

    [[nodiscard]] QSize sizeHint() const override { return {200, 2 * fontMetrics().height()}; }

    std::unique_ptr<CFont> font_;
    QColor fore_;
    QColor back_;

  protected:
    void paintEvent(QPaintEvent* event) override {
        {
            QPainter painter(this);
            const QRect inside = contentsRect();
            painter.setClipRect(inside);
            painter.fillRect(inside, back_);
            painter.setPen(fore_);
            if (font_) {
                TextRenderer& text = static_cast<QtFont&>(*font_).renderer();
                text.draw(painter, inside.x() + (inside.width() - text.width(sample_)) / 2,
                          inside.y() + (inside.height() - text.metrics().tmHeight) / 2, sample_);
            }
        }
        QFrame::paintEvent(event);
    }

  private:
    std::u16string sample_;
};

QtTextPanel::QtTextPanel(QtPlatform& platform, QWidget* parent, const QString& sample)
    : platform_(platform), field_(new Field(parent, sample)) {}

QtTextPanel::~QtTextPanel() = default;

QWidget& QtTextPanel::widget() const {
    return *field_;
}

void QtTextPanel::setFont(std::u16string_view face, int size) {
    field_->font_ = platform_.createPointFont(std::clamp(size, 1, largestSize) * 10, face);
    field_->update();
}

void QtTextPanel::setForeColor(COLORREF colour) {
    field_->fore_ = toQColor(colour);
    field_->update();
}

void QtTextPanel::setBkColor(COLORREF colour) {
    field_->back_ = toQColor(colour);
    field_->update();
}

} // namespace tavrin::qt
