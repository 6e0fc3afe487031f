#pragma once

#include <cstddef>
#include <functional>

namespace tavrin {

class Buffer;

/// A character that an encoding lacks. Half of a pair stands for itself.
struct LostCharacter {
    int line;
    int col;
    char32_t character;
};
/// Calls `visit` for each character that textFileContents could not write in an encoding, in text order,
/// until that returns false. Lines that are written as the bytes that were loaded lose nothing.
void forEachLostCharacter(const Buffer& buffer, int encoding,
                          const std::function<bool(const LostCharacter&)>& visit);

/// Loaded bytes that were not valid and that a save would replace.
struct LostBytes {
    std::size_t count = 0; ///< places
    std::size_t first = 0; ///< offset in the file; meaningful when count > 0
};
/// Those of lines that were edited, or of all lines when the encoding is not the one that was loaded.
[[nodiscard]] LostBytes findLostBytes(const Buffer& buffer, int encoding);

} // namespace tavrin
