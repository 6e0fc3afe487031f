#pragma once

#include <QElapsedTimer>
#include <QString>

#include <memory>

class QProgressDialog;
class QWidget;

namespace tavrin::qt {

/// Shows how far a print job has come, once that takes over half a second, and lets the user cancel. While it
/// is shown the window can't be used, so that the text stays what is being printed.
class PrintProgress {
  public:
    /// `label` names page %1 of %2.
    PrintProgress(QWidget* window, const QString& label, int pages);
    ~PrintProgress();

    /// The n-th page comes now, from 1. False: the user has had enough.
    bool report(int n);

  private:
    QWidget* window_;
    QString label_;
    int pages_;
    QElapsedTimer clock_;
    std::unique_ptr<QProgressDialog> dialog_;
};

} // namespace tavrin::qt
