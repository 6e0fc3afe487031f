#pragma once

#include "platform/ui/Progress.h"

#include <QElapsedTimer>

#include <memory>

class QProgressDialog;
class QWidget;

namespace tavrin::qt {

/// Shows a dialog with a Cancel button once the work takes more than half a second. No other window of the
/// program takes input from then on.
class QtProgress final : public Progress {
  public:
    static constexpr int usualPatience = 500; ///< milliseconds before the dialog appears

    /// `running` counts the works that go on.
    QtProgress(QWidget* window, LongTask task, int& running, int patience = usualPatience);
    ~QtProgress() override;

    bool report(std::int64_t done, std::int64_t total) override;

  private:
    QWidget* window_;
    LongTask task_;
    int& running_;
    int patience_;
    QElapsedTimer clock_;
    std::unique_ptr<QProgressDialog> dialog_;
};

} // namespace tavrin::qt
