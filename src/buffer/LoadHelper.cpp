#include "buffer/LoadHelper.h"

#include "platform/core/ByteBuffer.h"
#include "platform/core/SharedRead.h"

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
    Batch batch{std::move(pages), source.in(new ByteBuffer(block.data(), block.size(), false))};
    const std::lock_guard lock(mutex_);
    given_.push_back(std::move(batch));
    changed_.notify_one();
}

LoadHelper::Result LoadHelper::finish() {
    stop(false);
    if (failure_)
        std::rethrow_exception(failure_);
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

/// Waits for work, and reads meanwhile. False when nobody wants more.
bool LoadHelper::takeNext(std::deque<Batch>& batches) {
    std::unique_lock lock(mutex_);
    for (bool mayRead = file_ != nullptr;;) {
        if (isUnwanted_ || (given_.empty() && isLast_))
            return false;
        if (!given_.empty()) {
            batches.swap(given_);
            return true;
        }
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
