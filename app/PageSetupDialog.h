#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QPageLayout;
class QRadioButton;

namespace tavrin {

class UserSettings;

namespace app {

/// Paper, margins, and what the printed pages show beside the text. OK writes the settings; Cancel writes
/// nothing.
class PageSetupDialog : public QDialog {
    Q_OBJECT

  public:
    explicit PageSetupDialog(UserSettings& settings, QWidget* parent = nullptr);

    void accept() override;

  private:
    void createPaper(QWidget* group);
    void createMargins(QWidget* group);
    void createContent(QWidget* group);
    void show(const QPageLayout& layout);
    [[nodiscard]] QPageLayout layoutShown() const;
    void restoreDefaults();

    UserSettings& settings_;
    QComboBox* paper_ = nullptr;
    QRadioButton* portrait_ = nullptr;
    QRadioButton* landscape_ = nullptr;
    QDoubleSpinBox* left_ = nullptr;
    QDoubleSpinBox* top_ = nullptr;
    QDoubleSpinBox* right_ = nullptr;
    QDoubleSpinBox* bottom_ = nullptr;
    QCheckBox* wrap_ = nullptr;
    QCheckBox* numbers_ = nullptr;
    QCheckBox* header_ = nullptr;
};

} // namespace app
} // namespace tavrin
