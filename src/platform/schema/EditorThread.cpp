#include "platform/schema/EditorThread.h"

#include <utility>

namespace tavrin {

void QueuedEditorThread::post(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        work_.push_back(std::move(work));
    }
    came_.notify_one();
}

bool QueuedEditorThread::runPosted() {
    std::size_t count = 0;
    {
        const std::lock_guard lock(mutex_);
        count = work_.size();
    }
    for (std::size_t i = 0; i < count; ++i) { // one by one: what follows one that fails is kept
        std::unique_lock lock(mutex_);
        const std::function<void()> piece = std::move(work_.front());
        work_.pop_front();
        lock.unlock();
        piece();
    }
    return count > 0;
}

void QueuedEditorThread::waitAndRun() {
    {
        std::unique_lock lock(mutex_);
        came_.wait(lock, [this] { return !work_.empty(); });
    }
    runPosted();
}

} // namespace tavrin
