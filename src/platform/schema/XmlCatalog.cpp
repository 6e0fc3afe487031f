#include "platform/schema/XmlCatalog.h"

#include "platform/schema/SchemaLocation.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/uri.h>
#include <memory>

namespace tavrin {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t maxCatalogs = 1000;
constexpr std::uintmax_t maxBytes = 16U << 20U;

constexpr const char* catalogNamespace = "urn:oasis:names:tc:entity:xmlns:xml:catalog";

const xmlChar* xmlText(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

std::string taken(xmlChar* text) {
    if (!text)
        return {};
    std::string result(reinterpret_cast<const char*>(text));
    xmlFree(text);
    return result;
}

std::string attribute(xmlNode* node, const char* name) {
    return taken(xmlGetNoNsProp(node, xmlText(name)));
}

/// Blanks at the ends dropped, others one space.
std::string normalizedPublicId(std::string_view id) {
    std::string result;
    bool pending = false;
    for (const char c : id) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
            pending = !result.empty();
            continue;
        }
        if (pending)
            result += ' ';
        pending = false;
        result += c;
    }
    return result;
}

} // namespace

/// Reads catalog files, each once, until none is named that was not read.
class XmlCatalogReader {
  public:
    XmlCatalogReader(XmlCatalog& into, const SchemaFiles& contents) : into_(into), contents_(contents) {}

    void readAll(std::span<const fs::path> files) {
        for (const fs::path& file : files)
            into_.first_.push_back(pathText(file));
        waiting_.assign(into_.first_.rbegin(), into_.first_.rend());
        while (!waiting_.empty()) {
            const std::string path = std::move(waiting_.back());
            waiting_.pop_back();
            if (into_.catalogs_.contains(path) || into_.catalogs_.size() >= maxCatalogs)
                continue;
            into_.files_.push_back(pathOf(path));
            read(path, into_.catalogs_[path]);
        }
    }

  private:
    void complain(const std::string& path, int line, const std::string& text) {
        into_.messages_.push_back({.file = path, .line = line, .text = text});
    }

    /// Nothing when that is said already.
    std::optional<std::string> bytesOf(const std::string& path) {
        std::optional<std::string> bytes;
        std::uintmax_t size = 0;
        if (contents_) {
            bytes = contents_(pathOf(path));
            size = bytes ? bytes->size() : 0;
        } else {
            std::error_code error;
            size = fs::file_size(pathOf(path), error);
            std::ifstream file(pathOf(path), std::ios::binary);
            if (!error && file)
                bytes =
                    size > maxBytes ? std::string() : std::string(std::istreambuf_iterator<char>(file), {});
        }
        if (!bytes)
            complain(path, 0, "The catalog can't be read.");
        else if (size > maxBytes)
            complain(path, 0, "The catalog is larger than 16 MB.");
        return size > maxBytes ? std::nullopt : bytes;
    }

    void read(const std::string& path, XmlCatalog::Catalog& catalog) {
        const auto bytes = bytesOf(path);
        if (!bytes)
            return;
        const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(xmlNewParserCtxt(),
                                                                                  &xmlFreeParserCtxt);
        const std::string base = taken(xmlPathToURI(xmlText(path.c_str())));
        const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
            parser ? xmlCtxtReadMemory(parser.get(), bytes->data(), static_cast<int>(bytes->size()),
                                       base.c_str(), nullptr,
                                       XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING)
                   : nullptr,
            &xmlFreeDoc);
        if (!document) {
            const xmlError* reason = parser ? xmlCtxtGetLastError(parser.get()) : nullptr;
            std::string text = reason && reason->message ? reason->message : "The catalog is not XML.";
            while (text.ends_with('\n'))
                text.pop_back();
            return complain(path, reason ? reason->line : 0, text);
        }
        xmlNode* root = xmlDocGetRootElement(document.get());
        if (!root || !xmlStrEqual(root->name, xmlText("catalog")))
            return complain(path, 1, "This is no XML catalog: its document element is not \"catalog\".");
        path_ = &path;
        readEntries(root, true, catalog);
    }

    void readEntries(xmlNode* group, bool prefersPublic, XmlCatalog::Catalog& catalog) {
        const std::string prefer = attribute(group, "prefer");
        if (!prefer.empty())
            prefersPublic = prefer != "system";
        for (xmlNode* node = group->children; node; node = node->next)
            if (node->type == XML_ELEMENT_NODE && node->ns &&
                xmlStrEqual(node->ns->href, xmlText(catalogNamespace)))
                readEntry(node, prefersPublic, catalog);
    }

    void readEntry(xmlNode* node, bool prefersPublic, XmlCatalog::Catalog& catalog) {
        using Of = XmlCatalog::Of;
        using Match = XmlCatalog::Match;
        struct Kind {
            std::string_view element;
            Of of;
            Match match;
            const char* key;
            const char* target;
        };
        static constexpr Kind kinds[] = {
            {"public", Of::publicId, Match::exact, "publicId", "uri"},
            {"system", Of::systemId, Match::exact, "systemId", "uri"},
            {"uri", Of::uri, Match::exact, "name", "uri"},
            {"rewriteSystem", Of::systemId, Match::rewritten, "systemIdStartString", "rewritePrefix"},
            {"rewriteURI", Of::uri, Match::rewritten, "uriStartString", "rewritePrefix"},
            {"systemSuffix", Of::systemId, Match::suffix, "systemIdSuffix", "uri"},
            {"uriSuffix", Of::uri, Match::suffix, "uriSuffix", "uri"},
            {"delegatePublic", Of::publicId, Match::delegated, "publicIdStartString", "catalog"},
            {"delegateSystem", Of::systemId, Match::delegated, "systemIdStartString", "catalog"},
            {"delegateURI", Of::uri, Match::delegated, "uriStartString", "catalog"},
        };
        const std::string_view name = reinterpret_cast<const char*>(node->name);
        if (name == "group")
            return readEntries(node, prefersPublic, catalog);
        if (name == "nextCatalog") {
            if (const auto path = catalogFile(node, "catalog"))
                catalog.next.push_back(*path);
            return;
        }
        const auto kind = std::ranges::find(kinds, name, &Kind::element);
        if (kind == std::end(kinds))
            return;
        XmlCatalog::Entry entry{kind->of, kind->match, prefersPublic, attribute(node, kind->key), {}};
        if (entry.of == Of::publicId)
            entry.key = normalizedPublicId(entry.key);
        if (kind->match == Match::delegated) {
            const auto path = catalogFile(node, kind->target);
            if (!path)
                return;
            entry.target = *path;
        } else {
            entry.target = uriOf(node, kind->target);
        }
        catalog.entries.push_back(std::move(entry));
    }

    /// An attribute's URI reference, made absolute by xml:base and the catalog's own place.
    static std::string uriOf(xmlNode* node, const char* name) {
        const std::string base = taken(xmlNodeGetBase(node->doc, node));
        return taken(xmlBuildURI(xmlText(attribute(node, name).c_str()), xmlText(base.c_str())));
    }

    /// Another catalog's path, which is noted as to be read.
    std::optional<std::string> catalogFile(xmlNode* node, const char* name) {
        const std::string uri = uriOf(node, name);
        const auto file = localFile(uri, {});
        if (!file) {
            complain(*path_, static_cast<int>(xmlGetLineNo(node)),
                     "The catalog \"" + uri + "\" is no local file and is not read.");
            return std::nullopt;
        }
        waiting_.push_back(pathText(*file));
        return waiting_.back();
    }

    XmlCatalog& into_;
    const SchemaFiles& contents_;
    std::vector<std::string> waiting_; ///< the next one at the end
    const std::string* path_ = nullptr;
};

struct XmlCatalog::Query {
    std::string publicId = {};
    std::string systemId = {};
    std::string uri = {};

    [[nodiscard]] const std::string& value(Of of) const {
        return of == Of::publicId ? publicId : of == Of::systemId ? systemId : uri;
    }
    /// Which identifiers there are, as bits. All queries of one search have the same values of them.
    [[nodiscard]] unsigned kinds() const {
        return (publicId.empty() ? 0U : 1U) + (systemId.empty() ? 0U : 2U) + (uri.empty() ? 0U : 4U);
    }
};

XmlCatalog::XmlCatalog(std::span<const fs::path> files, const SchemaFiles& contents) {
    XmlCatalogReader(*this, contents).readAll(files);
}

std::vector<fs::path> XmlCatalog::systemFiles() {
    if (const char* named = std::getenv("XML_CATALOG_FILES")) {
        std::vector<fs::path> files;
        const std::string_view list = named;
        for (std::size_t at = 0; at < list.size();) {
            const std::size_t end = std::min(list.find(' ', at), list.size());
            if (const auto file = localFile(list.substr(at, end - at), {}))
                files.push_back(*file);
            at = end + 1;
        }
        return files;
    }
    std::error_code error;
    const fs::path standard = "/etc/xml/catalog";
    return fs::exists(standard, error) ? std::vector{standard} : std::vector<fs::path>{};
}

std::optional<fs::path> XmlCatalog::resolveExternal(std::string_view publicId,
                                                    std::string_view systemId) const {
    return resolve({.publicId = normalizedPublicId(publicId), .systemId = std::string(systemId)});
}

std::optional<fs::path> XmlCatalog::resolveUri(std::string_view uri) const {
    return resolve({.uri = std::string(uri)});
}

std::optional<fs::path> XmlCatalog::resolve(const Query& query) const {
    for (const std::string& catalog : first_) {
        Asked asked;
        if (const auto found = search(catalog, query, asked))
            if (auto file = localFile(*found, {}))
                return file;
    }
    return std::nullopt;
}

std::optional<std::string> XmlCatalog::search(const std::string& catalog, const Query& query,
                                              Asked& asked) const {
    const auto found = catalogs_.find(catalog);
    if (found == catalogs_.end() || !asked.emplace(&found->second, query.kinds()).second)
        return std::nullopt;
    for (const Of of : {Of::systemId, Of::publicId, Of::uri})
        if (!query.value(of).empty())
            if (auto result = searchEntries(found->second, of, query, asked))
                return result;
    for (const std::string& next : found->second.next)
        if (auto result = search(next, query, asked))
            return result;
    return std::nullopt;
}

std::optional<std::string> XmlCatalog::searchEntries(const Catalog& catalog, Of of, const Query& query,
                                                     Asked& asked) const {
    const std::string& value = query.value(of);
    const auto applies = [&](const Entry& entry, Match match) {
        if (entry.of != of || entry.match != match)
            return false;
        // With a system identifier, a public one counts only where public ones are preferred.
        if (of == Of::publicId && !entry.prefersPublic && !query.systemId.empty())
            return false;
        switch (match) {
        case Match::exact:
            return value == entry.key;
        case Match::suffix:
            return value.ends_with(entry.key);
        case Match::rewritten:
        case Match::delegated:
            break;
        }
        return value.starts_with(entry.key);
    };
    for (const Match match : {Match::exact, Match::rewritten, Match::suffix}) {
        const Entry* longest = nullptr;
        for (const Entry& entry : catalog.entries)
            if (applies(entry, match) && (!longest || entry.key.size() > longest->key.size()))
                longest = &entry;
        if (longest)
            return match == Match::rewritten ? longest->target + value.substr(longest->key.size())
                                             : longest->target;
    }
    std::vector<const Entry*> delegations;
    for (const Entry& entry : catalog.entries)
        if (applies(entry, Match::delegated))
            delegations.push_back(&entry);
    if (delegations.empty())
        return std::nullopt;
    std::ranges::stable_sort(delegations, std::ranges::greater{},
                             [](const Entry* entry) { return entry->key.size(); });
    // Those delegated to see nothing but the identifier that brought the question to them.
    Query narrowed;
    (of == Of::publicId ? narrowed.publicId : of == Of::systemId ? narrowed.systemId : narrowed.uri) = value;
    for (const Entry* entry : delegations)
        if (auto result = search(entry->target, narrowed, asked))
            return result;
    // Strictly the search ends here. It goes on, because a document with both identifiers often has only
    // one of them in catalogs.
    return std::nullopt;
}

} // namespace tavrin
