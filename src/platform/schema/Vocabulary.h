#pragma once

#include "platform/schema/ContentModel.h"

#include <cstddef>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tavrin {

/// A name in a namespace; an empty namespace name means none.
struct ExpandedName {
    std::u16string namespaceName = {};
    std::u16string localName = {};

    friend bool operator==(const ExpandedName&, const ExpandedName&) = default;
    friend auto operator<=>(const ExpandedName&, const ExpandedName&) = default;
};

/// One value that an attribute may have, or, as a description, words about the values that it may have
/// ("a length"): shown, but not written.
struct AttributeValue {
    std::u16string text = {};
    std::u16string documentation = {};
    bool isDescription = false;

    friend bool operator==(const AttributeValue&, const AttributeValue&) = default;
};

/// An attribute as one or more elements have it.
struct VocabularyAttribute {
    ExpandedName name = {};
    std::u16string documentation = {};
    std::vector<AttributeValue> values = {}; ///< in the schema's order
    bool hasDefault = false;                 ///< the schema supplies a value when it is left out

    friend bool operator==(const VocabularyAttribute&, const VocabularyAttribute&) = default;
};

/// An attribute on one element. `attribute` indexes Vocabulary::attribute.
struct AttributeUse {
    int attribute = 0;
    bool isRequired = false;
};

/// An element as the schema declares it; all declarations of one name are merged into one.
struct VocabularyElement {
    ExpandedName name = {};
    std::u16string documentation = {};
    std::u16string writtenTemplate = {}; ///< by hand, with the vocabulary's own prefixes; empty: derived
    bool textAllowed = false;
    bool isRoot = false; ///< may be the document element
    ContentModel content = {};
    std::vector<int> children = {};  ///< named in the content model, each once, in its order
    std::vector<int> wildcards = {}; ///< of the content model, each once; indexes into Vocabulary::wildcard
    std::vector<AttributeUse> attributes = {};
};

/// What a schema knows: elements with children, attributes, values, documentation and templates.
///
/// Immutable once built (VocabularyBuilder), so it is shared between documents and threads without locks.
/// Elements and attributes are numbered from 0 in the order of the schema; a query is a look-up.
class Vocabulary {
  public:
    [[nodiscard]] int elementCount() const { return static_cast<int>(elements_.size()); }
    [[nodiscard]] const VocabularyElement& element(int id) const { return elements_[id]; }
    [[nodiscard]] const VocabularyAttribute& attribute(int id) const { return attributes_[id]; }
    [[nodiscard]] const Wildcard& wildcard(int id) const { return particles_.wildcard(id); }
    [[nodiscard]] const ParticlePool& particles() const { return particles_; }

    /// The element of that name, -1 when there is none.
    [[nodiscard]] int findElement(std::u16string_view namespaceName, std::u16string_view localName) const;
    /// Every element of a namespace.
    [[nodiscard]] std::span<const int> elementsOf(std::u16string_view namespaceName) const;
    /// The elements that may be the document element.
    [[nodiscard]] std::span<const int> roots() const { return roots_; }
    /// The values of an attribute over all elements of `elementNamespace`, each once, in the schema's order.
    [[nodiscard]] std::span<const AttributeValue> attributeValues(std::u16string_view elementNamespace,
                                                                  const ExpandedName& attribute) const;
    /// The attribute of that name on the element; null when it has none.
    [[nodiscard]] const VocabularyAttribute* findAttribute(int element, const ExpandedName& name) const;

    /// Namespaces of its elements, in order of first mention.
    [[nodiscard]] std::span<const std::u16string> namespaces() const { return namespaces_; }
    /// The prefix that the schema itself uses for a namespace, of its elements or its attributes; empty when
    /// it gives none.
    [[nodiscard]] std::u16string_view prefixOf(std::u16string_view namespaceName) const;

  private:
    friend class VocabularyBuilder;

    using ValueKey = std::pair<std::u16string, ExpandedName>;

    ParticlePool particles_;
    std::vector<VocabularyElement> elements_;
    std::vector<VocabularyAttribute> attributes_;
    std::vector<int> roots_;
    std::vector<std::u16string> namespaces_;
    /// By namespace, then by local name; transparent, so that a look-up makes no string.
    std::map<std::u16string, std::map<std::u16string, int, std::less<>>, std::less<>> ids_;
    std::map<std::u16string, std::vector<int>, std::less<>> byNamespace_;
    std::map<std::u16string, std::u16string, std::less<>> prefixes_;
    std::map<ValueKey, std::vector<AttributeValue>> values_;
};

} // namespace tavrin
