#include "SchemaService.h"

#include "platform/schema/SchemaLocation.h"
#include "platform/schema/SchemaSources.h"

#include <QFileInfo>
#include <QSet>

#include <chrono>
#include <utility>

namespace tavrin::app {

void EventLoopThread::post(std::function<void()> work) {
    QMetaObject::invokeMethod(&receiver_, std::move(work), Qt::QueuedConnection);
}

SchemaService::SchemaService(UserSettings& settings)
    : settings_(settings),
      library_(thread_, {.load = fileSchemaLoader(),
                         .builtIn = builtInVocabularies(),
                         .preferences = loadSchemaPreferences(settings)}) {
    // An editor writes a file in several steps.
    settle_.setSingleShot(true);
    settle_.setInterval(std::chrono::milliseconds(200));
    const auto touched = [this] {
        if (!settle_.isActive())
            settle_.start();
    };
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, touched);
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, touched);
    connect(&settle_, &QTimer::timeout, this, [this] {
        library_.checkFiles();
        watchFiles();
    });
    subscription_ = library_.subscribe([this] { watchFiles(); });
}

SchemaService::~SchemaService() = default;

void SchemaService::setPreferences(SchemaPreferences preferences) {
    saveSchemaPreferences(preferences, settings_);
    library_.setPreferences(std::move(preferences));
}

/// A file that is replaced drops out of the watch, so its folder is watched as well.
void SchemaService::watchFiles() {
    QSet<QString> wanted;
    for (const auto& path : library_.files()) {
        const QFileInfo file(QString::fromStdString(pathText(path)));
        for (const QString& name : {file.absoluteFilePath(), file.absolutePath()})
            if (QFileInfo::exists(name))
                wanted.insert(name);
    }
    const QStringList watched = watcher_.files() + watcher_.directories();
    QStringList dropped;
    for (const QString& name : watched)
        if (!wanted.remove(name))
            dropped += name;
    if (!dropped.isEmpty())
        watcher_.removePaths(dropped);
    if (!wanted.isEmpty())
        watcher_.addPaths(wanted.values());
}

} // namespace tavrin::app
