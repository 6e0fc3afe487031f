#pragma once

#include "platform/schema/SchemaReading.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

struct _xmlDoc;
struct _xmlNode;

namespace tavrin {

/// A document of libxml2, freed with it.
class XmlDocument {
  public:
    explicit XmlDocument(_xmlDoc* document = nullptr) : document_(document, &XmlDocument::free) {}

    [[nodiscard]] _xmlDoc* get() const { return document_.get(); }
    /// The document element; null when there is none.
    [[nodiscard]] const _xmlNode* root() const;
    [[nodiscard]] explicit operator bool() const { return document_ != nullptr; }

    bool isWellFormed = false; ///< what is not holds what could be read

  private:
    static void free(_xmlDoc* document);

    std::unique_ptr<_xmlDoc, void (*)(_xmlDoc*)> document_;
};

enum class ExternalSubset { ignored, read };

/// Parses a document with libxml2, which keeps to its own limits and to those of the reading. Nothing comes
/// from a network; other files are read only for the external subset of a DTD, by way of the reading.
/// Comments, processing instructions and references to entities with elements leave no trace in the tree.
/// `place` says what errors count from: a file and the line that is the first one's.
[[nodiscard]] XmlDocument parseGuarded(SchemaReading& reading, std::string_view bytes,
                                       const std::filesystem::path& file,
                                       ExternalSubset subset = ExternalSubset::ignored);

/// Loads a file and parses it. Empty when it could not be read; the reading then knows why.
[[nodiscard]] XmlDocument loadGuarded(SchemaReading& reading, const std::filesystem::path& file,
                                      const SchemaPlace& from = {});

// Reading the tree. Names are UTF-8; views live as long as the document.

[[nodiscard]] const _xmlNode* firstElement(const _xmlNode* parent);
[[nodiscard]] const _xmlNode* nextElement(const _xmlNode* element);
[[nodiscard]] std::string_view localName(const _xmlNode* element);
[[nodiscard]] std::string_view namespaceOf(const _xmlNode* element);
[[nodiscard]] bool hasAttribute(const _xmlNode* element, const char* name);
/// The value of an attribute without a namespace; empty when there is none.
[[nodiscard]] std::string attributeOf(const _xmlNode* element, const char* name);
[[nodiscard]] std::string attributeOf(const _xmlNode* element, const char* namespaceName, const char* name);
/// All text in an element.
[[nodiscard]] std::string textOf(const _xmlNode* element);
[[nodiscard]] const _xmlNode* parentElement(const _xmlNode* element);
[[nodiscard]] int lineOf(const _xmlNode* element);
/// The namespace that a prefix (empty: the default) stands for at an element; empty when it is not bound.
[[nodiscard]] std::string namespaceOfPrefix(const _xmlNode* element, const std::string& prefix);
/// Each prefix declared on an element itself, with its namespace.
void forEachDeclaration(const _xmlNode* element,
                        const std::function<void(std::string_view prefix, std::string_view name)>& take);

} // namespace tavrin
