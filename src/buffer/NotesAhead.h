#pragma once

#include "buffer/LineScan.h"
#include "buffer/LineStore.h"

#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

namespace tavrin {

/// A note on neighbouring pages of a text, as they were loaded. Whoever comes first makes it: another thread,
/// or the one that asks for it.
class NoteAhead {
  public:
    /// `scan` outlives the object, the bytes of the pages every call.
    NoteAhead(const LineScan& scan, std::vector<LineStore::StoredLines> pages)
        : scan_(scan), pages_(std::move(pages)) {}

    /// Makes the note, unless it was made before.
    void make();
    /// The note; null when none can be made, or it was taken.
    [[nodiscard]] std::unique_ptr<ChunkNote> take();

  private:
    void makeOnce();

    const LineScan& scan_;
    std::mutex mutex_;
    std::vector<LineStore::StoredLines> pages_; ///< until the note is made
    std::unique_ptr<ChunkNote> note_;
};

/// Makes notes on another thread, one after the other. What it has not made when it ends, for want of memory
/// too, is made when it is asked for.
class NotesAhead {
  public:
    /// Throws std::system_error when there is no thread to be had.
    explicit NotesAhead(std::vector<std::shared_ptr<NoteAhead>> notes);

  private:
    static void make(const std::stop_token& stop, std::vector<std::shared_ptr<NoteAhead>>& notes);

    std::jthread thread_; ///< stopped when the object goes, after the note that it is making
};

} // namespace tavrin
