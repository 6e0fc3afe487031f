#pragma once

#include "document/TextDocument.h"
#include "files/PosixFile.h"
#include "recovery/JournalFormat.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavrin {

/// A journal whose program has gone, locked as long as this object lives, so that no other program offers it
/// as well.
class AbandonedJournal {
  public:
    AbandonedJournal(std::filesystem::path path, PosixFile file);

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    /// The document as it was last read or saved; without a file when it never was.
    [[nodiscard]] const JournalDocument& about() const { return about_; }
    [[nodiscard]] std::chrono::system_clock::time_point lastWritten() const { return lastWritten_; }
    /// Changes that were made since the last save.
    [[nodiscard]] std::size_t unsavedChanges() const { return unsavedChanges_; }
    /// Whether the file holds what was last read or saved; also true without a file.
    [[nodiscard]] bool fitsFile() const { return fitsFile_; }
    /// False when the bytes are no journal, or the text from which it starts is nowhere to be found.
    [[nodiscard]] bool isReadable() const { return isReadable_; }

    /// A reader at the journal's start.
    [[nodiscard]] JournalReader read() const;
    /// Gives the lock away with the open file.
    [[nodiscard]] PosixFile takeFile() { return std::move(file_); }
    /// Removes journal and base.
    void remove();

  private:
    void examine();

    std::filesystem::path path_;
    PosixFile file_;
    JournalDocument about_;
    std::chrono::system_clock::time_point lastWritten_;
    std::size_t unsavedChanges_ = 0;
    bool fitsFile_ = false;
    bool isReadable_ = false;
};

/// The journals in a folder that hold what is not saved and whose programs are gone, the newest first. Those
/// that hold nothing unsaved and whose file holds what was saved are removed.
[[nodiscard]] std::vector<AbandonedJournal> findAbandonedJournals(const std::filesystem::path& folder);

/// What came of a recovery.
struct RecoveredSession {
    std::optional<std::string> problem; ///< in words, UTF-8, when not everything could be made again
    bool hasText = false;               ///< false: nothing could, and the document is as it was
    JournalDocument about;

    // How to go on with the journal.
    bool wasInGroup = false;
    SmartPtr<ByteBuffer>
        uncopiedBase; ///< the bytes from which the edits start, when no copy was made of them
    std::uint64_t goodBytes = 0;
};

/// Makes text, encoding and undo history of the crashed session again, through the `view` of the document,
/// up to the last entry that fits what is there. REQUIRES: no journal follows the document.
[[nodiscard]] RecoveredSession recover(const AbandonedJournal& journal, TextDocument& document,
                                       Undoable& view);

/// Whether an action, of a kind that journals hold, can be what came next in this text.
[[nodiscard]] bool isPossible(const UndoableAction& action, const Buffer& buffer);

} // namespace tavrin
