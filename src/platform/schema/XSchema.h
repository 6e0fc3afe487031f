#pragma once

#include "platform/core/RefObject.h"
#include "platform/core/SmartPtr.h"
#include "platform/schema/Vocabulary.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin {

/// What enumerations have in common: next() goes to the next entry, the first one included; false when there
/// is none. The other operations read the entry that next() went to.
class SchemaEnum : public RefObject {
  public:
    virtual bool next() = 0;
};

class SchemaElementEnum : public SchemaEnum {
  public:
    [[nodiscard]] virtual std::u16string getLocalName() = 0;
    /// The prefix to show: the one that the document binds there, else the vocabulary's own. Empty for no
    /// namespace and for the default namespace.
    [[nodiscard]] virtual std::u16string getPrefix() = 0;
    [[nodiscard]] virtual std::u16string getNamespace() = 0;
    [[nodiscard]] virtual std::u16string getDocumentation() = 0;
    /// False when the content model has no room for the element among the siblings of the context.
    [[nodiscard]] virtual bool isAllowedHere() = 0;
};

class SchemaAttributeEnum : public SchemaEnum {
  public:
    /// As it is written, with its prefix when it has a namespace.
    [[nodiscard]] virtual std::u16string getName() = 0;
    /// The schema supplies a value when the attribute is left out.
    [[nodiscard]] virtual bool isMarked() = 0;
    /// The attribute is required.
    [[nodiscard]] virtual bool isEmphasised() = 0;
    [[nodiscard]] virtual std::u16string getDocumentation() = 0;
};

class SchemaValueEnum : public SchemaEnum {
  public:
    [[nodiscard]] virtual std::u16string getValue() = 0;
    [[nodiscard]] virtual std::u16string getDocumentation() = 0;
    [[nodiscard]] virtual std::u16string getExtra() = 0;
    /// The entry describes values ("a length") and is not one itself.
    [[nodiscard]] virtual bool isDescription() = 0;
};

/// The schema service: what may stand at one place of one document.
///
/// Answers are look-ups. Names that no schema knows give empty enumerations, never null ones.
class IXSchema : public RefObject {
  public:
    /// The elements that may be the document element.
    virtual SmartPtr<SchemaElementEnum> getRootElements() = 0;
    virtual SmartPtr<SchemaElementEnum> getNamespaceElements(const std::u16string& namespaceName) = 0;
    virtual SmartPtr<SchemaElementEnum> getChildElements(const std::u16string& namespaceName,
                                                         const std::u16string& localName) = 0;
    virtual SmartPtr<SchemaAttributeEnum> getElementAttributes(const std::u16string& namespaceName,
                                                               const std::u16string& localName) = 0;
    /// Values of an attribute, as its name is written, on whatever element of the namespace.
    virtual SmartPtr<SchemaValueEnum> getAttributeValues(const std::u16string& namespaceName,
                                                         const std::u16string& attributeName) = 0;
    /// What follows the name of a new element: the rest of its start tag, required content, end tag. "*"
    /// marks the caret's place, "_" stands for a tab; empty for an unknown element.
    virtual std::u16string getElementTemplate(const std::u16string& namespaceName,
                                              const std::u16string& localName) = 0;
};

/// What a document says around the place where completion was asked for.
struct SchemaContext {
    /// Prefix (empty: default) and namespace name of each declaration in force, each prefix once.
    std::vector<std::pair<std::u16string, std::u16string>> bindings;
    /// Elements before and after the place with the same parent, in document order. Those nearest to the
    /// place are there; `...Complete` is false when more lie beyond.
    std::vector<ExpandedName> siblingsBefore;
    std::vector<ExpandedName> siblingsAfter;
    bool isBeforeComplete = true;
    bool isAfterComplete = true;

    /// The namespace that a prefix stands for; empty when it is not bound.
    [[nodiscard]] std::u16string_view namespaceOf(std::u16string_view prefix) const;
    /// The prefix to write for an element of a namespace; null when none is bound. The default namespace
    /// wins.
    [[nodiscard]] const std::u16string* prefixFor(std::u16string_view namespaceName) const;
};

/// Gives the schema service of one document.
class ISchemaSource {
  public:
    virtual ~ISchemaSource() = default;
    [[nodiscard]] virtual SmartPtr<IXSchema> schemaAt(const SchemaContext& context) = 0;
};

/// Where the schema service is found: the one in force, which a scope below sets for the time of one
/// completion. This is the only process-wide state of the schema layer; it belongs to the thread of the
/// editor.
class XSchema {
  public:
    /// Null outside of every scope.
    [[nodiscard]] static SmartPtr<IXSchema> get();

    /// Puts a service in force while it lives; scopes nest.
    class Scope {
      public:
        explicit Scope(SmartPtr<IXSchema> service);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

      private:
        SmartPtr<IXSchema> outer_;
    };
};

} // namespace tavrin
