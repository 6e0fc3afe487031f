#include "memory/FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>

namespace {

struct Plan {
    long left = std::numeric_limits<long>::max(); ///< allocations before the one that fails
    bool stays = false;
    bool hasFailed = false;
};

thread_local Plan own;
thread_local bool isExempt = false; ///< from what is shared
std::mutex mutex;
Plan shared;
std::atomic<bool> isShared = false;

bool fails(Plan& plan) {
    if (plan.left == std::numeric_limits<long>::max() || plan.left-- > 0)
        return false;
    plan.left = plan.stays ? 0 : std::numeric_limits<long>::max();
    return plan.hasFailed = true;
}

bool fails() {
    if (fails(own))
        return true;
    if (!isShared || isExempt)
        return false;
    const std::lock_guard lock(mutex);
    return fails(shared);
}

} // namespace

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void* __real_aligned_alloc(std::size_t alignment, std::size_t size);
void* __wrap_malloc(std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size);

void* __wrap_malloc(std::size_t size) {
    return fails() ? nullptr : __real_malloc(size);
}

void* __wrap_realloc(void* block, std::size_t size) {
    return fails() ? nullptr : __real_realloc(block, size);
}

void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size) {
    return fails() ? nullptr : __real_aligned_alloc(alignment, size);
}

} // extern "C"

void* operator new(std::size_t size) {
    void* const block = fails() ? nullptr : __real_malloc(size > 0 ? size : 1);
    if (!block)
        throw std::bad_alloc();
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return fails() ? nullptr : __real_malloc(size > 0 ? size : 1);
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace tavrin::test {

FailingMemory::FailingMemory(long at, bool stays, Threads threads) {
    if (threads == Threads::This) {
        own = {at, stays, false};
        return;
    }
    const std::lock_guard lock(mutex);
    shared = {at, stays, false};
    isShared = true;
    isExempt = threads == Threads::Others;
}

FailingMemory::~FailingMemory() {
    const std::lock_guard lock(mutex);
    isShared = isExempt = false;
    own = shared = {};
}

bool FailingMemory::hasFailed() const {
    const std::lock_guard lock(mutex);
    return own.hasFailed || shared.hasFailed;
}

} // namespace tavrin::test
