#include "files/FileReplacement.h"

#include "files/Fingerprint.h"
#include "files/PosixFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

using Failure = std::optional<ReplaceFailure>;

Failure failed(std::error_code reason, std::string doing, fs::path backup = {}) {
    if (!reason)
        return {};
    return ReplaceFailure{std::move(doing) + ": " + reason.message(), reason, std::move(backup)};
}

/// Everything in a file, from its position on.
std::error_code forEachPiece(const PosixFile& file,
                             const std::function<std::error_code(std::string_view)>& take) {
    std::vector<char> piece(1 << 18);
    for (;;) {
        std::size_t count = 0;
        if (const auto error = file.read(piece, count))
            return error;
        if (count == 0)
            return {};
        if (const auto error = take({piece.data(), count}))
            return error;
    }
}

/// Setting room aside for fewer bytes costs as much as it saves.
constexpr std::uint64_t worthReserving = std::uint64_t{1} << 16;

/// The contents of `source` from the start of the file. `reserve`: with room set aside first.
std::error_code writeAll(const PosixFile& file, const ByteSource& source, bool reserve, std::uint64_t& size) {
    std::error_code error;
    size = 0;
    try {
        const bool complete = source([&](ByteSink::Parts parts) {
            std::uint64_t length = 0;
            for (const std::string_view part : parts)
                length += part.size();
            if (reserve && length >= worthReserving)
                error = file.reserve(size, length);
            if (!error)
                error = file.write(parts);
            size += length;
            return !error;
        });
        if (!error && !complete)
            error = std::make_error_code(std::errc::operation_canceled);
    } catch (const std::bad_alloc&) { // what was begun is to be taken back
        error = std::make_error_code(std::errc::not_enough_memory);
    }
    return error;
}

/// The file that a path means, behind symbolic links, also when the last one points to nothing yet.
std::error_code follow(fs::path& path) {
    std::error_code error;
    for (int links = 0; links < 40; ++links) {
        if (!fs::is_symlink(fs::symlink_status(path, error)))
            return {};
        const fs::path target = fs::read_symlink(path, error);
        if (error)
            return error;
        path = target.is_absolute() ? target : path.parent_path() / target;
    }
    return std::make_error_code(std::errc::too_many_symbolic_link_levels);
}

/// What belongs to the old file beside its bytes. Owner and attributes are carried over as far as the system
/// lets us; without them the contents are still worth saving.
std::error_code carryOver(const PosixFile& from, const struct stat& old, const PosixFile& to) {
    if (::fchown(to.descriptor(), old.st_uid, old.st_gid) != 0)
        static_cast<void>(::fchown(to.descriptor(), static_cast<uid_t>(-1), old.st_gid));
    std::array<char, 4096> names{};
    const ssize_t length = ::flistxattr(from.descriptor(), names.data(), names.size());
    for (ssize_t at = 0; at < length;) {
        const char* name = names.data() + at;
        std::array<char, 4096> value{};
        const ssize_t size = ::fgetxattr(from.descriptor(), name, value.data(), value.size());
        if (size >= 0)
            static_cast<void>(
                ::fsetxattr(to.descriptor(), name, value.data(), static_cast<std::size_t>(size), 0));
        at += static_cast<ssize_t>(std::string_view(name).size()) + 1;
    }
    // Last: a change of owner clears some of them.
    return to.setMode(old.st_mode & 07777U);
}

/// Whether the open file is still the one that the path names, and an ordinary one with that name alone.
bool isStill(const PosixFile& file, const fs::path& path) {
    struct stat opened {};
    struct stat named {};
    return !file.stat(opened) && ::lstat(path.c_str(), &named) == 0 && opened.st_ino == named.st_ino &&
           opened.st_dev == named.st_dev && S_ISREG(named.st_mode) && named.st_nlink == 1;
}

/// Removes what a killed program left behind; false when another one is writing it.
bool removeAbandoned(const fs::path& path) {
    PosixFile left;
    return !left.open(path, O_WRONLY | O_NOFOLLOW | O_NONBLOCK) && left.lock() && isStill(left, path) &&
           !removeFile(path);
}

/// A new file beside `file`, locked until it is closed.
std::error_code openBeside(const fs::path& file, mode_t mode, PosixFile& out, fs::path& path) {
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
    const std::string name = file.filename().string().substr(0, 200);
    for (int i = 0; i < 10; ++i) {
        path = file.parent_path() / ("." + name + ".saving" + (i == 0 ? "" : std::to_string(i)));
        std::error_code error = out.open(path, flags, mode);
        if (error == std::errc::file_exists && removeAbandoned(path))
            error = out.open(path, flags, mode);
        if (error && error != std::errc::file_exists)
            return error;
        if (!error && out.lock() && isStill(out, path))
            return {};
    }
    return std::make_error_code(std::errc::device_or_resource_busy);
}

std::error_code ask(const ReplaceCondition& isWanted) {
    return isWanted && !isWanted() ? std::make_error_code(std::errc::operation_canceled) : std::error_code();
}

/// Writes the new file beside the old one and puts it in place. `old` is not open when there is none.
Failure replaceByRename(const fs::path& file, const fs::path& folder, const PosixFile& old, PosixFile out,
                        const fs::path& beside, const ByteSource& contents,
                        const ReplaceCondition& isWanted) {
    std::uint64_t size = 0;
    std::error_code error = writeAll(out, contents, !old.isOpen(), size);
    struct stat state {};
    if (!error && old.isOpen())
        error = old.stat(state);
    if (!error && old.isOpen())
        error = carryOver(old, state, out);
    if (!error)
        error = out.sync();
    if (!error)
        error = out.flush();
    if (!error)
        error = ask(isWanted);
    if (!error)
        error = renameFile(beside, file);
    if (error) {
        static_cast<void>(removeFile(beside));
        return failed(error, "the new file could not be written");
    }
    if ((error = syncFolder(folder)))
        return failed(error, "the file was saved, but the disk did not confirm it");
    return {};
}

// In place. A backup is two files: the old bytes, and where they belong, which comes last and so says that
// the bytes are whole.

constexpr std::string_view bytesSuffix = ".old";
constexpr std::string_view recordSuffix = ".where";
constexpr std::size_t largestRecord = 1 << 16;

struct BackupRecord {
    Fingerprint wanted; ///< of the contents that were to be written
    fs::path file;
};

std::string toText(const BackupRecord& record) {
    return "1 " + std::to_string(record.wanted.size) + " " + std::to_string(record.wanted.hash) + "\n" +
           record.file.string();
}

std::optional<BackupRecord> recordFrom(const std::string& text) {
    const std::size_t lineEnd = text.find('\n');
    BackupRecord record;
    unsigned long long size = 0;
    unsigned long long hash = 0;
    if (lineEnd == std::string::npos || std::sscanf(text.c_str(), "1 %llu %llu", &size, &hash) != 2)
        return {};
    record.wanted.size = size;
    record.wanted.hash = hash;
    record.file = text.substr(lineEnd + 1);
    return record;
}

fs::path recordOf(const fs::path& backup) {
    fs::path record = backup;
    return record.replace_extension(recordSuffix);
}

std::error_code writeDurably(const fs::path& path, std::string_view text) {
    PosixFile file;
    std::error_code error = file.open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (!error)
        error = file.write(text);
    if (!error)
        error = file.sync();
    return error ? error : file.close();
}

/// A lock on the backup tells other programs that its owner lives.
std::error_code makeBackup(const fs::path& folder, const PosixFile& old, const BackupRecord& record,
                           PosixFile& bytes, fs::path& path) {
    if (const auto error = makePrivateFolder(folder))
        return error;
    std::error_code error = std::make_error_code(std::errc::file_exists);
    for (int i = 0; i < 1000 && error == std::errc::file_exists; ++i) {
        path = folder / (std::to_string(::getpid()) + "-" + std::to_string(i) + std::string(bytesSuffix));
        error = bytes.open(path, O_WRONLY | O_CREAT | O_EXCL, 0600);
    }
    if (!error && !bytes.lock())
        error = lastError();
    if (!error)
        error = forEachPiece(old, [&](std::string_view piece) { return bytes.write(piece); });
    if (!error)
        error = bytes.sync();
    if (!error) {
        const fs::path unfinished = path.string() + ".new";
        error = writeDurably(unfinished, toText(record));
        if (!error)
            error = renameFile(unfinished, recordOf(path));
        if (error)
            static_cast<void>(removeFile(unfinished));
    }
    return error ? error : syncFolder(folder);
}

/// The record goes first: bytes without one belong to no save.
void removeBackup(const fs::path& backup) {
    static_cast<void>(removeFile(recordOf(backup)));
    static_cast<void>(removeFile(backup));
}

std::error_code overwrite(const PosixFile& file, const ByteSource& contents) {
    if (::lseek(file.descriptor(), 0, SEEK_SET) != 0)
        return lastError();
    std::uint64_t size = 0;
    std::error_code error = writeAll(file, contents, false, size);
    if (!error)
        error = file.truncate(static_cast<off_t>(size));
    return error ? error : file.sync();
}

ByteSource contentsOf(const fs::path& path) {
    return [path](const ByteSink& sink) {
        PosixFile file;
        if (file.open(path, O_RDONLY))
            return false;
        return !forEachPiece(file, [&](std::string_view piece) {
            return sink(piece) ? std::error_code() : std::make_error_code(std::errc::operation_canceled);
        });
    };
}

Failure replaceInPlace(const fs::path& folder, const fs::path& file, const ByteSource& contents,
                       const ReplaceCondition& isWanted) {
    BackupRecord record{.wanted = {}, .file = fs::absolute(file)};
    const bool complete = contents([&](std::string_view bytes) {
        record.wanted.add(bytes);
        return true;
    });
    if (!complete)
        return failed(std::make_error_code(std::errc::operation_canceled), "there is nothing to save");
    PosixFile target;
    if (const auto error = target.open(file, O_RDWR))
        return failed(error, "the file could not be opened for writing");
    PosixFile bytes;
    fs::path backup;
    if (const auto error = makeBackup(folder, target, record, bytes, backup)) {
        if (bytes.isOpen())
            removeBackup(backup);
        return failed(error, "the old contents could not be kept in " + folder.string());
    }
    if (const auto error = ask(isWanted)) {
        removeBackup(backup);
        return failed(error, "the file was left alone");
    }
    const ByteSource oldContents = contentsOf(backup);
    std::error_code error = overwrite(target, contents);
    if (error) {
        const bool isOldAgain = !overwrite(target, oldContents);
        if (isOldAgain)
            removeBackup(backup);
        return failed(error, "the file could not be written", isOldAgain ? fs::path() : backup);
    }
    error = target.close();
    if (error)
        return failed(error, "the file could not be written", backup);
    try {
        removeBackup(backup);
    } catch (const std::bad_alloc&) { // the next start sees that the save had finished
    }
    return {};
}

bool takesNoNewFile(std::error_code error) {
    return error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
           error == std::errc::read_only_file_system;
}

} // namespace

FileReplacement::FileReplacement(fs::path backupFolder) : backupFolder_(std::move(backupFolder)) {}

Failure FileReplacement::replace(const fs::path& path, const ByteSource& contents,
                                 const ReplaceCondition& isWanted) const {
    fs::path file = path;
    if (const auto error = follow(file))
        return failed(error, "its symbolic link leads nowhere");
    PosixFile old;
    struct stat state {};
    std::error_code error = old.open(file, O_RDONLY | O_NONBLOCK);
    const bool isNew = error == std::errc::no_such_file_or_directory;
    if (!isNew && ::faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0)
        return failed(lastError(), "the file may not be written");
    if (!isNew && !error)
        error = old.stat(state);
    if (!isNew && error)
        return failed(error, "the old file could not be read");
    if (!isNew && !S_ISREG(state.st_mode))
        return failed(std::make_error_code(std::errc::invalid_argument), "it is not an ordinary file");
    if (!isNew && state.st_nlink > 1)
        return replaceInPlace(backupFolder_, file, contents, isWanted);
    PosixFile out;
    fs::path beside;
    const fs::path folder = file.parent_path(); // from now on nothing may fail but what is taken back
    // Nobody else reads what belongs to the old file before it has the old file's mode.
    error = openBeside(file, isNew ? 0666 : 0600, out, beside);
    if (!isNew && takesNoNewFile(error))
        return replaceInPlace(backupFolder_, file, contents, isWanted);
    if (error)
        return failed(error, "no new file could be made beside it");
    return replaceByRename(file, folder, old, std::move(out), beside, contents, isWanted);
}

std::vector<InterruptedSave> FileReplacement::interruptedSaves() const {
    std::vector<InterruptedSave> result;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(backupFolder_, error)) {
        const fs::path& backup = entry.path();
        if (backup.extension() != bytesSuffix)
            continue;
        PosixFile bytes;
        const bool isOwnerGone = !bytes.open(backup, O_RDONLY) && bytes.lock();
        if (!isOwnerGone)
            continue;
        std::string text;
        const bool hasRecord = !readWhole(recordOf(backup), largestRecord, text);
        const auto record = hasRecord ? recordFrom(text) : std::nullopt;
        if (!hasRecord) { // the save had not begun, or was over
            removeBackup(backup);
            continue;
        }
        if (!record)
            continue; // not ours to judge
        Fingerprint found;
        contentsOf(record->file)([&](std::string_view piece) {
            found.add(piece);
            return true;
        });
        if (found == record->wanted)
            removeBackup(backup);
        else
            result.push_back({record->file, backup});
    }
    return result;
}

Failure FileReplacement::restore(const InterruptedSave& save) const {
    PosixFile target;
    if (const auto error = target.open(save.file, O_WRONLY | O_CREAT, 0600))
        return failed(error, "the file could not be opened for writing", save.backup);
    if (const auto error = overwrite(target, contentsOf(save.backup)))
        return failed(error, "the file could not be written", save.backup);
    if (const auto error = target.close())
        return failed(error, "the file could not be written", save.backup);
    removeBackup(save.backup);
    return {};
}

void FileReplacement::discard(const InterruptedSave& save) const {
    removeBackup(save.backup);
}

} // namespace tavrin
