#pragma once

#include "buffer/BufferLine.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace tavrin {

/// What a reader of the text has found out about a stretch of lines; made by that reader alone.
class ChunkNote {
  public:
    virtual ~ChunkNote() = default;
};

/// The lines [first, end) that the store keeps together.
struct LineChunk {
    int first;
    int end;
};

/// The lines of a buffer, in pages of a few hundred, under a B+ tree that knows sums over its subtrees:
/// finding, inserting and removing a line, the length of the text, its widest line and a change of the flags
/// of a range of lines cost O(log n).
///
/// Flag changes of a range are noted at the highest nodes that the range covers and carried down only along
/// the paths that are written later; reading composes what is noted on the way up.
///
/// REQUIRES everywhere: indices within [0, lineCount()], ranges half open and ordered.
class LineStore {
  public:
    static constexpr int pageLines = 256;

    LineStore();
    LineStore(const LineStore&) = delete;
    LineStore& operator=(const LineStore&) = delete;
    ~LineStore();

    [[nodiscard]] int lineCount() const { return total_.lines; }
    /// Code units of the text as it is saved: each line's, and two for every line break.
    [[nodiscard]] std::int64_t savedLength() const;
    /// Columns of the widest line; 0 without lines.
    [[nodiscard]] int columns() const { return total_.columns; }

    /// The line's record. Its `flags` leave out pending range changes: read them by flags(). Valid until the
    /// next change.
    [[nodiscard]] const BufferLine& line(int index) const;
    /// Runs `change(BufferLine&)` on one line and brings the sums up to date.
    template <class Change>
    void edit(int index, Change&& change) {
        Place place = descend(index);
        change(place.line());
        refresh(place);
    }
    /// Changes of many lines, in ascending order, at the cost of one sum a page. REQUIRES: nothing else uses
    /// the store meanwhile.
    class Batch;
    /// For changes that move no sum: format codes and the parser's state.
    [[nodiscard]] BufferLine& lineForFormats(int index) { return const_cast<BufferLine&>(line(index)); }

    void insert(int index, BufferLine line);
    void insert(int index, std::vector<BufferLine> lines);
    void erase(int first, int last);
    void clear();

    [[nodiscard]] int flags(int index) const;
    /// flags = (flags without the bits of mask) | value, for every line of the range.
    void setFlags(int first, int last, int value, int mask);

    /// The page around a line. Pages change with edits; a line's page holds at most pageLines lines.
    [[nodiscard]] LineChunk chunkAt(int index) const;
    /// The note on the line's page; null when there is none, or a line of the page has changed since it was
    /// made.
    [[nodiscard]] const ChunkNote* chunkNote(int index) const;
    void setChunkNote(int index, std::unique_ptr<ChunkNote> note) const;

    /// Appends lines to an empty store, much faster than inserting them one by one.
    class Builder;

    /// Throws std::logic_error when a sum or a link is wrong. O(n).
    void checkInvariants() const;

  private:
    struct Node;
    struct Page;
    struct Inner;

    /// What a subtree adds up to.
    struct Sums {
        int lines = 0;
        int continued = 0;       ///< lines that continue the one before
        std::int64_t length = 0; ///< code units
        int columns = 0;         ///< the widest
        friend bool operator==(const Sums&, const Sums&) = default;
        void add(const Sums& other);
    };

    /// flags -> (flags & keep) | set
    struct FlagChange {
        int keep = ~0;
        int set = 0;
        [[nodiscard]] bool isIdentity() const { return keep == ~0 && set == 0; }
        [[nodiscard]] int apply(int flags) const { return (flags & keep) | set; }
        /// This change, then `later`.
        void then(FlagChange later) {
            keep &= later.keep;
            set = later.apply(set);
        }
    };

    struct Place {
        Page* page;
        int index; ///< within the page
        [[nodiscard]] BufferLine& line() const;
    };

    [[nodiscard]] Place find(int index) const;
    /// find(), with pending flag changes carried down to the page's lines.
    [[nodiscard]] Place descend(int index);
    void pushDown(Node& node);
    void pushDownPath(Node& node);
    void refresh(const Place& place);
    void refreshUp(Node& node);
    void insertPage(Page& after, std::unique_ptr<Page> page);
    void insertNode(Inner& parent, int slot, std::unique_ptr<Node> node);
    void splitPage(Page& page, int at);
    void growRoot();
    void eraseIn(Node& node, int first, int last);
    void mergeSmallChildren(Inner& node);
    void setFlagsIn(Node& node, int first, int last, FlagChange change);
    void forgetHint() const { hint_ = nullptr; }

    std::unique_ptr<Node> root_; ///< always a tree, at least one empty page
    Sums total_;
    mutable Page* hint_ = nullptr; ///< the page used last
    mutable int hintFirst_ = 0;    ///< and the index of its first line
};

class LineStore::Batch {
  public:
    explicit Batch(LineStore& store) : store_(store) {}
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;
    ~Batch() { finishPage(); }

    template <class Change>
    void edit(int index, Change&& change) {
        Place place = store_.descend(index);
        if (place.page != page_)
            finishPage();
        page_ = place.page;
        change(place.line());
    }

  private:
    void finishPage();

    LineStore& store_;
    Page* page_ = nullptr; ///< its sums are out of date
};

class LineStore::Builder {
  public:
    /// REQUIRES: `store` is empty, and not used before finish().
    explicit Builder(LineStore& store);
    ~Builder();
    void append(const char16_t* text, std::size_t length, std::size_t tabs, bool continuesPrevious);
    void finish();

  private:
    LineStore& store_;
    std::vector<std::unique_ptr<Node>> pages_;
    Page* page_ = nullptr;
};

} // namespace tavrin
