#include "recovery/Recovery.h"

#include "buffer/Buffer.h"
#include "document/EditAction.h"
#include "document/ReloadAction.h"
#include "document/ReplaceAction.h"
#include "document/TextUndoScope.h"
#include "recovery/JournalWriter.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view journalSuffix = ".journal";

/// All bytes of a file; nothing when it can't be read.
SmartPtr<ByteBuffer> bytesOf(const fs::path& path, FileState& state, Fingerprint& found) {
    PosixFile file;
    if (file.open(path, O_RDONLY | O_NONBLOCK) || stateOf(file, state))
        return {};
    const auto bytes = ByteBuffer::allocate(state.size);
    std::size_t done = 0;
    std::size_t count = 1;
    while (count > 0 && done < bytes->size()) {
        const std::span rest(reinterpret_cast<char*>(bytes->data()) + done, bytes->size() - done);
        if (file.read(rest, count))
            return {};
        done += count;
    }
    if (done != bytes->size())
        return {};
    found.add({reinterpret_cast<const char*>(bytes->data()), done});
    return bytes;
}

bool isInText(const Buffer& buffer, int line, int col) {
    if (buffer.getLineCount() == 0)
        return line == 0 && col == 0;
    return line < buffer.getLineCount() && col <= buffer.getLineLength(line);
}

bool isPossibleEdit(const EditAction& edit, const Buffer& buffer) {
    if (!isInText(buffer, edit.startLine, edit.startCol))
        return false;
    const std::u16string& text = edit.text;
    switch (edit.kind) {
    case EditActionKind::Insert: {
        const auto lines = static_cast<int>(std::count(text.begin(), text.end(), u'\n'));
        const std::size_t lastBreak = text.rfind(u'\n');
        const auto length = static_cast<int>(lines > 0 ? text.size() - lastBreak - 1 : text.size());
        return edit.endLine == edit.startLine + lines &&
               edit.endCol == (lines > 0 ? length : edit.startCol + length);
    }
    case EditActionKind::Erase: {
        const bool isOrdered =
            std::pair(edit.startLine, edit.startCol) < std::pair(edit.endLine, edit.endCol);
        if (!isOrdered || buffer.getLineCount() == 0 || !isInText(buffer, edit.endLine, edit.endCol))
            return false;
        std::u16string there;
        buffer.getText(edit.startLine, edit.startCol, edit.endLine, edit.endCol, there);
        return there == text;
    }
    case EditActionKind::Split:
        return edit.endLine == edit.startLine + 1 && edit.endCol == 0;
    case EditActionKind::CaretMove:
        return true;
    }
    return false;
}

bool isPossibleReplace(const ReplaceAction& action, const Buffer& buffer) {
    std::pair<int, int> end{0, 0};
    for (const ReplaceAction::PlaceView& place : action.places()) {
        const auto length = static_cast<int>(place.erased.size());
        if (buffer.getLineCount() == 0 || std::pair(place.line, place.col) < end ||
            !isInText(buffer, place.line, place.col) ||
            length > buffer.getLineLength(place.line) - place.col ||
            buffer.getLineText(place.line).substr(place.col, length) != place.erased)
            return false;
        end = {place.line, place.col + length};
    }
    return action.replacement().find(u'\n') == std::u16string_view::npos;
}

/// Decides about merging as it was decided then, when the history may have been shorter.
class MergesAsThen final : public Undoable {
  public:
    explicit MergesAsThen(Undoable& view) : view_(view) {}
    void setApart(bool isApart) { isApart_ = isApart; }

    void undo(const UndoableAction& action) override { view_.undo(action); }
    void redo(const UndoableAction& action) override { view_.redo(action); }
    bool canMerge(const UndoableAction& previous, const UndoableAction& next) override {
        return !isApart_ && view_.canMerge(previous, next);
    }
    void merge(UndoableAction& previous, const UndoableAction& next) override { view_.merge(previous, next); }

  private:
    Undoable& view_;
    bool isApart_ = false;
};

/// Does again what a journal tells.
class Replay {
  public:
    Replay(const AbandonedJournal& journal, TextDocument& document, Undoable& view)
        : journal_(journal), reader_(journal.read()), document_(document), view_(view) {}

    RecoveredSession run() {
        if (!loadBase()) {
            result_.problem = "the text from which the changes started is not there any more";
            return result_;
        }
        result_.hasText = true;
        const std::size_t limit = document_.GetUndoLimit();
        document_.SetUndoLimit(std::numeric_limits<std::size_t>::max()); // undo must find what it found then
        JournalEntry entry;
        bool fits = true;
        while (fits && reader_.next(entry))
            fits = apply(entry);
        result_.wasInGroup = group_.has_value();
        group_.reset();
        placeCaret();
        document_.SetUndoLimit(limit);
        result_.goodBytes = reader_.goodBytes();
        if (!fits)
            result_.problem = "a change does not fit the text, and those after it are missing";
        return result_;
    }

  private:
    /// Finds the base by a first reading, since the entry that tells of its copy comes when the copy is made.
    bool loadBase() {
        std::optional<JournalDocument> first;
        std::optional<Fingerprint> copied;
        std::optional<std::u16string> text;
        TextForm form;
        LineEnd usualLineEnd = LineEnd::CrLf;
        LineEnd lastLineEnd = LineEnd::None;
        JournalEntry entry;
        for (JournalReader reader = journal_.read(); !copied && !text && reader.next(entry);) {
            if (entry.kind == JournalEntryKind::Document && !first)
                first = entry.document;
            else if (entry.kind == JournalEntryKind::BaseCopied)
                copied = entry.base;
            else if (entry.kind == JournalEntryKind::BaseForm)
                std::tie(form, usualLineEnd, lastLineEnd) =
                    std::tie(entry.form, entry.usualLineEnd, entry.lastLineEnd);
            else if (entry.kind == JournalEntryKind::BaseText)
                text = std::move(entry.text);
        }
        if (!first)
            return false;
        result_.about = *first;
        Buffer& buffer = document_.getBuffer();
        if (text) {
            buffer.reset();
            buffer.setUsualLineEnd(usualLineEnd);
            int line = 0;
            int col = 0;
            buffer.insertText(0, 0, *text, line, col); // not loaded: that would cut long lines
            buffer.setLastLineEnd(lastLineEnd);
            buffer.setForm(form);
        } else {
            FileState state;
            Fingerprint found;
            auto bytes = bytesOf(copied ? baseOf(journal_.path()) : first->file, state, found);
            if (!bytes || (copied ? found != *copied : state != first->state))
                return false;
            if (!copied)
                result_.uncopiedBase = bytes;
            buffer.loadBytes(std::move(bytes));
            buffer.setForm(buffer.getLoadedForm());
        }
        buffer.setEncoding(first->encoding);
        document_.OnOpenDocument(u"");
        return true;
    }

    /// Records tell where the caret was before a change; the session goes on behind the last one.
    void placeCaret() {
        const auto* last = dynamic_cast<const EditAction*>(lastChange_.get());
        if (!last || last->kind == EditActionKind::CaretMove)
            return;
        const bool isErased = last->kind == EditActionKind::Erase;
        const int line = isErased ? last->startLine : last->endLine;
        const int col = isErased ? last->startCol : last->endCol;
        view_.redo(EditAction(EditActionKind::CaretMove, line, col, line, col, {}, line, col, line, col));
    }

    bool apply(const JournalEntry& entry) {
        const bool isMove = entry.kind == JournalEntryKind::Undo || entry.kind == JournalEntryKind::Redo;
        if (isMove)
            lastChange_ = {};
        switch (entry.kind) {
        case JournalEntryKind::Document:
            result_.about = entry.document;
            document_.getBuffer().setEncoding(entry.document.encoding); // a save may follow the declaration
            return true;
        case JournalEntryKind::BaseText:
        case JournalEntryKind::BaseCopied:
        case JournalEntryKind::BaseForm:
            return true;
        case JournalEntryKind::Edit:
        case JournalEntryKind::Replace:
        case JournalEntryKind::Reload:
        case JournalEntryKind::Form:
            if (!isPossible(*entry.action, document_.getBuffer()))
                return false;
            view_.redo(*entry.action);
            document_.AddUndoAction(&view_, entry.action.get());
            view_.setApart(false);
            if (entry.kind != JournalEntryKind::Form)
                lastChange_ = entry.action;
            return true;
        case JournalEntryKind::GroupStart:
            if (group_)
                return false;
            group_.emplace(document_);
            return true;
        case JournalEntryKind::GroupEnd:
            group_.reset();
            return true;
        case JournalEntryKind::Undo: {
            const bool can = document_.CanUndo();
            document_.Undo(&view_);
            return can;
        }
        case JournalEntryKind::Redo: {
            const bool can = document_.CanRedo();
            document_.Redo(&view_);
            return can;
        }
        case JournalEntryKind::SavePoint:
            document_.OnSaveDocument(u"");
            return true;
        case JournalEntryKind::Cleared:
            document_.ClearUndo(&view_);
            return true;
        case JournalEntryKind::Unsaved:
            document_.ForgetSavedState();
            return true;
        case JournalEntryKind::Apart:
            view_.setApart(true);
            return true;
        }
        return false;
    }

    const AbandonedJournal& journal_;
    JournalReader reader_;
    TextDocument& document_;
    MergesAsThen view_;
    std::optional<TextUndoScope> group_;
    SmartPtr<UndoableAction> lastChange_; ///< none after an undo, which places the caret itself
    RecoveredSession result_;
};

} // namespace

RecoveredSession recover(const AbandonedJournal& journal, TextDocument& document, Undoable& view) {
    return Replay(journal, document, view).run();
}

bool isPossible(const UndoableAction& action, const Buffer& buffer) {
    if (const auto* replace = dynamic_cast<const ReplaceAction*>(&action))
        return isPossibleReplace(*replace, buffer);
    if (const auto* edit = dynamic_cast<const EditAction*>(&action))
        return isPossibleEdit(*edit, buffer);
    return true; // a reload and a form suit every text
}

AbandonedJournal::AbandonedJournal(fs::path path, PosixFile file)
    : path_(std::move(path)), file_(std::move(file)) {
    examine();
}

JournalReader AbandonedJournal::read() const {
    FileState state;
    if (stateOf(file_, state))
        state.size = 0;
    std::uint64_t at = 0;
    const int descriptor = file_.descriptor();
    return {[descriptor, at](std::span<char> into) mutable {
                std::size_t done = 0;
                while (done < into.size()) {
                    const ssize_t count =
                        ::pread(descriptor, into.data() + done, into.size() - done, static_cast<off_t>(at));
                    if (count < 0 && errno == EINTR)
                        continue;
                    if (count <= 0)
                        break;
                    done += static_cast<std::size_t>(count);
                    at += static_cast<std::uint64_t>(count);
                }
                return done;
            },
            state.size};
}

void AbandonedJournal::examine() {
    FileState written;
    if (!stateOf(file_, written))
        lastWritten_ = std::chrono::system_clock::time_point(
            std::chrono::duration_cast<std::chrono::system_clock::duration>(
                std::chrono::nanoseconds(written.modified)));
    JournalReader reader = read();
    JournalEntry entry;
    bool hasBase = false;
    std::optional<FileState> firstState;
    while (reader.next(entry)) {
        switch (entry.kind) {
        case JournalEntryKind::Document:
            about_ = entry.document;
            if (!firstState)
                firstState = about_.state;
            break;
        case JournalEntryKind::BaseText:
        case JournalEntryKind::BaseCopied:
            hasBase = true;
            break;
        case JournalEntryKind::SavePoint:
            unsavedChanges_ = 0;
            break;
        case JournalEntryKind::Edit:
        case JournalEntryKind::Replace:
        case JournalEntryKind::Reload:
        case JournalEntryKind::Form:
        case JournalEntryKind::Undo:
        case JournalEntryKind::Redo:
        case JournalEntryKind::Unsaved:
            ++unsavedChanges_;
            break;
        default:
            break;
        }
    }
    const auto now = stateOfFile(about_.file);
    fitsFile_ = about_.file.empty() || now == about_.state;
    isReadable_ = firstState && (hasBase || (now && now == firstState));
}

void AbandonedJournal::remove() {
    static_cast<void>(removeFile(path_));
    static_cast<void>(removeFile(baseOf(path_)));
}

std::vector<AbandonedJournal> findAbandonedJournals(const fs::path& folder) {
    std::vector<AbandonedJournal> found;
    std::vector<fs::path> paths;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error))
        paths.push_back(entry.path());
    for (const fs::path& path : paths) {
        if (path.extension() == ".base" &&
            !fs::exists(fs::path(path).replace_extension(journalSuffix), error))
            static_cast<void>(removeFile(path));
        if (path.extension() != journalSuffix)
            continue;
        PosixFile file;
        struct stat state {};
        if (file.open(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK) || !file.lock() || file.stat(state) ||
            !S_ISREG(state.st_mode) || state.st_nlink == 0)
            continue;
        const bool isEmpty = static_cast<std::size_t>(state.st_size) <= journalFormat.size();
        AbandonedJournal journal(path, std::move(file));
        const bool isOver =
            isEmpty || (journal.isReadable() && journal.unsavedChanges() == 0 && journal.fitsFile());
        if (isOver)
            journal.remove();
        else
            found.push_back(std::move(journal));
    }
    std::ranges::sort(found, std::greater(), &AbandonedJournal::lastWritten);
    return found;
}

} // namespace tavrin
