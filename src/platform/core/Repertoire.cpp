#include "platform/core/Encoding.h"
#include "platform/core/EncodingTable.h"
#include "platform/core/Utf8.h"

#include <unicode/uset.h>

#include <algorithm>

namespace tavrin {

namespace {

struct CloseSet {
    void operator()(USet* set) const noexcept { uset_close(set); }
};

} // namespace

struct Repertoire::Set {
    std::unique_ptr<USet, CloseSet> characters{uset_openEmpty()};
};

Repertoire::Repertoire(int encoding)
    : losesSurrogates_(encoding != ENCODING_UTF16 && encoding != ENCODING_UTF16_BE) {
    if (encoding == ENCODING_LATIN1) {
        highest_ = 0xFF;
        return;
    }
    const Converter converter = openConverter(encoding);
    if (!converter)
        return;
    set_ = std::make_unique<Set>();
    USet* const set = set_->characters.get();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_getUnicodeSet(converter.get(), set, UCNV_ROUNDTRIP_SET, &status);
    uset_freeze(set);
    hasAscii_ = uset_containsRange(set, 0, 0x7F) != 0;
}

Repertoire::~Repertoire() = default;

std::size_t Repertoire::findLost(std::u16string_view text, std::size_t from) const {
    if (set_) {
        constexpr std::size_t most = std::size_t{1} << 30; // ICU counts in 32 bits
        while (from < text.size()) {
            const std::size_t room = std::min(most, text.size() - from);
            const auto span = static_cast<std::size_t>(uset_span(
                set_->characters.get(), &text[from], static_cast<std::int32_t>(room), USET_SPAN_CONTAINED));
            from += span;
            if (span < room)
                return from;
        }
        return std::u16string_view::npos;
    }
    if (highest_ == 0x10FFFF && !losesSurrogates_)
        return std::u16string_view::npos;
    for (; from < text.size(); ++from) {
        if (highest_ < 0x10FFFF ? text[from] <= highest_ : !isSurrogate(text[from]))
            continue;
        const bool isPair =
            isHighSurrogate(text[from]) && from + 1 < text.size() && isLowSurrogate(text[from + 1]);
        if (highest_ < 0x10FFFF || !isPair)
            return from;
        ++from;
    }
    return std::u16string_view::npos;
}

} // namespace tavrin
