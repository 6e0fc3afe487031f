#include "platform/core/SharedRead.h"

#include <algorithm>

#if defined(__unix__) || defined(__APPLE__)
#include <unistd.h>
#endif

namespace tavrin {

namespace {

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

SharedRead::SharedRead(std::FILE* file, std::size_t offset, std::span<std::uint8_t> to)
    : file_(fileno(file)),
      offset_(offset),
      to_(to),
      wasRead_((to.size() + pieceSize - 1) / pieceSize),
      end_(to.size()) {}

bool SharedRead::readNext() {
    std::size_t piece = 0;
    {
        const std::lock_guard lock(mutex_);
        if (begun_ == wasRead_.size() || begun_ * pieceSize >= end_)
            return false;
        piece = begun_++;
    }
    const std::size_t begin = piece * pieceSize;
    const auto room = to_.subspan(begin, std::min(pieceSize, to_.size() - begin));
    std::size_t count = 0;
    while (count < room.size()) {
        const std::size_t more = readAt(file_, offset_ + begin + count, room.subspan(count));
        if (more == 0)
            break;
        count += more;
    }
    const std::lock_guard lock(mutex_);
    if (count < room.size())
        end_ = std::min(end_, begin + count);
    wasRead_[piece] = true;
    while (whole_ < begun_ && wasRead_[whole_])
        ++whole_;
    changed_.notify_all();
    return true;
}

std::size_t SharedRead::available() const {
    return std::min(whole_ * pieceSize, end_);
}

std::size_t SharedRead::readBeyond(std::size_t known) {
    for (;;) {
        {
            std::unique_lock lock(mutex_);
            if (available() > known || available() == end_)
                return available();
        }
        if (readNext())
            continue;
        std::unique_lock lock(mutex_); // others read what is missing
        changed_.wait(lock, [&] { return available() > known || available() == end_; });
    }
}

} // namespace tavrin
