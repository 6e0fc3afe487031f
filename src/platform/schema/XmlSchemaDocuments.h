#pragma once

#include "platform/schema/SchemaReading.h"
#include "platform/schema/VocabularyBuilder.h"

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

struct _xmlNode;

namespace tavrin {

inline constexpr char xmlSchemaNamespace[] = "http://www.w3.org/2001/XMLSchema";

/// The documents of an XML Schema, each checked before it is handed on: well-formed, without a document type,
/// without patterns, within the limits. Notes on the way what the model of the schema does not tell:
/// prefixes, and the documentation of single values.
class XmlSchemaDocuments {
  public:
    explicit XmlSchemaDocuments(SchemaReading& reading) : reading_(reading) {}

    /// A document as bytes to be parsed, empty when it must not be. Lines count as in the file; columns only
    /// when hasColumns says so.
    [[nodiscard]] const std::string& checked(const std::filesystem::path& file, const SchemaPlace& from = {});
    [[nodiscard]] bool hasColumns(const std::filesystem::path& file) const;

    void notePrefixes(VocabularyBuilder& builder) const;
    /// The prefix that the schema gives a namespace, empty when it gives none.
    [[nodiscard]] std::string prefixOf(const std::string& namespaceName) const;
    /// What the schema says about one value of a simple type, found by its owner: a named type ("type name"),
    /// or the attribute or element that it is written in ("attribute name", "element name").
    [[nodiscard]] std::u16string documentationOf(const std::string& owner, const std::string& value) const;

  private:
    struct Document {
        std::string bytes = {};
        bool hasColumns = true;
    };

    void note(const _xmlNode* element, const std::string& owner);

    SchemaReading& reading_;
    std::map<std::filesystem::path, Document> documents_;
    std::vector<std::pair<std::string, std::string>> prefixes_; ///< namespace and prefix
    std::map<std::pair<std::string, std::string>, std::u16string> values_;
};

/// The text of the xs:documentation elements in an xs:annotation: those without a language or in English if
/// there are any, else the first.
[[nodiscard]] std::u16string annotationText(const _xmlNode* annotation);

} // namespace tavrin
