#include "platform/core/UndoStack.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <new>
#include <utility>

namespace tavrin {

UndoStack::UndoStack(UndoableDocument& document) : document_(document) {}

/// Does what is not worth a failure: the change is made by then.
template <class Action>
void UndoStack::attempt(Action action) {
    try {
        action();
    } catch (const std::bad_alloc&) {
    }
}

void UndoStack::report(bool modified) {
    attempt([&] { document_.setModified(modified); });
}

void UndoStack::add(Undoable* undoable, SmartPtr<UndoableAction> action) {
    Records records;
    records.push_back({std::move(action), undoable});
    if (transactions_ > 0) {
        keptAside_.splice(keptAside_.end(), records);
        return;
    }
    enter(records, merge(records.front()), openGroups_ > 0);
    tell(&HistoryObserver::settled);
}

/// Lets the last record that is done take in another, if it can; throws before anything has changed.
bool UndoStack::merge(const Record& next) {
    if (done_.empty() || !next.undoable->canMerge(*done_.back().action, *next.action))
        return false;
    UndoableAction& previous = *done_.back().action;
    const std::size_t before = previous.memory();
    next.undoable->merge(previous, *next.action);
    memory_ = memory_ - before + previous.memory();
    return true;
}

/// Takes the first of `records` out, which is part of the history now or has been merged before.
void UndoStack::enter(Records& records, bool isMerged, bool isInGroup) {
    Record& record = records.front();
    const SmartPtr<UndoableAction> action = record.action;
    discardUndone();
    if (isMerged) {
        records.pop_front();
        if (savePoint_ == doneRecords())
            savePoint_.reset();
    } else {
        memory_ += action->memory();
        record.endsStep = !isInGroup;
        done_.splice(done_.end(), records, records.begin());
        doneSteps_ += isInGroup ? 0 : 1;
    }
    keepLimit();
    for (HistoryObserver* const observer : observers_)
        attempt([&] { observer->actionAdded(*action, isMerged); });
    report(true);
}

void UndoStack::undo(Undoable* undoable) {
    if (!canUndo())
        return;
    auto begin = done_.end();
    do {
        --begin;
        undoable->undo(*begin->action);
    } while (begin != done_.begin() && !std::prev(begin)->endsStep);
    undone_.splice(undone_.begin(), done_, begin, done_.end());
    --doneSteps_;
    ++undoneSteps_;
    tell(&HistoryObserver::stepUndone);
    report(savePoint_ != doneRecords());
    tell(&HistoryObserver::settled);
}

void UndoStack::redo(Undoable* undoable) {
    if (!canRedo())
        return;
    auto end = undone_.begin();
    do
        undoable->redo(*end->action);
    while (!end++->endsStep);
    done_.splice(done_.end(), undone_, undone_.begin(), end);
    ++doneSteps_;
    --undoneSteps_;
    tell(&HistoryObserver::stepRedone);
    report(savePoint_ != doneRecords());
    tell(&HistoryObserver::settled);
}

bool UndoStack::canUndo() const {
    return openGroups_ == 0 && doneSteps_ > 0;
}

bool UndoStack::canRedo() const {
    return openGroups_ == 0 && undoneSteps_ > 0;
}

void UndoStack::clear(Undoable* /*undoable*/) {
    forgetSteps();
    tell(&HistoryObserver::historyCleared);
}

void UndoStack::reset() {
    forgetSteps();
    savePoint_ = 0;
    tell(&HistoryObserver::historyReset);
    report(false);
}

void UndoStack::setSavePoint() {
    // While a group is open its records are done too; a step that goes on past them never stops there again.
    savePoint_ = doneRecords();
    tell(&HistoryObserver::savePointSet);
    report(false);
}

void UndoStack::forgetSavePoint() {
    savePoint_.reset();
    tell(&HistoryObserver::savePointForgotten);
    report(true);
}

void UndoStack::removeObserver(HistoryObserver& observer) {
    std::erase(observers_, &observer);
}

void UndoStack::tell(void (HistoryObserver::*what)()) {
    for (HistoryObserver* const observer : observers_)
        attempt([&] { (observer->*what)(); });
}

void UndoStack::setLimit(std::size_t bytes) {
    limit_ = bytes;
    keepLimit();
}

// Groups

void UndoStack::startUndoGroup() {
    if (openGroups_ == 0 && transactions_ > 0)
        keptAside_.push_back({{}, nullptr});
    if (++openGroups_ > 1 || transactions_ > 0)
        return;
    tell(&HistoryObserver::groupStarted);
}

void UndoStack::endUndoGroup() {
    assert(openGroups_ > 0);
    if (--openGroups_ > 0)
        return;
    if (transactions_ > 0)
        keptAside_.back().endsStep = true;
    else
        closeGroup();
}

/// What was recorded in the group becomes a step.
void UndoStack::closeGroup() {
    if (!done_.empty() && !done_.back().endsStep) {
        done_.back().endsStep = true;
        ++doneSteps_;
        keepLimit();
    }
    tell(&HistoryObserver::groupEnded);
}

// Transactions

UndoStack::Transaction::Transaction(UndoStack& stack) : stack_(stack), before_(stack.keptAside_.size()) {
    if (stack_.transactions_++ == 0)
        stack_.groupsBefore_ = stack_.openGroups_;
}

UndoStack::Transaction::~Transaction() {
    if (!isOpen_)
        return;
    while (stack_.keptAside_.size() > before_)
        stack_.keptAside_.pop_back();
    --stack_.transactions_;
}

void UndoStack::Transaction::commit() {
    const bool isOutermost = stack_.transactions_ == 1;
    if (isOutermost)
        stack_.enterKeptAside();
    --stack_.transactions_;
    isOpen_ = false;
    if (isOutermost)
        stack_.tell(&HistoryObserver::settled);
}

void UndoStack::enterKeptAside() {
    const auto first = std::ranges::find_if(keptAside_, [](const Record& r) { return bool(r.action); });
    bool isMerged = first != keptAside_.end() && merge(*first); // the last that may fail
    bool isFirst = true;
    bool isInGroup = groupsBefore_ > 0;
    while (!keptAside_.empty()) {
        const bool endsGroup = keptAside_.front().endsStep;
        if (!keptAside_.front().action) {
            isInGroup = true;
            keptAside_.pop_front();
            tell(&HistoryObserver::groupStarted);
        } else {
            if (!std::exchange(isFirst, false)) {
                isMerged = false;
                attempt([&] { isMerged = merge(keptAside_.front()); }); // without memory it stays a record
            }
            enter(keptAside_, isMerged, isInGroup);
        }
        if (endsGroup) {
            isInGroup = false;
            closeGroup();
        }
    }
}

// Forgetting

void UndoStack::forgetSteps() {
    discardUndone();
    if (savePoint_ == doneRecords())
        savePoint_ = 0;
    else
        savePoint_.reset();
    done_.clear();
    droppedRecords_ = 0;
    doneSteps_ = 0;
    memory_ = 0;
}

void UndoStack::discardUndone() {
    while (undoneSteps_ > 0)
        dropNewestStep();
}

/// REQUIRES: it is undone.
void UndoStack::dropNewestStep() {
    do {
        memory_ -= undone_.back().action->memory();
        undone_.pop_back();
    } while (!undone_.empty() && !undone_.back().endsStep);
    --undoneSteps_;
    if (savePoint_ > doneRecords() + undone_.size())
        savePoint_.reset();
}

/// REQUIRES: it is done.
void UndoStack::dropOldestStep() {
    bool isLast = false;
    while (!isLast) {
        isLast = done_.front().endsStep;
        memory_ -= done_.front().action->memory();
        done_.pop_front();
        ++droppedRecords_;
    }
    --doneSteps_;
    if (savePoint_ < droppedRecords_)
        savePoint_.reset();
}

void UndoStack::keepLimit() {
    while (memory_ > limit_ && doneSteps_ + undoneSteps_ > 1) {
        if (doneSteps_ > 1)
            dropOldestStep();
        else
            dropNewestStep(); // all but the first were undone, the last one longest ago
    }
}

} // namespace tavrin
