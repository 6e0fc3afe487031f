// Questions about the structure around a position.

#include "buffer/Buffer.h"
#include "parsers/TagWalk.h"
#include "parsers/XmlLangParser.h"
#include "platform/core/CharacterClass.h"
#include "platform/core/XmlNamespaces.h"

namespace tavrin {

int XmlLangParser::readAhead(int line, bool withTags) {
    const int end = buffer().chunkAt(line).end;
    (void)getEndOpenBlock(end - 1);
    if (withTags)
        TagWalk(buffer()).note(line);
    return end;
}

bool XmlLangParser::getTagName(int tagLine, int tagCol, int line, int col, std::u16string& localName,
                               std::u16string& qualifiedName, std::u16string& rawName,
                               std::u16string& namespaceUri) const {
    const TagWalk walk(buffer());
    const std::u16string_view raw = walk.rawName({tagLine, tagCol}, {line, col});
    if (raw.empty())
        return false;
    rawName = raw;
    const std::u16string_view name = raw.starts_with(u'/') ? raw.substr(1) : raw;
    const std::size_t colon = name.rfind(u':');
    const bool hasPrefix = colon != name.npos && colon > 0;
    const std::u16string_view prefix = hasPrefix ? name.substr(0, colon) : std::u16string_view();
    localName = hasPrefix ? name.substr(colon + 1) : name;
    qualifiedName = name;

    namespaceUri.clear();
    const std::u16string suffix = hasPrefix ? u":" + std::u16string(prefix) : std::u16string();
    if (const auto declaration = walk.findDeclarationBefore(suffix, {line, col}))
        namespaceUri = getFieldValue(buffer().getLineText(declaration->line),
                                     static_cast<std::size_t>(declaration->col));
    if (namespaceUri.empty() && prefix == u"xsl")
        namespaceUri = xsltNamespace;
    if (namespaceUri.empty() && prefix == u"fo")
        namespaceUri = xslFoNamespace;
    return true;
}

bool XmlLangParser::findOpenTag(int line, int col, std::u16string& localName, std::u16string& qualifiedName,
                                std::u16string& rawName, std::u16string& namespaceUri, int& tagLine,
                                int& tagCol) {
    if (inNonTagableBlock(line, col))
        return false;
    const TagWalk walk(buffer());
    const auto less = walk.findBefore(TagMark::Less, {line, col});
    if (!less)
        return false;
    tagLine = less->line;
    tagCol = less->col;
    const auto greater = walk.findBefore(TagMark::Greater, {line, col});
    if (greater && *less < *greater)
        return false;
    return getTagName(tagLine, tagCol, line, col, localName, qualifiedName, rawName, namespaceUri);
}

bool XmlLangParser::findOpenTag(int line, int col, std::u16string& localName, std::u16string& qualifiedName,
                                std::u16string& rawName, std::u16string& namespaceUri) {
    int tagLine = 0;
    int tagCol = 0;
    return findOpenTag(line, col, localName, qualifiedName, rawName, namespaceUri, tagLine, tagCol);
}

bool XmlLangParser::findParentTag(int line, int col, std::u16string& localName, std::u16string& qualifiedName,
                                  std::u16string& namespaceUri, bool& topLevel, int& tagLine, int& tagCol) {
    if (inNonTagableBlock(line, col))
        return false;
    topLevel = true;
    tagLine = tagCol = 0;
    if (const auto parent = TagWalk(buffer()).findParent({line, col})) {
        std::u16string rawName;
        topLevel = false;
        tagLine = parent->tag.line;
        tagCol = parent->tag.col;
        getTagName(tagLine, tagCol, parent->end.line, parent->end.col, localName, qualifiedName, rawName,
                   namespaceUri);
    }
    return true;
}

bool XmlLangParser::findAttribute(int line, int col, XmlAttrEditInfo& info) {
    std::u16string localName;
    std::u16string qualifiedName;
    std::u16string rawName;
    if (!findOpenTag(line, col, localName, qualifiedName, rawName, info.elementNamespace) ||
        rawName.starts_with(u'/') || col < 1)
        return false;
    if (buffer().getCharFormat(line, col - 1) == FORMAT_NORMAL) { // a new attribute is about to begin here
        info.nameStart = info.nameEnd = info.valueStart = info.valueEnd = col;
        return true;
    }

    const std::u16string_view text = buffer().getLineText(line);
    const int length = static_cast<int>(text.size());
    const auto at = [&](int column) { return text[static_cast<std::size_t>(column)]; };
    const auto hasCode = [&](int column, FormatCode code) {
        return buffer().getCharFormat(line, column) == code;
    };
    const auto skipSpace = [&](int column) {
        while (column < length && isSpace(at(column)))
            ++column;
        return column;
    };

    int p = col - 2;
    while (p >= 0 && hasCode(p, FORMAT_STRING))
        --p;
    if (p >= 0 && at(p) == u'=')
        --p;
    if (p < 0 || !hasCode(p, FORMAT_XML_ATTRIBUTE))
        return false;
    while (p > 0 && hasCode(p - 1, FORMAT_XML_ATTRIBUTE))
        --p;
    info.nameStart = info.nameEnd = p;
    while (info.nameEnd < length && hasCode(info.nameEnd, FORMAT_XML_ATTRIBUTE))
        ++info.nameEnd;
    info.name = text.substr(static_cast<std::size_t>(p), static_cast<std::size_t>(info.nameEnd - p));
    info.valueStart = info.valueEnd = info.nameEnd;

    const int equals = skipSpace(info.nameEnd);
    if (equals >= length - 1 || at(equals) != u'=')
        return true;
    const int open = skipSpace(equals + 1);
    if (open >= length || at(open) != u'"')
        return true;
    info.hasOpenQuote = true;
    info.valueStart = open + 1;
    const std::size_t close = text.find(u'"', static_cast<std::size_t>(info.valueStart));
    info.hasCloseQuote = close != text.npos;
    info.valueEnd = info.hasCloseQuote ? static_cast<int>(close) : length;
    info.value = text.substr(static_cast<std::size_t>(info.valueStart),
                             static_cast<std::size_t>(info.valueEnd - info.valueStart));
    return true;
}

bool XmlLangParser::isTagStart(int line, int col) {
    return !inNonTagableBlock(line, col) && col >= 1 &&
           buffer().getLineText(line)[static_cast<std::size_t>(col) - 1] == u'<';
}

bool XmlLangParser::isTag(int line, int col) {
    if (col > 0 && buffer().getCharFormat(line, col - 1) == FORMAT_STRING)
        return false;
    std::u16string localName;
    std::u16string qualifiedName;
    std::u16string rawName;
    std::u16string namespaceUri;
    return findOpenTag(line, col, localName, qualifiedName, rawName, namespaceUri);
}

bool XmlLangParser::isAttribute(int line, int col) {
    XmlAttrEditInfo info;
    return findAttribute(line, col, info) && info.nameStart <= col && col <= info.nameEnd;
}

bool XmlLangParser::isAttributeValue(int line, int col) {
    XmlAttrEditInfo info;
    return findAttribute(line, col, info) && info.valueStart <= col && col <= info.valueEnd;
}

} // namespace tavrin
