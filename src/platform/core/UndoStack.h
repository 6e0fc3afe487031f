#pragma once

#include "platform/core/SmartPtr.h"
#include "platform/core/Undoable.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace tavrin {

/// The undo history of one document: closed steps of one or more records, a position between the steps that
/// are done and those that were undone, and the place of the last save.
///
/// The saved state is found again by undo and redo as long as it lies between two steps. It is lost, and the
/// document stays modified until the next save, when the steps that led to it are discarded, or when a record
/// merges into the one that was last at the time of the save: typing goes on as one step across a save.
class UndoStack {
  public:
    /// Keeps the reference; starts empty and not modified, without a report.
    explicit UndoStack(UndoableDocument& document);
    UndoStack(const UndoStack&) = delete;
    UndoStack& operator=(const UndoStack&) = delete;

    /// Records an action that has just been done. When the most recent record that is not undone can take it
    /// in (canMerge; that record's step may be closed already), it is merged and `action` is not kept.
    /// Otherwise it joins the open group, or becomes a step of its own. Steps that were undone are discarded.
    /// Reports modified, on every call.
    void add(Undoable* undoable, SmartPtr<UndoableAction> action);

    /// Applies the most recent step back, its last record first. Does nothing when there is none or while a
    /// group is open.
    void undo(Undoable* undoable);
    /// Applies the step undone last again, in the order of its records. Does nothing when there is none or
    /// while a group is open.
    void redo(Undoable* undoable);
    /// True when undo would do something.
    [[nodiscard]] bool canUndo() const;
    /// True when redo would do something.
    [[nodiscard]] bool canRedo() const;

    /// Discards every step. The document stays as modified as it was; nothing is reported.
    void clear(Undoable* undoable);
    /// Discards every step; the present state is the saved one. Reports not modified.
    void reset();
    /// The present state is the saved one. Reports not modified.
    void setSavePoint();

  protected:
    friend class TextUndoScope;
    /// Groups nest: everything recorded until the outermost end is one step. A group that kept no record of
    /// its own leaves no step.
    void startUndoGroup();
    void endUndoGroup();

  private:
    [[nodiscard]] std::size_t doneRecords() const;
    void discardUndone();
    void report();

    UndoableDocument& document_;
    std::vector<SmartPtr<UndoableAction>>
        records_;                       ///< of all steps, one after the other, then of the open group
    std::vector<std::size_t> stepEnds_; ///< where in records_ each closed step ends
    std::size_t doneSteps_ = 0;         ///< closed steps that are not undone
    int openGroups_ = 0;
    std::optional<std::size_t> savePoint_ =
        0; ///< how many records are done in the saved state; none: out of reach
};

} // namespace tavrin
