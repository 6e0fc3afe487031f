#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <vector>

namespace tavrin {

/// Equal format codes of neighbouring characters: up to `end` (exclusive), from the end of the run before.
struct FormatRun {
    std::int32_t end;
    std::int32_t format;
    friend bool operator==(const FormatRun&, const FormatRun&) = default;
};

class FormatRunRoom;

/// The format codes of one line, as runs. Characters behind the last run have code 0, so a line of
/// plain text, or one that nobody has coloured, takes no memory.
class FormatRuns {
  public:
    FormatRuns() = default;
    FormatRuns(FormatRuns&&) noexcept = default;
    FormatRuns& operator=(FormatRuns&&) noexcept = default;

    [[nodiscard]] std::span<const FormatRun> runs() const {
        if (!block_)
            return {};
        return {block_->runs(), block_->size};
    }
    /// False when there are none. Looks at nothing but the object itself.
    [[nodiscard]] bool mayHaveRuns() const { return block_ != nullptr; }
    [[nodiscard]] int at(int col) const;

    /// Sets the codes of [start, start + count). Writing from left to right is the fast case.
    void set(int start, int count, int format);
    /// Makes the last run end at `length`, unless there is none or it ends later.
    void padTo(int length) {
        if (const auto all = runs(); !all.empty() && all.back().end < length)
            push({length, 0});
    }
    void clear();
    /// Replaces all codes. REQUIRES: ascending ends, neighbours of different codes.
    void assign(std::span<const FormatRun> runs);
    /// The same, with the runs in `room`, which outlives them.
    void assign(std::span<const FormatRun> runs, FormatRunRoom& room);
    /// The same with the runs up to `end` that were written where room.open() said, made to end at `length`,
    /// unless there are none. REQUIRES: room for one more.
    void adopt(FormatRun* end, int length, FormatRunRoom& room);

    /// Replaces the codes of [from, to); characters behind the last run get 0. REQUIRES of `runs`: as of
    /// assign, none ends beyond `to`; those that end before `from` do not count.
    void replace(int from, int to, std::span<const FormatRun> runs);

    /// Makes room for `count` characters of code 0 before `col`.
    void insert(int col, int count);
    /// The next insert or erase needs no memory.
    void prepareToEdit();
    void erase(int col, int count);
    /// Removes the codes from `col` on and returns them, moved to start at 0.
    [[nodiscard]] FormatRuns cut(int col);
    /// Puts the codes of `tail` behind the first `length` characters.
    void append(int length, const FormatRuns& tail);

  private:
    friend FormatRunRoom;
    /// Header and runs in one allocation, so that an empty FormatRuns is one null pointer.
    struct Block {
        std::uint32_t size;
        std::uint32_t capacity : 31; ///< so many runs follow the header
        std::uint32_t isOwned : 1;   ///< else it lies in a FormatRunRoom

        FormatRun* runs() { return reinterpret_cast<FormatRun*>(this + 1); }
        void fill(std::span<const FormatRun> all);
        [[nodiscard]] static Block* make(std::size_t capacity);
    };
    struct Free {
        void operator()(Block* block) const;
    };

    void push(FormatRun run);
    /// Replaces the characters [col, col + removed), which begin in a run, by `inserted` ones with these
    /// runs. What lies behind moves, and is not copied elsewhere.
    void splice(int col, int removed, int inserted, std::span<const FormatRun> made);
    void reserve(std::size_t capacity);

    std::unique_ptr<Block, Free> block_;
};

/// Room for the runs of many lines, which goes as a whole.
class FormatRunRoom {
  public:
    /// Where up to `most` runs may be written for FormatRuns::adopt; void when anything else is taken.
    [[nodiscard]] FormatRun* open(std::size_t most) {
        if (left_ <= most) // one is for a header
            grow(most + 1);
        return next_ + 1;
    }

  private:
    friend FormatRuns;
    void grow(std::size_t needed);
    FormatRuns::Block* take(std::size_t capacity) {
        static_assert(sizeof(FormatRuns::Block) == sizeof(FormatRun));
        FormatRun* const header = open(capacity) - 1;
        next_ += capacity + 1;
        left_ -= capacity + 1;
        return new (header) FormatRuns::Block{0, static_cast<std::uint32_t>(capacity) & INT32_MAX, 0};
    }

    std::vector<std::unique_ptr<FormatRun[]>> pieces_;
    FormatRun* next_ = nullptr; ///< what is left of the last piece
    std::size_t left_ = 0;
};

inline void FormatRuns::adopt(FormatRun* end, int length, FormatRunRoom& room) {
    const FormatRun* const begin = room.next_ + 1;
    if (end == begin) {
        clear();
        return;
    }
    if (end[-1].end < length)
        *end++ = {length, 0};
    const auto count = static_cast<std::size_t>(end - begin);
    if (block_ && block_->capacity >= count) {
        block_->fill({begin, count});
        return;
    }
    block_.reset(room.take(count));
    block_->size = static_cast<std::uint32_t>(count);
}

} // namespace tavrin
