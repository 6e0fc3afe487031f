#pragma once

#include "platform/ui/CFindReplaceDialog.h"

#include <QDialog>
#include <QString>

class QCheckBox;
class QComboBox;
class QPushButton;
class QRadioButton;

namespace tavrin::qt {

class FindHistory;
class QtPlatform;
class ViewWidget;

/// The find dialog, and with a replacement the replace dialog: modeless, above the window of its view.
class QtFindDialog final : public QDialog, public CFindReplaceDialog {
  public:
    explicit QtFindDialog(QtPlatform& platform);

    bool Create(bool findDialogOnly, std::u16string_view findWhat, std::u16string_view replaceWith,
                UINT flags, CWnd* parent) override;
    void done(int result) override;

  private:
    void build(bool findOnly);
    void showOptions(UINT flags);
    [[nodiscard]] UINT options() const;
    /// Sends the request with this action. This dialog may be gone afterwards.
    void request(UINT action);
    void enableButtons();
    void placeAside(const ViewWidget& view);
    void uncoverCaret(const ViewWidget& view);
    [[nodiscard]] ViewWidget* view() const;

    QtPlatform& platform_;
    QComboBox* find_ = nullptr;
    QComboBox* replace_ = nullptr; ///< null when the dialog only finds
    QCheckBox* wholeWord_ = nullptr;
    QCheckBox* matchCase_ = nullptr;
    QRadioButton* up_ = nullptr;
    QRadioButton* down_ = nullptr;
    QPushButton* findNext_ = nullptr;
    QPushButton* replaceOne_ = nullptr;
    QPushButton* replaceAll_ = nullptr;
    bool ended_ = false;
};

} // namespace tavrin::qt
