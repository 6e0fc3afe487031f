#include "buffer/FormatRuns.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace tavrin {

void FormatRuns::Block::fill(std::span<const FormatRun> all) {
    size = static_cast<std::uint32_t>(all.size());
    std::copy(all.begin(), all.end(), runs());
}

FormatRuns::Block* FormatRuns::Block::make(std::size_t capacity) {
    void* const room = std::malloc(sizeof(Block) + capacity * sizeof(FormatRun));
    if (!room)
        throw std::bad_alloc();
    return new (room) Block{0, static_cast<std::uint32_t>(capacity) & INT32_MAX, 1};
}

void FormatRunRoom::grow(std::size_t needed) {
    constexpr std::size_t pieceRuns = 2048;
    const std::size_t size = std::max(pieceRuns, needed);
    pieces_.push_back(std::make_unique_for_overwrite<FormatRun[]>(size));
    next_ = pieces_.back().get();
    left_ = size;
}

void FormatRuns::Free::operator()(Block* block) const {
    if (block->isOwned)
        std::free(block);
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
        const auto all = runs();
        std::unique_ptr<Block, Free> grown(Block::make(all.empty() ? 7 : 2 * all.size()));
        grown->fill(all);
        block_ = std::move(grown);
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
    if (!block_ || block_->capacity < all.size())
        block_.reset(Block::make(all.size() + 1)); // one for padTo
    block_->fill(all);
}

void FormatRuns::assign(std::span<const FormatRun> all, FormatRunRoom& room) {
    if (!all.empty() && (!block_ || block_->capacity < all.size()))
        block_.reset(room.take(all.size() + 1));
    assign(all);
}

void FormatRuns::clear() {
    if (block_ && !block_->isOwned)
        block_->size = 0; // the block is there for the line's next codes
    else
        block_.reset();
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
