#pragma once

#include "FileDocument.h"

#include <QByteArray>
#include <QObject>

#include <chrono>
#include <memory>

namespace tavrin::app {

/// A file that is read and made ready on a thread of its own. Whoever started it hears of it on the own
/// thread and never waits for a slow disk: deleting the object gives up, and the thread ends by itself as
/// soon as the system lets go of it.
class FileLoad : public QObject {
    Q_OBJECT

  public:
    /// Begins at once. `scan`: see ReadHooks. `device`: empty to read the file itself; called on the other
    /// thread.
    explicit FileLoad(const QString& path, const LineScan* scan = nullptr, DeviceForPath device = {});
    ~FileLoad() override;

    [[nodiscard]] const QString& path() const { return path_; }
    /// Waits until the load has ended, or for so long. True: it has ended.
    bool wait(std::chrono::milliseconds most);
    [[nodiscard]] bool hasEnded() const;

    struct Progress {
        qint64 done = 0;
        qint64 total = 0; ///< 0: not known yet
    };
    [[nodiscard]] Progress progress() const;
    /// The first bytes, once they are there and as long as more are to come.
    [[nodiscard]] QByteArray beginning() const;
    /// What was read. REQUIRES: hasEnded(); once.
    [[nodiscard]] FileDocument::ReadResult takeResult();

  signals:
    /// The beginning is there, more has been read, or the load has ended.
    void advanced();

  private:
    struct Shared;

    QString path_;
    std::shared_ptr<Shared> shared_;
};

} // namespace tavrin::app
