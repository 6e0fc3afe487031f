#pragma once

#include "platform/core/UndoStack.h"
#include "platform/core/Undoable.h"

namespace tavrin {

class Buffer;
class IAutoCompleteProvider;
class ISchemaSource;

/// The document half of an editor, as a mix-in: it owns the undo history of one text and knows whether the
/// text differs from its saved state. Reading and writing files is the host's work; it calls OnNewDocument,
/// OnOpenDocument and OnSaveDocument when it has done so. Loading text into the buffer leaves the history
/// alone.
class TextDocument {
  public:
    /// Takes the modified state from the undo history and passes every report on.
    class TextDocumentModifiedFlag : public UndoableDocument {
      public:
        explicit TextDocumentModifiedFlag(TextDocument* owner) : owner_(owner) {}

        void setModified(bool modified) override;
        [[nodiscard]] bool isModified() const { return modified_; }

      private:
        TextDocument* owner_;
        bool modified_ = false;
    };

    TextDocument();
    TextDocument(const TextDocument&) = delete;
    TextDocument& operator=(const TextDocument&) = delete;

    virtual Buffer& getBuffer() = 0;
    /// Null: no completion.
    virtual IAutoCompleteProvider* getAutoCompleteProvider() = 0;

    /// Who knows the schemas of this document; null: nobody.
    virtual ISchemaSource* getSchemaSource();

    /// Starts a fresh, unmodified history. Always true.
    virtual bool OnNewDocument();
    /// Starts a fresh, unmodified history. Reads nothing: `path` is for derived classes. Always true.
    virtual bool OnOpenDocument(const char16_t* path);
    /// The present text is the saved one. Writes nothing: `path` is for derived classes. Always true.
    virtual bool OnSaveDocument(const char16_t* path);
    /// What was saved is gone: no state of the text counts as saved until the next save.
    void ForgetSavedState() { undoStack_.forgetSavePoint(); }
    /// The modified state has been reported, changed or not. Does nothing.
    virtual void OnTextDocumentChanged();

    /// Applies the latest step back through `view`; nothing to undo does nothing.
    virtual void Undo(Undoable* view);
    /// Applies the step undone last again through `view`; nothing to redo does nothing.
    virtual void Redo(Undoable* view);
    [[nodiscard]] bool CanUndo() const { return undoStack_.canUndo(); }
    [[nodiscard]] bool CanRedo() const { return undoStack_.canRedo(); }
    /// Discards the history; the text stays as modified as it was.
    void ClearUndo(Undoable* view);
    /// Records a change that has just been made. Takes a reference to `action`, or releases it when it was
    /// merged into the record before.
    void AddUndoAction(Undoable* view, UndoableAction* action);
    /// How many bytes the undo history may take; the oldest steps go first.
    void SetUndoLimit(std::size_t bytes) { undoStack_.setLimit(bytes); }
    [[nodiscard]] std::size_t GetUndoLimit() const { return undoStack_.limit(); }
    /// Bytes that the undo history takes.
    [[nodiscard]] std::size_t GetUndoMemory() const { return undoStack_.memory(); }
    /// Who follows the history. It lives until it is removed.
    void AddHistoryObserver(HistoryObserver& observer) { undoStack_.addObserver(observer); }
    void RemoveHistoryObserver(HistoryObserver& observer) { undoStack_.removeObserver(observer); }
    [[nodiscard]] bool isModified() const { return modifiedFlag_.isModified(); }

  protected:
    /// Not virtual: nobody owns a document as such, only the object that it is a part of.
    ~TextDocument() = default;

  private:
    friend class TextTransaction;
    friend class TextUndoScope;

    TextDocumentModifiedFlag modifiedFlag_;
    UndoStack undoStack_;
};

} // namespace tavrin
