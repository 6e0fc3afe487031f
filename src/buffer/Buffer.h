#pragma once

#include "buffer/BufferLine.h"
#include "buffer/LineReplacement.h"
#include "buffer/LineStore.h"
#include "buffer/LoadedText.h"
#include "buffer/OriginalBytes.h"
#include "buffer/TextForm.h"
#include "platform/core/ByteBuffer.h"
#include "platform/core/Encoding.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tavrin {

class BufferParser;

/// Options of Buffer::find, combined with |. Without FIND_DOWN the search goes up.
enum FindFlags : int {
    FIND_DOWN = 1,
    FIND_UP = 2,
    FIND_WRAP = 4,
    FIND_MATCH_CASE = 8,
    FIND_WHOLE_WORD = 0x10,
};

/// The text of one editor: an ordered list of lines, each with its characters, a format code for each
/// character and a word of flags, and the encoding in which the text is saved.
///
/// Positions are (line, column), counted from 0; a column counts UTF-16 code units. Ranges are half open.
/// Positions are preconditions: 0 <= line < getLineCount(), 0 <= column <= getLineLength(line). A buffer may
/// hold no lines; the first insertion then makes one.
///
/// A parser is attached before the first edit or load; the buffer tells it which lines change and asks it to
/// bring a line's codes up to date before they are read. Finding, inserting and removing a line cost O(log
/// n).
class Buffer {
  public:
    /// Views of line texts stay valid until the buffer changes, or until this many other lines have been
    /// read.
    static constexpr int stableLineTexts = LineStore::warmLines;
    /// Longer lines of a loaded text are cut into buffer lines of this many code units.
    static constexpr int maxLoadedLineLength = TextSource::maxLineLength;
    /// Columns of a tab, wherever it stands.
    static constexpr int tabColumns = BufferLine::tabWidth;

    Buffer() = default;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    virtual ~Buffer() = default;

    /// The caller keeps the parser alive.
    void setParser(BufferParser* parser) { parser_ = parser; }
    [[nodiscard]] BufferParser* getParser() const { return parser_; }
    /// Discards every line; the parser is not told.
    void reset();
    /// Grows whenever every line was discarded: by reset and by every load. What was remembered of lines is
    /// void then.
    [[nodiscard]] unsigned getGeneration() const { return generation_; }

    /// Grows with every change of the text that is no load.
    [[nodiscard]] unsigned getChanges() const { return changes_; }
    /// So many of the line's first columns are surely as they were when getChanges() gave `since`.
    [[nodiscard]] int getUnchangedColumns(int line, unsigned since) const;

    // Reading

    [[nodiscard]] int getLineCount() const { return lines_.lineCount(); }
    [[nodiscard]] std::u16string_view getLineText(int line) const;
    [[nodiscard]] int getLineLength(int line) const;
    /// Code units of the text in its saved form: the lines, and two for every line break.
    [[nodiscard]] std::int64_t getLength() const { return lines_.savedLength(); }
    /// Code units of the text before a line, a line break counting as one: the length of what getText joins.
    /// O(log n).
    [[nodiscard]] std::int64_t getOffset(int line) const { return lines_.offset(line); }
    /// The line in which the code unit at `offset` lies, the nearest one for any other number. O(log n).
    /// REQUIRES: the buffer has a line.
    [[nodiscard]] int getLineAtOffset(std::int64_t offset) const { return lines_.lineAtOffset(offset); }
    /// True when this line and the one before it were one line of the loaded text.
    [[nodiscard]] bool getContinuesPrevious(int line) const;
    /// Appends the text between two positions, given in any order, to `out`; lines are joined by a line feed.
    void getText(int line1, int col1, int line2, int col2, std::u16string& out) const;
    /// The largest visual width of any line. O(1) amortised.
    [[nodiscard]] int getColumnCount() const { return lines_.columns(); }
    /// Visual width of the line's first `col` characters.
    [[nodiscard]] int getLineColEffChars(int line, int col) const;
    /// The column nearest to a visual column: the first character that ends beyond `visualCol`, or the one
    /// after it when it ends exactly one column beyond; the line's length when there is none.
    [[nodiscard]] int getLineColLogicChars(int line, int visualCol) const;

    // Editing. Each operation is done as a whole, or it throws std::bad_alloc and nothing has changed

    /// Makes one edit of all edits while it lives: unless it is committed before it goes, they are taken
    /// back, which needs no memory. Transactions nest; an inner one that is committed is still taken back
    /// with the outer. REQUIRES: no load and no reset meanwhile.
    class Transaction {
      public:
        explicit Transaction(Buffer& buffer);
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        ~Transaction();
        void commit() { isCommitted_ = true; }

      private:
        Buffer& buffer_;
        std::size_t before_;
        unsigned changes_;
        TextForm form_;
        bool isCommitted_ = false;
    };

    /// Inserts one code unit before a column. A line feed is stored like any other character.
    void insert(int line, int col, char16_t ch);
    /// Inserts text; line feeds divide it into lines, carriage returns are characters. Reports the position
    /// just after the inserted text.
    void insertText(int line, int col, std::u16string_view text, int& endLine, int& endCol);
    /// The part of the line from the column on becomes a new line below it.
    void splitLine(int line, int col);
    /// Removes the text between two positions, given in any order, and joins what remains. A removal that
    /// would start before a line or run past its end leaves that line as it is.
    void erase(int line1, int col1, int line2, int col2);

    /// Makes many replacements at once: each line is written once, however many of them lie in it, and the
    /// parser is told of the whole range [first line, last line] as one. Format codes of the lines become 0.
    /// What would lie behind the end of its line counts up to there only; below the last line nothing is
    /// done. REQUIRES: in ascending order, none overlaps another; positions are those before the first
    /// replacement.
    void replaceInLines(std::span<const LineReplacement> replacements);

    // Formats and flags

    /// Sets the format code of `count` characters; the parser is not asked.
    void formatRange(int line, int col, int count, int format);
    /// Replaces the codes of a line, as the parser that brings it up to date; characters behind the last run
    /// get 0. REQUIRES: ascending ends within the line, neighbours of different codes.
    void setLineFormats(int line, std::span<const FormatRun> runs);
    /// The same for the characters [from, to) of a line whose others keep their codes. False, and nothing is
    /// changed, when the line has no codes.
    bool setLineFormats(int line, int from, int to, std::span<const FormatRun> runs);
    /// setLineFormats for lines that are likely to be read next; see LineStore::setFormatsAhead.
    int setLineFormatsAhead(int first, int last, const LineStore::Colouring& colour) {
        return lines_.setFormatsAhead(first, last, colour);
    }
    /// What was written ahead holds while this stays the same and the text is not changed.
    [[nodiscard]] unsigned getChangedPages() const { return lines_.changedPages(); }
    /// The format code of a character, brought up to date first. REQUIRES: col < length of the line.
    [[nodiscard]] int getCharFormat(int line, int col);
    /// All codes of the line as runs, brought up to date first. Empty: every code is 0. The last run ends at
    /// the line's length or beyond. Valid until the line's codes change or formatRange is called, and no
    /// longer than a view of its text.
    [[nodiscard]] std::span<const FormatRun> getLineFormats(int line);
    /// flags = (flags without the bits of mask) | value.
    void setLineFlags(int line, int value, int mask);
    [[nodiscard]] int getLineFlags(int line) const;
    /// setLineFlags for every line of [first, last), at the cost of one.
    void setLineFlags(int first, int last, int value, int mask);
    /// setLineFlags and setLineState at once.
    void setLineParse(int line, int value, int mask, std::uint8_t state);
    /// setLineFlags with a value for each line from `first` on, and their states. REQUIRES: getStoredLines
    /// gave them.
    void setLineFlags(int first, std::span<const std::uint8_t> values, int mask,
                      std::span<const std::uint8_t> states);
    /// The lines around `line` that the buffer keeps together, as bytes; see LineStore::storedLines.
    [[nodiscard]] std::optional<LineStore::StoredLines> getStoredLines(int line) const {
        return lines_.storedLines(line);
    }
    /// The same for a text loaded from UTF-16, as code units; see LineStore::storedUnits.
    [[nodiscard]] std::optional<LineStore::StoredUnits> getStoredUnits(int line) const {
        return lines_.storedUnits(line);
    }
    /// One byte a line in which the parser keeps what the next line must know beside the flags.
    void setLineState(int line, std::uint8_t state);
    [[nodiscard]] std::uint8_t getLineState(int line) const;

    // Notes of a reader on stretches of lines, so that a question about a large text need not read it again

    [[nodiscard]] LineChunk chunkAt(int line) const { return lines_.chunkAt(line); }
    /// See LineStore::chunkHeightEndingWith.
    [[nodiscard]] int getChunkHeightEndingWith(int line) const { return lines_.chunkHeightEndingWith(line); }
    [[nodiscard]] LineChunk getChunkEndingWith(int line, int height) const {
        return lines_.chunkEndingWith(line, height);
    }
    /// Null when there is none, or when the text of the chunk has changed since it was made.
    [[nodiscard]] ChunkNote* getChunkNote(const LineChunk& chunk) const { return lines_.chunkNote(chunk); }
    void setChunkNote(const LineChunk& chunk, std::unique_ptr<ChunkNote> note) const {
        lines_.setChunkNote(chunk, std::move(note));
    }

    // Loading and saving

    /// Replaces all lines; the encoding stays, unless the parser finds a declaration.
    void loadText(const char16_t* text, std::size_t length);
    /// Replaces all lines by the bytes of an XML text, which the call converts, and sets the encoding to
    /// theirs. The buffer keeps a reference to the bytes.
    void loadFromByteBuffer(ByteBuffer* bytes, DecodeReport* report = nullptr);
    /// The same result without converting: lines are decoded when they are read, and those that nobody edits
    /// keep their bytes. Nobody may change the bytes any more.
    void loadBytes(SmartPtr<ByteBuffer> bytes, DecodeReport* report = nullptr);
    /// Replaces all lines by a text that was made ready before, by any thread, and sets the encoding to its.
    /// Costs what it takes to discard the lines that were there.
    void adopt(LoadedText text);
    /// False, and nothing is changed, when the file can't be opened.
    bool loadFile(const char16_t* path, DecodeReport* report = nullptr);
    /// Exchanges the text, with its encoding and what is known of its loading, with another buffer's. For
    /// both it is as if all lines had been loaded anew: flags are zero, the parser may find a declaration.
    /// Costs no more for a large text.
    void exchangeText(Buffer& other);
    /// The text as UTF-16 with CR LF between lines and a terminating zero.
    [[nodiscard]] SmartPtr<ByteBuffer> getString() const;
    /// Writes the text in the document's encoding, CR LF between lines. False when the file can't be opened;
    /// write errors are not detected.
    bool saveToFile(const char16_t* path) const;
    /// The bytes that saveToFile writes, piece by piece, to whoever stores them: `sink(bytes)` returns false
    /// to stop.
    bool writeBytes(const std::function<bool(std::string_view bytes)>& sink) const;

    // The text as it was loaded

    /// The break that ends a line: the form's, if that has one for all lines; else the one that was loaded;
    /// of a line made by an edit, that of its neighbour. None when the next line continues this one, and for
    /// a last line that no break ends.
    [[nodiscard]] LineEnd getLineEnd(int line) const;
    /// Lines by their own ends, whatever the form says, indexed by LineEnd.
    [[nodiscard]] const LineStore::LineEndCounts& getLineEndCounts() const { return lines_.lineEnds(); }
    /// What ends a line that has no neighbour: the break that ended most lines when the text was loaded, CR
    /// LF when none did.
    [[nodiscard]] LineEnd getUsualLineEnd() const { return usualLineEnd_; }
    void setUsualLineEnd(LineEnd end) { usualLineEnd_ = end; }
    /// What stands behind the last line; does nothing without lines.
    void setLastLineEnd(LineEnd end);

    /// What ends the lines of the text in a file: nothing when their ends differ.
    [[nodiscard]] std::optional<LineEnd> getCommonLineEnd() const;

    /// Lines [first, end) and their bytes, with the ends that they were loaded with.
    struct LoadedLines {
        int first;
        int end;
        std::span<const std::uint8_t> bytes;
        std::size_t offset = 0;     ///< of the bytes, counted from behind the byte-order mark
        bool endsWithBreak = false; ///< the bytes do
    };
    /// The longest run of lines from `line` on that nobody edited, that stand one after the other in the
    /// loaded bytes, and that those bytes alone decode to. Empty when the line was edited, or when it has no
    /// such bytes: in a text that was not loaded from bytes, or where an encoding with shift states has
    /// changed state between lines.
    [[nodiscard]] LoadedLines getLoadedLines(int line) const;
    /// Reads the lines of such a run: `visit(line, bytes without the end)`, which returns false to stop.
    /// Where the bytes of a single line are not known there are none.
    using LoadedLineVisitor = std::function<bool(int line, std::optional<std::span<const std::uint8_t>>)>;
    bool forEachLoadedLine(const LoadedLines& lines, const LoadedLineVisitor& visit) const;
    /// The form in which the text was loaded, UTF-16 and UTF-32 with the codes of their layouts. Encoding 0:
    /// it was not loaded from bytes.
    [[nodiscard]] const TextForm& getLoadedForm() const { return origin_.form; }
    [[nodiscard]] int getLoadedEncoding() const { return origin_.form.encoding; }
    /// What was met in those bytes.
    [[nodiscard]] const DecodeReport& getLoadReport() const { return origin_.report; }
    /// The bytes of one line without its end; nothing when it was edited or they are not known.
    [[nodiscard]] std::optional<std::span<const std::uint8_t>> getLoadedBytes(int line) const;
    /// All bytes behind the byte-order mark that were loaded.
    [[nodiscard]] std::span<const std::uint8_t> getAllLoadedBytes() const;
    /// The file as it was loaded, byte-order mark included, never to be changed. Null: the text was not
    /// loaded from bytes.
    [[nodiscard]] SmartPtr<ByteBuffer> getLoadedFile() const;
    /// The bytes begin with a second byte-order mark, which no line shows.
    [[nodiscard]] bool hasSecondMark() const;

    [[nodiscard]] int getEncoding() const { return form_.encoding; }
    /// With another encoding a text has the byte-order mark that is usual there.
    void setEncoding(int encoding) { form_ = form_.in(encoding); }
    /// How the text is written to a file. A load sets mark and line ends to those that were loaded.
    [[nodiscard]] const TextForm& getForm() const { return form_; }
    void setForm(const TextForm& form) { form_ = form; }
    /// "utf-8", "utf-16", "iso-8859-1" or "iso-8859-2"; empty for any other encoding.
    [[nodiscard]] std::u16string getEncodingString() const;

    // Search

    /// Looks for `what` inside single lines, from a position. On success writes the position of the match and
    /// returns true; otherwise leaves them unchanged.
    ///
    /// Down: the first match at or after (line, col). Up: the last match that ends at or before it. With
    /// FIND_WRAP the search goes on from the other end up to and including the whole starting line. A match
    /// that FIND_WHOLE_WORD rejects ends the search of its line. Empty text is never found.
    bool find(int line, int col, std::u16string_view what, int flags, int& foundLine, int& foundCol) const;

    /// The first place, searched as FIND_DOWN or FIND_UP do, within the lines [firstLine, lastLine].
    bool findInLines(int line, int col, std::u16string_view what, int flags, int firstLine, int lastLine,
                     int& foundLine, int& foundCol) const;

    /// Throws std::logic_error when the structure contradicts itself. O(n); for tests and debug builds.
    void checkInvariants() const;

  protected:
    /// Replaces all lines by those of UTF-16 text, which the buffer keeps.
    void loadTextLines(SmartPtr<ByteBuffer> text);
    /// The text as UTF-16 little-endian with CR LF between lines.
    [[nodiscard]] SmartPtr<ByteBuffer> getBytes(bool withMark, bool withZero) const;

  private:
    class Parsing;

    /// What lines were loaded from, beside the source of their store.
    struct Origin {
        TextForm form{0}; ///< encoding 0: not from bytes that are kept
        DecodeReport report;
        std::unique_ptr<OriginalBytes>
            original; ///< what was converted to the source; null: the source itself
    };

    /// Puts other lines in the place of all and tells the parser, or throws and nothing has changed.
    void replaceLines(LineStore& lines, const TextForm& form, Origin origin, int scanned = 0);
    void swapText(Buffer& other) noexcept;
    [[nodiscard]] std::optional<std::span<const std::uint8_t>>
    bytesOfLine(const TextSource::Line& line) const;
    void ensureLine();
    /// The break that a new line beside this one gets.
    [[nodiscard]] LineEnd neighbourEnd(int line) const;
    /// The line after the parser has brought its codes up to date.
    [[nodiscard]] BufferLine& parsedLine(int line);
    /// The line, whose codes are about to be written.
    [[nodiscard]] BufferLine& lineToFormat(int line);
    void writeFormatsAgain(int line);
    void notifyModified(int first, int last);
    /// Line -1: what is known of no line holds.
    void noteChange(int line, int col);
    void appendSaved(int line, std::u16string& out) const;
    static void appendStored(const LineStore::StoredLines& lines, std::string& out);
    /// The text as it is saved, in pieces of bounded size; sink(piece) returns false to stop.
    bool forEachPiece(const std::function<bool(std::u16string_view)>& sink) const;

    LineStore lines_;
    BufferParser* parser_ = nullptr;
    TextForm form_;
    unsigned generation_ = 0;
    struct NotedChange {
        int line;
        int col;
    };
    unsigned changes_ = 0;
    std::array<NotedChange, 16> notedChanges_; ///< the last ones, by their numbers
    LineEnd usualLineEnd_ = LineEnd::CrLf;
    Origin origin_;
    int transactions_ = 0;        ///< that are open
    Buffer* exchanged_ = nullptr; ///< with which the texts were exchanged in the outermost of them
    bool parsing_ = false;        ///< the parser is bringing codes up to date
};

} // namespace tavrin
