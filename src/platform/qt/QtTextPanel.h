#pragma once

#include "platform/qt/QtDC.h"
#include "platform/ui/DialogControls.h"

#include <QFrame>
#include <QString>

#include <memory>

namespace tavrin::qt {

class QtPlatform;

/// A sunken field with a sample, drawn as the editor draws its text. What does not fit is cut off on all
/// sides.
class QtTextPanel final : public TextPanel {
  public:
    QtTextPanel(QtPlatform& platform, QWidget* parent, const QString& sample);
    ~QtTextPanel() override;

    [[nodiscard]] QWidget& widget() const;

    void setFont(std::u16string_view face, int size) override;
    void setForeColor(COLORREF colour) override;
    void setBkColor(COLORREF colour) override;

  private:
    class Field;

    QtPlatform& platform_;
    Field* field_;
};

} // namespace tavrin::qt
