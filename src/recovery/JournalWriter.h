#pragma once

#include "files/PosixFile.h"
#include "platform/core/ByteBuffer.h"
#include "platform/core/SmartPtr.h"
#include "recovery/JournalFormat.h"

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace tavrin {

/// Where the bytes lie from which a journal's edits start.
[[nodiscard]] std::filesystem::path baseOf(const std::filesystem::path& journal);
/// The state of an open file.
[[nodiscard]] std::error_code stateOf(const PosixFile& file, FileState& state);
/// The state of the file that a path names; nothing when it can't be read.
[[nodiscard]] std::optional<FileState> stateOfFile(const std::filesystem::path& path);

/// Brings entries into a journal, on a thread of its own: what is handed over is durable at most a second
/// later, or as soon as the disk takes it. Copies the base beside it meanwhile.
class JournalWriter {
  public:
    /// Called on the writer's thread when nothing could be written, once until it works again; in words,
    /// UTF-8.
    using Complaint = std::function<void(const std::string&)>;

    /// A journal that begins with `entries`, in a folder that is made, for its owner only, when it is not
    /// there. `base`: the bytes from which they start, which never change; null: the entries have them.
    JournalWriter(std::filesystem::path folder, std::string entries, SmartPtr<ByteBuffer> base,
                  Complaint complain);
    /// Goes on with a locked journal, behind its first `size` bytes. `base`: null when it has one.
    JournalWriter(std::filesystem::path journal, PosixFile file, std::uint64_t size,
                  SmartPtr<ByteBuffer> base, Complaint complain);
    JournalWriter(const JournalWriter&) = delete;
    JournalWriter& operator=(const JournalWriter&) = delete;
    /// Writes what is left and leaves the journal for the next start, unless it was to be removed.
    ~JournalWriter();

    /// Takes the entries that `append` adds to a buffer in memory. Never waits for the disk.
    template <class Append>
    void add(Append append) {
        const std::scoped_lock lock(mutex_);
        if (gaveUp_)
            return;
        if (pending_.empty())
            oldest_ = std::chrono::steady_clock::now();
        const std::size_t before = pending_.size();
        try {
            append(pending_);
        } catch (const std::bad_alloc&) {
            pending_.resize(before);
            gaveUp_ = true; // what comes later does not fit without this
        }
        wake_.notify_one();
    }
    /// Nothing more is taken, because there was no room for something: only another journal can go on.
    [[nodiscard]] bool hasGivenUp() {
        const std::scoped_lock lock(mutex_);
        return gaveUp_;
    }
    /// Waits until everything is durable that was added before, and the base too; false when that failed.
    bool flush();
    /// The bytes from which the journal starts could not be copied up to now.
    [[nodiscard]] bool lacksBase() {
        const std::scoped_lock lock(mutex_);
        return hasFailedToCopy_;
    }
    /// The journal goes, when this object goes.
    void removeAtEnd();

  private:
    using Lock = std::unique_lock<std::mutex>;

    void work();
    void waitForWork(Lock& lock);
    [[nodiscard]] bool isDue() const;
    [[nodiscard]] bool canCopy() const;
    [[nodiscard]] bool hasEntries() const { return !unwritten_.empty() || !pending_.empty(); }
    std::error_code tryToWrite();
    std::error_code create();
    std::error_code writeFrame(std::string_view entries);
    void copyPiece();
    [[nodiscard]] std::error_code tryToCopyPiece();
    [[nodiscard]] std::error_code endCopy();
    void report(std::error_code error, const std::string& doing, bool& isTold);
    void removeFiles();

    const std::filesystem::path folder_;
    const Complaint complain_;

    // The writer's thread only.
    std::filesystem::path path_; ///< empty until the journal is made
    PosixFile file_;
    std::uint64_t size_ = 0; ///< of the frames that are whole and durable
    PosixFile copy_;
    std::size_t copied_ = 0; ///< bytes of the base
    Fingerprint fingerprint_;
    bool hasToldOfJournal_ = false;
    bool hasToldOfBase_ = false;

    const SmartPtr<ByteBuffer> base_; ///< taken and let go by the owner's thread

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable written_;
    std::string pending_;
    std::string unwritten_; ///< is being written, or could not be; the writer's thread changes it
    std::chrono::steady_clock::time_point oldest_; ///< when the first of pending_ came
    bool isCopying_ = false;                       ///< the base is not durable yet
    bool hasFailedToCopy_ = false;
    std::chrono::steady_clock::time_point copyAgainAt_; ///< not before
    bool isWriting_ = false;
    bool isFlushing_ = false;
    int failures_ = 0;                              ///< attempts that wrote nothing
    std::chrono::steady_clock::time_point retryAt_; ///< not before
    bool gaveUp_ = false;                           ///< nothing more is taken
    bool isEnding_ = false;
    bool removes_ = false;

    std::thread thread_;
};

} // namespace tavrin
