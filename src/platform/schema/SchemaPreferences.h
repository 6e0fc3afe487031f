#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tavrin {

class UserSettings;

/// A line of the user's own map: what to read for documents or elements of a kind. All texts are UTF-8.
struct SchemaRule {
    enum class Kind {
        namespaceName, ///< elements of the namespace `pattern`
        rootElement,   ///< documents whose root element has the local name `pattern`
        filePattern,   ///< documents whose file matches `pattern`, such as "*.dbk"
    };

    Kind kind = Kind::namespaceName;
    std::string pattern = {};
    std::string schema = {}; ///< a path, or a URI that a catalog knows

    friend bool operator==(const SchemaRule&, const SchemaRule&) = default;
};

/// What the user has decided about schemas, for all documents.
struct SchemaPreferences {
    std::vector<SchemaRule> rules = {};
    std::vector<std::filesystem::path> catalogs = {};
    /// Schemas bound to single documents, by the document's path.
    std::map<std::filesystem::path, std::vector<std::filesystem::path>> bound = {};

    friend bool operator==(const SchemaPreferences&, const SchemaPreferences&) = default;
};

/// Reads what saveSchemaPreferences wrote; entries that make no sense are left out.
[[nodiscard]] SchemaPreferences loadSchemaPreferences(const UserSettings& settings);
void saveSchemaPreferences(const SchemaPreferences& preferences, UserSettings& settings);

} // namespace tavrin
