#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace tavrin {

/// Takes the next bytes; false when it can't, and then wants no more.
class ByteSink {
  public:
    /// Bytes that lie in several places, to be put one behind the other in one go.
    using Parts = std::span<const std::string_view>;

    /// `take(parts)`, or `take(bytes)`, which is then called for each part.
    template <class Take>
    ByteSink(Take take) {
        if constexpr (std::is_invocable_v<Take&, Parts>)
            take_ = std::move(take);
        else
            take_ = [take = std::move(take)](Parts parts) {
                return std::all_of(parts.begin(), parts.end(), take);
            };
    }

    bool operator()(Parts parts) const { return take_(parts); }
    bool operator()(std::string_view bytes) const { return take_({&bytes, 1}); }

  private:
    std::function<bool(Parts)> take_;
};
/// Hands all its bytes to a sink, the same each time it is asked; false when the sink stopped it.
using ByteSource = std::function<bool(const ByteSink&)>;

/// Asked right before a file is replaced: false leaves it as it is.
using ReplaceCondition = std::function<bool()>;

/// Why a file could not be replaced.
struct ReplaceFailure {
    std::string what;       ///< in words, UTF-8, without the file's name
    std::error_code reason; ///< of the system call that failed
    /// Not empty: the file was being written in place, is neither old nor new, and its old contents lie here.
    std::filesystem::path backup = {};
};

/// A save in place that did not finish, as found at a later start.
struct InterruptedSave {
    std::filesystem::path file;   ///< what was being written
    std::filesystem::path backup; ///< its contents from before
};

/// Puts new contents into a file so that at every moment the disk holds the whole old or the whole new ones,
/// whatever fails or is killed.
///
/// As a rule a new file is written beside the old one, made durable, and renamed over it: permissions,
/// extended attributes and, where the system allows it, owner and group are carried over; a symbolic link
/// stays one. A file with several hard links, or in a folder that takes no new file, is written in place,
/// after its old contents were copied into the folder for backups and made durable there; the copy goes when
/// the new contents are durable.
class FileReplacement {
  public:
    /// The folder is made, for its owner only, when it is first needed.
    explicit FileReplacement(std::filesystem::path backupFolder);

    /// Nothing when it worked. After a failure the file is as it was, unless the failure names a backup.
    /// A file that is not there is made. Files that are not the user's to write are refused even if the
    /// folder is. `isWanted` is asked when the new contents are ready, with nothing left to do but the
    /// rename, or the writing in place; after its refusal the reason is operation_canceled. Throws
    /// std::bad_alloc before anything has changed.
    [[nodiscard]] std::optional<ReplaceFailure> replace(const std::filesystem::path& file,
                                                        const ByteSource& contents,
                                                        const ReplaceCondition& isWanted = {}) const;

    /// The saves in place that were cut off and whose file holds other contents than they were to write; what
    /// other running programs are busy with is left out. Backups of saves that had finished or not begun are
    /// removed.
    [[nodiscard]] std::vector<InterruptedSave> interruptedSaves() const;
    /// Writes the old contents back, in place and durably, and removes the backup.
    [[nodiscard]] std::optional<ReplaceFailure> restore(const InterruptedSave& save) const;
    /// Removes the backup.
    void discard(const InterruptedSave& save) const;

  private:
    std::filesystem::path backupFolder_;
};

} // namespace tavrin
