#include "platform/schema/XmlSchemaDocuments.h"

#include "platform/schema/GuardedXml.h"
#include "platform/schema/SchemaText.h"
#include "platform/schema/XmlSchemaPatterns.h"

#include <algorithm>
#include <libxml/tree.h>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

constexpr char xmlNamespaceName[] = "http://www.w3.org/XML/1998/namespace";

std::string_view view(const xmlChar* text) {
    return text ? reinterpret_cast<const char*>(text) : std::string_view();
}

/// A schema with more is made to cost time.
constexpr std::size_t maxPrefixes = 1000;

bool isSchemaElement(const _xmlNode* element, std::string_view name) {
    return localName(element) == name && namespaceOf(element) == xmlSchemaNamespace;
}

/// Whether the bytes of a document may be handed on, but for its patterns.
bool isPlain(const XmlDocument& document, std::string_view bytes) {
    const xmlDoc& doc = *document.get();
    std::string encoding(view(doc.encoding));
    std::ranges::transform(encoding, encoding.begin(), [](unsigned char c) { return std::tolower(c); });
    const bool isUtf8 = (encoding.empty() || encoding == "utf-8") &&
                        bytes.find('\0') == std::string_view::npos; // a mark alone may say UTF-16
    return document.isWellFormed && !doc.intSubset && isUtf8;
}

/// Writes a tree as UTF-8 without its document type and its patterns, each start tag ending on the line that
/// it had.
class Rewriter {
  public:
    std::string write(const xmlNode* root) {
        element(root);
        return std::move(out_);
    }

  private:
    void put(std::string_view text) {
        line_ += static_cast<int>(std::ranges::count(text, '\n'));
        out_ += text;
    }
    void escaped(std::string_view text, bool inAttribute) {
        for (const char c : text) {
            switch (c) {
            case '&':
                put("&amp;");
                break;
            case '<':
                put("&lt;");
                break;
            case '>':
                put("&gt;");
                break;
            case '\r':
                put("&#13;");
                break;
            case '"':
                put(inAttribute ? "&quot;" : "\"");
                break;
            case '\n':
                put(inAttribute ? "&#10;" : "\n");
                break;
            case '\t':
                put(inAttribute ? "&#9;" : "\t");
                break;
            default:
                put({&c, 1});
            }
        }
    }
    void attribute(std::string_view prefix, std::string_view name, std::string_view value) {
        put(" ");
        if (!prefix.empty())
            put(std::string(prefix) + ":");
        put(name);
        put("=\"");
        escaped(value, true);
        put("\"");
    }
    void element(const xmlNode* node) {
        const std::string prefix =
            node->ns && node->ns->prefix ? std::string(view(node->ns->prefix)) + ":" : "";
        const std::string name = prefix + std::string(view(node->name));
        put("<" + name);
        if (const int line = lineOf(node); line > line_)
            put(std::string(static_cast<std::size_t>(line - line_), '\n'));
        forEachDeclaration(node, [&](std::string_view declared, std::string_view uri) {
            attribute(declared.empty() ? "" : "xmlns", declared.empty() ? "xmlns" : declared, uri);
        });
        for (const xmlAttr* a = node->properties; a; a = a->next) {
            xmlChar* value = xmlNodeListGetString(node->doc, a->children, 1);
            attribute(a->ns ? view(a->ns->prefix) : std::string_view(), view(a->name), view(value));
            xmlFree(value);
        }
        put(">");
        for (const xmlNode* child = node->children; child; child = child->next) {
            if (child->type == XML_ELEMENT_NODE && !isXmlSchemaPattern(child))
                element(child);
            else if (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE)
                escaped(view(child->content), false);
        }
        put("</" + name + ">");
    }

    std::string out_;
    int line_ = 1;
};

} // namespace

const std::string& XmlSchemaDocuments::checked(const fs::path& file, const SchemaPlace& from) {
    const auto [at, isNew] = documents_.try_emplace(file);
    Document& document = at->second;
    if (!isNew)
        return document.bytes;
    auto bytes = reading_.load(file, from);
    if (!bytes)
        return document.bytes;
    const XmlDocument tree = parseGuarded(reading_, *bytes, file);
    if (reading_.gaveUp() || !tree.root())
        return document.bytes;
    if (!isSchemaElement(tree.root(), "schema")) {
        reading_.error({file.string(), lineOf(tree.root())},
                       "The document is no XML Schema: its first element is \"" +
                           std::string(localName(tree.root())) + "\".");
        return document.bytes;
    }
    note(tree.root(), {});
    document.hasColumns = isPlain(tree, *bytes);
    if (document.hasColumns) {
        document.bytes = std::move(*bytes);
        blankXmlSchemaPatterns(document.bytes, tree.root());
    } else {
        document.bytes = Rewriter().write(tree.root());
    }
    return document.bytes;
}

bool XmlSchemaDocuments::hasColumns(const fs::path& file) const {
    const auto known = documents_.find(file);
    return known == documents_.end() || known->second.hasColumns;
}

void XmlSchemaDocuments::note(const _xmlNode* element, const std::string& owner) {
    forEachDeclaration(element, [this](std::string_view prefix, std::string_view name) {
        if (!prefix.empty() && !name.empty() && prefixes_.size() < maxPrefixes &&
            prefixOf(std::string(name)).empty())
            prefixes_.emplace_back(name, prefix);
    });
    std::string inner = owner;
    if (const std::string name = attributeOf(element, "name"); !name.empty()) {
        if (isSchemaElement(element, "simpleType"))
            inner = "type " + name;
        else if (isSchemaElement(element, "attribute") || isSchemaElement(element, "element"))
            inner = std::string(localName(element)) + " " + name;
    }
    for (const _xmlNode* child = firstElement(element); child; child = nextElement(child)) {
        if (isSchemaElement(element, "enumeration") && isSchemaElement(child, "annotation"))
            values_.try_emplace({owner, attributeOf(element, "value")}, annotationText(child));
        note(child, inner);
    }
}

std::string XmlSchemaDocuments::prefixOf(const std::string& namespaceName) const {
    const auto known =
        std::ranges::find(prefixes_, namespaceName, &std::pair<std::string, std::string>::first);
    return known == prefixes_.end() ? std::string() : known->second;
}

void XmlSchemaDocuments::notePrefixes(VocabularyBuilder& builder) const {
    for (const auto& [name, prefix] : prefixes_)
        builder.notePrefix(toUtf16(name), toUtf16(prefix));
    builder.notePrefix(toUtf16(xmlNamespaceName), u"xml");
    builder.notePrefix(u"http://www.w3.org/2001/XMLSchema-instance", u"xsi");
}

std::u16string XmlSchemaDocuments::documentationOf(const std::string& owner, const std::string& value) const {
    const auto known = values_.find({owner, value});
    return known == values_.end() ? std::u16string() : known->second;
}

std::u16string annotationText(const _xmlNode* annotation) {
    std::u16string ours;
    std::u16string first;
    for (const _xmlNode* child = firstElement(annotation); child; child = nextElement(child)) {
        if (!isSchemaElement(child, "documentation"))
            continue;
        const std::u16string text = collapseSpaces(toUtf16(textOf(child)));
        const std::string language = attributeOf(child, xmlNamespaceName, "lang");
        if (first.empty())
            first = text;
        if ((language.empty() || language.starts_with("en")) && !text.empty())
            ours += (ours.empty() ? u"" : u"\n") + text;
    }
    return ours.empty() ? first : ours;
}

} // namespace tavrin
