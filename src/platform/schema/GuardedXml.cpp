#include "platform/schema/GuardedXml.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <limits>
#include <mutex>
#include <system_error>
#include <utility>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

std::string_view view(const xmlChar* text) {
    return text ? reinterpret_cast<const char*>(text) : std::string_view();
}

const xmlChar* xml(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

/// Attributes are compared with one another, so that very many of them would take for ever.
constexpr std::size_t maxAttributes = 5000;

bool hasTooManyAttributes(std::string_view bytes) {
    std::size_t count = 0;
    for (const char c : bytes) {
        if (c == '<')
            count = 0;
        else if (c == '=' && ++count > maxAttributes)
            return true;
    }
    return false;
}

std::size_t countSeparators(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, [](char c) { return c == '|' || c == ','; }));
}

/// Errors tell files by whole paths; a text that is in no file has none.
fs::path wholePath(const fs::path& file) {
    std::error_code status;
    fs::path whole = file.empty() ? fs::path() : fs::absolute(file, status);
    return status ? file : whole;
}

/// One run of libxml2's parser. Its callbacks count what they are given and then do what libxml2 would. No
/// exception passes through the library: the first one ends the run, and leaves parse().
class Run {
  public:
    Run(SchemaReading& reading, fs::path file, ExternalSubset subset)
        : reading_(reading), file_(wholePath(file)), subset_(subset), outer_(std::exchange(current, this)) {}
    ~Run() { current = outer_; }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    XmlDocument parse(std::string_view bytes);

    static thread_local Run* current;
    /// In place of libxml2's function that opens files, for all of the process; other users of the library
    /// are passed on to the one that was there.
    static void install();

  private:
    /// Runs what a callback does.
    template <class Work>
    static void call(void* parser, Work work) {
        try {
            work(static_cast<xmlParserCtxtPtr>(parser));
        } catch (...) {
            current->failure_ = std::current_exception();
            if (parser)
                xmlStopParser(static_cast<xmlParserCtxtPtr>(parser));
        }
    }
    void wrapCallbacks(xmlSAXHandler& sax);
    [[nodiscard]] bool spend(xmlParserCtxtPtr parser, std::size_t nodes);
    void spendEntity(xmlParserCtxtPtr parser, const xmlEntity* entity);
    void takeReference(xmlParserCtxtPtr parser, const xmlChar* name);
    void takeError(const xmlError& error);
    [[nodiscard]] SchemaPlace placeOf(xmlParserCtxtPtr parser) const;
    [[nodiscard]] xmlParserInputPtr open(const char* url, const char* publicId, xmlParserCtxtPtr parser);

    static xmlExternalEntityLoader previousLoader;

    SchemaReading& reading_;
    fs::path file_;
    ExternalSubset subset_;
    Run* outer_;
    int errors_ = 0;
    std::exception_ptr failure_;
};

thread_local Run* Run::current = nullptr;
xmlExternalEntityLoader Run::previousLoader = nullptr;

void Run::install() {
    static std::once_flag once;
    std::call_once(once, [] {
        xmlInitParser();
        previousLoader = xmlGetExternalEntityLoader();
        xmlSetExternalEntityLoader([](const char* url, const char* id, xmlParserCtxtPtr parser) {
            if (!current)
                return previousLoader(url, id, parser);
            xmlParserInputPtr input = nullptr;
            call(parser, [&](xmlParserCtxtPtr p) { input = current->open(url, id, p); });
            return input;
        });
    });
}

bool Run::spend(xmlParserCtxtPtr parser, std::size_t nodes) {
    if (reading_.spendNodes(nodes))
        return true;
    xmlStopParser(parser);
    return false;
}

void Run::spendEntity(xmlParserCtxtPtr parser, const xmlEntity* entity) {
    if (!entity || entity->etype == XML_INTERNAL_PREDEFINED_ENTITY)
        return;
    const std::string_view text = view(entity->content);
    if (!reading_.spendEntityText(text.size() + 1) || !reading_.spendNodes(countSeparators(text)))
        xmlStopParser(parser);
}

SchemaPlace Run::placeOf(xmlParserCtxtPtr parser) const {
    const xmlParserInputPtr input = parser->input;
    if (!input)
        return {file_.string()};
    return {input->filename ? shownUri(input->filename) : file_.string(), input->line, input->col};
}

namespace {

/// The library's message in words that fit: without its line end and advice to programmers.
std::string wordsOf(const xmlError& error) {
    std::string text = error.message ? error.message : "The document is not well-formed.";
    if (error.code == XML_ERR_ENTITY_LOOP)
        return "Entities refer to themselves, or stand for far too much text.";
    if (text.starts_with("Excessive depth"))
        return "Elements lie deeper in one another than a schema may have them.";
    if (const auto advice = text.find(" use XML_PARSE_HUGE"); advice != std::string::npos)
        text.erase(advice);
    while (!text.empty() && (text.back() == '\n' || text.back() == ' '))
        text.pop_back();
    return text;
}

/// Of a broken document the first errors are its own, the others follow from them.
constexpr int maxErrorsPerDocument = 10;

} // namespace

void Run::takeError(const xmlError& error) {
    // Namespace names that are no URIs and the like harm nobody.
    if (error.level == XML_ERR_NONE || error.code == XML_WAR_NS_URI_RELATIVE ||
        error.code == XML_WAR_NS_URI || reading_.gaveUp() || ++errors_ > maxErrorsPerDocument)
        return;
    const bool isWarning = error.level == XML_ERR_WARNING;
    reading_.report(
        {.severity = isWarning ? SchemaMessage::Severity::warning : SchemaMessage::Severity::error,
         .file = error.file ? shownUri(error.file) : file_.string(),
         .line = error.line,
         .column = error.int2,
         .text = wordsOf(error)});
}

xmlParserInputPtr Run::open(const char* url, const char* publicId, xmlParserCtxtPtr parser) {
    const std::string uri = url ? url : "";
    const SchemaPlace place = placeOf(parser);
    if (subset_ == ExternalSubset::ignored) {
        reading_.warning(place,
                         "\"" + shownUri(uri) + "\" was not read: a schema takes in no external entities.");
        return nullptr;
    }
    const SchemaReference reference{
        .publicId = publicId ? publicId : "", .systemId = shownUri(uri), .uri = uri};
    const auto path = reading_.locate(reference, place);
    if (!path)
        return nullptr;
    const auto bytes = reading_.load(*path, place);
    if (!bytes || !reading_.spendNodes(countSeparators(*bytes))) {
        if (reading_.gaveUp())
            xmlStopParser(parser);
        return nullptr;
    }
    const std::string known = fileUri(*path); // from now on nothing throws: nobody would free the input
    const xmlParserInputBufferPtr buffer =
        xmlParserInputBufferCreateMem(bytes->data(), static_cast<int>(bytes->size()), XML_CHAR_ENCODING_NONE);
    const xmlParserInputPtr input =
        buffer ? xmlNewIOInputStream(parser, buffer, XML_CHAR_ENCODING_NONE) : nullptr;
    if (input)
        input->filename = reinterpret_cast<char*>(xmlStrdup(xml(known.c_str())));
    return input;
}

void Run::takeReference(xmlParserCtxtPtr parser, const xmlChar* name) {
    const xmlEntity* entity = xmlSAX2GetEntity(parser, name);
    const std::string_view text = entity ? view(entity->content) : std::string_view();
    if (text.empty()) {
        if (!entity || entity->etype != XML_INTERNAL_GENERAL_ENTITY)
            reading_.warning(placeOf(parser), "The entity \"" + std::string(view(name)) +
                                                  "\" was left out: a schema takes in no external entities.");
        return;
    }
    if (text.find_first_of("<&") == std::string_view::npos)
        xmlSAX2Characters(parser, xml(text.data()), static_cast<int>(text.size()));
    else
        reading_.warning(placeOf(parser), "The entity \"" + std::string(view(name)) +
                                              "\" was left out: a schema's entities may hold only text.");
}

void Run::wrapCallbacks(xmlSAXHandler& sax) {
    sax.comment = nullptr;
    sax.processingInstruction = nullptr;
    sax.cdataBlock = sax.characters;
    sax.startElementNs = [](void* parser, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                            int namespaces, const xmlChar** declared, int attributes, int defaulted,
                            const xmlChar** values) {
        call(parser, [&](xmlParserCtxtPtr p) {
            if (current->spend(p, static_cast<std::size_t>(1 + namespaces + attributes)))
                xmlSAX2StartElementNs(p, name, prefix, uri, namespaces, declared, attributes, defaulted,
                                      values);
        });
    };
    sax.reference = [](void* parser, const xmlChar* name) {
        call(parser, [&](xmlParserCtxtPtr p) { current->takeReference(p, name); });
    };
    sax.getEntity = [](void* parser, const xmlChar* name) {
        const xmlEntityPtr entity = xmlSAX2GetEntity(parser, name);
        call(parser, [&](xmlParserCtxtPtr p) { current->spendEntity(p, entity); });
        return entity;
    };
    sax.getParameterEntity = [](void* parser, const xmlChar* name) {
        const xmlEntityPtr entity = xmlSAX2GetParameterEntity(parser, name);
        call(parser, [&](xmlParserCtxtPtr p) { current->spendEntity(p, entity); });
        return entity;
    };
    sax.elementDecl = [](void* parser, const xmlChar* name, int type, xmlElementContentPtr content) {
        call(parser, [&](xmlParserCtxtPtr p) {
            if (current->spend(p, 1))
                xmlSAX2ElementDecl(p, name, type, content);
        });
    };
    sax.attributeDecl = [](void* parser, const xmlChar* element, const xmlChar* name, int type, int use,
                           const xmlChar* value, xmlEnumerationPtr tree) {
        bool isSpent = false;
        call(parser, [&](xmlParserCtxtPtr p) { isSpent = current->spend(p, 1); });
        if (isSpent)
            xmlSAX2AttributeDecl(parser, element, name, type, use, value, tree);
        else
            xmlFreeEnumeration(tree); // the callback's to free
    };
    sax.entityDecl = [](void* parser, const xmlChar* name, int type, const xmlChar* publicId,
                        const xmlChar* systemId, xmlChar* content) {
        call(parser, [&](xmlParserCtxtPtr p) {
            if (current->spend(p, 1))
                xmlSAX2EntityDecl(p, name, type, publicId, systemId, content);
        });
    };
    sax.warning = nullptr;
    sax.error = nullptr;
    sax.fatalError = nullptr;
    sax.serror = [](void* parser, xmlErrorPtr error) {
        if (error)
            call(parser, [&](xmlParserCtxtPtr) { current->takeError(*error); });
    };
}

XmlDocument Run::parse(std::string_view bytes) {
    if (hasTooManyAttributes(bytes)) {
        reading_.error({file_.string()},
                       "An element has more than " + std::to_string(maxAttributes) + " attributes.");
        return XmlDocument();
    }
    const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxtPtr)> parser(xmlNewParserCtxt(),
                                                                            &xmlFreeParserCtxt);
    if (!parser)
        return XmlDocument();
    wrapCallbacks(*parser->sax);
    int options = XML_PARSE_NONET | XML_PARSE_RECOVER | XML_PARSE_COMPACT | XML_PARSE_BIG_LINES;
    if (subset_ == ExternalSubset::read)
        options |= XML_PARSE_DTDLOAD;
    XmlDocument document(xmlCtxtReadMemory(parser.get(), bytes.data(), static_cast<int>(bytes.size()),
                                           fileUri(file_).c_str(), nullptr, options));
    if (failure_)
        std::rethrow_exception(failure_);
    document.isWellFormed = parser->wellFormed != 0;
    return document;
}

} // namespace

XmlDocument parseGuarded(SchemaReading& reading, std::string_view bytes, const fs::path& file,
                         ExternalSubset subset) {
    Run::install();
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()) || !reading.mayGoOn())
        return XmlDocument();
    return Run(reading, file, subset).parse(bytes);
}

XmlDocument loadGuarded(SchemaReading& reading, const fs::path& file, const SchemaPlace& from) {
    const auto bytes = reading.load(file, from);
    return bytes ? parseGuarded(reading, *bytes, file) : XmlDocument();
}

void XmlDocument::free(_xmlDoc* document) {
    if (document)
        xmlFreeDoc(document);
}

const _xmlNode* XmlDocument::root() const {
    return document_ ? xmlDocGetRootElement(document_.get()) : nullptr;
}

namespace {

const xmlNode* elementFrom(const xmlNode* node) {
    while (node && node->type != XML_ELEMENT_NODE)
        node = node->next;
    return node;
}

std::string taken(xmlChar* text) {
    std::string result(view(text));
    xmlFree(text);
    return result;
}

} // namespace

const _xmlNode* firstElement(const _xmlNode* parent) {
    return elementFrom(parent->children);
}

const _xmlNode* nextElement(const _xmlNode* element) {
    return elementFrom(element->next);
}

std::string_view localName(const _xmlNode* element) {
    return view(element->name);
}

std::string_view namespaceOf(const _xmlNode* element) {
    return element->ns ? view(element->ns->href) : std::string_view();
}

bool hasAttribute(const _xmlNode* element, const char* name) {
    return xmlHasNsProp(element, xml(name), nullptr) != nullptr;
}

std::string attributeOf(const _xmlNode* element, const char* name) {
    return taken(xmlGetNoNsProp(element, xml(name)));
}

std::string attributeOf(const _xmlNode* element, const char* namespaceName, const char* name) {
    return taken(xmlGetNsProp(element, xml(name), xml(namespaceName)));
}

std::string textOf(const _xmlNode* element) {
    return taken(xmlNodeGetContent(element));
}

const _xmlNode* parentElement(const _xmlNode* element) {
    return element->parent && element->parent->type == XML_ELEMENT_NODE ? element->parent : nullptr;
}

int lineOf(const _xmlNode* element) {
    return static_cast<int>(xmlGetLineNo(element));
}

std::string namespaceOfPrefix(const _xmlNode* element, const std::string& prefix) {
    if (prefix == "xml")
        return reinterpret_cast<const char*>(XML_XML_NAMESPACE);
    for (const xmlNode* node = element; node && node->type == XML_ELEMENT_NODE; node = node->parent)
        for (const xmlNs* ns = node->nsDef; ns; ns = ns->next)
            if (view(ns->prefix) == prefix)
                return std::string(view(ns->href));
    return {};
}

void forEachDeclaration(const _xmlNode* element,
                        const std::function<void(std::string_view, std::string_view)>& take) {
    for (const xmlNs* ns = element->nsDef; ns; ns = ns->next)
        take(view(ns->prefix), view(ns->href));
}

} // namespace tavrin
