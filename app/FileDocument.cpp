#include "FileDocument.h"

#include "buffer/Buffer.h"
#include "files/TextFileContents.h"
#include "recovery/JournalWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <new>
#include <optional>

namespace tavrin::app {

namespace {

/// Read at one go. Large enough to cost nothing, small enough that a slow disk lets the user cancel.
constexpr qint64 pieceSize = 4 << 20;

/// Everything in the file; nothing when `progress` stopped it. A file may hold more or less than its size
/// tells (it grows, or is made up by the system while it is read), so reading goes on to the end. Throws
/// std::bad_alloc. Read errors are left in `file`.
SmartPtr<ByteBuffer> readAll(QFile& file, const ReadProgress& progress) {
    // One more than needed, so that the end shows without another block.
    auto bytes = ByteBuffer::allocate(static_cast<std::size_t>(file.size()) + 1);
    std::size_t done = 0;
    for (;;) {
        const auto room = static_cast<qint64>(bytes->size() - done);
        const qint64 count =
            file.read(reinterpret_cast<char*>(bytes->data() + done), std::min(room, pieceSize));
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
        if (progress &&
            !progress(static_cast<qint64>(done), std::max(file.size(), static_cast<qint64>(done))))
            return {};
        if (done == bytes->size()) {
            auto larger = ByteBuffer::allocate(2 * done);
            std::copy_n(bytes->data(), done, larger->data());
            bytes = larger;
        }
    }
    bytes->shrink(done);
    return bytes;
}

/// Why a path can't be read or written as a file, before the system is asked to open it: opening a pipe or a
/// device may never return, and replacing one would destroy it.
Failure refuseSpecialFile(const QString& path) {
    const QFileInfo info(path);
    if (info.isDir())
        return FileDocument::tr("“%1” is a folder, not a file.").arg(path);
    if (info.exists() && !info.isFile())
        return FileDocument::tr("“%1” is a device or a pipe, not an ordinary file.").arg(path);
    return {};
}

} // namespace

FileDocument::DiskState FileDocument::DiskState::of(const QString& path) {
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists())
        return {};
    return {true, info.size(), info.lastModified()};
}

FileDocument::FileDocument(Buffer& buffer, std::filesystem::path backups)
    : buffer_(buffer), replacement_(std::move(backups)), fileEncoding_(buffer.getEncoding()) {}

/// A file keeps its mark, or does without, as long as its encoding stays; UTF-16 begins with one otherwise.
bool FileDocument::marksFile() const {
    return buffer_.getEncoding() == fileEncoding_ ? hasMark_ : buffer_.getEncoding() == ENCODING_UTF16;
}

void FileDocument::rememberForm(bool hasMark) {
    fileEncoding_ = buffer_.getEncoding();
    hasMark_ = hasMark;
}

QString FileDocument::displayName() const {
    return path_.isEmpty() ? tr("Untitled.xml") : QFileInfo(path_).fileName();
}

void FileDocument::startNew() {
    static constexpr std::u16string_view beginning = u"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n\n";
    buffer_.setEncoding(ENCODING_UTF8);
    buffer_.loadText(beginning.data(), beginning.size());
    path_.clear();
    disk_ = {};
    fileState_ = {};
    rememberForm(false);
}

void FileDocument::takeOver(const QString& path, const FileState& state) {
    path_ = path;
    fileState_ = state;
    rememberForm(buffer_.getEncoding() == ENCODING_UTF16);
    disk_ = {};
    if (!path.isEmpty())
        disk_ = {true, static_cast<qint64>(state.size),
                 QDateTime::fromMSecsSinceEpoch(state.modified / 1'000'000)};
}

FileDocument::LoadResult FileDocument::load(const QString& path, const ReadProgress& progress) {
    const QString absolute = QDir::current().absoluteFilePath(path);
    const auto failed = [&](const QString& why) {
        return LoadResult{LoadResult::Failed, tr("“%1” could not be opened: %2").arg(absolute, why), {}};
    };
    if (Failure refusal = refuseSpecialFile(absolute))
        return {LoadResult::Failed, *refusal, {}};
    // Taken first: what changes while we read is noticed afterwards.
    const DiskState disk = DiskState::of(absolute);
    const FileState state = stateOfFile(absolute.toStdString()).value_or(FileState());
    QFile file(absolute);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return failed(file.errorString());
    LoadResult result;
    try {
        SmartPtr<ByteBuffer> bytes = readAll(file, progress);
        if (!bytes)
            return {LoadResult::Cancelled, {}, {}};
        if (file.error() != QFileDevice::NoError)
            return failed(file.errorString());
        buffer_.loadBytes(std::move(bytes), &result.decoded);
    } catch (const std::bad_alloc&) {
        return failed(tr("there is not enough memory for it."));
    }
    path_ = absolute;
    disk_ = disk;
    fileState_ = state;
    rememberForm(result.decoded.byteOrderMark);
    return result;
}

Failure FileDocument::save(const QString& path) {
    const QString absolute = QDir::current().absoluteFilePath(path);
    const auto failed = [&](const QString& why) {
        return tr("“%1” could not be saved: %2").arg(absolute, why);
    };
    if (Failure refusal = refuseSpecialFile(absolute))
        return refusal;
    const TextFileForm form{buffer_.getEncoding(), marksFile()};
    std::optional<ReplaceFailure> failure;
    try {
        failure = replacement_.replace(absolute.toStdString(), textFileContents(buffer_, form));
    } catch (const std::bad_alloc&) {
        return failed(tr("there is not enough memory."));
    }
    if (failure && failure->backup.empty())
        return failed(QString::fromStdString(failure->what));
    if (failure)
        return failed(tr("%1. What it held before lies in “%2”.")
                          .arg(QString::fromStdString(failure->what),
                               QString::fromStdString(failure->backup.string())));
    rememberForm(form.hasMark);
    path_ = absolute;
    disk_ = DiskState::of(absolute);
    fileState_ = stateOfFile(absolute.toStdString()).value_or(FileState());
    return {};
}

DiskChange FileDocument::diskChange() const {
    if (path_.isEmpty())
        return DiskChange::None;
    const DiskState now = DiskState::of(path_);
    if (now == disk_)
        return DiskChange::None;
    return now.exists ? DiskChange::Changed : DiskChange::Gone;
}

void FileDocument::acknowledgeDiskChange() {
    disk_ = DiskState::of(path_);
}

} // namespace tavrin::app
