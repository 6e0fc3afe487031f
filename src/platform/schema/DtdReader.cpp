#include "platform/schema/GuardedXml.h"
#include "platform/schema/SchemaText.h"

#include <algorithm>
#include <deque>
#include <libxml/tree.h>
#include <map>
#include <set>
#include <utility>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

constexpr std::u16string_view xmlNamespace = u"http://www.w3.org/XML/1998/namespace";
constexpr std::u16string_view declarationNamespace = u"http://www.w3.org/2000/xmlns/";

std::string nameOf(const xmlChar* text) {
    return text ? reinterpret_cast<const char*>(text) : "";
}

/// As a DTD writes them: "prefix:name".
std::string qualified(const xmlChar* prefix, const xmlChar* name) {
    return prefix ? nameOf(prefix) + ":" + nameOf(name) : nameOf(name);
}

const char* wordsFor(xmlAttributeType type) {
    switch (type) {
    case XML_ATTRIBUTE_ID:
        return "a name that is unique in the document";
    case XML_ATTRIBUTE_IDREF:
        return "the ID of an element";
    case XML_ATTRIBUTE_IDREFS:
        return "IDs of elements";
    case XML_ATTRIBUTE_ENTITY:
        return "the name of an unparsed entity";
    case XML_ATTRIBUTE_ENTITIES:
        return "names of unparsed entities";
    case XML_ATTRIBUTE_NMTOKEN:
        return "a name token";
    case XML_ATTRIBUTE_NMTOKENS:
        return "name tokens";
    case XML_ATTRIBUTE_CDATA:
    case XML_ATTRIBUTE_ENUMERATION:
    case XML_ATTRIBUTE_NOTATION:
        break;
    }
    return nullptr;
}

/// Puts the declarations of a DTD's two subsets into a vocabulary.
class DtdReader {
  public:
    DtdReader(SchemaReading& reading, const xmlDoc& document) : reading_(reading) {
        collect(document.intSubset); // what it declares comes first and counts
        collect(document.extSubset);
    }

    /// Only `rootName` is a root when the DTD declares it, else every element is.
    void build(VocabularyBuilder& builder, const std::string& rootName);

  private:
    /// An element as it is written, with what both subsets say of it.
    struct Element {
        std::string name;
        const xmlElement* declaration = nullptr;
        std::vector<const xmlAttribute*> attributes = {};
        std::set<std::string> attributeNames = {};
        std::u16string defaultNamespace = {}; ///< in force in it
        bool hasDefaultNamespace = false;
    };

    void collect(const xmlDtd* dtd);
    Element& element(const std::string& name);
    void addAttribute(const xmlAttribute& attribute);
    void spreadNamespaces();
    [[nodiscard]] std::set<std::string> childNames(const xmlElement* declaration) const;
    [[nodiscard]] ExpandedName expanded(const std::string& name) const;
    [[nodiscard]] int particle(VocabularyBuilder& builder, const xmlElementContent* content, int depth);
    [[nodiscard]] int leaf(VocabularyBuilder& builder, const xmlElementContent& content);
    [[nodiscard]] int anyContent(VocabularyBuilder& builder);
    [[nodiscard]] ElementDeclaration declarationOf(VocabularyBuilder& builder, const Element& element);
    [[nodiscard]] ElementDeclaration::Attribute attributeOf(const xmlAttribute& attribute) const;

    SchemaReading& reading_;
    std::deque<Element> elements_; ///< in the order of the DTD
    std::map<std::string, Element*> byName_;
    std::map<std::string, std::u16string> prefixes_;
    int anyContent_ = ParticlePool::nothing; ///< once it is made: any element
};

DtdReader::Element& DtdReader::element(const std::string& name) {
    Element*& known = byName_[name];
    if (!known) {
        elements_.push_back({.name = name});
        known = &elements_.back();
    }
    return *known;
}

void DtdReader::collect(const xmlDtd* dtd) {
    for (const xmlNode* node = dtd ? dtd->children : nullptr; node; node = node->next) {
        if (node->type == XML_ELEMENT_DECL) {
            const auto* declaration = reinterpret_cast<const xmlElement*>(node);
            Element& known = element(qualified(declaration->prefix, declaration->name));
            if (!known.declaration)
                known.declaration = declaration;
        } else if (node->type == XML_ATTRIBUTE_DECL) {
            addAttribute(*reinterpret_cast<const xmlAttribute*>(node));
        }
    }
}

void DtdReader::addAttribute(const xmlAttribute& attribute) {
    Element& owner = element(nameOf(attribute.elem));
    const std::string name = qualified(attribute.prefix, attribute.name);
    if (!owner.attributeNames.insert(name).second)
        return;
    owner.attributes.push_back(&attribute);
    if (!attribute.defaultValue)
        return;
    const std::u16string value = toUtf16(nameOf(attribute.defaultValue));
    if (name == "xmlns") {
        owner.defaultNamespace = value;
        owner.hasDefaultNamespace = true;
    } else if (name.starts_with("xmlns:")) {
        prefixes_.try_emplace(name.substr(6), value);
    }
}

std::set<std::string> DtdReader::childNames(const xmlElement* declaration) const {
    std::set<std::string> names;
    std::vector<const xmlElementContent*> open;
    if (declaration && declaration->content)
        open.push_back(declaration->content);
    while (!open.empty()) {
        const xmlElementContent* content = open.back();
        open.pop_back();
        if (content->type == XML_ELEMENT_CONTENT_ELEMENT)
            names.insert(qualified(content->prefix, content->name));
        for (const xmlElementContent* part : {content->c1, content->c2})
            if (part)
                open.push_back(part);
    }
    return names;
}

/// The default namespace that an element declares holds in its children too, until one declares another.
void DtdReader::spreadNamespaces() {
    std::deque<const Element*> open;
    for (const Element& e : elements_)
        if (e.hasDefaultNamespace)
            open.push_back(&e);
    for (; !open.empty() && reading_.mayGoOn(); open.pop_front())
        for (const std::string& name : childNames(open.front()->declaration)) {
            const auto child = byName_.find(name);
            if (child == byName_.end() || child->second->hasDefaultNamespace)
                continue;
            child->second->hasDefaultNamespace = true;
            child->second->defaultNamespace = open.front()->defaultNamespace;
            open.push_back(child->second);
        }
}

ExpandedName DtdReader::expanded(const std::string& name) const {
    const std::size_t colon = name.find(':');
    if (colon == std::string::npos) {
        const auto known = byName_.find(name);
        return {known == byName_.end() ? std::u16string() : known->second->defaultNamespace, toUtf16(name)};
    }
    const auto prefix = prefixes_.find(name.substr(0, colon));
    if (prefix == prefixes_.end())
        return {{}, toUtf16(name)}; // written as it stands, at least
    return {prefix->second, toUtf16(name.substr(colon + 1))};
}

int DtdReader::leaf(VocabularyBuilder& builder, const xmlElementContent& content) {
    if (content.type == XML_ELEMENT_CONTENT_PCDATA)
        return ParticlePool::empty;
    return builder.particles().element(builder.reference(expanded(qualified(content.prefix, content.name))));
}

int DtdReader::particle(VocabularyBuilder& builder, const xmlElementContent* content, int depth) {
    if (depth > reading_.limits().depth)
        return builder.particles().anyElement({}, 0, Particle::unbounded);
    int node = ParticlePool::empty;
    if (content->type == XML_ELEMENT_CONTENT_SEQ || content->type == XML_ELEMENT_CONTENT_OR) {
        // The library makes a list of pairs of it; pairs with an occurrence of their own are groups.
        std::vector<int> parts;
        const xmlElementContent* rest = content;
        do {
            parts.push_back(particle(builder, rest->c1, depth + 1));
            rest = rest->c2;
        } while (rest->type == content->type && rest->ocur == XML_ELEMENT_CONTENT_ONCE);
        parts.push_back(particle(builder, rest, depth + 1));
        const bool isSequence = content->type == XML_ELEMENT_CONTENT_SEQ;
        if (!isSequence)
            std::erase(parts, ParticlePool::empty); // text, which stands anywhere
        node = builder.particles().group(isSequence ? ParticleKind::sequence : ParticleKind::choice,
                                         std::move(parts));
    } else {
        node = leaf(builder, *content);
    }
    const bool isOptional =
        content->ocur == XML_ELEMENT_CONTENT_OPT || content->ocur == XML_ELEMENT_CONTENT_MULT;
    const bool isRepeated =
        content->ocur == XML_ELEMENT_CONTENT_PLUS || content->ocur == XML_ELEMENT_CONTENT_MULT;
    return builder.particles().repeat(node, isOptional ? 0 : 1, isRepeated ? Particle::unbounded : 1);
}

ElementDeclaration::Attribute DtdReader::attributeOf(const xmlAttribute& attribute) const {
    ElementDeclaration::Attribute result;
    VocabularyAttribute& declared = result.declaration;
    const std::string prefix = nameOf(attribute.prefix);
    declared.name.localName = toUtf16(nameOf(attribute.name));
    if (prefix == "xml")
        declared.name.namespaceName = xmlNamespace;
    else if (prefix == "xmlns")
        declared.name.namespaceName = declarationNamespace;
    else if (const auto known = prefixes_.find(prefix); known != prefixes_.end())
        declared.name.namespaceName = known->second;
    else
        declared.name.localName = toUtf16(qualified(attribute.prefix, attribute.name));
    std::set<std::u16string> seen;
    for (const xmlEnumeration* value = attribute.tree; value; value = value->next)
        if (const auto text = toUtf16(nameOf(value->name)); seen.insert(text).second)
            declared.values.push_back({.text = text});
    if (attribute.defaultValue && declared.values.empty())
        declared.values.push_back({.text = toUtf16(nameOf(attribute.defaultValue))});
    if (const char* words = wordsFor(attribute.atype))
        declared.values.push_back({.text = toUtf16(words), .isDescription = true});
    declared.hasDefault = attribute.defaultValue != nullptr;
    result.isRequired = attribute.def == XML_ATTRIBUTE_REQUIRED;
    return result;
}

int DtdReader::anyContent(VocabularyBuilder& builder) {
    if (anyContent_ == ParticlePool::nothing) {
        std::vector<int> any = {builder.particles().anyElement({})};
        for (const Element& e : elements_)
            if (e.declaration)
                any.push_back(builder.particles().element(builder.reference(expanded(e.name))));
        anyContent_ = builder.particles().group(ParticleKind::choice, std::move(any), 0, Particle::unbounded);
    }
    return anyContent_;
}

ElementDeclaration DtdReader::declarationOf(VocabularyBuilder& builder, const Element& element) {
    ElementDeclaration result{.name = expanded(element.name)};
    const xmlElement& declaration = *element.declaration;
    if (declaration.etype == XML_ELEMENT_TYPE_ANY) {
        result.textAllowed = true;
        result.content = anyContent(builder);
    } else if (declaration.content) {
        result.textAllowed = declaration.etype == XML_ELEMENT_TYPE_MIXED;
        result.content = particle(builder, declaration.content, 0);
    }
    for (const xmlAttribute* attribute : element.attributes)
        result.attributes.push_back(attributeOf(*attribute));
    return result;
}

void DtdReader::build(VocabularyBuilder& builder, const std::string& rootName) {
    spreadNamespaces();
    for (const auto& [prefix, name] : prefixes_)
        builder.notePrefix(name, toUtf16(prefix));
    builder.notePrefix(xmlNamespace, u"xml");
    builder.notePrefix(declarationNamespace, u"xmlns");
    const auto root = byName_.find(rootName);
    const Element* onlyRoot = root != byName_.end() && root->second->declaration ? root->second : nullptr;
    for (const Element& e : elements_) {
        if (!e.declaration)
            continue; // attributes of an element that is declared nowhere
        if (!reading_.mayGoOn())
            break;
        ElementDeclaration declaration = declarationOf(builder, e);
        declaration.isRoot = !onlyRoot || onlyRoot == &e;
        builder.declare(std::move(declaration));
    }
}

/// The name that the text "<!DOCTYPE name ..." gives.
std::string nameInDoctype(std::string_view doctype) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t start = doctype.find_first_not_of(blanks, std::string_view("<!DOCTYPE").size());
    if (start == std::string_view::npos)
        return {};
    return std::string(doctype.substr(start, doctype.find_first_of(" \t\r\n[>", start) - start));
}

SchemaReadResult readDocumentType(const std::string& doctype, const fs::path& file,
                                  const std::string& rootName, const SchemaReadOptions& options) {
    SchemaReading reading(options);
    VocabularyBuilder builder;
    const XmlDocument document = parseGuarded(reading, doctype + "<document/>", file, ExternalSubset::read);
    if (document)
        DtdReader(reading, *document.get()).build(builder, rootName);
    return reading.finish(builder);
}

} // namespace

SchemaReadResult readDtd(const fs::path& file, const SchemaReadOptions& options) {
    return readGuarded([&] {
        return readDocumentType("<!DOCTYPE document SYSTEM \"" + fileUri(file) + "\">", file, {}, options);
    });
}

SchemaReadResult readDoctype(std::u16string_view doctype, const fs::path& document,
                             const SchemaReadOptions& options) {
    return readGuarded([&] {
        const std::string text = toUtf8(doctype);
        return readDocumentType(text, document, nameInDoctype(text), options);
    });
}

} // namespace tavrin
