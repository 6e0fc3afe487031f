#include "platform/schema/SchemaSources.h"

#include "platform/schema/BuiltinVocabularies.h"

namespace tavrin {

namespace {

std::optional<std::filesystem::path> resolve(const XmlCatalog& catalog, const SchemaReference& reference) {
    for (const std::string& id : {reference.systemId, reference.uri})
        if (auto file = catalog.resolveExternal(reference.publicId, id))
            return file;
    for (const std::string& uri : {reference.systemId, reference.uri, reference.namespaceName})
        if (!uri.empty())
            if (auto file = catalog.resolveUri(uri))
                return file;
    return std::nullopt;
}

} // namespace

SchemaLoader fileSchemaLoader() {
    return [](const SchemaRequest& request, const XmlCatalog& catalog, const std::stop_token& stop) {
        const SchemaReadOptions options{
            .resolve = [&](const SchemaReference& reference) { return resolve(catalog, reference); },
            .stop = stop};
        return request.doctype.empty() ? readSchema(request.file, schemaLanguageOf(request.file), options)
                                       : readDoctype(request.doctype, request.document, options);
    };
}

std::vector<std::shared_ptr<const Vocabulary>> builtInVocabularies() {
    return {xsltVocabulary(), foVocabulary()};
}

} // namespace tavrin
