#pragma once

#include "files/FileReplacement.h"

namespace tavrin {

class Buffer;

/// The text of a buffer as the bytes of a file, in the buffer's form: lines that nobody edited as the very
/// bytes that were loaded, valid or not, when the encoding is still theirs; other lines encoded. Where the
/// form has no line end for all, every line ends as it ended, and one made by an edit as its neighbour; a
/// last line has a break if it had one.
///
/// What the encoding lacks becomes "?": forEachLostCharacter and findLostBytes tell of it before. The buffer
/// outlives the source and does not change while the source is read.
[[nodiscard]] ByteSource textFileContents(const Buffer& buffer);

} // namespace tavrin
