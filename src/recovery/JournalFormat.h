#pragma once

#include "buffer/TextForm.h"
#include "files/Fingerprint.h"
#include "platform/core/SmartPtr.h"
#include "platform/core/Undoable.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace tavrin {

// A journal is a line that names its format, then frames: the length of the entries in a frame and their
// checksum (CRC-32), 4 bytes each, lowest first, then the entries. Only whole frames count, so a write that
// was cut off costs that frame and nothing else. Numbers in entries are 7 bits a byte, lowest first.

inline constexpr std::string_view journalFormat = "tavrin journal 1\n";

enum class JournalEntryKind : std::uint8_t {
    Document = 1,   ///< first of all, and after each save: which file, and its state on disk
    BaseText = 2,   ///< the text from which the edits start, as lines
    BaseCopied = 3, ///< the file's bytes from which they start lie beside the journal
    Edit = 4,       ///< an EditAction
    Replace = 5,    ///< a ReplaceAction
    GroupStart = 6,
    GroupEnd = 7,
    Undo = 8,
    Redo = 9,
    SavePoint = 10,
    Cleared = 11,
    Reload = 12,   ///< a ReloadAction, with the bytes of the file
    Unsaved = 13,  ///< no state of the text counts as saved any more
    Apart = 14,    ///< the next record was not merged: what it could have merged with may have been forgotten
    Form = 15,     ///< a TextFormAction
    BaseForm = 16, ///< how a BaseText is written, and what ends its lines; comes before it
};

/// A file as it was last read or written; what tells one state from another without reading it.
struct FileState {
    std::uint64_t size = 0;
    std::int64_t modified = 0; ///< nanoseconds since 1970
    friend bool operator==(const FileState&, const FileState&) = default;
};

/// Which document a journal belongs to.
struct JournalDocument {
    std::filesystem::path file; ///< absolute; empty: never saved
    FileState state;            ///< of the file
    int encoding = 0;           ///< in which the text is saved
};

/// One entry; which members count depends on the kind.
struct JournalEntry {
    JournalEntryKind kind{};
    SmartPtr<UndoableAction> action; ///< Edit, Replace, Reload, Form
    JournalDocument document;        ///< Document
    Fingerprint base;                ///< BaseCopied
    std::u16string text;             ///< BaseText
    TextForm form;                   ///< BaseForm
    LineEnd usualLineEnd{};          ///< BaseForm
    LineEnd lastLineEnd{};           ///< BaseForm
};

/// Appends entries to bytes.
class JournalEncoder {
  public:
    explicit JournalEncoder(std::string& out) : out_(out) {}

    /// An entry of a kind that holds nothing else.
    void mark(JournalEntryKind kind);
    void document(const JournalDocument& document);
    void baseText(std::u16string_view text);
    void baseCopied(const Fingerprint& base);
    void baseForm(const TextForm& form, LineEnd usualLineEnd, LineEnd lastLineEnd);
    /// An EditAction, a ReplaceAction, a ReloadAction or a TextFormAction.
    void action(const UndoableAction& action);

  private:
    void number(std::uint64_t value);
    void text(std::u16string_view text);
    void form(const TextForm& form);

    std::string& out_;
};

/// The eight bytes before a frame's entries.
[[nodiscard]] std::string frameHead(std::string_view entries);

/// Reads a journal up to its end, or to the first frame that was cut off or holds something else than what
/// was written. Takes any bytes. Memory is that of one frame, which is never longer than the journal.
class JournalReader {
  public:
    /// Fills the span from where the last call ended and tells how much there was; less only at the end.
    using Source = std::function<std::size_t(std::span<char>)>;

    /// `size` bytes are left in the source.
    JournalReader(Source source, std::uint64_t size);

    /// False at the end; the entry is undefined then.
    bool next(JournalEntry& entry);
    /// Bytes of the frames that were read to their ends; 0 when the bytes are no journal.
    [[nodiscard]] std::uint64_t goodBytes() const { return goodBytes_; }

  private:
    bool fetch(std::span<char> into);
    bool nextFrame();
    bool decode(JournalEntry& entry);
    bool decodeDocument(JournalDocument& document);
    bool decodeEdit(JournalEntry& entry);
    bool decodeReplace(JournalEntry& entry);
    bool decodeReload(JournalEntry& entry);
    bool number(std::uint64_t& value);
    bool position(int& value);
    bool text(std::u16string& value);
    bool form(TextForm& value);
    bool lineEnd(LineEnd& value);

    Source source_;
    std::uint64_t left_;
    std::uint64_t goodBytes_ = 0;
    std::string frame_;
    std::size_t at_ = 0;
    bool ended_ = false;
};

} // namespace tavrin
