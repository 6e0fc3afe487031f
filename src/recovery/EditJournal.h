#pragma once

#include "document/TextDocument.h"
#include "recovery/JournalWriter.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace tavrin {

class AbandonedJournal;
struct RecoveredSession;

/// Keeps, beside a document that is being edited, what it takes to make text and undo history of the session
/// again after a crash. A document that nobody changes has no files; the first change makes the journal.
///
/// The host tells when the text has come from a file, when it was saved, and when it was given up on purpose.
/// Text that comes into the buffer without the undo history must be followed by one of the start operations.
class EditJournal final : private HistoryObserver {
  public:
    /// Follows the document, which outlives the journal. Complaints come on another thread, see
    /// JournalWriter.
    EditJournal(std::filesystem::path folder, TextDocument& document, JournalWriter::Complaint complain);
    EditJournal(const EditJournal&) = delete;
    EditJournal& operator=(const EditJournal&) = delete;
    /// What is not saved stays for the next start; a journal of a document without changes goes.
    ~EditJournal() override;

    /// The text is that of the file, just read, when the file's state was `state`, and has no history. The
    /// former journal goes.
    void startWithFile(const std::filesystem::path& file, const FileState& state);
    /// The present text, without history, belongs to a file or to none (empty). The former journal goes.
    void startWithText(const std::filesystem::path& file, const FileState& state);
    /// Goes on with the journal from which the document has just been recovered. The former journal goes.
    void adopt(AbandonedJournal journal, const RecoveredSession& session);
    /// The text was saved, durably, in the buffer's encoding. To be flushed before: a crash between the two
    /// must not find a journal that needs the file as it was. The history's save point is told by itself.
    void saved(const std::filesystem::path& file, const FileState& state);
    /// What is not saved was given up on purpose: the journal goes, and nothing is kept until the next start.
    void discard();
    /// Waits until the disk has everything; false when it could not take it.
    bool flush();

  private:
    void actionAdded(const UndoableAction& action, bool isMerged) override;
    void stepUndone() override { step(JournalEntryKind::Undo); }
    void stepRedone() override { step(JournalEntryKind::Redo); }
    void groupStarted() override { groups_ = Groups::started; }
    void groupEnded() override;
    void savePointSet() override { mark(JournalEntryKind::SavePoint); }
    void savePointForgotten() override;
    void historyCleared() override { mark(JournalEntryKind::Cleared); }
    void historyReset() override;
    void settled() override;

    bool begin();
    [[nodiscard]] bool isWanting() const;
    void startAgain();
    void mark(JournalEntryKind kind);
    void step(JournalEntryKind kind);
    [[nodiscard]] std::string beginningWithText(bool asChange) const;

    enum class Groups { none, started, written };

    const std::filesystem::path folder_;
    TextDocument& document_;
    const JournalWriter::Complaint complain_;
    bool isOn_ = false;
    bool isIncomplete_ = false; ///< changes are not in the journal, and later ones do not fit it
    bool lacksHistory_ = false; ///< it began with a text that had a history
    Groups groups_ = Groups::none;
    JournalDocument about_;
    SmartPtr<ByteBuffer> base_; ///< the file as it was read, until the first change
    std::string beginning_;     ///< the first entries, when they hold the text
    std::string held_; ///< entries of a command that is being told: on disk it is there as a whole or not
    std::unique_ptr<JournalWriter> writer_;              ///< from the first change on
    std::chrono::steady_clock::time_point startAgainAt_; ///< not before
};

} // namespace tavrin
