#include "buffer/FormatRuns.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace tavrin {

/// Header and runs in one allocation, so that an empty FormatRuns is one null pointer.
struct FormatRuns::Block {
    std::uint32_t size;
    std::uint32_t capacity; ///< so many runs follow the header

    FormatRun* runs() { return reinterpret_cast<FormatRun*>(this + 1); }
};

void FormatRuns::Free::operator()(Block* block) const {
    std::free(block);
}

std::span<const FormatRun> FormatRuns::runs() const {
    if (!block_)
        return {};
    return {block_->runs(), block_->size};
}

int FormatRuns::at(int col) const {
    const auto all = runs();
    const auto run = std::ranges::upper_bound(all, col, {}, &FormatRun::end);
    return run == all.end() ? 0 : run->format;
}

void FormatRuns::push(FormatRun run) {
    if (block_ && block_->size > 0) {
        FormatRun& last = block_->runs()[block_->size - 1];
        if (last.end >= run.end)
            return;
        if (last.format == run.format) {
            last.end = run.end;
            return;
        }
    }
    if (!block_ || block_->size == block_->capacity) {
        const std::uint32_t size = block_ ? block_->size : 0;
        const std::uint32_t capacity = size ? size * 2 : 7;
        void* grown = std::realloc(block_.get(), sizeof(Block) + capacity * sizeof(FormatRun));
        if (!grown)
            throw std::bad_alloc();
        (void)block_.release();
        block_.reset(static_cast<Block*>(grown));
        block_->size = size;
        block_->capacity = capacity;
    }
    block_->runs()[block_->size++] = run;
}

void FormatRuns::set(int start, int count, int format) {
    if (count <= 0)
        return;
    const int end = block_ && block_->size ? block_->runs()[block_->size - 1].end : 0;
    if (start < end) {
        splice(start, count, count, format);
    } else if (format != 0) {
        if (start > end)
            push({start, 0});
        push({start + count, format});
    }
}

void FormatRuns::assign(std::span<const FormatRun> all) {
    if (all.empty()) {
        clear();
        return;
    }
    const auto count = static_cast<std::uint32_t>(all.size());
    if (!block_ || block_->capacity < count) {
        const std::uint32_t capacity = count + 1; // one for padTo
        void* fresh = std::malloc(sizeof(Block) + capacity * sizeof(FormatRun));
        if (!fresh)
            throw std::bad_alloc();
        block_.reset(static_cast<Block*>(fresh));
        block_->capacity = capacity;
    }
    block_->size = count;
    std::copy(all.begin(), all.end(), block_->runs());
}

void FormatRuns::padTo(int length) {
    if (block_)
        push({length, 0});
}

void FormatRuns::insert(int col, int count) {
    splice(col, 0, count, 0);
}

void FormatRuns::erase(int col, int count) {
    splice(col, count, 0, 0);
}

void FormatRuns::splice(int col, int removed, int inserted, int format) {
    const auto old = runs();
    if (old.empty() || (col >= old.back().end && format == 0))
        return;
    FormatRuns result;
    int start = 0;
    for (const FormatRun& run : old) { // what lies before the place
        if (start >= col)
            break;
        result.push({std::min<int>(run.end, col), run.format});
        start = run.end;
    }
    if (inserted > 0)
        result.push({col + inserted, format});
    for (const FormatRun& run : old) // and behind it
        if (run.end > col + removed)
            result.push({run.end - removed + inserted, run.format});
    *this = std::move(result);
}

FormatRuns FormatRuns::cut(int col) {
    FormatRuns tail;
    for (const FormatRun& run : runs())
        if (run.end > col)
            tail.push({run.end - col, run.format});
    const auto all = runs();
    if (!all.empty() && all.back().end > col)
        splice(col, all.back().end - col, 0, 0);
    return tail;
}

void FormatRuns::append(int length, const FormatRuns& tail) {
    if (tail.runs().empty())
        return;
    if (length > 0)
        push({length, 0});
    for (const FormatRun& run : tail.runs())
        push({length + run.end, run.format});
}

} // namespace tavrin
