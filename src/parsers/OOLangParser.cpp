#include "parsers/OOLangParser.h"

#include "buffer/Buffer.h"
#include "parsers/FormatCode.h"

#include <algorithm>

namespace tavrin {

OOLangParser::OOLangParser() {
    constexpr char16_t none = 0;
    constexpr char16_t backslash = u'\\';
    keywords = {u"bool",    u"break",     u"case",   u"char",     u"const",   u"class",
                u"default", u"else",      u"enum",   u"explicit", u"false",   u"for",
                u"float",   u"double",    u"if",     u"int",      u"inline",  u"interface",
                u"private", u"protected", u"public", u"static",   u"struct",  u"switch",
                u"true",    u"typedef",   u"return", u"void",     u"virtual", u"while"};
    blocks = {
        {0x20, FORMAT_COMMENT, u"/*", u"*/", none, none},
        {0x40, FORMAT_LINE_COMMENT, u"//", u"\n", backslash, none},
        {0x80, FORMAT_STRING, u"\"", u"\"", backslash, backslash},
    };
    whitespace = u" \t";
    punctuation = u"`~!@#$%^&()-+={[]}|\\:;<,.>?/*";
}

void OOLangParser::formatBlockRange(int line, int start, int count, const Block& block) {
    buffer().formatRange(line, start, count, block.format);
}

void OOLangParser::formatRange(int line, int start, int count) {
    if (count == 0)
        return;
    formatKeywords(line, start);
    formatPunctuation(line);
}

void OOLangParser::formatKeywords(int line, int start) {
    const std::u16string_view text = buffer().getLineText(line);
    for (const std::u16string& keyword : keywords)
        for (int at = findKeyword(text, start, keyword); at >= 0; at = findKeyword(text, at + 1, keyword))
            buffer().formatRange(line, at, static_cast<int>(keyword.size()), FORMAT_KEYWORD);
}

void OOLangParser::formatPunctuation(int line) {
    const std::u16string_view text = buffer().getLineText(line);
    for (std::size_t start = 0; start < text.size();) {
        start = std::min(text.find_first_of(punctuation, start), text.size());
        const std::size_t end = std::min(text.find_first_not_of(punctuation, start), text.size());
        buffer().formatRange(line, static_cast<int>(start), static_cast<int>(end - start),
                             FORMAT_PUNCTUATION);
        start = end;
    }
}

} // namespace tavrin
