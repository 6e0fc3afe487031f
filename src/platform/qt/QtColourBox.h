#pragma once

#include "platform/ui/DialogControls.h"

#include <QWidget>

#include <functional>

class QComboBox;

namespace tavrin::qt {

/// A list of "Automatic", the usual colours, those chosen besides, and "Other…", which opens a dialog with
/// every colour.
class QtColourBox final : public ColorComboBox {
  public:
    using Notify = std::function<void()>;

    /// `notify` is called when the user chooses a colour.
    QtColourBox(QWidget* parent, Notify notify);

    [[nodiscard]] QWidget& widget() const;

    void selectColor(COLORREF colour) override;
    [[nodiscard]] COLORREF getColor() const override { return colour_; }

  private:
    void onActivated(int index);
    void chooseOther();

    class Combo;

    Combo* combo_;
    COLORREF colour_ = automaticColour;
    Notify notify_;
    QObject context_; ///< ends the connection with this object
};

} // namespace tavrin::qt
