#pragma once

#include "platform/schema/SchemaReader.h"

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin {

/// OASIS XML catalogs, read once with all that they delegate to; immutable, so it is shared between threads.
///
/// Only files are read: a catalog elsewhere, or one that is none, is a message. What is looked up are the
/// local files that entries lead to.
class XmlCatalog {
  public:
    XmlCatalog() = default;
    /// Reads the catalogs, the first one first asked; from the disk, or from what stands for it.
    explicit XmlCatalog(std::span<const std::filesystem::path> files, const SchemaFiles& contents = {});

    /// The catalogs of the system: those named by XML_CATALOG_FILES, else /etc/xml/catalog if there is one.
    [[nodiscard]] static std::vector<std::filesystem::path> systemFiles();

    /// The file for an external identifier; either part may be empty.
    [[nodiscard]] std::optional<std::filesystem::path> resolveExternal(std::string_view publicId,
                                                                       std::string_view systemId) const;
    /// The file for a URI reference, such as a namespace name.
    [[nodiscard]] std::optional<std::filesystem::path> resolveUri(std::string_view uri) const;

    [[nodiscard]] const std::vector<SchemaMessage>& messages() const { return messages_; }
    /// Every catalog that was read or should have been.
    [[nodiscard]] const std::vector<std::filesystem::path>& files() const { return files_; }

  private:
    friend class XmlCatalogReader;

    /// Exact is "public", "system" or "uri"; prefixed are "rewriteSystem" and "rewriteURI".
    enum class Match { exact, rewritten, suffix, delegated };
    enum class Of { publicId, systemId, uri };

    struct Entry {
        Of of = Of::uri;
        Match match = Match::exact;
        bool prefersPublic = true;
        std::string key = {};
        std::string target = {}; ///< a URI; of a delegation the catalog's path
    };
    struct Catalog {
        std::vector<Entry> entries = {};
        std::vector<std::string> next = {}; ///< paths, in order
    };

    struct Query;
    /// Catalogs that were asked, and with which of the identifiers. A catalog may lead to itself, and many
    /// may lead to one.
    using Asked = std::set<std::pair<const Catalog*, unsigned>>;
    [[nodiscard]] std::optional<std::filesystem::path> resolve(const Query& query) const;
    /// The URI that the catalog, or one that it leads to, has for the query.
    [[nodiscard]] std::optional<std::string> search(const std::string& catalog, const Query& query,
                                                    Asked& asked) const;
    [[nodiscard]] std::optional<std::string> searchEntries(const Catalog& catalog, Of of, const Query& query,
                                                           Asked& asked) const;

    std::vector<std::string> first_; ///< paths
    std::map<std::string, Catalog> catalogs_;
    std::vector<SchemaMessage> messages_;
    std::vector<std::filesystem::path> files_;
};

} // namespace tavrin
