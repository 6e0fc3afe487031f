#include "view/LineNavigation.h"

#include "platform/core/CharacterClass.h"
#include "platform/core/TextScan.h"

#include <algorithm>

namespace tavrin {

namespace {

enum class Kind { Space, Quote, Punctuation, Word };

Kind kindOf(char16_t c) {
    if (c == u'=' || c == u'"' || c == u'\'')
        return Kind::Quote;
    if (isPunctuation(c))
        return Kind::Punctuation;
    return isWordSpace(c) ? Kind::Space : Kind::Word;
}

bool isWord(char16_t c) {
    return kindOf(c) == Kind::Word;
}

bool isBlank(char16_t c) {
    return isSpace(c);
}

int lengthOf(std::u16string_view text) {
    return static_cast<int>(text.size());
}

char16_t at(std::u16string_view text, int col) {
    return text[static_cast<std::size_t>(col)];
}

/// The first column at or after `col` whose character does not satisfy `predicate`.
template <class Predicate>
int skipForward(std::u16string_view text, int col, Predicate predicate) {
    while (col < lengthOf(text) && predicate(at(text, col)))
        ++col;
    return col;
}

/// The start of the run of characters before `col` that satisfy `predicate`.
template <class Predicate>
int skipBackward(std::u16string_view text, int col, Predicate predicate) {
    while (col > 0 && predicate(at(text, col - 1)))
        --col;
    return col;
}

int nextTabStop(int visual, int tabSize) {
    return visual + tabSize - visual % tabSize;
}

} // namespace

bool isWordSpace(char16_t c) {
    return c < 0xFF && isSpace(c);
}

bool isPunctuation(char16_t c) {
    return (c >= u'!' && c <= u'/') || (c >= u':' && c <= u'@') || (c >= u'[' && c <= u'`') ||
           (c >= u'{' && c <= u'~');
}

int wordLeft(std::u16string_view text, int col) {
    const Kind kind = kindOf(at(text, col - 1));
    if (kind == Kind::Quote)
        return col - 1;
    return skipBackward(text, col, [kind](char16_t c) { return kindOf(c) == kind; });
}

int wordRight(std::u16string_view text, int col) {
    switch (kindOf(at(text, col))) {
    case Kind::Space:
        return skipForward(text, col, isWordSpace);
    case Kind::Quote:
        return col + 1;
    case Kind::Punctuation:
        return skipForward(text, col, [](char16_t c) { return !isWord(c); });
    case Kind::Word:
        break;
    }
    return skipForward(text, skipForward(text, col, isWord), isWordSpace);
}

ColumnRange wordAround(std::u16string_view text, int col) {
    const int length = lengthOf(text);
    int i = col;
    while (i > 0 && i < length && isWordSpace(at(text, i)))
        --i;
    if (i == 0)
        i = skipForward(text, i, isWordSpace);
    if (i == length)
        return {length, length};
    const int start = isPunctuation(at(text, i)) ? i : skipBackward(text, i, isWord);
    if (isPunctuation(at(text, start)))
        return {start, start + 1};
    return {start, skipForward(text, start, isWord)};
}

int smartHome(std::u16string_view text, int col) {
    const int first = skipForward(text, 0, isBlank);
    return col == first ? 0 : first;
}

int smartEnd(std::u16string_view text, int col) {
    const int length = lengthOf(text);
    int end = skipBackward(text, length, isBlank);
    if (end == 0)
        end = length;
    return col == end ? length : end;
}

std::u16string_view indentation(std::u16string_view text) {
    return text.substr(0, static_cast<std::size_t>(skipForward(text, 0, isWordSpace)));
}

int visualColumn(std::u16string_view text, int col, int tabSize, int from) {
    text = text.substr(0, static_cast<std::size_t>(col));
    int visual = from;
    std::size_t start = 0;
    for (std::size_t tab = scan::findUnit(text, u'\t', 0); tab != text.npos;
         tab = scan::findUnit(text, u'\t', start)) {
        visual = nextTabStop(visual + static_cast<int>(tab - start), tabSize);
        start = tab + 1;
    }
    return visual + static_cast<int>(text.size() - start);
}

int columnNearVisual(std::u16string_view text, int visual, int tabSize, int from) {
    int after = from;
    for (int i = 0; i < lengthOf(text); ++i) {
        const int before = after;
        after = at(text, i) == u'\t' ? nextTabStop(before, tabSize) : before + 1;
        if (after > visual)
            return after - visual < visual - before ? i + 1 : i;
    }
    return lengthOf(text);
}

} // namespace tavrin
