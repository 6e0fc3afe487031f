#pragma once

#include "buffer/BufferParser.h"
#include "platform/core/RefObject.h"

#include <cstdint>
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
/// and gives every character a format code, lazily: edits only mark lines as stale, and a line is parsed when its codes are
/// read.
///
/// The rule that makes this cheap: a line's block state at its end follows from the state at its start
/// and its text alone. So what is known of the lines below an edit still holds as soon as re-parsing
/// reaches one of them with the state that it was computed from.
class Parser : public RefObject, public BufferParser {
  public:
    /// A kind of block.
    struct Block {
        int id;                ///< a single bit inside openBlockMask
        int format;            ///< format code
        std::u16string start;  ///< start delimiter
        std::u16string end;    ///< end delimiter; "\n" closes at the end of the line and is never searched
        char16_t continuation; ///< 0, or what the line must begin with for the unterminated block to go on below
        char16_t escape;       ///< 0, or what makes the delimiter after it not count
    };

    Parser() = default;
    Parser(const Parser&) = default;
    Parser& operator=(const Parser&) = default;

    void setBuffer(Buffer* buffer) { buffer_ = buffer; }

    /// Brings the line's format codes up to date, and the block state of the lines above it.
    void parseLine(int line) final;
    /// Marks the line and all below it stale.
    void onLineModified(int line) override;
    void onLinesReplaced(int line, int before, int after) override;
    void onBufferLoaded() override;

  protected:
    /// Colours content (text between blocks); `count` may be 0.
    virtual void formatContentRange(int line, int start, int count) = 0;
    /// Colours the part of a block that lies on `line`. `count` may be 0.
    virtual void formatBlockRange(int line, int start, int count, const Block& block) = 0;
    /// The column at which the block's end delimiter begins, searched from `start`, or -1.
    [[nodiscard]] virtual int findBlockEnd(const Block& block, int line, int start) const;
};

} // namespace tavrin
