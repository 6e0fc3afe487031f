#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace tavrin {

/// The thread on which the editor runs, as others see it.
class EditorThread {
  public:
    virtual ~EditorThread() = default;
    /// From any thread: runs `work` on the editor's thread, later, in the order of the calls. Work that comes
    /// when the editor has ended is dropped.
    virtual void post(std::function<void()> work) = 0;
};

/// An editor's thread without an event loop: work waits until it is asked for.
class QueuedEditorThread final : public EditorThread {
  public:
    void post(std::function<void()> work) override;
    /// Runs what waits; false when there was nothing.
    bool runPosted();
    /// Waits for work and runs it.
    void waitAndRun();

  private:
    std::mutex mutex_;
    std::condition_variable came_;
    std::deque<std::function<void()>> work_;
};

} // namespace tavrin
