#pragma once

#include "files/PosixFile.h"

#include <filesystem>

namespace tavrin {

/// Tells other running programs of the same user that a file is open here, by a lock in a folder that they
/// share. Advice: nobody is kept from reading or writing the file. A lock goes with its program, however that
/// ends.
class FileClaim {
  public:
    /// The folder is made, for its owner only, when it is first needed. Empty: nobody is told anything.
    explicit FileClaim(std::filesystem::path folder);
    FileClaim(const FileClaim&) = delete;
    FileClaim& operator=(const FileClaim&) = delete;
    ~FileClaim();

    /// From now on this file is claimed, whatever path leads to it, and the former one is not. Empty: none.
    /// Where another claim holds it, or the folder can't be used, none is made.
    void claim(const std::filesystem::path& file);
    /// Whether another claim holds the file.
    [[nodiscard]] bool isHeldByOthers(const std::filesystem::path& file) const;

  private:
    void release();

    std::filesystem::path folder_;
    std::filesystem::path path_; ///< of the lock; empty: none is held
    PosixFile lock_;
};

} // namespace tavrin
