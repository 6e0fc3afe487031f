#include "platform/qt/TextSegments.h"

#include <QChar>

namespace tavrin::qt {

namespace {

/// A shaped stretch longer than this is cut at the next place where neighbours do not join.
constexpr std::size_t comfortableLength = 64;

constexpr std::size_t scanStep = 64;

constexpr char16_t zeroWidthNonJoiner = 0x200C;
constexpr char16_t zeroWidthJoiner = 0x200D;

bool isAscii(char32_t c) {
    return c >= 0x20 && c < 0x7F;
}

/// Whether scanStep code units are ASCII.
bool isAllAscii(const char16_t* units) {
    bool all = true;
    for (std::size_t i = 0; i < scanStep; ++i) // without an exit, so that it is done many at a time
        all &= units[i] >= 0x20 && units[i] < 0x7F;
    return all;
}

/// One character, of one or two code units.
struct Character {
    char32_t code;
    std::size_t length;
};

Character characterAt(std::u16string_view text, std::size_t at) {
    const char16_t c = text[at];
    if (QChar::isHighSurrogate(c) && at + 1 < text.size() && QChar::isLowSurrogate(text[at + 1]))
        return {QChar::surrogateToUcs4(c, text[at + 1]), 2};
    return {c, 1};
}

bool isJoiner(char32_t c) {
    return c == zeroWidthNonJoiner || c == zeroWidthJoiner;
}

bool isMark(char32_t c) {
    const QChar::Category category = QChar::category(c);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining ||
           category == QChar::Mark_Enclosing;
}

/// Invisible whatever surrounds it.
bool isInvisible(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0xAD || c == 0x61C || c == 0x180E || c == 0x200B ||
           c == 0x200E || c == 0x200F || (c >= 0x2028 && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) ||
           c == 0xFEFF || (c >= 0xFFF9 && c <= 0xFFFB) || QChar::isSurrogate(c);
}

bool isRightToLeft(char32_t c) {
    const QChar::Direction direction = QChar::direction(c);
    return direction == QChar::DirR || direction == QChar::DirAL;
}

/// Whether the character is one whose neighbours do not change it.
bool standsAlone(char32_t c) {
    if (c > 0xFFFF || isMark(c) || isJoiner(c))
        return false;
    switch (QChar::script(c)) {
    case QChar::Script_Latin:
    case QChar::Script_Greek:
    case QChar::Script_Cyrillic:
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
        return true;
    case QChar::Script_Hangul:
        return c >= 0xAC00; // syllables; the letters of the older block join
    default:
        return false;
    }
}

/// The end of the right-to-left text that starts at `start`: after its last strong character, its marks, and
/// the numbers that belong to it.
std::size_t rightToLeftEnd(std::u16string_view text, std::size_t start) {
    std::size_t end = start;
    bool numbersBelong = true;
    for (std::size_t at = start; at < text.size();) {
        const Character c = characterAt(text, at);
        if (isInvisible(c.code))
            break;
        const bool joinsPrevious = at == end && (isMark(c.code) || isJoiner(c.code));
        at += c.length;
        if (isRightToLeft(c.code)) {
            end = at;
            numbersBelong = true;
        } else if (QChar::direction(c.code) == QChar::DirL) {
            numbersBelong = false;
        } else if (joinsPrevious || (numbersBelong && QChar::isDigit(c.code))) {
            end = at;
        }
    }
    return end;
}

/// The length of the leading ASCII text, less the character that a mark or joiner after it needs as its base.
std::size_t asciiLength(std::u16string_view text) {
    std::size_t length = 0;
    while (length + scanStep <= text.size() && isAllAscii(text.data() + length))
        length += scanStep;
    while (length < text.size() && isAscii(text[length]))
        ++length;
    if (length > 0 && length < text.size() && isMark(characterAt(text, length).code))
        --length;
    return length;
}

std::size_t shapedLength(std::u16string_view text) {
    std::size_t at = 0;
    char32_t previous = 0;
    while (at < text.size()) {
        const Character c = characterAt(text, at);
        if (isRightToLeft(c.code)) {
            const bool separate = at > 0 && !isMark(previous) && !isJoiner(previous);
            return separate ? at : rightToLeftEnd(text, at);
        }
        if (at > 0 && (isInvisible(c.code) || isAscii(c.code)))
            return at;
        if (at >= comfortableLength && standsAlone(c.code) && standsAlone(previous))
            return at;
        at += c.length;
        previous = c.code;
    }
    return at;
}

} // namespace

Segment firstSegment(std::u16string_view text) {
    if (const std::size_t length = asciiLength(text); length > 0)
        return {SegmentKind::Ascii, length};
    const Character first = characterAt(text, 0);
    if (isInvisible(first.code) || isJoiner(first.code))
        return {SegmentKind::Marker, 1};
    return {SegmentKind::Shaped, shapedLength(text)};
}

} // namespace tavrin::qt
