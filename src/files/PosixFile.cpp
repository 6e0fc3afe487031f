#include "files/PosixFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

namespace tavrin {

namespace {

/// Makes a call again as long as it is interrupted.
template <class Call>
auto retried(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

std::error_code errorOf(int result) {
    return result < 0 ? lastError() : std::error_code();
}

/// Fewer than any system takes.
constexpr std::size_t partsAtOnce = 64;

std::error_code writeParts(int descriptor, std::span<iovec> parts) {
    while (!parts.empty()) {
        if (parts.front().iov_len == 0) {
            parts = parts.subspan(1);
            continue;
        }
        const ssize_t count =
            retried([&] { return ::writev(descriptor, parts.data(), static_cast<int>(parts.size())); });
        if (count < 0)
            return lastError();
        if (count == 0)
            return std::make_error_code(std::errc::no_space_on_device);
        auto written = static_cast<std::size_t>(count);
        for (iovec& part : parts) {
            const std::size_t taken = std::min(written, part.iov_len);
            part.iov_base = static_cast<char*>(part.iov_base) + taken;
            part.iov_len -= taken;
            written -= taken;
        }
    }
    return {};
}

} // namespace

std::error_code lastError() {
    return {errno, std::generic_category()};
}

PosixFile::PosixFile(PosixFile&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

PosixFile& PosixFile::operator=(PosixFile&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

PosixFile::~PosixFile() {
    if (isOpen())
        ::close(descriptor_);
}

std::error_code PosixFile::open(const std::filesystem::path& path, int flags, mode_t mode) {
    if (isOpen())
        ::close(std::exchange(descriptor_, -1));
    descriptor_ = retried([&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); });
    return errorOf(descriptor_);
}

std::error_code PosixFile::write(std::span<const std::string_view> parts) const {
    std::array<iovec, partsAtOnce> batch;
    for (; !parts.empty(); parts = parts.subspan(std::min(parts.size(), batch.size()))) {
        const auto taken = parts.first(std::min(parts.size(), batch.size()));
        std::ranges::transform(taken, batch.begin(), [](std::string_view part) {
            return iovec{const_cast<char*>(part.data()), part.size()};
        });
        if (const auto error = writeParts(descriptor_, std::span(batch).first(taken.size())))
            return error;
    }
    return {};
}

std::error_code PosixFile::reserve(std::uint64_t from, std::uint64_t size) const {
    const auto error = errorOf(retried([&] {
        return ::fallocate(descriptor_, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(from),
                           static_cast<off_t>(size));
    }));
    const bool isFull = error == std::errc::no_space_on_device || error.value() == EDQUOT;
    return isFull ? error : std::error_code();
}

std::error_code PosixFile::read(std::span<char> into, std::size_t& count) const {
    const ssize_t got = retried([&] { return ::read(descriptor_, into.data(), into.size()); });
    count = got < 0 ? 0 : static_cast<std::size_t>(got);
    return got < 0 ? lastError() : std::error_code();
}

std::error_code PosixFile::truncate(off_t size) const {
    return errorOf(retried([&] { return ::ftruncate(descriptor_, size); }));
}

std::error_code PosixFile::setMode(mode_t mode) const {
    return errorOf(retried([&] { return ::fchmod(descriptor_, mode); }));
}

std::error_code PosixFile::sync() const {
    return errorOf(retried([&] { return ::fsync(descriptor_); }));
}

std::error_code PosixFile::flush() const {
    PosixFile second;
    second.descriptor_ = retried([&] { return ::dup(descriptor_); });
    return second.isOpen() ? second.close() : lastError();
}

std::error_code PosixFile::stat(struct stat& result) const {
    return errorOf(::fstat(descriptor_, &result));
}

bool PosixFile::lock() const {
    return retried([&] { return ::flock(descriptor_, LOCK_EX | LOCK_NB); }) == 0;
}

std::error_code PosixFile::close() {
    // Never again after an interruption: the descriptor is gone whatever close answers.
    const int result = ::close(std::exchange(descriptor_, -1));
    return result < 0 && errno != EINTR ? lastError() : std::error_code();
}

std::error_code syncFolder(const std::filesystem::path& folder) {
    PosixFile handle;
    const std::filesystem::path here(".");
    const std::filesystem::path& named = folder.empty() ? here : folder; // a copy would need memory
    if (const auto error = handle.open(named, O_RDONLY | O_DIRECTORY))
        return error;
    const auto error = handle.sync();
    // Some file systems can't do it for folders, and then need not.
    return error == std::errc::invalid_argument ? std::error_code() : error;
}

std::error_code renameFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    return errorOf(retried([&] { return ::rename(from.c_str(), to.c_str()); }));
}

std::error_code removeFile(const std::filesystem::path& file) {
    const auto error = errorOf(retried([&] { return ::unlink(file.c_str()); }));
    return error == std::errc::no_such_file_or_directory ? std::error_code() : error;
}

std::error_code makePrivateFolder(const std::filesystem::path& folder) {
    std::error_code error;
    if (std::filesystem::is_directory(folder, error))
        return {};
    std::filesystem::create_directories(folder.parent_path(), error);
    if (error)
        return error;
    const auto made = errorOf(retried([&] { return ::mkdir(folder.c_str(), 0700); }));
    return made == std::errc::file_exists ? std::error_code() : made;
}

std::error_code readWhole(const std::filesystem::path& file, std::size_t limit, std::string& into) {
    PosixFile handle;
    if (const auto error = handle.open(file, O_RDONLY))
        return error;
    into.assign(limit + 1, '\0');
    std::size_t done = 0;
    std::size_t count = 1;
    while (count > 0 && done < into.size()) {
        if (const auto error = handle.read(std::span(into).subspan(done), count))
            return error;
        done += count;
    }
    if (done > limit)
        return std::make_error_code(std::errc::file_too_large);
    into.resize(done);
    return {};
}

} // namespace tavrin
