#pragma once

namespace tavrin {

class LineScan;

/// What a Buffer tells and asks the parser that colours it.
class BufferParser {
  public:
    virtual ~BufferParser() = default;

    /// The lines [line, line + before) are about to be replaced by [line, line + after); the lines below will
    /// move along. Comes before the change, and before the onLineModified calls that belong to it.
    virtual void onLinesReplacing(int line, int before, int after) = 0;
    /// In its place before an edit within one line: `removed` characters from `col` on will go, `inserted`
    /// others come.
    virtual void onTextReplacing(int line, int /*col*/, int /*removed*/, int /*inserted*/) {
        onLinesReplacing(line, 1, 1);
    }
    /// Somebody else writes codes into the line.
    virtual void onCodesWritten(int /*line*/) {}
    /// The text of `line` changed; called for every line that an edit touched, in ascending order. Of an edit
    /// of many lines that keeps their number, only for the first: all that onLinesReplacing named may have
    /// changed.
    virtual void onLineModified(int line) = 0;
    /// Edits were taken back: any line and its flags may be another. Must not need memory.
    virtual void onLinesRestored() noexcept {}
    /// How a load may find out what the parser will want to know of lines that nobody has read; null: it
    /// can't. The object is there as long as the program.
    [[nodiscard]] virtual const LineScan* lineScan() const { return nullptr; }
    /// The flags and states of the first `count` lines hold what lineScan() gives of them. Comes before the
    /// onBufferLoaded that belongs to it.
    virtual void onLinesScanned(int /*count*/) {}
    /// A load has replaced every line.
    virtual void onBufferLoaded() = 0;
    /// Bring the line's format codes up to date; they are about to be read.
    virtual void parseLine(int line) = 0;
    /// The buffer has dropped the codes that parseLine wrote for a line, and nothing has changed since: write
    /// them again, and leave everything else as it is.
    virtual void formatAgain(int line) = 0;
};

} // namespace tavrin
