#pragma once

#include "buffer/TextSource.h"
#include "platform/core/Encoding.h"

namespace tavrin {

/// How a text is written to a file, apart from its characters.
struct TextForm {
    int encoding = ENCODING_UTF8;     ///< see EncodingCode
    bool hasMark = false;             ///< a byte-order mark at the start, where the encoding has one
    LineEnd lineEnds = LineEnd::None; ///< what ends all lines; None: each line has its own end
    friend bool operator==(const TextForm&, const TextForm&) = default;

    /// Bytes of the byte-order mark; 0 without one.
    [[nodiscard]] std::size_t markSize() const {
        if (!hasMark || !mayBeginWithMark(encoding))
            return 0;
        return encoding == ENCODING_UTF8 ? 3 : breakSize(encoding);
    }
    /// The same in another encoding, with the mark that is usual there.
    [[nodiscard]] TextForm in(int other) const {
        return other == encoding ? *this : TextForm{other, isWideEncoding(other), lineEnds};
    }
};

} // namespace tavrin
