#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

namespace tavrin::app {

/// Tells that something may have happened to one file: it was written, replaced, removed or came back.
class FileWatch : public QObject {
    Q_OBJECT

  public:
    explicit FileWatch(QObject* parent);

    /// From now on `path` is watched, and no other file. Empty: none.
    void watch(const QString& path);

  signals:
    /// Comes once for a burst of changes, when it is over.
    void touched();

  private:
    void rearm();

    QFileSystemWatcher watcher_;
    QTimer settle_;
    QString path_;
};

} // namespace tavrin::app
