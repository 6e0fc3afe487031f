// What other programs do to the file.

#include "FileDocument.h"
#include "document/ReloadAction.h"
#include "recovery/JournalWriter.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <sys/stat.h>

namespace tavrin::app {

FileDocument::DiskState FileDocument::DiskState::of(const QString& path) {
    struct stat found {};
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &found) != 0)
        return {};
    return {true, found.st_dev, found.st_ino, found.st_size,
            qint64{found.st_mtim.tv_sec} * 1'000'000'000 + found.st_mtim.tv_nsec};
}

bool FileDocument::DiskState::operator==(const DiskState& other) const {
    const bool isSameFile =
        device == 0 || other.device == 0 || (device == other.device && number == other.number);
    return exists == other.exists && isSameFile && size == other.size && modified == other.modified;
}

DiskChange FileDocument::diskChange() const {
    if (path_.isEmpty())
        return DiskChange::None;
    const DiskState now = DiskState::of(path_);
    if (now == disk_)
        return DiskChange::None;
    return now.exists ? DiskChange::Changed : DiskChange::Gone;
}

DiskChange FileDocument::newDiskChange() const {
    return DiskState::of(path_) == noted_ ? DiskChange::None : diskChange();
}

void FileDocument::noteDiskChange() {
    noted_ = DiskState::of(path_);
}

FileDocument::Reread FileDocument::reread() const {
    Reread result;
    const auto failed = [&](const QString& why) {
        result.error = tr("“%1” could not be read again: %2").arg(path_, why);
        return result;
    };
    // Taken first: what changes while we read is noticed afterwards.
    result.disk = DiskState::of(path_);
    result.state = stateOfFile(path_.toStdString()).value_or(FileState());
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(
        std::fopen(QFile::encodeName(path_).constData(), "rb"), &std::fclose);
    if (!stream)
        return failed(qt_error_string(errno));
    try {
        SmartPtr<ByteBuffer> bytes = ByteBuffer::loadFile(stream.get());
        if (std::ferror(stream.get()) != 0)
            return failed(qt_error_string(errno));
        result.text = new ReloadAction(std::move(bytes), &result.decoded);
    } catch (const std::bad_alloc&) {
        return failed(tr("there is not enough memory for it."));
    }
    return result;
}

void FileDocument::takeOver(const Reread& reread) {
    disk_ = noted_ = reread.disk;
    fileState_ = reread.state;
    rememberForm(reread.decoded.byteOrderMark);
}

} // namespace tavrin::app
