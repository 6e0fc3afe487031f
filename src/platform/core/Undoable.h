#pragma once

#include "platform/core/RefObject.h"

namespace tavrin {

/// One record of the undo history. What it holds is known to the Undoable that made it.
class UndoableAction : public RefObject {};

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

} // namespace tavrin
