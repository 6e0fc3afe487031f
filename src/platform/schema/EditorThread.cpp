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
    std::deque<std::function<void()>> work;
    {
        const std::lock_guard lock(mutex_);
        work.swap(work_);
    }
    for (const auto& piece : work)
        piece();
    return !work.empty();
}

void QueuedEditorThread::waitAndRun() {
    {
        std::unique_lock lock(mutex_);
        came_.wait(lock, [this] { return !work_.empty(); });
    }
    runPosted();
}

} // namespace tavrin
