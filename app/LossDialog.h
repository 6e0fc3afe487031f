#pragma once

#include "Prompts.h"

#include <QDialog>

class QComboBox;
class QTreeWidget;

namespace tavrin::app {

/// Asks what to do about characters that an encoding lacks, and shows where references can't stand for them.
class LossDialog : public QDialog {
    Q_OBJECT

  public:
    LossDialog(const CharacterLoss& loss, QWidget* parent);

    [[nodiscard]] const LossAnswer& answer() const { return answer_; }

  private:
    void addPlaces(const CharacterLoss& loss);
    void finish(LossAction action);

    LossAnswer answer_;
    QComboBox* encodings_;
    QTreeWidget* places_ = nullptr;
};

} // namespace tavrin::app
