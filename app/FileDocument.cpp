#include "FileDocument.h"

#include "buffer/Buffer.h"
#include "buffer/BufferParser.h"
#include "buffer/TextLoader.h"
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

/// Read at one go: large enough to cost nothing, small enough to be in a cache when it is examined.
constexpr qint64 pieceSize = 512 << 10;

enum class Reading { Done, Stopped, Failed };

/// Reads the device to its end. A file may hold more or less than its size tells: it grows, shrinks, or is
/// made up by the system while it is read.
Reading readAll(QIODevice& file, TextLoader& loader, const ReadHooks& hooks) {
    if (hooks.progress && !hooks.progress(0, file.size()))
        return Reading::Stopped;
    bool isBeginning = static_cast<bool>(hooks.beginning);
    for (;;) {
        const std::span<std::uint8_t> room = loader.room();
        const qint64 count = file.read(reinterpret_cast<char*>(room.data()),
                                       std::min(static_cast<qint64>(room.size()), pieceSize));
        if (count <= 0)
            return count == 0 ? Reading::Done : Reading::Failed;
        loader.add(static_cast<std::size_t>(count));
        const auto done = static_cast<qint64>(loader.size());
        if (isBeginning && done >= FileDocument::beginningSize) {
            hooks.beginning(loader.bytes().first(FileDocument::beginningSize));
            isBeginning = false;
        }
        // Half of the work is to examine what was read, which some encodings leave to the end.
        if (hooks.progress &&
            !hooks.progress((done + static_cast<qint64>(loader.examined())) / 2, std::max(file.size(), done)))
            return Reading::Stopped;
    }
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

FileDocument::FileDocument(Buffer& buffer, std::filesystem::path backups)
    : buffer_(buffer), replacement_(std::move(backups)) {}

QString FileDocument::displayName() const {
    return path_.isEmpty() ? tr("Untitled.xml") : QFileInfo(path_).fileName();
}

void FileDocument::startNew() {
    static constexpr std::u16string_view beginning = u"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n\n";
    buffer_.setEncoding(ENCODING_UTF8);
    buffer_.loadText(beginning.data(), beginning.size());
    path_.clear();
    disk_ = noted_ = {};
    fileState_ = {};
}

void FileDocument::takeOver(const QString& path, const FileState& state) {
    path_ = path;
    fileState_ = state;
    disk_ = {};
    if (!path.isEmpty())
        disk_ = {.exists = true, .size = static_cast<qint64>(state.size), .modified = state.modified};
    noted_ = disk_;
}

const LineScan* FileDocument::lineScan() const {
    return buffer_.getParser()->lineScan();
}

FileDocument::ReadResult FileDocument::read(const QString& path, const ReadHooks& hooks) {
    using Status = LoadResult::Status;
    const QString absolute = QDir::current().absoluteFilePath(path);
    const auto failed = [&](const QString& why) {
        return ReadResult{Status::Failed, tr("“%1” could not be opened: %2").arg(absolute, why), {}};
    };
    if (Failure refusal = refuseSpecialFile(absolute))
        return {Status::Failed, *refusal, {}};
    // Taken first: what changes while we read is noticed afterwards.
    const DiskState disk = DiskState::of(absolute);
    const FileState state = stateOfFile(absolute.toStdString()).value_or(FileState());
    const std::unique_ptr<QIODevice> file =
        hooks.device ? hooks.device(absolute) : std::make_unique<QFile>(absolute);
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return failed(file->errorString());
    try {
        TextLoader loader(static_cast<std::size_t>(file->size()), hooks.scan);
        switch (readAll(*file, loader, hooks)) {
        case Reading::Stopped:
            return {Status::Cancelled, {}, {}};
        case Reading::Failed:
            return failed(file->errorString());
        case Reading::Done:
            break;
        }
        const auto size = static_cast<qint64>(loader.size());
        std::optional<LoadedText> text = loader.finish([&](std::size_t examined) {
            return !hooks.progress || hooks.progress((size + static_cast<qint64>(examined)) / 2, size);
        });
        if (!text)
            return {Status::Cancelled, {}, {}};
        return {Status::Done,
                {},
                std::unique_ptr<Contents>(new Contents(std::move(*text), absolute, disk, state))};
    } catch (const std::bad_alloc&) {
        return failed(tr("there is not enough memory for it."));
    }
}

void FileDocument::adopt(std::unique_ptr<Contents> contents) {
    buffer_.adopt(std::move(contents->text_));
    buffer_.setForm(buffer_.getLoadedForm()); // the file's own, whatever the text declares
    path_ = contents->path_;
    disk_ = noted_ = contents->disk_;
    fileState_ = contents->state_;
}

FileDocument::LoadResult FileDocument::load(const QString& path, const ReadProgress& progress) {
    ReadResult read = FileDocument::read(path, {.progress = progress, .scan = lineScan()});
    LoadResult result{read.status, read.error, {}};
    if (read.contents) {
        result.decoded = read.contents->text().report();
        adopt(std::move(read.contents));
    }
    return result;
}

Failure FileDocument::save(const QString& path) {
    const QString absolute = QDir::current().absoluteFilePath(path);
    const auto failed = [&](const QString& why) {
        return tr("“%1” could not be saved: %2").arg(absolute, why);
    };
    if (Failure refusal = refuseSpecialFile(absolute))
        return refusal;
    // Asked once more when all is written but the last step: an answer may have taken its time.
    const auto isAsKnown = [&] { return absolute != path_ || DiskState::of(path_) == disk_; };
    std::optional<ReplaceFailure> failure;
    try {
        failure = replacement_.replace(absolute.toStdString(), textFileContents(buffer_), isAsKnown);
    } catch (const std::bad_alloc&) {
        return failed(tr("there is not enough memory."));
    }
    if (failure && failure->reason == std::errc::operation_canceled)
        return failed(tr("another program has changed it at this moment."));
    if (failure && failure->backup.empty())
        return failed(QString::fromStdString(failure->what));
    if (failure)
        return failed(tr("%1. What it held before lies in “%2”.")
                          .arg(QString::fromStdString(failure->what),
                               QString::fromStdString(failure->backup.string())));
    path_ = absolute;
    disk_ = noted_ = DiskState::of(absolute);
    fileState_ = stateOfFile(absolute.toStdString()).value_or(FileState());
    return {};
}

} // namespace tavrin::app
