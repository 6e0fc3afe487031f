#include "platform/core/UndoStack.h"

#include <cassert>
#include <utility>

namespace tavrin {

UndoStack::UndoStack(UndoableDocument& document) : document_(document) {}

void UndoStack::add(Undoable* undoable, SmartPtr<UndoableAction> action) {
    discardUndone();
    const bool isMerged = !records_.empty() && undoable->canMerge(*records_.back(), *action);
    if (isMerged) {
        UndoableAction& previous = *records_.back();
        memory_ -= previous.memory();
        undoable->merge(previous, *action);
        memory_ += previous.memory();
        if (savePoint_ == allRecords())
            savePoint_.reset();
    } else {
        memory_ += action->memory();
        records_.push_back(action);
        if (openGroups_ == 0) {
            stepEnds_.push_back(allRecords());
            ++doneSteps_;
        }
    }
    keepLimit();
    for (HistoryObserver* const observer : observers_)
        observer->actionAdded(*action, isMerged);
    document_.setModified(true);
}

void UndoStack::undo(Undoable* undoable) {
    if (!canUndo())
        return;
    const std::size_t begin = doneSteps_ > 1 ? stepEnds_[doneSteps_ - 2] : droppedRecords_;
    for (std::size_t i = doneRecords(); i > begin; --i)
        undoable->undo(*record(i - 1));
    --doneSteps_;
    tell(&HistoryObserver::stepUndone);
    report();
}

void UndoStack::redo(Undoable* undoable) {
    if (!canRedo())
        return;
    const std::size_t end = stepEnds_[doneSteps_];
    for (std::size_t i = doneRecords(); i < end; ++i)
        undoable->redo(*record(i));
    ++doneSteps_;
    tell(&HistoryObserver::stepRedone);
    report();
}

bool UndoStack::canUndo() const {
    return openGroups_ == 0 && doneSteps_ > 0;
}

bool UndoStack::canRedo() const {
    return openGroups_ == 0 && doneSteps_ < stepEnds_.size();
}

void UndoStack::clear(Undoable* /*undoable*/) {
    forgetSteps();
    tell(&HistoryObserver::historyCleared);
}

void UndoStack::reset() {
    forgetSteps();
    savePoint_ = 0;
    tell(&HistoryObserver::historyReset);
    document_.setModified(false);
}

void UndoStack::setSavePoint() {
    // While a group is open its records are done too; a step that goes on past them never stops there again.
    savePoint_ = doneSteps_ < stepEnds_.size() ? doneRecords() : allRecords();
    tell(&HistoryObserver::savePointSet);
    document_.setModified(false);
}

void UndoStack::forgetSavePoint() {
    savePoint_.reset();
    tell(&HistoryObserver::savePointForgotten);
    document_.setModified(true);
}

void UndoStack::removeObserver(HistoryObserver& observer) {
    std::erase(observers_, &observer);
}

void UndoStack::tell(void (HistoryObserver::*what)()) const {
    for (HistoryObserver* const observer : observers_)
        (observer->*what)();
}

void UndoStack::setLimit(std::size_t bytes) {
    limit_ = bytes;
    keepLimit();
}

void UndoStack::startUndoGroup() {
    if (++openGroups_ == 1)
        tell(&HistoryObserver::groupStarted);
}

void UndoStack::endUndoGroup() {
    assert(openGroups_ > 0);
    if (--openGroups_ > 0)
        return;
    const std::size_t closed = stepEnds_.empty() ? droppedRecords_ : stepEnds_.back();
    if (allRecords() != closed) {
        stepEnds_.push_back(allRecords());
        ++doneSteps_;
        keepLimit();
    }
    tell(&HistoryObserver::groupEnded);
}

/// Records that are done in the present state, short of those of an open group.
std::size_t UndoStack::doneRecords() const {
    return doneSteps_ > 0 ? stepEnds_[doneSteps_ - 1] : droppedRecords_;
}

void UndoStack::forgetSteps() {
    discardUndone();
    if (savePoint_ == allRecords())
        savePoint_ = 0;
    else
        savePoint_.reset();
    records_.clear();
    droppedRecords_ = 0;
    stepEnds_.clear();
    doneSteps_ = 0;
    memory_ = 0;
}

void UndoStack::discardUndone() {
    while (doneSteps_ < stepEnds_.size())
        dropNewestStep();
}

/// REQUIRES: no group is open with records of its own.
void UndoStack::dropNewestStep() {
    stepEnds_.pop_back();
    const std::size_t end = stepEnds_.empty() ? droppedRecords_ : stepEnds_.back();
    while (allRecords() > end) {
        memory_ -= records_.back()->memory();
        records_.pop_back();
    }
    if (savePoint_ > end)
        savePoint_.reset();
}

/// REQUIRES: the step is done.
void UndoStack::dropOldestStep() {
    for (const std::size_t end = stepEnds_.front(); droppedRecords_ < end; ++droppedRecords_) {
        memory_ -= records_.front()->memory();
        records_.pop_front();
    }
    stepEnds_.pop_front();
    --doneSteps_;
    if (savePoint_ < droppedRecords_)
        savePoint_.reset();
}

void UndoStack::keepLimit() {
    while (memory_ > limit_ && stepEnds_.size() > 1) {
        if (doneSteps_ > 1)
            dropOldestStep();
        else
            dropNewestStep(); // all but the first were undone, the last one longest ago
    }
}

void UndoStack::report() {
    document_.setModified(savePoint_ != doneRecords());
}

} // namespace tavrin
