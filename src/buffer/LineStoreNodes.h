#pragma once

// The nodes of a LineStore's tree; for its own sources.

#include "buffer/LineColumn.h"
#include "buffer/LineStore.h"

#include <bitset>

namespace tavrin {

struct LineStore::Node {
    explicit Node(bool page) : isPage(page) {}
    virtual ~Node() = default;

    Inner* parent = nullptr;
    int slot = 0; ///< index among the parent's children
    const bool isPage;
    Sums sums;
    FlagChange pending; ///< concerns every line below, after what is pending further down
};

/// Pages that hold lines in memory and could do without, in the order in which they were read last.
class LineStore::WarmPages {
  public:
    [[nodiscard]] bool isNewest(const Page& page) const { return newest_ == &page; }
    /// Makes the page the one that was read last.
    void makeNewest(Page& page);
    void remove(Page& page);
    /// A page whose lines nobody may still look at; null when there is none.
    [[nodiscard]] Page* takeDispensable();

  private:
    void link(Page& page);
    void unlink(Page& page);

    Page* newest_ = nullptr;
    Page* oldest_ = nullptr;
    std::int64_t linesRead_ = 0; ///< in all pages but the newest
};

struct LineStore::Page : Node {
    Page() : Node(true) {}
    ~Page() override;

    /// What a warm page has.
    struct Lines {
        FormatRunRoom codes; ///< that the parser wrote, while the page mirrors the source; outlives the lines
        std::vector<BufferLine> list;
        std::shared_ptr<char16_t[]> text; ///< of lines that borrow it; null when none does
        // While the page mirrors the source:
        Page* newer = nullptr;
        Page* older = nullptr;
        std::bitset<pageLines> read; ///< since the page became the newest one
        int readCount = 0;           ///< of them, when it no longer is
    };

    [[nodiscard]] int lineCount() const { return sums.lines; }
    [[nodiscard]] std::vector<BufferLine>& list() { return lines->list; }
    [[nodiscard]] const std::vector<BufferLine>& list() const { return lines->list; }
    /// To be called after every change of the lines.
    void sumUp();
    /// REQUIRES: detached, as the other operations.
    void insert(int at, BufferLine line);
    void erase(int first, int last);
    /// Moves the lines from `at` on to an empty page.
    void moveTail(int at, Page& to);
    /// Takes over the lines of another page.
    void take(Page& next);

    std::unique_ptr<Lines> lines; ///< null while the page is cold
    WarmPages* warm = nullptr;    ///< where the page is listed
    bool mirrors = false;         ///< the lines are those of the source from `place` on
    int lastLength = 0;           ///< of the last line, while the page mirrors the source
    bool hasOddBreak = false;     ///< a line feed of the page is a character
    TextSource::Place place;
    std::size_t sourceEnd = 0; ///< where the next page begins in the source
    LineColumn flags;
    LineColumn states;
    std::bitset<pageLines> dropped; ///< lines whose codes went when the page became cold
    mutable std::unique_ptr<ChunkNote> note;

  private:
    void ownText();
};

struct LineStore::Inner : Node {
    Inner() : Node(false) {}

    void adopt(int at, std::unique_ptr<Node> child) {
        children.insert(children.begin() + at, std::move(child));
        number(at);
    }
    /// Tells the children from `from` on where they are.
    void number(int from) {
        for (int i = from; i < static_cast<int>(children.size()); ++i) {
            children[i]->parent = this;
            children[i]->slot = i;
        }
    }
    void sumUp() {
        sums = {};
        for (const auto& child : children)
            sums.add(child->sums);
    }

    std::vector<std::unique_ptr<Node>> children;
};

inline BufferLine& LineStore::read(int index) const {
    const Place place = findToRead(index);
    return place.page->list()[static_cast<std::size_t>(place.index)];
}

inline LineStore::Place LineStore::find(int index) const {
    if (hint_ && index >= hintFirst_ && index < hintFirst_ + hint_->sums.lines)
        return {hint_, index - hintFirst_};
    return findInTree(index);
}

} // namespace tavrin
