#pragma once

#include "buffer/LineScan.h"
#include "buffer/LineStore.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

namespace tavrin {

class SharedRead;

/// The second thread of a load. It finds out what lines are at their ends, page after page behind the thread
/// that makes the pages, and reads pieces of the file while there is none.
class LoadHelper {
  public:
    /// `file`: null when others read. `scan`: null when nothing is to be found out. Both outlive the object.
    /// Throws std::system_error when there is no thread to be had.
    LoadHelper(SharedRead* file, const LineScan* scan);
    LoadHelper(const LoadHelper&) = delete;
    LoadHelper& operator=(const LoadHelper&) = delete;
    /// Gives up what is not done.
    ~LoadHelper();

    /// Takes the pages that follow those given before. `source`: their text, whose bytes the caller keeps
    /// where they are as long as the object lives.
    void give(LineStore::Pages pages, const TextSource& source);

    struct Result {
        LineStore::Pages pages;
        int scannedLines = 0; ///< from the first on
    };
    /// All pages that were given, once that is done which is to be found out of them. Throws what went wrong
    /// on the other thread. REQUIRES: nothing was finished before.
    [[nodiscard]] Result finish();

  private:
    struct Batch {
        LineStore::Pages pages;
        TextSource source; ///< with a block of its own: counts of references belong to one thread
    };

    void run();
    [[nodiscard]] bool takeNext(std::deque<Batch>& batches);
    void look(Batch batch);
    void stop(bool giveUp);

    SharedRead* const file_;
    const LineScan* const scan_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Batch> given_; ///< the first one next
    bool isLast_ = false;     ///< no more will be given
    bool isUnwanted_ = false;
    // The thread's own until it has ended:
    Result result_;
    LineEndState state_; ///< at the end of the lines that were scanned
    bool canScan_;       ///< so far
    std::exception_ptr failure_;

    std::thread thread_;
};

} // namespace tavrin
