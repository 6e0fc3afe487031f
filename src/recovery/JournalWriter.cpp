#include "recovery/JournalWriter.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace tavrin {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

/// How long entries gather; the rest of the second is for the disk.
constexpr auto gathering = 400ms;
constexpr auto betweenAttempts = 1s;
constexpr auto betweenCopies = 10s; ///< that fail
/// Of entries that a full disk keeps waiting.
constexpr std::size_t mostPending = std::size_t{64} << 20;
constexpr std::size_t pieceSize = std::size_t{1} << 20;

/// Whether the open file still has a name: another program may have taken it for an abandoned one before it
/// was locked.
bool hasName(const PosixFile& file) {
    struct stat state {};
    return !file.stat(state) && state.st_nlink == 1;
}

} // namespace

fs::path baseOf(const fs::path& journal) {
    fs::path base = journal;
    return base.replace_extension(".base");
}

std::error_code stateOf(const PosixFile& file, FileState& state) {
    struct stat found {};
    if (const auto error = file.stat(found))
        return error;
    state.size = static_cast<std::uint64_t>(found.st_size);
    state.modified = std::int64_t{found.st_mtim.tv_sec} * 1'000'000'000 + found.st_mtim.tv_nsec;
    return {};
}

std::optional<FileState> stateOfFile(const fs::path& path) {
    PosixFile file;
    FileState state;
    if (path.empty() || file.open(path, O_RDONLY | O_NONBLOCK) || stateOf(file, state))
        return {};
    return state;
}

JournalWriter::JournalWriter(fs::path folder, std::string entries, SmartPtr<ByteBuffer> base,
                             Complaint complain)
    : folder_(std::move(folder)),
      complain_(std::move(complain)),
      base_(std::move(base)),
      pending_(std::move(entries)),
      oldest_(std::chrono::steady_clock::now()),
      isCopying_(base_),
      thread_([this] { work(); }) {}

JournalWriter::JournalWriter(fs::path journal, PosixFile file, std::uint64_t size, SmartPtr<ByteBuffer> base,
                             Complaint complain)
    : folder_(journal.parent_path()),
      complain_(std::move(complain)),
      path_(std::move(journal)),
      file_(std::move(file)),
      size_(size),
      base_(std::move(base)),
      isCopying_(base_),
      thread_([this] { work(); }) {}

JournalWriter::~JournalWriter() {
    {
        const std::scoped_lock lock(mutex_);
        isEnding_ = true;
        wake_.notify_one();
    }
    thread_.join();
}

bool JournalWriter::flush() {
    Lock lock(mutex_);
    const int before = failures_;
    retryAt_ = {};
    copyAgainAt_ = {};
    isFlushing_ = true;
    wake_.notify_one();
    const auto isFailed = [&] { return failures_ != before || gaveUp_; };
    written_.wait(lock, [&] { return isFailed() || (!hasEntries() && !isWriting_ && !isCopying_); });
    isFlushing_ = false;
    return !isFailed();
}

void JournalWriter::removeAtEnd() {
    const std::scoped_lock lock(mutex_);
    removes_ = true;
}

/// REQUIRES: the lock is held.
bool JournalWriter::isDue() const {
    const auto now = std::chrono::steady_clock::now();
    return isEnding_ || (now >= retryAt_ && (isFlushing_ || now >= oldest_ + gathering));
}

/// REQUIRES: the lock is held.
bool JournalWriter::canCopy() const {
    return isCopying_ && !path_.empty() && std::chrono::steady_clock::now() >= copyAgainAt_;
}

void JournalWriter::waitForWork(Lock& lock) {
    const bool isCopyLater = isCopying_ && !path_.empty();
    if (!hasEntries() && !isCopyLater)
        wake_.wait(lock, [this] { return isEnding_ || hasEntries(); });
    else if (!hasEntries())
        wake_.wait_until(lock, copyAgainAt_, [this] { return isEnding_ || hasEntries() || canCopy(); });
    else
        wake_.wait_until(lock, std::max(retryAt_, oldest_ + gathering),
                         [this] { return isDue() || canCopy(); });
}

void JournalWriter::work() {
    Lock lock(mutex_);
    for (;;) {
        if (removes_ && isEnding_)
            break;
        bool hasFailed = false;
        if (hasEntries() && isDue()) {
            if (unwritten_.empty())
                unwritten_.swap(pending_);
            isWriting_ = true;
            lock.unlock();
            const std::error_code error = tryToWrite();
            lock.lock();
            isWriting_ = false;
            hasFailed = bool(error);
            if (error) {
                ++failures_;
                retryAt_ = std::chrono::steady_clock::now() + betweenAttempts;
            }
            const bool isTooMuch = error && unwritten_.size() + pending_.size() > mostPending;
            gaveUp_ = gaveUp_ || isTooMuch;
            if (!error || isTooMuch)
                unwritten_.clear();
            if (isTooMuch)
                pending_.clear();
        } else if (canCopy()) {
            lock.unlock();
            copyPiece();
            lock.lock();
        } else if (isEnding_) {
            break;
        } else {
            waitForWork(lock);
            continue;
        }
        written_.notify_all();
        if (hasFailed && isEnding_)
            break;
    }
    lock.unlock();
    if (removes_)
        removeFiles();
}

std::error_code JournalWriter::tryToWrite() {
    std::error_code error;
    try {
        error = writeFrame(unwritten_);
    } catch (const std::bad_alloc&) {
        error = std::make_error_code(std::errc::not_enough_memory);
    }
    report(error, "the journal of unsaved changes could not be written", hasToldOfJournal_);
    return error;
}

std::error_code JournalWriter::create() {
    if (const auto error = makePrivateFolder(folder_))
        return error;
    for (int i = 0; i < 10000; ++i) {
        const fs::path path = folder_ / (std::to_string(::getpid()) + "-" + std::to_string(i) + ".journal");
        std::error_code error = file_.open(path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
        if (error == std::errc::file_exists)
            continue;
        if (error)
            return error;
        if (!file_.lock() || !hasName(file_))
            continue;
        error = file_.write(journalFormat);
        if (!error)
            error = syncFolder(folder_);
        if (error) {
            static_cast<void>(removeFile(path));
            return error;
        }
        path_ = path;
        size_ = journalFormat.size();
        return {};
    }
    return std::make_error_code(std::errc::file_exists);
}

/// A frame that fails leaves no part of itself that counts: the next one is written over it.
std::error_code JournalWriter::writeFrame(std::string_view entries) {
    std::error_code error;
    if (path_.empty())
        error = create();
    if (!error)
        error = file_.truncate(static_cast<off_t>(size_));
    if (!error && ::lseek(file_.descriptor(), 0, SEEK_END) < 0)
        error = lastError();
    const std::string head = frameHead(entries);
    if (!error)
        error = file_.write(head);
    if (!error)
        error = file_.write(entries);
    if (!error)
        error = file_.sync();
    if (!error)
        size_ += head.size() + entries.size();
    return error;
}

/// Without a copy the journal still helps as long as the file stays as it is.
void JournalWriter::copyPiece() {
    std::error_code error;
    bool isWhole = false;
    try {
        error = tryToCopyPiece();
        isWhole = !error && copied_ == base_->size();
        if (isWhole)
            error = endCopy();
    } catch (const std::bad_alloc&) {
        error = std::make_error_code(std::errc::not_enough_memory);
    }
    if (error || isWhole)
        report(error, "the file could not be copied beside the journal of unsaved changes", hasToldOfBase_);
    if (error) {
        copy_ = PosixFile();
        const std::scoped_lock lock(mutex_);
        ++failures_;
        hasFailedToCopy_ = true;
        copyAgainAt_ = std::chrono::steady_clock::now() + betweenCopies;
    }
}

std::error_code JournalWriter::tryToCopyPiece() {
    if (!copy_.isOpen()) {
        if (const auto error = copy_.open(baseOf(path_), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, 0600))
            return error;
        copied_ = 0;
        fingerprint_ = {};
    }
    const std::size_t count = std::min(pieceSize, base_->size() - copied_);
    const std::string_view piece(reinterpret_cast<const char*>(base_->data()) + copied_, count);
    const std::error_code error = copy_.write(piece);
    fingerprint_.add(piece);
    copied_ += count;
    return error;
}

/// The journal tells of the copy at once: until then it needs the file.
std::error_code JournalWriter::endCopy() {
    std::error_code error = copy_.sync();
    if (!error)
        error = copy_.close();
    if (!error)
        error = syncFolder(folder_);
    if (error)
        return error;
    const std::scoped_lock lock(mutex_);
    const std::size_t before = pending_.size();
    try {
        JournalEncoder(pending_).baseCopied(fingerprint_);
    } catch (const std::bad_alloc&) {
        pending_.resize(before);
        throw;
    }
    oldest_ = {};
    isCopying_ = hasFailedToCopy_ = false;
    return {};
}

void JournalWriter::report(std::error_code error, const std::string& doing, bool& isTold) {
    try {
        if (error && !isTold && complain_)
            complain_(doing + ": " + error.message());
        isTold = bool(error);
    } catch (const std::bad_alloc&) { // told at the next failure
    }
}

/// The journal first: a base without one belongs to nothing.
void JournalWriter::removeFiles() {
    if (path_.empty())
        return;
    static_cast<void>(removeFile(path_));
    static_cast<void>(removeFile(baseOf(path_)));
}

} // namespace tavrin
