#pragma once

#include "files/FileReplacement.h"

namespace tavrin {

class Buffer;

/// How a text is to be written.
struct TextFileForm {
    int encoding = 0;     ///< see EncodingCode
    bool hasMark = false; ///< a byte-order mark at the start, where the encoding has one
};

/// The text of a buffer as the bytes of a file: lines that nobody edited as the very bytes that were loaded,
/// valid or not, when the encoding is still theirs; other lines encoded. Every line ends as it ended, and one
/// made by an edit as its neighbour; a last line has a break if it had one.
///
/// What the encoding lacks becomes "?": Buffer::checkEncoding tells of it before. The buffer outlives the
/// source and does not change while the source is read.
[[nodiscard]] ByteSource textFileContents(const Buffer& buffer, const TextFileForm& form);

} // namespace tavrin
