#pragma once

#include "platform/schema/SchemaLibrary.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

#include <memory>

namespace tavrin {

class UserSettings;

namespace app {

/// The event loop's thread as the schema library sees it.
class EventLoopThread final : public EditorThread {
  public:
    void post(std::function<void()> work) override;

  private:
    QObject receiver_;
};

/// The program's schemas: one library for all windows, the user's preferences in the settings, and a watch on
/// the files that were read.
class SchemaService : public QObject {
    Q_OBJECT

  public:
    /// `settings` outlives the service.
    explicit SchemaService(UserSettings& settings);
    ~SchemaService() override;

    [[nodiscard]] SchemaLibrary& library() { return library_; }
    /// Puts preferences in force and into the settings.
    void setPreferences(SchemaPreferences preferences);

  private:
    void watchFiles();

    UserSettings& settings_;
    EventLoopThread thread_;
    SchemaLibrary library_;
    QFileSystemWatcher watcher_;
    QTimer settle_;
    SchemaLibrary::Subscription subscription_;
};

} // namespace app
} // namespace tavrin
