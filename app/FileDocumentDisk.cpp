// What other programs do to the file.

#include "FileDocument.h"
#include "document/ReloadAction.h"

#include <QFile>

#include <sys/stat.h>
#include <utility>

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

SmartPtr<ReloadAction> FileDocument::takeText(Contents& contents) {
    return new ReloadAction(std::move(contents.text_));
}

void FileDocument::takeOver(const Contents& contents) {
    disk_ = noted_ = contents.disk_;
    fileState_ = contents.state_;
}

} // namespace tavrin::app
