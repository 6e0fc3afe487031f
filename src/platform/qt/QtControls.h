#pragma once

#include "platform/ui/DialogControls.h"
#include "platform/ui/DialogTemplate.h"

#include <QWidget>

#include <map>
#include <memory>

namespace tavrin {
class CWnd;
}

namespace tavrin::qt {

class QtPlatform;

/// The controls of a dialog as widgets, arranged by its template.
class QtControls final : public DialogControls {
  public:
    QtControls(QtPlatform& platform, CWnd& dialog, QWidget& page, const DialogTemplate& layout);

    [[nodiscard]] DialogControl* find(UINT id) const override;
    /// While the user types in the control the message stands below it; else it is a dialog of its own.
    void refuse(UINT id, std::u16string_view message) override;
    /// The widget of a control. REQUIRES: the template has the id.
    [[nodiscard]] QWidget& widget(UINT id) const { return *controls_.at(id).widget; }

  private:
    struct Control {
        QWidget* widget = nullptr;
        std::unique_ptr<DialogControl> control;
    };

    [[nodiscard]] Control make(const DialogItem& item);
    void notify(UINT id, UINT notification);

    QtPlatform& platform_;
    CWnd& dialog_;
    QWidget& page_;
    std::map<UINT, Control> controls_;
    UINT typing_ = 0; ///< the control whose text the user is changing just now
    QObject context_; ///< ends the connections with this object
};

} // namespace tavrin::qt
