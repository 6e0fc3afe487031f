#include "platform/core/UndoStack.h"

#include <cassert>
#include <utility>

namespace tavrin {

UndoStack::UndoStack(UndoableDocument& document) : document_(document) {}

void UndoStack::add(Undoable* undoable, SmartPtr<UndoableAction> action) {
    discardUndone();
    if (!records_.empty() && undoable->canMerge(*records_.back(), *action)) {
        undoable->merge(*records_.back(), *action);
        if (savePoint_ == records_.size())
            savePoint_.reset();
    } else {
        records_.push_back(std::move(action));
        if (openGroups_ == 0) {
            stepEnds_.push_back(records_.size());
            ++doneSteps_;
        }
    }
    document_.setModified(true);
}

void UndoStack::undo(Undoable* undoable) {
    if (!canUndo())
        return;
    const std::size_t begin = doneSteps_ > 1 ? stepEnds_[doneSteps_ - 2] : 0;
    for (std::size_t i = doneRecords(); i > begin; --i)
        undoable->undo(*records_[i - 1]);
    --doneSteps_;
    report();
}

void UndoStack::redo(Undoable* undoable) {
    if (!canRedo())
        return;
    const std::size_t end = stepEnds_[doneSteps_];
    for (std::size_t i = doneRecords(); i < end; ++i)
        undoable->redo(*records_[i]);
    ++doneSteps_;
    report();
}

bool UndoStack::canUndo() const {
    return openGroups_ == 0 && doneSteps_ > 0;
}

bool UndoStack::canRedo() const {
    return openGroups_ == 0 && doneSteps_ < stepEnds_.size();
}

void UndoStack::clear(Undoable* /*undoable*/) {
    discardUndone();
    if (savePoint_ == records_.size())
        savePoint_ = 0;
    else
        savePoint_.reset();
    records_.clear();
    stepEnds_.clear();
    doneSteps_ = 0;
}

void UndoStack::reset() {
    clear(nullptr);
    setSavePoint();
}

void UndoStack::setSavePoint() {
    // While a group is open its records are done too; a step that goes on past them never stops there again.
    savePoint_ = doneSteps_ < stepEnds_.size() ? doneRecords() : records_.size();
    document_.setModified(false);
}

void UndoStack::startUndoGroup() {
    ++openGroups_;
}

void UndoStack::endUndoGroup() {
    assert(openGroups_ > 0);
    if (--openGroups_ > 0)
        return;
    const std::size_t closed = stepEnds_.empty() ? 0 : stepEnds_.back();
    if (records_.size() == closed)
        return;
    stepEnds_.push_back(records_.size());
    ++doneSteps_;
}

/// Records of the closed steps that are not undone.
std::size_t UndoStack::doneRecords() const {
    return doneSteps_ > 0 ? stepEnds_[doneSteps_ - 1] : 0;
}

void UndoStack::discardUndone() {
    if (doneSteps_ == stepEnds_.size())
        return;
    records_.resize(doneRecords());
    stepEnds_.resize(doneSteps_);
    if (savePoint_ > records_.size())
        savePoint_.reset();
}

void UndoStack::report() {
    document_.setModified(savePoint_ != doneRecords());
}

} // namespace tavrin
