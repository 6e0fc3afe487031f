#pragma once

#include "Prompts.h"

#include <QDialog>

class QLabel;
class QListWidget;
class QPushButton;

namespace tavrin::app {

class DifferencesView;

/// Lists unsaved changes of sessions that did not end properly, shows what they changed, and takes one
/// decision about one of them.
class RecoveryDialog : public QDialog {
    Q_OBJECT

  public:
    RecoveryDialog(const QList<RecoveryOffer>& offers, QWidget* parent);

    /// Nothing when the dialog was closed.
    [[nodiscard]] std::optional<RecoveryChoice> choice() const { return choice_; }

  private:
    void showOffer();
    void choose(RecoveryAction action);

    QList<RecoveryOffer> offers_;
    std::optional<RecoveryChoice> choice_;
    QListWidget* list_;
    QLabel* remark_;
    DifferencesView* differences_;
    QList<QPushButton*> needText_; ///< buttons that need a text that can be read
};

} // namespace tavrin::app
