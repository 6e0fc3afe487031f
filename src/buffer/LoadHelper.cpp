#include "buffer/LoadHelper.h"

#include "platform/core/ByteBuffer.h"
#include "platform/core/SharedRead.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

namespace tavrin {

LoadHelper::LoadHelper(SharedRead* file, const LineScan* scan)
    : file_(file), scan_(scan), canScan_(scan != nullptr), thread_([this] { run(); }) {}

LoadHelper::~LoadHelper() {
    stop(true);
}

void LoadHelper::stop(bool giveUp) {
    {
        const std::lock_guard lock(mutex_);
        isLast_ = true;
        isUnwanted_ = giveUp;
        changed_.notify_one();
    }
    if (thread_.joinable())
        thread_.join();
}

void LoadHelper::give(LineStore::Pages pages, const TextSource& source) {
    ByteBuffer& block = *source.block();
    std::vector<Noting> notings;
    if (scan_) {
        pages.appendStored(source, linesGiven_, unnoted_);
        notings = takeNotings();
    }
    Batch batch{std::move(pages), source.in(new ByteBuffer(block.data(), block.size(), false))};
    const std::lock_guard lock(mutex_);
    given_.push_back(std::move(batch));
    std::ranges::move(notings, std::back_inserter(notings_));
    changed_.notify_one();
}

/// What can be noted of the pages that were given.
std::vector<LoadHelper::Noting> LoadHelper::takeNotings() {
    constexpr auto pages = std::size_t{LineStore::treeFanOut};
    std::vector<Noting> notings;
    auto next = unnoted_.begin();
    for (; unnoted_.end() - next >= LineStore::treeFanOut; next += LineStore::treeFanOut) {
        Noting& noting = notings.emplace_back();
        if (!std::all_of(next, next + LineStore::treeFanOut,
                         [](const auto& page) { return page.has_value(); }))
            continue;
        noting.pages.reserve(pages);
        for (const auto& page : std::span(next, pages))
            noting.pages.push_back(*page);
    }
    unnoted_.erase(unnoted_.begin(), next);
    return notings;
}

/// Makes the next note that nobody has begun. False: there is none.
bool LoadHelper::makeNote(std::unique_lock<std::mutex>& lock) {
    if (notingsBegun_ == notings_.size())
        return false;
    Noting& noting = notings_[notingsBegun_++];
    const auto pages = std::move(noting.pages);
    if (pages.empty())
        return true;
    lock.unlock();
    noting.note = scan_->note(pages);
    lock.lock();
    return true;
}

LoadHelper::Result LoadHelper::finish() {
    {
        std::unique_lock lock(mutex_);
        isLast_ = true;
        changed_.notify_one();
        while (makeNote(lock)) {
        }
    }
    stop(false);
    if (failure_)
        std::rethrow_exception(failure_);
    std::vector<std::unique_ptr<ChunkNote>> notes;
    for (Noting& noting : notings_)
        notes.push_back(std::move(noting.note));
    result_.pages.setNotes(std::move(notes));
    return std::move(result_);
}

void LoadHelper::run() {
    try {
        for (std::deque<Batch> batches; takeNext(batches); batches.clear())
            for (Batch& batch : batches)
                look(std::move(batch));
    } catch (...) {
        failure_ = std::current_exception();
    }
}

/// Waits for pages, and makes notes and reads meanwhile. False when nobody wants more.
bool LoadHelper::takeNext(std::deque<Batch>& batches) {
    std::unique_lock lock(mutex_);
    for (bool mayRead = file_ != nullptr;;) {
        if (isUnwanted_)
            return false;
        // First what is in a cache; in the end, when both threads make notes, what only this one does.
        if ((!isLast_ || given_.empty()) && makeNote(lock))
            continue;
        if (!given_.empty()) {
            batches.swap(given_);
            return true;
        }
        if (isLast_)
            return false;
        if (mayRead) {
            lock.unlock();
            mayRead = file_->readNext();
            lock.lock();
        } else {
            changed_.wait(lock);
        }
    }
}

void LoadHelper::look(Batch batch) {
    if (canScan_) {
        const LineStore::Pages::Scanned scanned = batch.pages.scan(*scan_, batch.source, state_);
        result_.scannedLines += scanned.lines;
        canScan_ = scanned.areAll;
    }
    result_.pages.append(std::move(batch.pages));
}

} // namespace tavrin
