#include "FileWatch.h"

#include <QFileInfo>

#include <chrono>

namespace tavrin::app {

FileWatch::FileWatch(QObject* parent) : QObject(parent) {
    // Other programs write a file in several steps, or remove it before they put the new one in place.
    settle_.setSingleShot(true);
    settle_.setInterval(std::chrono::milliseconds(200));
    connect(&watcher_, &QFileSystemWatcher::fileChanged, &settle_, [this] { settle_.start(); });
    // In a folder where something always happens the end of it would never come.
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, &settle_, [this] {
        if (!settle_.isActive())
            settle_.start();
    });
    connect(&settle_, &QTimer::timeout, this, [this] {
        rearm();
        emit touched();
    });
}

void FileWatch::watch(const QString& path) {
    settle_.stop();
    const QStringList old = watcher_.files() + watcher_.directories();
    if (!old.isEmpty())
        watcher_.removePaths(old);
    path_ = path;
    rearm();
}

void FileWatch::rearm() {
    if (path_.isEmpty())
        return;
    // A file that is replaced drops out of the watcher; only its folder then tells that it is back.
    const QFileInfo file(path_);
    for (const QString& path : {file.absoluteFilePath(), file.canonicalFilePath(), file.absolutePath()})
        if (!path.isEmpty() && QFileInfo::exists(path) && !watcher_.files().contains(path) &&
            !watcher_.directories().contains(path))
            watcher_.addPath(path);
}

} // namespace tavrin::app
