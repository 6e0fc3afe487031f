#pragma once

#include "platform/core/SmartPtr.h"
#include "platform/core/Undoable.h"

#include <cstddef>
#include <vector>

namespace tavrin {

/// The undo history of one document: closed steps of one or more records, a position between the steps that
/// are done and those that were undone, and the place of the last save.
class UndoStack {
  public:
    /// Keeps the reference; starts empty and not modified, without a report.
    explicit UndoStack(UndoableDocument& document);
    UndoStack(const UndoStack&) = delete;
    UndoStack& operator=(const UndoStack&) = delete;

    /// Records an action that has just been done. When the most recent record that is not undone can take it in
    /// (canMerge; that record's step may be closed already), it is merged and `action` is not kept. Otherwise
    /// it joins the open group, or becomes a step of its own. Steps that were undone are discarded.
    /// Reports modified.
    void add(Undoable* undoable, SmartPtr<UndoableAction> action);

    /// Applies the most recent step back, its last record first. Does nothing when there is none or while a group is open.
    void undo(Undoable* undoable);
    /// Applies the step undone last again, in the order of its records. Does nothing when there is none or while a group is open.
    void redo(Undoable* undoable);
    [[nodiscard]] bool canUndo() const;
    [[nodiscard]] bool canRedo() const;

    /// Discards every step. The text stays as modified as it was.
    void clear(Undoable* undoable);
    /// Discards every step; the present state is the saved one.
    void reset();
    /// The present state is the saved one.
    void setSavePoint();

  protected:
    friend class TextUndoScope;
    /// Groups nest: everything recorded until the outermost end is one step. A group that kept no record of
    /// its own leaves no step.
    void startUndoGroup();
    void endUndoGroup();
};

} // namespace tavrin
