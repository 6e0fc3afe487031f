#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace tavrin {

/// An open file of the system; closes itself. Operations answer what went wrong, nothing when they worked.
/// Interrupted calls are made again.
class PosixFile {
  public:
    PosixFile() = default;
    PosixFile(PosixFile&& other) noexcept;
    PosixFile& operator=(PosixFile&& other) noexcept;
    ~PosixFile();

    /// Flags as of open(2); close-on-exec is added.
    [[nodiscard]] std::error_code open(const std::filesystem::path& path, int flags, mode_t mode = 0);
    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
    [[nodiscard]] int descriptor() const { return descriptor_; }

    /// All of the bytes, however many calls it takes.
    [[nodiscard]] std::error_code write(std::string_view bytes) const { return write({&bytes, 1}); }
    /// The same with those of each part, one behind the other.
    [[nodiscard]] std::error_code write(std::span<const std::string_view> parts) const;
    /// Sets room aside for the bytes [from, from + size), which are to be written next. The only error is
    /// that there is none; a file system that can't do it does nothing.
    [[nodiscard]] std::error_code reserve(std::uint64_t from, std::uint64_t size) const;
    /// Up to the span's size at the file's position; `count` is 0 at the end.
    [[nodiscard]] std::error_code read(std::span<char> into, std::size_t& count) const;
    [[nodiscard]] std::error_code truncate(off_t size) const;
    [[nodiscard]] std::error_code setMode(mode_t mode) const;
    /// Until the device has the contents.
    [[nodiscard]] std::error_code sync() const;
    /// What closing would do, short of giving up the file and its lock: some file systems tell only then that
    /// something was not written.
    [[nodiscard]] std::error_code flush() const;
    [[nodiscard]] std::error_code stat(struct stat& result) const;
    /// Without waiting; false when someone else holds it.
    [[nodiscard]] bool lock() const;
    [[nodiscard]] std::error_code close();

  private:
    int descriptor_ = -1;
};

/// The error of the system call that failed last.
[[nodiscard]] std::error_code lastError();
/// Makes a folder's entries durable.
[[nodiscard]] std::error_code syncFolder(const std::filesystem::path& folder);
[[nodiscard]] std::error_code renameFile(const std::filesystem::path& from, const std::filesystem::path& to);
/// Nothing when there was no such file.
[[nodiscard]] std::error_code removeFile(const std::filesystem::path& file);
/// The folder and those above it, for its owner only when it is new.
[[nodiscard]] std::error_code makePrivateFolder(const std::filesystem::path& folder);
/// A whole small file; an error when it is larger than `limit` bytes.
[[nodiscard]] std::error_code readWhole(const std::filesystem::path& file, std::size_t limit,
                                        std::string& into);

} // namespace tavrin
