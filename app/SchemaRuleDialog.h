#pragma once

#include "platform/schema/SchemaPreferences.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;

namespace tavrin::app {

class Prompts;

/// One line of the user's map from documents to schemas.
class SchemaRuleDialog : public QDialog {
    Q_OBJECT

  public:
    SchemaRuleDialog(const SchemaRule& rule, Prompts& prompts, QWidget* parent);

    [[nodiscard]] SchemaRule rule() const;

  private:
    void explain();

    QComboBox* kind_;
    QLabel* hint_;
    QLineEdit* pattern_;
    QLineEdit* schema_;
    QWidget* accept_;
};

/// As the program calls the kinds of rules.
[[nodiscard]] QString ruleKindText(SchemaRule::Kind kind);

} // namespace tavrin::app
