#include "memory/FailingMemory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

struct Plan {
    long left = std::numeric_limits<long>::max(); ///< allocations before the one that fails
    bool stays = false;
    bool hasFailed = false;
};

thread_local Plan plan;

bool fails() {
    if (plan.left == std::numeric_limits<long>::max() || plan.left-- > 0)
        return false;
    plan.left = plan.stays ? 0 : std::numeric_limits<long>::max();
    return plan.hasFailed = true;
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

FailingMemory::FailingMemory(long at, bool stays) {
    plan = {at, stays, false};
}

FailingMemory::~FailingMemory() {
    plan = {};
}

bool FailingMemory::hasFailed() const {
    return plan.hasFailed;
}

} // namespace tavrin::test
