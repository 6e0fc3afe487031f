#include "files/FileClaim.h"

#include "files/Fingerprint.h"

#include <fcntl.h>
#include <string>
#include <utility>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

/// What a file is known by. A path as a rule, since saving puts a new file in place of the old one; a file
/// with several names is written in place and known by what they lead to.
fs::path lockFor(const fs::path& folder, const fs::path& file) {
    struct stat state {};
    std::error_code error;
    const bool hasOtherNames = ::stat(file.c_str(), &state) == 0 && state.st_nlink > 1;
    Fingerprint name;
    name.add(hasOtherNames ? std::to_string(state.st_dev) + ":" + std::to_string(state.st_ino)
                           : fs::weakly_canonical(file, error).string());
    return folder / (std::to_string(name.hash) + ".open");
}

} // namespace

FileClaim::FileClaim(fs::path folder) : folder_(std::move(folder)) {}

FileClaim::~FileClaim() {
    release();
}

void FileClaim::claim(const fs::path& file) {
    const fs::path wanted = folder_.empty() || file.empty() ? fs::path() : lockFor(folder_, file);
    if (wanted == path_)
        return;
    release();
    if (wanted.empty() || makePrivateFolder(folder_))
        return;
    // Its last owner may remove the file between our opening and locking it.
    for (int attempt = 0; attempt < 10; ++attempt) {
        struct stat opened {};
        if (lock_.open(wanted, O_RDWR | O_CREAT | O_NOFOLLOW, 0600) || !lock_.lock())
            break;
        if (!lock_.stat(opened) && opened.st_nlink > 0) {
            path_ = wanted;
            return;
        }
    }
    lock_ = PosixFile();
}

bool FileClaim::isHeldByOthers(const fs::path& file) const {
    if (folder_.empty() || file.empty())
        return false;
    const fs::path lock = lockFor(folder_, file);
    PosixFile other;
    return lock != path_ && !other.open(lock, O_RDWR | O_NOFOLLOW) && !other.lock();
}

void FileClaim::release() {
    if (!path_.empty())
        static_cast<void>(removeFile(path_)); // while it is locked: nobody else can hold it
    path_.clear();
    lock_ = PosixFile();
}

} // namespace tavrin
