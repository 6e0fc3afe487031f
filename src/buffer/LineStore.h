#pragma once

#include "buffer/BufferLine.h"
#include "buffer/LineReplacement.h"
#include "buffer/TextSource.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin {

class LineScan;
class NoteAhead;
class NotesAhead;
struct LineEndState;

/// What a reader of the text has found out about a stretch of lines; made by that reader alone.
class ChunkNote {
  public:
    virtual ~ChunkNote() = default;
};

/// The lines [first, end) that the store keeps together: a page, or all pages below a node of its tree.
struct LineChunk {
    int first;
    int end;
    int height = 0; ///< of the node; 0: a page
};

/// The lines of a buffer, in pages of a few hundred, under a B+ tree that knows sums over its subtrees:
/// finding, inserting and removing a line, the length of the text, its widest line and a change of the flags
/// of a range of lines cost O(log n).
///
/// A page of a loaded text is cold at first: it knows where its lines begin in the source, and what they add
/// up to. When a line of it is read it becomes warm: lines in memory, their text decoded. A warm page is
/// cold again when enough lines of other pages were read since; one that was edited stays, unless parts of
/// lines were replaced: those are patches of the page's source. Flags, the parser's state and the fact that a
/// line has codes outlive that, codes written by the parser do not.
///
/// Flag changes of a range are noted at the highest nodes that the range covers and carried down only along
/// the paths that are written later; reading composes what is noted on the way up.
///
/// REQUIRES everywhere: indices within [0, lineCount()], ranges half open and ordered.
class LineStore {
  public:
    static constexpr int pageLines = 256;
    /// Nodes of the tree have no more children.
    static constexpr int treeFanOut = 32;
    /// A page becomes cold only when this many lines of others have been read since it was read last.
    static constexpr int warmLines = 4096;

    LineStore();
    LineStore(const LineStore&) = delete;
    LineStore& operator=(const LineStore&) = delete;
    ~LineStore();

    [[nodiscard]] int lineCount() const { return total_.lines; }
    /// Code units of the text as it is saved: each line's, and two for every line break.
    [[nodiscard]] std::int64_t savedLength() const;
    /// Columns of the widest line; 0 without lines.
    [[nodiscard]] int columns() const { return total_.columns; }

    /// Code units of all lines before this one, and one for each of them.
    [[nodiscard]] std::int64_t offset(int index) const;
    /// The line whose offset is the last at or before this one; 0 for what is below, the last line for what
    /// is behind. REQUIRES: there are lines.
    [[nodiscard]] int lineAtOffset(std::int64_t offset) const;

    /// The line's record. Valid until the next change, or until warmLines other lines have been read.
    [[nodiscard]] const BufferLine& line(int index) const;
    /// Code units of a line. Those of the last line of a page are known without decoding it.
    [[nodiscard]] int length(int index) const;
    /// Whether the line continues the one before. That of the first line of a page is known without decoding
    /// it.
    [[nodiscard]] bool continuesPrevious(int index) const;
    /// For changes of the format codes. `keep`: the page stays in memory from now on, since nobody could
    /// write these codes again.
    [[nodiscard]] BufferLine& lineForFormats(int index, bool keep);
    /// Replaces all codes of a line by what the parser can write again.
    void setFormats(int index, std::span<const FormatRun> runs);
    /// Lines that nobody has read yet, to be given their codes.
    class LinesAhead {
      public:
        LinesAhead(std::span<BufferLine> lines, std::u16string_view block, FormatRunRoom& codes)
            : lines_(lines), block_(block), codes_(codes) {}

        [[nodiscard]] std::size_t size() const { return lines_.size(); }
        [[nodiscard]] std::u16string_view text(std::size_t i) const { return lines_[i].text(); }
        /// Where the texts of lines lie in ascending order, with what may stand between them; not those of
        /// all lines.
        [[nodiscard]] std::u16string_view block() const { return block_; }
        /// Room for a run a character.
        [[nodiscard]] FormatRun* room(std::size_t i) { return codes_.open(lines_[i].text().size() + 1); }
        /// Gives a line the codes in its room, which room() was called for last.
        void setFormats(std::size_t i, FormatRun* end) {
            lines_[i].formats.adopt(end, lines_[i].length(), codes_);
            lines_[i].formatsDropped = false;
        }

      private:
        std::span<BufferLine> lines_;
        std::u16string_view block_;
        FormatRunRoom& codes_;
    };
    /// Gives lines their codes, from the first on, and returns how many.
    using Colouring = std::function<std::size_t(LinesAhead& lines)>;
    /// The same for lines of [first, last), no further than the page, before anybody reads them; returns the
    /// line behind the last. Does nothing in a page that was changed.
    int setFormatsAhead(int first, int last, const Colouring& colour);
    /// Pages that were changed so far; what was set ahead holds while this stays the same.
    [[nodiscard]] unsigned changedPages() const { return changedPages_; }

    // Changes of the text. Each is done as a whole, or it throws and nothing has changed; each is remembered
    // until it is committed.

    /// Replaces one line by what `change(BufferLine&)` makes of a copy of it.
    template <class Change>
    void edit(int index, Change&& change) {
        BufferLine changed = line(index).copy();
        change(changed);
        replace(index, std::move(changed));
    }
    /// The same for text within a line, with less work where the line is long.
    void insert(int index, int col, std::u16string_view text);
    void erase(int index, int col, int count);
    /// Replaces parts of lines; see Buffer::replaceInLines. Flags and states stay. A page that nobody edited
    /// stays cold, where the form of its source has the text; the others are changed.
    void replace(std::span<const LineReplacement> replacements);
    /// Replaces the lines [first, last) by others. The first of them takes over the flags and the state of
    /// `first`, unless the range is empty; the rest have 0.
    void replace(int first, int last, std::vector<BufferLine> lines);
    void clear();
    /// The cold pages of a text, made while its bytes arrive.
    class Pages;
    /// Replaces everything by the lines of a text. Can't be taken back: what was remembered is committed.
    void load(std::unique_ptr<TextSource> source);
    /// The same when some pages were made already, from the beginning of the source.
    void load(std::unique_ptr<TextSource> source, Pages pages);
    /// Exchanges the lines and their source in constant time. REQUIRES: nothing is remembered in either.
    void swap(LineStore& other) noexcept;

    /// How many changes are remembered.
    [[nodiscard]] std::size_t changes() const { return log_.size(); }
    /// Takes back what was done since so many were remembered; flags that were written since may stay. Needs
    /// no memory. REQUIRES: neither cleared nor loaded meanwhile.
    void takeBack(std::size_t changes) noexcept;
    /// Forgets how to take changes back.
    void commit() noexcept;

    [[nodiscard]] int flags(int index) const;
    /// flags = (flags without the bits of mask) | value, for every line of the range. Of all lines, it needs
    /// no memory.
    void setFlags(int first, int last, int value, int mask);

    /// The same with a value for each line from `first` on. REQUIRES: they lie in one page.
    void setFlags(int first, std::span<const std::uint8_t> values, int mask);

    /// The parser's state of a line; 0 at first.
    [[nodiscard]] std::uint8_t state(int index) const;
    void setState(int index, std::uint8_t state);
    /// setFlags of one line, and setState.
    void setFlagsAndState(int index, int value, int mask, std::uint8_t state);
    /// REQUIRES: the lines lie in one page.
    void setStates(int first, std::span<const std::uint8_t> states);

    /// The page around a line. Pages change with edits; a line's page holds at most pageLines lines.
    [[nodiscard]] LineChunk chunkAt(int index) const;
    /// The height of the largest chunk that ends with the line, which one of each lower height then does too;
    /// -1 when no page does.
    [[nodiscard]] int chunkHeightEndingWith(int index) const;
    /// REQUIRES: a chunk of this height ends with the line.
    [[nodiscard]] LineChunk chunkEndingWith(int index, int height) const;
    /// The note on a chunk; null when there is none, or a line of the chunk has changed since it was made.
    [[nodiscard]] ChunkNote* chunkNote(const LineChunk& chunk) const;
    void setChunkNote(const LineChunk& chunk, std::unique_ptr<ChunkNote> note) const;
    void forgetChunkNotes() const;
    /// Begins to note, on another thread, what `scan` says about the pages below each of the tree's lowest
    /// nodes. The notes are there when they are asked for. REQUIRES: all lines are as they were loaded.
    /// `scan` outlives the lines.
    void noteAhead(const LineScan& scan);

    /// Lines by the break that ends them, indexed by LineEnd.
    using LineEndCounts = std::array<int, 4>;
    [[nodiscard]] const LineEndCounts& lineEnds() const { return total_.ends; }
    /// Where the lines were loaded from; null when they were not.
    [[nodiscard]] const TextSource* source() const { return source_.get(); }
    /// Lines, no further than their page, that still are as they were loaded with their ends, one after the
    /// other in the source.
    struct LoadedRun {
        int end;               ///< the line behind the last
        std::size_t begin = 0; ///< the bytes of the lines with their ends
        std::size_t after = 0;
    };
    /// The run that begins with the line; empty when the line is not as it was loaded.
    [[nodiscard]] LoadedRun loadedRun(int index) const;
    /// Where the line's text lies in the source. False when the line is not as it was loaded; its end may be
    /// another one.
    bool loadedLine(int index, TextSource::Line& line) const;

    /// The lines of a page as bytes in the form of the source. Valid until other lines are asked for or read.
    struct StoredLines {
        int first;
        int end;
        std::string_view bytes; ///< each line with its break; the last line of a text may have none
        bool isAscii;           ///< each code unit is a byte below 0x80
        bool isUtf8;            ///< valid UTF-8
        bool unitsAreBytes;     ///< each code unit is a byte
        bool hasCrLf;           ///< every break is one
        bool hasReturns;        ///< some breaks are a carriage return alone
        bool isPatched;         ///< not all of them were loaded
        /// Lines of the page, or one of them and one of another page, are cuts of a longer line. Only where
        /// isAscii.
        bool hasCuts;
        /// Where lines with cuts end, if it is not also after TextSource::maxLineLength bytes.
        std::span<const std::uint32_t> patchedEnds{};
        /// Where the lines end behind their breaks. REQUIRES: hasCuts.
        [[nodiscard]] std::vector<std::uint32_t> lineEnds() const;
    };
    /// The page around the line; nothing when it was changed, when characters below 0x80 are not bytes of the
    /// same value, or when lines are not what lies between breaks and such cuts.
    [[nodiscard]] std::optional<StoredLines> storedLines(int index) const;

    /// The same as code units, when the lines were loaded from UTF-16.
    struct StoredUnits {
        int first;
        int end;
        std::u16string_view text; ///< each line with its break; the last line of a text may have none
        bool hasReturns;          ///< some breaks are a carriage return alone
    };
    /// The page around the line; nothing when it was changed, when it was loaded from another encoding, or
    /// when lines are not what lies between breaks.
    [[nodiscard]] std::optional<StoredUnits> storedUnits(int index) const;

    /// How many pages hold lines in memory; for tests and measurements.
    [[nodiscard]] int warmPageCount() const;

    /// Throws std::logic_error when a sum or a link is wrong. O(n).
    void checkInvariants() const;

  private:
    struct Node;
    struct Page;
    struct Inner;
    struct PageLines;
    struct Patches;
    struct PatchedText;
    class Patching;
    struct StoredText;
    class StoredReading;
    struct LargeChange;
    class WarmPages;
    class TreeChange;
    class PageChange;
    class Replacing;

    /// A change that can be taken back: of one line, of a part of one, or of more.
    struct Change {
        int index = 0;
        BufferLine line{}; ///< what stood there
        std::unique_ptr<LargeChange> large{};
        int col = -1; ///< of the part
        int inserted = 0;
    };

    /// What a subtree adds up to.
    struct Sums {
        int lines = 0;
        int continued = 0;       ///< lines that continue the one before
        std::int64_t length = 0; ///< code units
        int columns = 0;         ///< the widest
        LineEndCounts ends{};
        friend bool operator==(const Sums&, const Sums&) = default;
        void add(const Sums& other);
        void add(const BufferLine& line);
        void add(const TextSource::Totals& totals);
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

    [[nodiscard]] static std::unique_ptr<Page> emptyPage();
    [[nodiscard]] Place find(int index) const;
    [[nodiscard]] Place findInTree(int index) const;
    bool moveHintTo(int index) const;
    [[nodiscard]] const Node& nodeOf(const LineChunk& chunk) const;
    static void forgetNotes(const Node& node);
    using NotesToMake = std::vector<std::shared_ptr<NoteAhead>>;
    void planNotes(const LineScan& scan, Inner& node, int& line, NotesToMake& notes) const;
    [[nodiscard]] StoredText storedText(const Page& page) const;
    [[nodiscard]] std::optional<std::size_t> storedFrom(const Page& page) const;
    [[nodiscard]] static std::optional<std::size_t> storedFrom(const Page& page, const TextSource& loaded);
    [[nodiscard]] std::size_t loadedFrom(const Page& page) const;
    [[nodiscard]] static std::size_t loadedFrom(const Page& page, const TextSource& loaded);
    [[nodiscard]] bool hasCuts(const Page& page) const;
    [[nodiscard]] std::optional<std::vector<std::uint32_t>> lineEnds(const Page& page) const;
    [[nodiscard]] static bool hasCuts(const Page& page, const TextSource& loaded);
    [[nodiscard]] static std::optional<StoredLines> storedLines(const Page& page, const TextSource& loaded,
                                                                const StoredText& stored, int first);
    /// find(), with the page's lines in memory; notes that the line is read.
    [[nodiscard]] Place findToRead(int index) const;
    [[nodiscard]] BufferLine& read(int index) const;
    [[nodiscard]] std::unique_ptr<PageLines> readLines(const Page& page) const;
    void readPlainLines(const Page& page, PageLines& lines) const;
    void readAnyLines(const Page& page, const StoredText& stored, PageLines& lines) const;
    [[nodiscard]] static int endedBy(const Page& page, LineEnd end);
    /// Code units of the page's text, breaks included.
    [[nodiscard]] static std::int64_t storedUnitCount(const Page& page);
    void warmUp(Page& page) const;
    void coolDown() const;
    void makeCold(Page& page) const;
    /// Makes the lines in memory the truth, no longer those of the source.
    void detach(Page& page) const;
    /// find(), with pending flag changes carried down to the page's lines.
    [[nodiscard]] Place descend(int index);
    /// Makes the line's page one that may be changed.
    void prepareToEdit(int index);
    void pushDown(Node& node);
    void pushDownPath(Node& node);
    void refresh(const Place& place);
    void refreshUp(Node& node);
    void replace(int index, BufferLine line);
    void swapLine(int index, BufferLine& line) noexcept;
    template <class Edit>
    void editInPlace(Change change, Edit&& edit);
    void takeBackPart(const Change& change) noexcept;
    void setFlagsIn(Node& node, int first, int last, FlagChange change);
    void forgetHint() const { hint_ = nullptr; }
    /// Carries the flag changes down that are pending at the hint or above it.
    void clearHint();
    bool readAgain(const BufferLine& line, TextSource::Place& after, TextSource::Line& read) const;
    [[nodiscard]] bool readsRight(const Page& page) const;
    [[nodiscard]] bool isLoadedBesidePatches(const Page& page) const;

    std::unique_ptr<TextSource> source_;
    std::unique_ptr<NotesAhead> notesAhead_; ///< works on the source
    std::unique_ptr<PatchedText> patched_;
    std::uint64_t patchesMade_ = 0;
    std::unique_ptr<WarmPages> warm_; ///< outlives the pages
    std::unique_ptr<Node> root_;      ///< always a tree, at least one empty page
    Sums total_;
    mutable unsigned changedPages_ = 0;
    mutable Page* hint_ = nullptr;     ///< the page used last
    mutable int hintFirst_ = 0;        ///< and the index of its first line
    mutable bool hintIsClear_ = false; ///< no flag change is pending at it or above
    std::vector<Change> log_;          ///< that can be taken back, in the order in which they were made
};

class LineStore::Pages {
  public:
    Pages();
    Pages(Pages&&) noexcept;
    Pages& operator=(Pages&&) noexcept;
    ~Pages();

    /// Makes whole pages of what is there of a text that goes on behind the end of `source`. The next source
    /// is longer, and may hold the same bytes in another block.
    void makeWhole(const TextSource& source);
    /// Makes pages up to one that ends at or behind the byte `end`, or with the text, all of which is there.
    void make(const TextSource& source, std::size_t end);
    /// Where the next page begins.
    [[nodiscard]] std::size_t end() const { return place_.offset; }

    [[nodiscard]] bool hasMade() const { return !list_.empty(); }
    /// The pages that were made; those made from now on follow them.
    [[nodiscard]] Pages takeMade();
    /// Adds pages that others have made, behind these.
    void append(Pages pages);
    struct Scanned {
        int lines;   ///< from the first on
        bool areAll; ///< of the pages
    };
    /// Writes what is found out of the lines into their flags and states, until a page of which it can't be.
    /// `state`: before the first line; then behind the last that was scanned.
    Scanned scan(const LineScan& scan, const TextSource& source, LineEndState& state);

  private:
    friend class LineStore;
    [[nodiscard]] std::unique_ptr<Page> read(const TextSource& source, TextSource::Place& place) const;

    std::vector<std::unique_ptr<Node>> list_;
    TextSource::Place place_;
    std::size_t needed_ = 0; ///< length of the source with which the next page may be whole
};

} // namespace tavrin
