#pragma once

#include <QElapsedTimer>
#include <QString>

#include <memory>

class QProgressDialog;
class QWidget;

namespace tavrin::app {

/// Shows how far a file has been read, once that takes over half a second, and lets the user cancel.
class OpenProgress {
  public:
    OpenProgress(QWidget* window, const QString& fileName);
    ~OpenProgress();

    /// Bytes read up to now and in all. False: the user has had enough.
    bool report(qint64 done, qint64 total);

  private:
    QWidget* window_;
    QString fileName_;
    QElapsedTimer clock_;
    std::unique_ptr<QProgressDialog> dialog_;
};

} // namespace tavrin::app
