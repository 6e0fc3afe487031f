#pragma once

#include "buffer/BufferParser.h"

#include <string>
#include <vector>

namespace tavrin::test {

/// Colours nothing and keeps what the buffer told it.
class RecordingParser : public BufferParser {
  public:
    void onLinesReplacing(int line, int before, int after) override {
        replaced.push_back({line, before, after});
    }
    void onLineModified(int line) override { modified.push_back(line); }
    void onBufferLoaded() override { ++loads; }
    void parseLine(int line) override { parsed.push_back(line); }
    void formatAgain(int) override {}

    struct Replaced {
        int line, before, after;
        friend bool operator==(const Replaced&, const Replaced&) = default;
    };
    std::vector<Replaced> replaced;
    std::vector<int> modified;
    std::vector<int> parsed;
    int loads = 0;
};

} // namespace tavrin::test
