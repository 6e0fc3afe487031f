#pragma once

#include "parsers/TagWalk.h"

#include <string>
#include <utility>
#include <vector>

namespace tavrin {

class Buffer;

/// What a text says around a place: the namespaces that are bound there and the elements beside it. Reads a
/// bounded number of tags and lines, whatever the size of the text; beyond that it only says that there is
/// more.
struct TagSurroundings {
    using Name = std::pair<std::u16string, std::u16string>; ///< namespace name, local name

    /// Prefix (empty: default) and namespace name of each declaration in force, each prefix once, the nearest
    /// first. Where elements lie deeper than 128, those in between declare nothing.
    std::vector<std::pair<std::u16string, std::u16string>> bindings;
    /// The elements with the same parent, in the order of the text; at most 200 each way, those nearest to
    /// the place.
    std::vector<Name> siblingsBefore;
    std::vector<Name> siblingsAfter;
    bool isBeforeComplete = true;
    bool isAfterComplete = true;
};

/// Reads the bindings at a place.
[[nodiscard]] TagSurroundings readBindings(const Buffer& buffer, TextPos at);
/// Reads bindings and siblings. `at` is where a tag is being typed: after its "<".
[[nodiscard]] TagSurroundings readSurroundings(const Buffer& buffer, TextPos at);

} // namespace tavrin
