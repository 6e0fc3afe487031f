#include "parsers/XmlPlaces.h"

#include "parsers/FormatCode.h"

#include <limits>

namespace tavrin {

namespace {

constexpr TextPos endOfText{std::numeric_limits<int>::max(), 0};
/// Places further apart than this are not walked from one to the next.
constexpr int longWalk = 64;

} // namespace

/// The delimiter there is one: no part of a comment or a section.
bool XmlPlaces::isMarkup(TextPos place) const {
    const int format = buffer_.getCharFormat(place.line, place.col);
    return format != FORMAT_COMMENT && format != FORMAT_CDATA;
}

TextPos XmlPlaces::find(std::u16string_view what, TextPos from) const {
    TextPos found;
    return buffer_.findInLines(from.line, from.col, what, FIND_DOWN | FIND_MATCH_CASE, 0,
                               buffer_.getLineCount() - 1, found.line, found.col)
               ? found
               : endOfText;
}

XmlPlaces::Stretch XmlPlaces::nextInstruction(TextPos from) const {
    TextPos begin = find(u"<?", from);
    while (begin != endOfText && !isMarkup(begin))
        begin = find(u"<?", {begin.line, begin.col + 1});
    return {begin, begin == endOfText ? endOfText : find(u"?>", begin)};
}

/// Up to the first ">" outside quotes and the internal subset. That ends at a "]" with a ">" behind it.
XmlPlaces::Stretch XmlPlaces::findDocumentType() const {
    const TextPos begin = find(u"<!DOCTYPE", {});
    if (begin == endOfText || !isMarkup(begin))
        return {endOfText, endOfText};
    bool inSubset = false;
    bool endsSubset = false;
    char16_t quote = 0;
    for (TextPos at = begin; at.line < buffer_.getLineCount(); at = {at.line + 1, 0}) {
        const std::u16string text(buffer_.getLineText(at.line));
        for (; at.col < static_cast<int>(text.size()); ++at.col) {
            const char16_t c = text[static_cast<std::size_t>(at.col)];
            const bool isBlank = c == u' ' || c == u'\t';
            if (quote)
                quote = c == quote ? u'\0' : quote;
            else if (!inSubset && (c == u'"' || c == u'\''))
                quote = c;
            else if (c == u'>' && (!inSubset || endsSubset))
                return {begin, at};
            else if (!inSubset)
                inSubset = c == u'[';
            else if (!isBlank)
                endsSubset = c == u']' && isMarkup(at);
        }
    }
    return {begin, endOfText};
}

XmlPlace XmlPlaces::at(int line, int col) {
    const TextPos place{line, col};
    switch (buffer_.getCharFormat(line, col)) {
    case FORMAT_COMMENT:
        return XmlPlace::Comment;
    case FORMAT_CDATA:
        return XmlPlace::Section;
    default:
        break;
    }
    if (!instruction_)
        instruction_ = nextInstruction({});
    while (instruction_->end <= place)
        instruction_ = nextInstruction(instruction_->end);
    if (instruction_->contains(place))
        return XmlPlace::Instruction;
    if (!documentType_)
        documentType_ = findDocumentType();
    if (documentType_->contains(place))
        return XmlPlace::Declaration;
    moveTo(place);
    return quote_ && tag_ == XmlPlace::Name ? XmlPlace::AttributeValue : tag_;
}

/// Walks over tags and quotes up to the place, from the last one or from the nearest "<".
void XmlPlaces::moveTo(TextPos place) {
    if (place.line - at_.line > longWalk) {
        at_ = walk_.findBefore(TagMark::Less, place).value_or(TextPos{});
        tag_ = XmlPlace::Text;
        quote_ = 0;
    }
    for (; at_.line <= place.line; at_ = {at_.line + 1, 0}) {
        const std::u16string text(buffer_.getLineText(at_.line));
        const auto end = at_.line == place.line ? static_cast<std::size_t>(place.col) : text.size();
        for (auto i = static_cast<std::size_t>(at_.col); i < end; ++i) {
            const char16_t c = text[i];
            if (c == u'<' && isMarkup({at_.line, static_cast<int>(i)})) {
                const char16_t next = i + 1 < text.size() ? text[i + 1] : u'\0';
                tag_ = next == u'!' || next == u'?' ? XmlPlace::Declaration : XmlPlace::Name;
                quote_ = 0;
            } else if (tag_ == XmlPlace::Text) {
                continue;
            } else if (quote_) {
                quote_ = c == quote_ ? u'\0' : quote_;
            } else if (c == u'"' || c == u'\'') {
                quote_ = c;
            } else if (c == u'>') {
                tag_ = XmlPlace::Text;
            }
        }
        if (at_.line == place.line)
            break;
    }
    at_ = place;
}

} // namespace tavrin
