#pragma once

#include "buffer/Buffer.h"
#include "buffer/BufferParser.h"

namespace tavrin {

/// A text that nobody looks at: it has no colours.
class UnparsedBuffer final : public Buffer, private BufferParser {
  public:
    UnparsedBuffer() { setParser(this); }

  private:
    void onLinesReplacing(int, int, int) override {}
    void onLineModified(int) override {}
    void onBufferLoaded() override {}
    void parseLine(int) override {}
    void formatAgain(int) override {}
};

} // namespace tavrin
