#pragma once

#include "platform/schema/XSchema.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tavrin::test {

/// What one enumeration gives, entry by entry.
struct FakeEntry {
    std::u16string name;
    std::u16string prefix = {};
    std::u16string namespaceName = {};
    std::u16string documentation = {};
    bool first = false;  ///< attribute: isMarked; value: isDescription
    bool second = false; ///< attribute: isEmphasised
    bool allowedHere = true;
};
using FakeEntries = std::vector<FakeEntry>;

template <class Base>
class FakeEnum : public Base {
  public:
    explicit FakeEnum(FakeEntries entries) : entries_(std::move(entries)) {}
    bool next() override { return ++at_ < static_cast<int>(entries_.size()); }
    std::u16string getDocumentation() override { return entry().documentation; }

  protected:
    [[nodiscard]] const FakeEntry& entry() const { return entries_[static_cast<std::size_t>(at_)]; }

  private:
    FakeEntries entries_;
    int at_ = -1;
};

class FakeElements final : public FakeEnum<SchemaElementEnum> {
  public:
    using FakeEnum::FakeEnum;
    std::u16string getLocalName() override { return entry().name; }
    std::u16string getPrefix() override { return entry().prefix; }
    std::u16string getNamespace() override { return entry().namespaceName; }
    bool isAllowedHere() override { return entry().allowedHere; }
};

class FakeAttributes final : public FakeEnum<SchemaAttributeEnum> {
  public:
    using FakeEnum::FakeEnum;
    std::u16string getName() override { return entry().name; }
    bool isMarked() override { return entry().first; }
    bool isEmphasised() override { return entry().second; }
};

class FakeValues final : public FakeEnum<SchemaValueEnum> {
  public:
    using FakeEnum::FakeEnum;
    std::u16string getValue() override { return entry().name; }
    std::u16string getExtra() override { return entry().prefix; }
    bool isDescription() override { return entry().first; }
};

/// A schema service of a few tables; what is not in them is empty. It is its own source and keeps the context
/// that it was asked with last.
class FakeSchema final : public IXSchema, public ISchemaSource {
  public:
    using Key = std::pair<std::u16string, std::u16string>;

    FakeSchema() { AddRef(); } // lives on the stack of a test

    SmartPtr<SchemaElementEnum> getRootElements() override { return new FakeElements(roots); }
    SmartPtr<SchemaElementEnum> getNamespaceElements(const std::u16string& name) override {
        return new FakeElements(ofNamespace[name]);
    }
    SmartPtr<SchemaElementEnum> getChildElements(const std::u16string& namespaceName,
                                                 const std::u16string& localName) override {
        return new FakeElements(children[{namespaceName, localName}]);
    }
    SmartPtr<SchemaAttributeEnum> getElementAttributes(const std::u16string& namespaceName,
                                                       const std::u16string& localName) override {
        return new FakeAttributes(attributes[{namespaceName, localName}]);
    }
    SmartPtr<SchemaValueEnum> getAttributeValues(const std::u16string& namespaceName,
                                                 const std::u16string& attribute) override {
        return new FakeValues(values[{namespaceName, attribute}]);
    }
    std::u16string getElementTemplate(const std::u16string& namespaceName,
                                      const std::u16string& localName) override {
        return templates[{namespaceName, localName}];
    }
    SmartPtr<IXSchema> schemaAt(const SchemaContext& context) override {
        lastContext = context;
        return this;
    }

    FakeEntries roots;
    std::map<std::u16string, FakeEntries> ofNamespace;
    std::map<Key, FakeEntries> children;
    std::map<Key, FakeEntries> attributes;
    std::map<Key, FakeEntries> values; ///< by namespace and attribute name
    std::map<Key, std::u16string> templates;
    SchemaContext lastContext;

  protected:
    void OnFinalRelease() override {}
};

} // namespace tavrin::test
