#pragma once

#include <cstddef>
#include <string_view>

namespace tavrin::qt {

/// How a stretch of text is measured and drawn.
enum class SegmentKind {
    Ascii,  ///< U+0020 to U+007E: one cell each, from a table
    Marker, ///< one code unit that shows nothing by itself: gets a sign of its own
    Shaped, ///< everything else: shaped as a whole
};

struct Segment {
    SegmentKind kind;
    std::size_t length; ///< code units
};

/// The segment at the start of a text that is not empty. Cutting a run at these places changes nothing that
/// shaping it whole, on a line that reads from left to right, would show:
/// - a base character stays with the marks that follow it, the parts of an emoji sequence stay together;
/// - a stretch of right-to-left text, with all that stands inside it and the digits that follow it, is one
/// segment;
/// - long stretches are cut where neighbours do not join.
/// Controls, lone surrogates and invisible characters (among them the bidirectional controls, which so can't
/// disguise what the text says) are markers.
[[nodiscard]] Segment firstSegment(std::u16string_view text);

} // namespace tavrin::qt
