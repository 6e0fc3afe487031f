#include "platform/core/TextPattern.h"

#include "platform/core/CharacterClass.h"
#include "platform/core/TextScan.h"

#include <algorithm>

namespace tavrin {

constexpr std::size_t npos = std::u16string_view::npos;

TextPattern::TextPattern(std::u16string_view what, bool matchCase) : what_(what), matchCase_(matchCase) {
    if (!matchCase_)
        std::ranges::transform(what_, what_.begin(), foldCase);
}

std::size_t TextPattern::first(std::u16string_view text, std::size_t start) const {
    if (start > text.size())
        return npos;
    if (matchCase_)
        return scan::findText(text, what_, start);
    for (std::size_t at = start; at + what_.size() <= text.size(); ++at)
        if (matchesAt(text, at))
            return at;
    return npos;
}

std::size_t TextPattern::last(std::u16string_view text, std::size_t start) const {
    if (what_.size() > text.size())
        return npos;
    for (std::size_t at = std::min(start, text.size() - what_.size()) + 1; at-- > 0;)
        if (matchesAt(text, at))
            return at;
    return npos;
}

bool TextPattern::matchesAt(std::u16string_view text, std::size_t at) const {
    const std::u16string_view there = text.substr(at, what_.size());
    if (matchCase_)
        return there == what_;
    return std::ranges::equal(there, what_, {}, foldCase);
}

} // namespace tavrin
