#pragma once

#include "platform/ui/DialogControls.h"

#include <QString>
#include <QWidget>

#include <functional>

class QFontComboBox;
class QToolButton;

namespace tavrin::qt {

/// A list of the fixed-pitch faces, with a button beside it that lists all others too.
class QtFontBox final : public FontComboBox {
  public:
    using Notify = std::function<void()>;

    /// `notify` is called when the user chooses a face.
    QtFontBox(QWidget* parent, Notify notify);

    [[nodiscard]] QWidget& widget() const { return *row_; }

    [[nodiscard]] std::vector<std::u16string> faces() const override;
    [[nodiscard]] int GetCurSel() const override;
    void SetCurSel(int index) override;
    void announceFace(std::u16string_view name) override;

  private:
    /// Lists all faces or the fixed-pitch ones; the choice stays.
    void listFaces(bool all);

    QWidget* row_;
    QFontComboBox* combo_;
    QToolButton* all_;
    QObject context_; ///< ends the connections with this object
};

} // namespace tavrin::qt
