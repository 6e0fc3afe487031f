#pragma once

#include "buffer/BufferParser.h"
#include "buffer/FormatRuns.h"
#include "buffer/LineScan.h"
#include "buffer/LineStore.h"
#include "parsers/BlockStarts.h"
#include "platform/core/RefObject.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

class Buffer;

/// Bits of a line's flags word that the parser engine owns.
enum ParseFlags : int {
    PF_PARSED = 0x1,      ///< the line is fully parsed
    PF_BLOCKS = 0x2,      ///< the line's block state is current
    PF_FORMATS = 0x4,     ///< the line's format codes are current
    PF_OPEN_AT_END = 0x8, ///< the line ends inside a block that does not close on it
};

/// Finds the blocks of a language (delimited regions that may run over lines: comments, strings, tags)
/// and gives every character a format code, lazily: an edit only marks lines as stale, and a line is parsed
/// when its codes are read. Reading a line first brings the block state of the lines above it up to date.
///
/// The rule that makes this cheap: a line's block state at its end follows from the state at its start
/// and its text alone. So what was computed for the lines below an edit holds again as soon as re-parsing
/// reaches one of them with the state that it was computed from; the rest is then taken over unread.
///
/// A line's codes follow from its text and the state at its start, never from which lines were read before.
///
/// Lines and columns count from 0, -1 means not found. Line arguments lie in the buffer.
class Parser : public RefObject, public BufferParser {
  public:
    /// A kind of block.
    struct Block {
        int id;               ///< a single bit inside openBlockMask
        int format;           ///< format code
        std::u16string start; ///< start delimiter
        std::u16string end;   ///< end delimiter; "\n" closes at the end of the line and is never searched
        char16_t
            continuation; ///< 0, or what a line must begin with for its unterminated block to go on below
        char16_t escape;  ///< 0, or what makes the delimiter after it not count
    };

    void setBuffer(Buffer* buffer) { buffer_ = buffer; }

    /// Brings the line's format codes up to date.
    void parseLine(int line) final;
    void formatAgain(int line) final;
    /// Marks the line and all below it stale: clears PF_PARSED, PF_BLOCKS and PF_FORMATS.
    void onLineModified(int line) override;
    void onLinesReplacing(int line, int before, int after) override;
    void onTextReplacing(int line, int col, int removed, int inserted) override;
    void onCodesWritten(int line) override;
    void onLinesRestored() noexcept override;
    /// The engine forgets what it knew of the lines before; languages add to it.
    void onBufferLoaded() override;
    /// A language that has one fills in PF_OPEN_AT_END, the open block, and the detail.
    [[nodiscard]] const LineScan* lineScan() const override { return nullptr; }
    void onLinesScanned(int count) final;

  protected:
    Parser() = default;
    Parser(const Parser&) = default;
    Parser& operator=(const Parser&) = default;

    /// Colours content (text between blocks). `count` may be 0.
    virtual void formatContentRange(int line, int start, int count) = 0;
    /// Colours the part of `block` that lies on `line`.
    virtual void formatBlockRange(int line, int start, int count, const Block& block) = 0;
    /// The column at which the block's end delimiter begins on `line`, searched from `start`.
    [[nodiscard]] virtual int findBlockEnd(const Block& block, int line, int start) const;
    /// What the next line must know of `open`, the block that goes on into it, beside which it is. `before`
    /// is the same of the line above; 0 when no block goes on from there.
    [[nodiscard]] virtual std::uint8_t openBlockState(const Block& open, int line, std::uint8_t before) const;

    /// The block state at the end of a line.
    using EndState = LineEndState;

    /// Longer lines, which only an edit makes, are coloured block by block.
    static constexpr std::size_t longestAtOnce = 1024;
    struct ColouredLine {
        EndState end;     ///< an open block is one that does not close on the line
        std::size_t runs; ///< so many were written
    };
    /// Colours a whole line at once: what walking over its blocks one by one comes to. Nothing when the
    /// language can't, or not this line; the blocks are then asked for. REQUIRES: room for a run a character.
    [[nodiscard]] virtual std::optional<ColouredLine> colourLine(std::u16string_view text, EndState entry,
                                                                 std::span<FormatRun> room) const;
    /// The same for lines one after the other, until one for which it can't be done; fills `ends` as far and
    /// returns how many there are.
    virtual std::size_t colourLines(LineStore::LinesAhead& lines, EndState entry,
                                    std::span<EndState> ends) const;

    /// True: a block that begins and ends on a line is found and coloured by its own text, whatever else is
    /// on the line.
    [[nodiscard]] virtual bool colourBlocksAlone() const { return false; }

    /// Sets the codes of a part of the line that is being coloured. Quick from left to right.
    void setFormat(int line, int start, int count, int format);
    /// The line's text, known while the line is walked over.
    [[nodiscard]] std::u16string_view textOf(int line) const;

    [[nodiscard]] Buffer& buffer() const { return *buffer_; }
    /// The block open at the end of `line`, or null; -1 stands for the text's start.
    [[nodiscard]] const Block* getEndOpenBlock(int line);
    /// The first block that starts at or after `start`, the one listed first on a tie; null and -1 when there
    /// is none.
    int findFirstBlock(int line, int start, const Block*& block) const;
    /// The first occurrence that does not follow `escape`. A single character that is escaped in the text's
    /// last column counts, when nothing stood before it.
    [[nodiscard]] static int findNotEscapedString(std::u16string_view what, char16_t escape,
                                                  std::u16string_view text, int start);
    /// The first occurrence that stands alone between keyword ends or the ends of the text.
    [[nodiscard]] int findKeyword(std::u16string_view text, int start, std::u16string_view keyword) const;
    [[nodiscard]] bool isPunctuation(char16_t c) const { return punctuation.find(c) != punctuation.npos; }
    [[nodiscard]] bool isWhitespace(char16_t c) const { return whitespace.find(c) != whitespace.npos; }
    [[nodiscard]] bool isKeywordEnd(char16_t c) const { return isWhitespace(c) || isPunctuation(c); }

    // What a language is made of; set by its constructor and not changed afterwards.

    std::u16string whitespace;  ///< ends a keyword
    std::u16string punctuation; ///< ends a keyword
    std::vector<Block> blocks;  ///< in order of priority
    /// A character that every start delimiter contains, so that lines without it are dismissed; '0': none.
    char16_t blockTrigger = u'0';
    int openBlockMask = 0xE0; ///< bits of a line's flags that hold the id of the block open at its end

  private:
    /// Stale lines [first, end) whose stored block state was computed in one go, from `entry` at the start of
    /// `first`, and whose text has not changed since.
    struct KnownLines {
        int first;
        int end;
        EndState entry;
    };

    /// Lines [next, end) whose codes were written ahead; what their flags and details will be.
    struct Ahead {
        int next = 0;
        int end = 0;
        int first = 0;             ///< line of the first entry
        unsigned changedPages = 0; ///< of the buffer at that time
        std::array<EndState, LineStore::pageLines> ends;
    };

    /// So few lines are read one by one, which decodes them: they are likely to be read next.
    static constexpr int fewLines = 64;

    enum class Want { Blocks, Codes, Both };
    /// Walks over the blocks of a line, the states above being current.
    void walk(int line, Want want);
    bool walkAtOnce(int line, Want want);
    struct Walked {
        EndState end;
        int flags;  ///< PF_OPEN_AT_END
        int column; ///< where the walk stopped, or the end of the line
    };
    /// Walks over the blocks from `from` on, where none goes on unless it is 0, until `reach(column)` is true
    /// of one that begins.
    template <class Reach>
    Walked walkBlocks(int line, EndState entry, int from, Want want, Reach&& reach);
    bool walkChange(int line, Want want);
    void setWalked(int line, const Walked& walked, Want want);
    void linesReplacing(int line, int before, int after);
    void walkNext(int line);
    void colourAhead(int line);
    bool takeAhead(int line);
    void setBoth(int line, EndState end);
    void parseBlocks(int line) { walk(line, Want::Blocks); }
    void bringBlocksTo(int line);
    void passKnown(int line);
    bool scanStoredLines(int line);
    void writeRuns(int line);
    [[nodiscard]] EndState endState(int line) const;
    [[nodiscard]] const Block* blockOf(int openBlock) const;
    /// The end of `block` on a line where it goes on from `pos`, or starts there (`startsHere`).
    [[nodiscard]] int endOf(const Block& block, int line, int pos, bool startsHere) const;
    void remember(KnownLines lines);
    void forgetText(int line, int before, int after);
    void forgetOtherLines();

    Buffer* buffer_ = nullptr;
    unsigned generation_ = 0;       ///< of the buffer that the following is about
    int current_ = 0;               ///< the block state of the lines [0, current_) is current
    int flagged_ = 0;               ///< lines from here on have none of the low three flags set
    std::vector<KnownLines> known_; ///< ascending, disjoint, from current_ on
    Ahead ahead_;
    int lastNext_ = -1;           ///< the line that walkNext was called for last
    int inTurn_ = 0;              ///< and of how many lines above, one after the other
    std::vector<FormatRun> runs_; ///< of the line that is being coloured, while collecting_
    bool collecting_ = false;
    bool collectingPart_ = false; ///< runs_ are those of a part of the line
    bool isOutOfOrder_ = false;   ///< a part could not be collected
    BlockStarts longLine_;        ///< of the long line that was coloured last
    EndState longLineEntry_;      ///< at its start then
    EndState longLineEnd_;        ///< and at its end
    int walkedLine_ = -1;         ///< whose text is walkedText_; -1 for none
    std::u16string_view walkedText_;
    mutable std::optional<bool> startsWithTrigger_; ///< every start delimiter does, none has an escape
};

} // namespace tavrin
