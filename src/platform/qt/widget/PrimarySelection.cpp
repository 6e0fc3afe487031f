#include "platform/qt/widget/PrimarySelection.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QStringList>
#include <QWidget>

namespace tavrin::qt {

namespace {

class SelectedText final : public QMimeData {
  public:
    SelectedText(QWidget& widget, std::function<QString()> text) : widget_(&widget), text_(std::move(text)) {}

    [[nodiscard]] QStringList formats() const override { return {plainText()}; }
    [[nodiscard]] bool hasFormat(const QString& format) const override { return format == plainText(); }

  protected:
    [[nodiscard]] QVariant retrieveData(const QString& format, QMetaType type) const override {
        if (!widget_ || !hasFormat(format))
            return QMimeData::retrieveData(format, type);
        return text_();
    }

  private:
    static QString plainText() { return QStringLiteral("text/plain"); }

    QPointer<QWidget> widget_;
    std::function<QString()> text_;
};

} // namespace

void offerPrimarySelection(QWidget& widget, std::function<QString()> text) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection())
        clipboard->setMimeData(new SelectedText(widget, std::move(text)), QClipboard::Selection);
}

} // namespace tavrin::qt
