#include "platform/schema/SchemaAssociation.h"

#include "platform/schema/SchemaLocation.h"
#include "platform/schema/SchemaText.h"

#include <algorithm>
#include <string_view>

namespace tavrin {

namespace {

namespace fs = std::filesystem;

std::string inQuotes(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

class Association {
  public:
    explicit Association(const AssociationInput& input)
        : input_(input), folder_(input.document.parent_path()) {}

    std::vector<SchemaCandidate> all() {
        addBound();
        addLocations();
        addModels();
        addDocumentType();
        addUserMap();
        addCatalog();
        for (const auto& vocabulary : input_.builtIn)
            for (const std::u16string& name : vocabulary->namespaces())
                candidates_.push_back({.origin = SchemaOrigin::builtIn,
                                       .namespaceName = name,
                                       .reason = "built in",
                                       .builtIn = vocabulary});
        return std::move(candidates_);
    }

  private:
    /// The file for a location; else the candidate tells what is wrong.
    std::optional<fs::path> resolve(SchemaCandidate& candidate, std::string_view publicId,
                                    const std::string& location) const {
        if (input_.catalog) {
            if (auto found = input_.catalog->resolveExternal(publicId, location))
                return found;
            if (!location.empty())
                if (auto found = input_.catalog->resolveUri(location))
                    return found;
        }
        if (auto file = localFile(location, folder_))
            return file;
        if (!input_.catalog)
            candidate.problem = "The catalogs are still being read.";
        else if (location.empty())
            candidate.problem = "No catalog knows the public identifier " + inQuotes(publicId) +
                                ", and there is no system identifier.";
        else if (schemeOf(location).empty())
            candidate.problem = inQuotes(location) + " is relative, and the document has no file yet.";
        else
            candidate.problem = inQuotes(location) +
                                " is no local file, and nothing is fetched from a network. A catalog entry "
                                "<uri name=" +
                                inQuotes(location) +
                                " uri=\"...\"/> or a schema bound to the document serves.";
        return std::nullopt;
    }

    void add(SchemaCandidate candidate, std::string_view publicId = {}) {
        if (auto file = resolve(candidate, publicId, candidate.location))
            candidate.request = SchemaRequest{.file = *file};
        candidates_.push_back(std::move(candidate));
    }

    void addBound() {
        for (const SchemaOrigin by : {SchemaOrigin::host, SchemaOrigin::user})
            for (const AssociationInput::Bound& bound : input_.bound)
                if (bound.by == by)
                    candidates_.push_back({.origin = by,
                                           .reason = by == SchemaOrigin::user
                                                         ? "bound to this document by the user"
                                                         : "bound to this document by the program",
                                           .location = pathText(bound.file),
                                           .request = SchemaRequest{.file = bound.file}});
    }

    void addLocations() {
        for (const auto& [name, location] : input_.declarations.schemaLocations)
            add({.origin = SchemaOrigin::schemaLocation,
                 .namespaceName = name,
                 .reason = "the document's xsi:schemaLocation",
                 .location = toUtf8(location)});
        if (const auto& location = input_.declarations.noNamespaceSchemaLocation; !location.empty())
            add({.origin = SchemaOrigin::noNamespaceSchemaLocation,
                 .namespaceName = u"",
                 .reason = "the document's xsi:noNamespaceSchemaLocation",
                 .location = toUtf8(location)});
    }

    void addModels() {
        for (const DocumentDeclarations::Model& model : input_.declarations.models) {
            SchemaCandidate candidate{.origin = SchemaOrigin::xmlModel,
                                      .reason = "the document's <?xml-model?>",
                                      .location = toUtf8(model.href)};
            const bool isSchematron = model.schemaTypeNamespace.find(u"schematron") != std::u16string::npos;
            const bool isCompact =
                model.href.ends_with(u".rnc") || model.type.find(u"compact-syntax") != std::u16string::npos;
            if (isSchematron)
                continue; // checks documents and offers nothing
            if (isCompact) {
                candidate.problem = "The compact syntax of RELAX NG is not read; its XML syntax is.";
                candidates_.push_back(std::move(candidate));
            } else if (!model.href.empty()) {
                add(std::move(candidate));
            }
        }
    }

    void addDocumentType() {
        const auto& type = input_.declarations.documentType;
        if (!type)
            return;
        // An internal subset with nothing but characters' entities makes no other schema.
        const auto declares = [&](std::u16string_view word) {
            return type->internalSubset.find(word) != std::u16string::npos;
        };
        const bool isOwn = !type->declaration.empty() &&
                           (declares(u"<!ELEMENT") || declares(u"<!ATTLIST") || declares(u"%"));
        if (!isOwn && type->publicId.empty() && type->systemId.empty())
            return;
        SchemaCandidate candidate{.origin = SchemaOrigin::documentType,
                                  .reason = "the document's DOCTYPE",
                                  .location = toUtf8(type->systemId)};
        const std::string publicId = toUtf8(type->publicId);
        if (!publicId.empty())
            candidate.reason += ", public identifier " + inQuotes(publicId);
        if (isOwn) {
            candidate.reason += ", with its internal subset";
            candidate.request = SchemaRequest{.doctype = type->declaration, .document = input_.document};
            candidates_.push_back(std::move(candidate));
        } else {
            add(std::move(candidate), publicId);
        }
    }

    void addUserMap() {
        for (const SchemaRule& rule : input_.preferences.rules) {
            SchemaCandidate candidate{.origin = SchemaOrigin::userMap, .location = rule.schema};
            switch (rule.kind) {
            case SchemaRule::Kind::namespaceName:
                candidate.namespaceName = toUtf16(rule.pattern);
                candidate.reason = "the user's map, for the namespace";
                if (std::ranges::find(input_.namespaces, *candidate.namespaceName) == input_.namespaces.end())
                    continue;
                break;
            case SchemaRule::Kind::rootElement:
                candidate.reason = "the user's map, for the root element " + inQuotes(rule.pattern);
                if (!input_.declarations.root || toUtf8(input_.declarations.root->localName) != rule.pattern)
                    continue;
                break;
            case SchemaRule::Kind::filePattern:
                candidate.reason = "the user's map, for files " + inQuotes(rule.pattern);
                if (!matchesFilePattern(input_.document, rule.pattern))
                    continue;
                break;
            }
            add(std::move(candidate));
        }
    }

    void addCatalog() {
        if (!input_.catalog)
            return;
        for (const std::u16string& name : input_.namespaces) {
            if (name.empty())
                continue;
            const std::string uri = toUtf8(name);
            auto file = input_.catalog->resolveUri(uri);
            if (!file)
                file = input_.catalog->resolveExternal({}, uri);
            if (file)
                candidates_.push_back({.origin = SchemaOrigin::catalog,
                                       .namespaceName = name,
                                       .reason = "a catalog knows the namespace name",
                                       .location = uri,
                                       .request = SchemaRequest{.file = *file}});
        }
    }

    const AssociationInput& input_;
    fs::path folder_;
    std::vector<SchemaCandidate> candidates_;
};

} // namespace

std::vector<SchemaCandidate> associate(const AssociationInput& input) {
    return Association(input).all();
}

} // namespace tavrin
