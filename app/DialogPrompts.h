#pragma once

#include "Prompts.h"

namespace tavrin::app {

/// Asks by dialogs.
class DialogPrompts : public Prompts {
  public:
    SaveAnswer askSaveChanges(QWidget* window, const QString& documentName) override;
    bool confirm(QWidget* window, const QString& question, const QString& details,
                 const QString& accept) override;
    bool choose(QWidget* window, const QString& question, const QString& accept,
                const QString& other) override;
    DiskAnswer askAboutDiskChange(QWidget* window, const DiskQuestion& question) override;
    void showDifferences(QWidget* window, const QString& documentName,
                         const QList<DifferenceLine>& lines) override;
    std::optional<RecoveryChoice> askRecovery(QWidget* window, const QList<RecoveryOffer>& offers) override;
    void showError(QWidget* window, const QString& message) override;
    QString askFileToOpen(QWidget* window, const QString& folder) override;
    QString askSchema(QWidget* window, const QString& title, const QString& folder) override;
    std::optional<SaveTarget> askWhereToSave(QWidget* window, const SaveTarget& proposal) override;
    std::optional<int> askLine(QWidget* window, int current, int last) override;
};

} // namespace tavrin::app
