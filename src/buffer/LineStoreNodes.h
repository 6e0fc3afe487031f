#pragma once

// The nodes of a LineStore's tree; for its own sources.

#include "buffer/LineColumn.h"
#include "buffer/LineStore.h"
#include "buffer/NotesAhead.h"

#include <bitset>
#include <optional>
#include <span>
#include <string>

namespace tavrin {

struct LineStore::Node {
    explicit Node(bool page) : isPage(page) {}
    virtual ~Node() = default;

    Inner* parent = nullptr;
    int slot = 0; ///< index among the parent's children
    const bool isPage;
    Sums sums;
    FlagChange pending; ///< concerns every line below, after what is pending further down
    mutable std::unique_ptr<ChunkNote> note;
    mutable std::shared_ptr<NoteAhead> noteAhead; ///< takes the place of a note that nobody has asked for

    void forgetNote() const {
        note.reset();
        noteAhead.reset();
    }
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

/// What a warm page has.
struct LineStore::PageLines {
    FormatRunRoom codes; ///< that the parser wrote, while the page mirrors a text; outlives the lines
    std::vector<BufferLine> list;
    std::shared_ptr<char16_t[]> text; ///< of lines that borrow it; null when none does
    // While the page mirrors a text:
    std::u16string_view block; ///< in which the texts of the lines lie
    Page* newer = nullptr;
    Page* older = nullptr;
    std::bitset<pageLines> read; ///< since the page became the newest one
    int readCount = 0;           ///< of them, when it no longer is
};

/// How the text of a page differs from the bytes that it was loaded from.
struct LineStore::Patches {
    struct Patch {
        std::uint32_t offset; ///< in the loaded bytes
        std::uint16_t removed;
        std::uint16_t inserted;
        std::uint8_t line;
    };
    /// Makes the page's text of the loaded one.
    void apply(std::span<const std::uint8_t> loaded, std::uint8_t* out) const;

    std::uint64_t id = 0;    ///< no other patches of the store have it
    std::size_t size = 0;    ///< of the text, in bytes
    std::vector<Patch> list; ///< one a line, in ascending order
    std::string inserted;    ///< by all of them, one after the other
    /// Where the lines end in the text, in bytes and behind their breaks; empty in a page without cuts, where
    /// breaks alone tell.
    std::vector<std::uint32_t> ends;
};

/// The patched text that was asked for last.
struct LineStore::PatchedText {
    std::uint64_t id = 0; ///< of its patches
    SmartPtr<ByteBuffer> block;
    std::optional<TextSource>
        source; ///< the text begins behind the first code unit, where no mark is dropped
};

/// Where the text of a page that mirrors one lies, until another patched one is asked for.
struct LineStore::StoredText {
    const TextSource& source;
    TextSource::Place place;
    std::size_t end;
    std::span<const std::uint32_t> ends{}; ///< of the lines, where the text alone does not tell; see Patches
};

/// Reads the lines of such a text, from the first one on.
class LineStore::StoredReading {
  public:
    explicit StoredReading(const StoredText& stored)
        : source_(stored.source), start_(stored.place.offset), place_(stored.place), ends_(stored.ends) {}

    void next(TextSource::Line& line);
    /// Where the next line begins.
    [[nodiscard]] std::size_t offset() const { return place_.offset; }

  private:
    const TextSource& source_;
    const std::size_t start_;
    TextSource::Place place_;
    std::span<const std::uint32_t> ends_; ///< of the lines that were not read
};

struct LineStore::Page : Node {
    Page() : Node(true) {}
    ~Page() override;

    [[nodiscard]] int lineCount() const { return sums.lines; }
    [[nodiscard]] std::vector<BufferLine>& list() { return lines->list; }
    [[nodiscard]] const std::vector<BufferLine>& list() const { return lines->list; }
    /// To be called after every change of the lines.
    void sumUp();

    std::unique_ptr<PageLines> lines; ///< null while the page is cold
    WarmPages* warm = nullptr;        ///< where the page is listed
    bool mirrors = false;             ///< the lines are those of the source from `place` on, patched
    std::unique_ptr<Patches> patches; ///< null: none
    int lastLength = 0;               ///< of the last line, while the page mirrors a text
    bool hasOddBreak = false;         ///< a line feed of the page is a character
    TextSource::Place place;
    std::size_t sourceEnd = 0; ///< where the next page begins in the source
    LineColumn flags;
    LineColumn states;
    std::bitset<pageLines> dropped; ///< lines whose codes went when the page became cold
};

struct LineStore::Inner : Node {
    Inner() : Node(false) {}
    /// With these children, which stay another node's until it takes them over.
    explicit Inner(std::span<Node* const> nodes) : Node(false), children(nodes.begin(), nodes.end()) {
        for (const Node* child : children)
            sums.add(child->sums);
    }
    ~Inner() override {
        for (const Node* child : children)
            delete child;
    }

    void takeOver() noexcept {
        for (int i = 0; i < static_cast<int>(children.size()); ++i) {
            children[static_cast<std::size_t>(i)]->parent = this;
            children[static_cast<std::size_t>(i)]->slot = i;
        }
    }
    /// To be called after every change below.
    void sumUp() {
        sums = {};
        for (const Node* child : children)
            sums.add(child->sums);
        forgetNote();
    }

    std::vector<Node*> children; ///< owned
};

inline LineStore::Place LineStore::find(int index) const {
    if (hint_ && index >= hintFirst_ && index < hintFirst_ + hint_->sums.lines)
        return {hint_, index - hintFirst_};
    return findInTree(index);
}

inline LineStore::Place LineStore::descend(int index) {
    const Place place = find(index);
    if (!hintIsClear_)
        clearHint();
    return place;
}

inline LineStore::Place LineStore::findToRead(int index) const {
    const Place place = find(index);
    Page& page = *place.page;
    if (page.mirrors) {
        if (!page.lines || !warm_->isNewest(page))
            warmUp(page);
        page.lines->read[static_cast<std::size_t>(place.index)] = true;
    }
    return place;
}

inline BufferLine& LineStore::read(int index) const {
    const Place place = findToRead(index);
    return place.page->list()[static_cast<std::size_t>(place.index)];
}
struct LineStore::LargeChange {
    virtual ~LargeChange() = default;
    /// The tree is as it was after the change.
    virtual void takeBack() noexcept = 0;
};

} // namespace tavrin
