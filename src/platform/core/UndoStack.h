#pragma once

#include "platform/core/SmartPtr.h"
#include "platform/core/Undoable.h"

#include <cstddef>
#include <list>
#include <optional>
#include <vector>

namespace tavrin {

/// The undo history of one document: closed steps of one or more records, a position between the steps that
/// are done and those that were undone, and the place of the last save.
///
/// The saved state is found again by undo and redo as long as it lies between two steps. It is lost, and the
/// document stays modified until the next save, when the steps that led to it are discarded, or when a record
/// merges into the one that was last at the time of the save: typing goes on as one step across a save.
///
/// What the records take is limited. The oldest steps go first, whole, and the saved state with them when it
/// lies before the oldest one that is left; the step made last always stays.
///
/// When there is no memory for a record, add throws std::bad_alloc and nothing has changed. Everything else
/// needs none, but for what the records are applied to. Whoever follows the history or hears of the modified
/// state should not throw; what it throws for want of memory is dropped.
class UndoStack {
  public:
    /// Of records, in bytes, unless the host sets another.
    static constexpr std::size_t defaultLimit = std::size_t{256} << 20;

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
    /// No state is the saved one until the next save. Reports modified.
    void forgetSavePoint();

    /// How many bytes records may take; at once and from now on.
    void setLimit(std::size_t bytes);
    [[nodiscard]] std::size_t limit() const { return limit_; }
    /// Bytes that the records take.
    [[nodiscard]] std::size_t memory() const { return memory_; }
    /// Who follows the history. It lives until it is removed; while it is told something, nobody is added or
    /// removed.
    void addObserver(HistoryObserver& observer) { observers_.push_back(&observer); }
    void removeObserver(HistoryObserver& observer);

    /// Keeps what is recorded aside while it lives, until commit makes history of it; what was not committed
    /// is forgotten. They nest: the outermost one makes the history. The stack looks as before meanwhile.
    class Transaction {
      public:
        explicit Transaction(UndoStack& stack);
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        ~Transaction();
        /// Throws std::bad_alloc and changes nothing when the first record can't be merged for want of
        /// memory.
        void commit();

      private:
        UndoStack& stack_;
        std::size_t before_; ///< records that were kept aside when it began
        bool isOpen_ = true;
    };

  protected:
    friend class TextUndoScope;
    /// Groups nest: everything recorded until the outermost end is one step. A group that kept no record of
    /// its own leaves no step.
    void startUndoGroup();
    void endUndoGroup();

  private:
    /// Lists, so that a record changes its place without memory being needed.
    struct Record {
        SmartPtr<UndoableAction> action; ///< null, among those kept aside: a group starts
        Undoable* undoable;
        bool endsStep = false; ///< among those kept aside: the group
    };
    using Records = std::list<Record>;

    [[nodiscard]] std::size_t doneRecords() const { return droppedRecords_ + done_.size(); }
    bool merge(const Record& next);
    void enter(Records& records, bool isMerged, bool isInGroup);
    void enterKeptAside();
    void tell(void (HistoryObserver::*what)());
    void closeGroup();
    void forgetSteps();
    void discardUndone();
    void dropOldestStep();
    void dropNewestStep();
    void keepLimit();
    void report(bool modified);
    template <class Action>
    void attempt(Action action);

    UndoableDocument& document_;
    std::vector<HistoryObserver*> observers_;
    // Records are numbered from the first one that ever was, so that numbers stay when old ones go.
    Records done_;                   ///< oldest first, at last those of the open group
    Records undone_;                 ///< the one to be redone first is the first
    std::size_t droppedRecords_ = 0; ///< before the first of done_
    std::size_t doneSteps_ = 0;      ///< closed ones
    std::size_t undoneSteps_ = 0;
    int openGroups_ = 0;
    std::optional<std::size_t> savePoint_ =
        0; ///< how many records are done in the saved state; none: out of reach
    std::size_t limit_ = defaultLimit;
    std::size_t memory_ = 0;
    Records keptAside_;    ///< of the transactions
    int transactions_ = 0; ///< that are open
    int groupsBefore_ = 0; ///< openGroups_ when the outermost one began
};

} // namespace tavrin
