#pragma once

#include "platform/schema/DocumentDeclarations.h"
#include "platform/schema/SchemaLibrary.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavrin {

/// Where a schema of a document comes from, in the order in which they are asked.
enum class SchemaOrigin {
    host,                      ///< the host bound it to the document
    user,                      ///< the user did
    schemaLocation,            ///< the document's xsi:schemaLocation
    noNamespaceSchemaLocation, ///< its xsi:noNamespaceSchemaLocation
    xmlModel,                  ///< its <?xml-model?>
    documentType,              ///< its DOCTYPE
    userMap,                   ///< the user's map
    catalog,                   ///< a catalog knows the namespace name
    builtIn,
};

/// A schema that may serve a document, before it is known what it holds.
struct SchemaCandidate {
    SchemaOrigin origin = SchemaOrigin::builtIn;
    /// The namespace that it is given for; nothing: whatever it holds.
    std::optional<std::u16string> namespaceName = {};
    std::string reason = {};                   ///< why, in words (UTF-8)
    std::string location = {};                 ///< as it was given
    std::optional<SchemaRequest> request = {}; ///< nothing for what is built in and for a problem
    std::string problem = {};                  ///< why there is no file, in words
    std::shared_ptr<const Vocabulary> builtIn = {};

    friend bool operator==(const SchemaCandidate&, const SchemaCandidate&) = default;
};

/// What the candidates of a document follow from.
struct AssociationInput {
    struct Bound {
        std::filesystem::path file = {};
        SchemaOrigin by = SchemaOrigin::user;

        friend bool operator==(const Bound&, const Bound&) = default;
    };

    std::vector<Bound> bound = {};
    DocumentDeclarations declarations = {};
    std::filesystem::path document = {};         ///< its path; empty: it has none
    std::vector<std::u16string> namespaces = {}; ///< that the document uses or binds
    const SchemaPreferences& preferences;
    const XmlCatalog* catalog = nullptr; ///< null: not read yet
    std::span<const std::shared_ptr<const Vocabulary>> builtIn = {};
};

/// Every schema that the document is given, the most preferred first.
[[nodiscard]] std::vector<SchemaCandidate> associate(const AssociationInput& input);

} // namespace tavrin
