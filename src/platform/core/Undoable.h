#pragma once

#include "platform/core/RefObject.h"

#include <cstddef>

namespace tavrin {

/// One record of the undo history. What it holds is known to the Undoable that made it.
class UndoableAction : public RefObject {
  public:
    /// Bytes that the record takes, the same whenever it holds the same. Asked often: O(1).
    [[nodiscard]] virtual std::size_t memory() const { return sizeof(UndoableAction); }
};

/// Applies records back and again, and says which may be joined.
class Undoable {
  public:
    virtual ~Undoable() = default;

    virtual void undo(const UndoableAction& action) = 0;
    virtual void redo(const UndoableAction& action) = 0;
    /// True when `next`, just made, may become part of `previous`.
    virtual bool canMerge(const UndoableAction& previous, const UndoableAction& next) = 0;
    /// Makes `next` part of `previous`. REQUIRES: canMerge(previous, next).
    virtual void merge(UndoableAction& previous, const UndoableAction& next) = 0;
};

/// Hears from the undo history whether the document differs from its saved state.
class UndoableDocument {
  public:
    virtual ~UndoableDocument() = default;
    virtual void setModified(bool modified) = 0;
};

/// Follows an undo history, each operation after it was done. Operations that did nothing are not told.
class HistoryObserver {
  public:
    virtual ~HistoryObserver() = default;

    /// As it was made: when it was merged, the record before has taken it in by now.
    virtual void actionAdded(const UndoableAction&, bool /*isMerged*/) {}
    virtual void stepUndone() {}
    virtual void stepRedone() {}
    /// Of the outermost group.
    virtual void groupStarted() {}
    virtual void groupEnded() {}
    /// All that was done is told: the text is what the history makes of it.
    virtual void settled() {}
    virtual void savePointSet() {}
    virtual void savePointForgotten() {}
    /// The steps are gone, the text stays as modified as it was.
    virtual void historyCleared() {}
    /// Another text has begun, which is unmodified.
    virtual void historyReset() {}
};

} // namespace tavrin
