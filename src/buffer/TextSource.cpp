#include "buffer/TextSource.h"

#include "buffer/PlainLines.h"
#include "platform/core/CodeUnitRuns.h"
#include "platform/core/TextScan.h"
#include "platform/core/Utf8.h"

#include <algorithm>

namespace tavrin {

namespace {

constexpr std::size_t unitSize = sizeof(char16_t);
constexpr std::size_t limit = TextSource::maxLineLength;
constexpr std::size_t markBytes = 3; ///< of U+FEFF in UTF-8
constexpr std::size_t pairBytes = 4; ///< of a character of two code units in UTF-8
constexpr std::size_t fewUnits = 16; ///< that are read one by one

bool isTrailingByte(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

} // namespace

TextSource::TextSource(SmartPtr<ByteBuffer> bytes, std::size_t begin, std::size_t end, Form form,
                       bool isValid)
    : block_(std::move(bytes)), text_(block_->data() + begin, end - begin), form_(form), isValid_(isValid) {}

TextSource::TextSource(SmartPtr<ByteBuffer> bytes, std::size_t skip, Form form, bool isValid)
    : TextSource(bytes, skip, bytes->size(), form, isValid) {}

TextSource TextSource::in(SmartPtr<ByteBuffer> block) const {
    const auto begin = static_cast<std::size_t>(text_.data() - block_->data());
    return {std::move(block), begin, begin + size(), form_, isValid_};
}

bool TextSource::next(Place& place, Line& line) const {
    if (place.offset >= size())
        return false;
    if (form_ == Form::Utf16)
        return nextInUnits(place, line);
    const bool special = place.insidePair || place.afterReturn || (place.offset == 0 && hasMarkAt(0));
    return special ? walkUtf8(place, line) : nextInBytes(place, line);
}

TextSource::Place TextSource::placeAt(std::size_t offset, bool insidePair) const {
    const bool afterReturn =
        hasMarkAt(offset) &&
        (form_ == Form::Utf16 ? offset >= unitSize && units()[offset / unitSize - 1] == u'\r'
                              : offset > 0 && text_[offset - 1] == '\r');
    return {offset, false, afterReturn, insidePair};
}

void TextSource::Totals::add(const Line& line) {
    ++lines;
    continued += line.continues ? 1 : 0;
    length += line.units;
    columns = std::max(columns, line.units + line.tabs * (tabWidth - 1));
    ++ends[static_cast<std::size_t>(line.lineEnd)];
    lastLength = line.units;
}

TextSource::Totals TextSource::skip(Place& place, int count) const {
    Totals totals;
    Line line;
    while (totals.lines < count) {
        if (form_ != Form::Utf16 && !place.continues && !place.afterReturn && place.offset > 0) {
            const auto units = form_ == Form::Latin1 ? PlainLines::Units::Bytes
                               : isValid_            ? PlainLines::Units::Utf8
                                                     : PlainLines::Units::Ascii;
            PlainLines({reinterpret_cast<const char*>(text_.data()), size()}, units)
                .skip(place.offset, count, totals);
            if (totals.lines == count)
                break;
        }
        totals.hasOddBreak |= place.afterReturn;
        if (!next(place, line))
            break;
        totals.add(line);
    }
    return totals;
}

bool TextSource::hasMarkAt(std::size_t offset) const {
    if (form_ == Form::Utf16)
        return offset < size() && units()[offset / unitSize] == u'\uFEFF';
    return form_ == Form::Utf8 && offset + markBytes <= size() && text_[offset] == 0xEF &&
           text_[offset + 1] == 0xBB && text_[offset + 2] == 0xBF;
}

TextSource::Line TextSource::lineWithin(std::size_t begin, std::size_t after) const {
    Line line{.begin = begin, .end = after};
    const auto endsIn = [&](char16_t unit) {
        return line.end > begin && unitAt(line.end - unitBytes()) == unit;
    };
    if (endsIn(u'\n')) {
        line.end -= unitBytes();
        line.lineEnd = LineEnd::Lf;
    }
    if (endsIn(u'\r')) {
        line.end -= unitBytes();
        line.lineEnd = line.lineEnd == LineEnd::Lf ? LineEnd::CrLf : LineEnd::Cr;
    }
    const auto text = bytes(line.begin, line.end);
    if (form_ == Form::Utf16) {
        const auto text16 = units().substr(line.begin / unitSize, text.size() / unitSize);
        line.units = static_cast<int>(text16.size());
        line.tabs = static_cast<int>(scan::countUnit(text16, u'\t'));
        return line;
    }
    const scan::ByteLineScan found =
        scan::scanByteLine({reinterpret_cast<const char*>(text.data()), text.size()});
    const bool isUnitAByte = found.ascii || form_ == Form::Latin1;
    line.units = static_cast<int>(isUnitAByte ? text.size() : utf16Length(text, isValid_));
    line.tabs = static_cast<int>(found.tabs);
    return line;
}

std::size_t TextSource::behindPlainLine(std::size_t offset, int units, LineEnd lineEnd) const {
    if (units >= maxLineLength || hasMarkAt(offset))
        return 0;
    // No code unit takes less than a unit of the form: a break here is the line's.
    const std::size_t end = offset + static_cast<std::size_t>(units) * unitBytes();
    Place place;
    Line line;
    if (end >= size() || (unitAt(end) != '\r' && unitAt(end) != '\n'))
        return 0;
    return finish(place, line, end, end) && line.lineEnd == lineEnd ? place.offset : 0;
}

/// Lines whose bytes alone tell what they are: nearly all.
bool TextSource::nextInBytes(Place& place, Line& line) const {
    const std::size_t begin = place.offset;
    const std::size_t reach = std::min(limit, size() - begin);
    const auto bytes = text_.subspan(begin, reach);
    const scan::ByteLineScan found =
        scan::scanByteLine({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    const bool isUnitAByte = found.ascii || form_ == Form::Latin1;
    if (!isUnitAByte && found.length == limit)
        return walkUtf8(place, line);
    line.units =
        static_cast<int>(isUnitAByte ? found.length : utf16Length(bytes.first(found.length), isValid_));
    line.tabs = static_cast<int>(found.tabs);
    if (found.length < limit)
        return finish(place, line, begin, begin + found.length);
    cut(place, line, begin, begin + found.length);
    return true;
}

/// One character at a time.
bool TextSource::walkUtf8(Place& place, Line& line) const {
    std::size_t begin = place.offset;
    std::size_t at = begin;
    std::size_t units = 0;
    bool afterReturn = place.afterReturn;
    line.tabs = 0;
    if (place.insidePair) {
        units = 1;
        at += pairBytes;
    }
    // As many bytes as a line may have code units hold no more of them: nothing is cut there.
    while (isValid_ && !afterReturn && begin > 0 && at < size() && limit - units > fewUnits) {
        const auto bytes = text_.subspan(at, std::min(limit - units - 1, size() - at));
        const scan::ByteLineScan found =
            scan::scanByteLine({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        std::size_t length = found.length;
        while (length > 0 && at + length < size() && isTrailingByte(text_[at + length]))
            --length;
        units += utf16Length(bytes.first(length), true);
        line.tabs += static_cast<int>(found.tabs);
        at += length;
        if (length == 0 || found.length < bytes.size())
            break;
    }
    for (; at < size();) {
        const std::uint8_t byte = text_[at];
        if (byte == '\n' && afterReturn) {
            begin += markBytes; // the mark goes, the line feed stays
            afterReturn = false;
            ++at;
            continue;
        }
        if (byte == '\n' || byte == '\r')
            break;
        if (hasMarkAt(at)) {
            if (at == 0)
                begin = markBytes;
            else
                ++units;
            at += markBytes;
            continue;
        }
        afterReturn = false;
        line.tabs += byte == '\t';
        const Utf8Character c = utf8CharacterAt(text_.subspan(at));
        for (int unit = 0; unit < c.units; ++unit)
            if (++units >= limit) {
                line.units = static_cast<int>(units);
                const bool insidePair = unit + 1 < c.units;
                cut(place, line, begin, insidePair ? at : at + c.bytes);
                line.endsInPair = place.insidePair = insidePair;
                return true;
            }
        at += c.bytes;
    }
    line.units = static_cast<int>(units);
    return finish(place, line, begin, at);
}

bool TextSource::nextInUnits(Place& place, Line& line) const {
    const std::u16string_view text = units();
    std::size_t begin = place.offset / unitSize;
    std::size_t at = begin;
    bool afterReturn = place.afterReturn;
    line.tabs = 0;
    while (at < text.size()) {
        const std::size_t used = at - begin;
        const std::size_t room = used < limit ? limit - used : 1; // beyond: cut at the next character
        const scan::LineScan found = scan::scanLine(text.substr(at, room));
        at += found.length;
        line.tabs += static_cast<int>(found.tabs);
        if (found.length > 0)
            afterReturn = false;
        if (at - begin >= limit && found.length > 0) {
            line.units = static_cast<int>(at - begin);
            cut(place, line, begin * unitSize, at * unitSize);
            return true;
        }
        if (at == text.size())
            break;
        if (text[at] == u'\n' && afterReturn) {
            ++begin; // the mark goes, the line feed stays
            afterReturn = false;
        } else if (text[at] != u'\uFEFF') {
            break;
        } else if (at == 0) {
            begin = 1;
        }
        ++at;
    }
    line.units = static_cast<int>(at - begin);
    return finish(place, line, begin * unitSize, at * unitSize);
}

/// The line ends at a break or at the end of the text.
bool TextSource::finish(Place& place, Line& line, std::size_t begin, std::size_t end) const {
    if (begin >= size() && end == size()) {
        place = {size()};
        return false; // a mark, and nothing behind it
    }
    line.begin = begin;
    line.end = end;
    line.continues = place.continues;
    line.startsInPair = place.insidePair;
    line.endsInPair = false;
    std::size_t after = end;
    line.lineEnd = LineEnd::None;
    if (end < size()) {
        after += unitBytes();
        if (unitAt(end) == '\n') {
            line.lineEnd = LineEnd::Lf;
        } else if (unitAt(after) == '\n') {
            line.lineEnd = LineEnd::CrLf;
            after += unitBytes();
        } else {
            line.lineEnd = LineEnd::Cr;
        }
    }
    place = {after, false, line.lineEnd == LineEnd::Cr && hasMarkAt(after), false};
    return true;
}

/// The line ends because it is long enough.
void TextSource::cut(Place& place, Line& line, std::size_t begin, std::size_t end) const {
    line.begin = begin;
    line.end = end;
    line.lineEnd = LineEnd::None;
    line.continues = place.continues;
    line.startsInPair = place.insidePair;
    line.endsInPair = false;
    place = {end, true, false, false};
}

std::u16string_view TextSource::text(const Line& line, char16_t*& room) const {
    if (form_ == Form::Utf16)
        return units().substr(line.begin / unitSize, static_cast<std::size_t>(line.units));
    char16_t* const out = room;
    const auto bytes = text_.subspan(line.begin, line.end - line.begin + (line.endsInPair ? pairBytes : 0));
    if (form_ == Form::Latin1) {
        widenLatin1(bytes.data(), bytes.size(), out);
    } else {
        DecodeReport ignored;
        decodeUtf8(bytes, out, OnInvalid::Replace, ignored);
    }
    room += line.units + (line.startsInPair ? 1 : 0) + (line.endsInPair ? 1 : 0);
    return {out + (line.startsInPair ? 1 : 0), static_cast<std::size_t>(line.units)};
}

} // namespace tavrin
