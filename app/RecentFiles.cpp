#include "RecentFiles.h"

#include <QSettings>

namespace tavrin::app {

namespace {
constexpr auto key = "Window/Recent Files";
}

QStringList RecentFiles::paths() const {
    return settings_.value(key).toStringList().mid(0, most);
}

void RecentFiles::add(const QString& path) {
    QStringList all = paths();
    all.removeAll(path);
    all.prepend(path);
    settings_.setValue(key, all.mid(0, most));
}

void RecentFiles::remove(const QString& path) {
    QStringList all = paths();
    all.removeAll(path);
    settings_.setValue(key, all);
}

void RecentFiles::clear() {
    settings_.remove(key);
}

} // namespace tavrin::app
