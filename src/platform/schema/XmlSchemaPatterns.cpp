#include "platform/schema/XmlSchemaPatterns.h"

#include "platform/schema/GuardedXml.h"
#include "platform/schema/XmlSchemaDocuments.h"

#include <algorithm>
#include <functional>
#include <libxml/tree.h>
#include <set>
#include <string_view>

namespace tavrin {

namespace {

using Names = std::set<std::string, std::less<>>;

/// The names of patterns as tags write them.
void collectNames(const _xmlNode* element, Names& names) {
    if (isXmlSchemaPattern(element)) {
        const xmlChar* prefix = element->ns->prefix;
        const std::string local(localName(element));
        names.insert(prefix ? std::string(reinterpret_cast<const char*>(prefix)) + ":" + local : local);
    }
    for (const _xmlNode* child = firstElement(element); child; child = nextElement(child))
        collectNames(child, names);
}

/// Where the tag, comment, instruction or section that begins at `at` ends.
std::size_t endOfMarkup(std::string_view text, std::size_t at) {
    struct Kind {
        std::string_view begin;
        std::string_view end;
    };
    static constexpr Kind kinds[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
    for (const Kind& kind : kinds)
        if (text.substr(at).starts_with(kind.begin)) {
            const std::size_t end = text.find(kind.end, at + kind.begin.size());
            return end == std::string_view::npos ? text.size() : end + kind.end.size();
        }
    while ((at = text.find_first_of("\"'>", at)) != std::string_view::npos) {
        if (text[at] == '>')
            return at + 1;
        at = text.find(text[at], at + 1); // in a tag: the other end of a value
        if (at != std::string_view::npos)
            ++at;
    }
    return text.size();
}

void blank(std::string& bytes, std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i)
        if (bytes[i] != '\n' && bytes[i] != '\r')
            bytes[i] = ' ';
}

} // namespace

bool isXmlSchemaPattern(const _xmlNode* element) {
    return localName(element) == "pattern" && namespaceOf(element) == xmlSchemaNamespace;
}

void blankXmlSchemaPatterns(std::string& bytes, const _xmlNode* root) {
    Names names;
    collectNames(root, names);
    if (names.empty())
        return;
    int depth = 0; // of patterns in one another
    std::size_t begin = 0;
    std::size_t end = 0;
    for (std::size_t at = bytes.find('<'); at != std::string::npos; at = bytes.find('<', end)) {
        end = endOfMarkup(bytes, at);
        const bool isEndTag = bytes.compare(at, 2, "</") == 0;
        const std::size_t name = at + (isEndTag ? 2 : 1);
        const std::size_t nameEnd = std::min(bytes.find_first_of(" \t\r\n/>", name), bytes.size());
        if (!names.contains(std::string_view(bytes).substr(name, nameEnd - name)))
            continue;
        if (depth == 0)
            begin = at;
        if (isEndTag)
            --depth;
        else if (bytes[end - 2] != '/')
            ++depth;
        if (depth == 0)
            blank(bytes, begin, end);
    }
}

} // namespace tavrin
