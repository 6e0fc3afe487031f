#pragma once

#include <string_view>

namespace tavrin {

/// A stretch of one line, and the text without line feeds that takes its place.
struct LineReplacement {
    int line;
    int col;
    int length;
    std::u16string_view text;
};

} // namespace tavrin
