#include "buffer/FormatRuns.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

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
        const FormatRun made{start + count, format};
        splice(start, count, count, {&made, 1});
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

void FormatRuns::replace(int from, int to, std::span<const FormatRun> runs) {
    while (!runs.empty() && runs.front().end <= from)
        runs = runs.subspan(1);
    std::vector<FormatRun> made(runs.begin(), runs.end());
    const int end = made.empty() ? from : made.back().end;
    if (end < to && !made.empty() && made.back().format == 0)
        made.back().end = to;
    else if (end < to)
        made.push_back({to, 0});
    reserve(this->runs().size() + made.size() + 2);
    if (from > 0)
        push({from, 0});
    splice(from, to - from, to - from, made);
}

void FormatRuns::insert(int col, int count) {
    if (const auto all = runs(); count > 0 && !all.empty() && col < all.back().end) {
        const FormatRun made{col + count, 0};
        splice(col, 0, count, {&made, 1});
    }
}

void FormatRuns::erase(int col, int count) {
    if (const auto all = runs(); !all.empty() && col < all.back().end)
        splice(col, count, 0, {});
}

void FormatRuns::prepareToEdit() {
    if (block_)
        reserve(block_->size + 2U);
}

void FormatRuns::reserve(std::size_t capacity) {
    const auto all = runs();
    if (block_ && block_->capacity >= capacity)
        return;
    std::unique_ptr<Block, Free> grown(Block::make(std::max(capacity, 2 * all.size())));
    grown->fill(all);
    block_ = std::move(grown);
}

void FormatRuns::splice(int col, int removed, int inserted, std::span<const FormatRun> made) {
    reserve(runs().size() + made.size() + 1);
    const auto old = runs();
    const auto first = std::ranges::upper_bound(old, col, {}, &FormatRun::end);
    const auto tail = std::ranges::upper_bound(first, old.end(), col + removed, {}, &FormatRun::end);
    auto kept = static_cast<std::size_t>(first - old.begin());
    const auto behind = static_cast<std::size_t>(tail - old.begin());

    // What ends at `col` then: a part of the run that goes on from there, or the run before.
    const bool isCut = first != old.end() && (kept > 0 ? old[kept - 1].end : 0) < col;
    FormatRun left{col, isCut ? first->format : kept > 0 ? old[kept - 1].format : 0};
    bool hasLeft = isCut;
    if (!made.empty() && tail != old.end() && made.back().format == tail->format)
        made = made.first(made.size() - 1);
    const FormatRun* const next = !made.empty() ? made.data() : tail != old.end() ? &*tail : nullptr;
    if (next && next->format == left.format && (isCut || kept > 0)) {
        hasLeft = false;
        kept -= isCut ? 0 : 1;
    }

    FormatRun* const all = block_->runs();
    const std::size_t after = kept + (hasLeft ? 1 : 0) + made.size();
    const std::size_t count = old.size() - behind;
    std::memmove(all + after, all + behind, count * sizeof(FormatRun));
    for (FormatRun& run : std::span(all + after, inserted == removed ? 0 : count))
        run.end += inserted - removed;
    if (hasLeft)
        all[kept++] = left;
    std::ranges::copy(made, all + kept);
    block_->size = static_cast<std::uint32_t>(after + count);
    if (block_->size == 0)
        clear();
}

FormatRuns FormatRuns::cut(int col) {
    FormatRuns tail;
    for (const FormatRun& run : runs())
        if (run.end > col)
            tail.push({run.end - col, run.format});
    const auto all = runs();
    if (!all.empty() && all.back().end > col)
        splice(col, all.back().end - col, 0, {});
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
