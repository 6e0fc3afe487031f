#include "platform/core/ReadAhead.h"

#include <algorithm>

#if defined(__unix__) || defined(__APPLE__)
#include <unistd.h>
#endif

namespace tavrin {

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20;

/// Bytes that were read; 0 at the end of the file, or when it can't be read.
std::size_t readAt(int file, std::size_t offset, std::span<std::uint8_t> to) {
#if defined(__unix__) || defined(__APPLE__)
    const ssize_t count = pread(file, to.data(), to.size(), static_cast<off_t>(offset));
    return count > 0 ? static_cast<std::size_t>(count) : 0;
#else
    static_cast<void>(file), static_cast<void>(offset), static_cast<void>(to);
    return 0;
#endif
}

} // namespace

ReadAhead::ReadAhead(std::FILE* file, std::size_t offset, std::span<std::uint8_t> to)
    : thread_([=, this, number = fileno(file)] { read(number, offset, to); }) {}

ReadAhead::~ReadAhead() {
    {
        const std::lock_guard lock(mutex_);
        isUnwanted_ = true;
    }
    thread_.join();
}

void ReadAhead::read(int file, std::size_t offset, std::span<std::uint8_t> to) {
    for (std::size_t done = 0;;) {
        const std::size_t count =
            readAt(file, offset + done, to.subspan(done, std::min(pieceSize, to.size() - done)));
        done += count;
        const bool isEnd = count == 0 || done == to.size();
        if (!tell(done, isEnd) || isEnd)
            return;
    }
}

bool ReadAhead::tell(std::size_t done, bool isEnd) {
    const std::lock_guard lock(mutex_);
    done_ = done;
    hasEnded_ = isEnd;
    changed_.notify_one();
    return !isUnwanted_;
}

std::size_t ReadAhead::waitBeyond(std::size_t known) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return done_ > known || hasEnded_; });
    return done_;
}

} // namespace tavrin
