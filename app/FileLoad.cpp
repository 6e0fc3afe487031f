#include "FileLoad.h"

#include <QDir>
#include <QMetaObject>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

namespace tavrin::app {

namespace {

using Clock = std::chrono::steady_clock;

/// Between two reports of progress.
constexpr std::chrono::milliseconds reportInterval{40};
/// How long a thread that works, and does not hang in the system, may take to notice that nobody wants it.
constexpr std::chrono::milliseconds timeToNotice{100};

} // namespace

/// What both threads know.
struct FileLoad::Shared {
    std::mutex mutex;
    std::condition_variable end;
    FileLoad* owner = nullptr; ///< null: gave up
    bool hasEnded = false;
    FileDocument::ReadResult result;
    QByteArray beginning;
    Progress progress;
    Clock::time_point reported;

    /// REQUIRES: the mutex is held, which keeps the owner alive; the call waits for nobody.
    void tellOwner() {
        reported = Clock::now();
        if (owner)
            QMetaObject::invokeMethod(owner, &FileLoad::advanced, Qt::QueuedConnection);
    }

    void read(const QString& path, const LineScan* scan, const DeviceForPath& device) {
        ReadHooks hooks;
        hooks.device = device;
        hooks.scan = scan;
        hooks.progress = [this](qint64 done, qint64 total) {
            const std::lock_guard lock(mutex);
            progress = {done, total};
            if (Clock::now() - reported >= reportInterval)
                tellOwner();
            return owner != nullptr;
        };
        hooks.beginning = [this](std::span<const std::uint8_t> bytes) {
            QByteArray copy(reinterpret_cast<const char*>(bytes.data()),
                            static_cast<qsizetype>(bytes.size()));
            const std::lock_guard lock(mutex);
            beginning = std::move(copy);
            tellOwner();
        };
        FileDocument::ReadResult read = FileDocument::read(path, hooks);
        const std::lock_guard lock(mutex);
        result = std::move(read);
        hasEnded = true;
        tellOwner();
        end.notify_all();
    }
};

FileLoad::FileLoad(const QString& path, const LineScan* scan, DeviceForPath device)
    : path_(QDir::current().absoluteFilePath(path)), shared_(std::make_shared<Shared>()) {
    shared_->owner = this;
    shared_->reported = Clock::now();
    const auto work = [shared = shared_, path = path_, scan, device = std::move(device)] {
        shared->read(path, scan, device);
    };
    try {
        std::thread(work).detach();
    } catch (const std::system_error&) {
        work(); // no thread can be had: better late than never
    }
}

FileLoad::~FileLoad() {
    std::unique_lock lock(shared_->mutex);
    shared_->owner = nullptr;
    shared_->end.wait_for(lock, timeToNotice, [this] { return shared_->hasEnded; });
}

bool FileLoad::wait(std::chrono::milliseconds most) {
    std::unique_lock lock(shared_->mutex);
    return shared_->end.wait_for(lock, most, [this] { return shared_->hasEnded; });
}

bool FileLoad::hasEnded() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->hasEnded;
}

FileLoad::Progress FileLoad::progress() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->progress;
}

QByteArray FileLoad::beginning() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->beginning;
}

FileDocument::ReadResult FileLoad::takeResult() {
    const std::lock_guard lock(shared_->mutex);
    return std::move(shared_->result);
}

} // namespace tavrin::app
