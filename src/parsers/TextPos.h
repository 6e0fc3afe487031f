#pragma once

#include <compare>

namespace tavrin {

/// A place in the text; earlier places compare less.
struct TextPos {
    int line = 0;
    int col = 0;
    friend auto operator<=>(const TextPos&, const TextPos&) = default;
};

} // namespace tavrin
