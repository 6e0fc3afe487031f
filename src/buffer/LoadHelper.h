#pragma once

#include "buffer/LineScan.h"
#include "buffer/LineStore.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tavrin {

class SharedRead;

/// The second thread of a load. It finds out what lines are at their ends, and notes what a walk over them
/// will want to know, page after page behind the thread that makes the pages, and reads pieces of the file
/// while there is none.
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
    /// All pages that were given, once that is done which is to be found out of them; helps to do it. Throws
    /// what went wrong on the other thread. REQUIRES: nothing was finished before.
    [[nodiscard]] Result finish();

  private:
    struct Batch {
        LineStore::Pages pages;
        TextSource source; ///< with a block of its own: counts of references belong to one thread
    };

    /// A note on all pages below a node of the tree.
    struct Noting {
        std::vector<LineStore::StoredLines> pages; ///< until somebody has begun
        std::unique_ptr<ChunkNote> note;
    };

    void run();
    [[nodiscard]] bool takeNext(std::deque<Batch>& batches);
    [[nodiscard]] std::vector<Noting> takeNotings();
    [[nodiscard]] bool makeNote(std::unique_lock<std::mutex>& lock);
    void look(Batch batch);
    void stop(bool giveUp);

    SharedRead* const file_;
    const LineScan* const scan_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Batch> given_;    ///< the first one next
    std::deque<Noting> notings_; ///< each is made by the thread that begins it
    std::size_t notingsBegun_ = 0;
    bool isLast_ = false; ///< no more will be given
    bool isUnwanted_ = false;
    // The giving thread's own:
    std::vector<std::optional<LineStore::StoredLines>> unnoted_; ///< pages that were given last
    int linesGiven_ = 0;
    // The other thread's own until it has ended:
    Result result_;
    LineEndState state_; ///< at the end of the lines that were scanned
    bool canScan_;       ///< so far
    std::exception_ptr failure_;

    std::thread thread_;
};

} // namespace tavrin
