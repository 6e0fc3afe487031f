#pragma once

#include "platform/schema/Vocabulary.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// One declaration of an element, as a reader finds it.
struct ElementDeclaration {
    struct Attribute {
        VocabularyAttribute declaration = {};
        bool isRequired = false;
    };

    ExpandedName name = {};
    std::u16string documentation = {};
    std::u16string writtenTemplate = {};
    bool textAllowed = false;
    bool isRoot = false;
    int content = ParticlePool::empty; ///< a node of the builder's particles()
    std::vector<Attribute> attributes = {};
};

/// Puts a vocabulary together from declarations in any order.
///
/// Content models name elements by the number that reference() gives, before or after their declaration.
/// Several declarations of one name are merged: children, attributes and values are united, the content is
/// either one's, an attribute is required only if each requires it.
class VocabularyBuilder {
  public:
    VocabularyBuilder();

    /// The number under which content models name that element.
    [[nodiscard]] int reference(const ExpandedName& name);
    /// Where content models are made.
    [[nodiscard]] ParticlePool& particles() { return vocabulary_->particles_; }

    void declare(ElementDeclaration declaration);
    /// The first prefix given for a namespace stays. For empty prefixes there is nothing to note.
    void notePrefix(std::u16string_view namespaceName, std::u16string_view prefix);

    /// Names that content models hold and nothing declares.
    [[nodiscard]] std::vector<ExpandedName> undeclared() const;
    /// Ends the building; the builder is empty afterwards. Undeclared elements are not offered anywhere.
    [[nodiscard]] std::shared_ptr<const Vocabulary> finish();

  private:
    void merge(VocabularyElement& element, ElementDeclaration& declaration);
    void mergeAttributes(VocabularyElement& element, const ElementDeclaration& declaration, bool isFirst);
    int attributeNumber(const VocabularyAttribute& attribute);
    void collectChildren(VocabularyElement& element) const;
    void collectValues(const VocabularyElement& element);

    std::unique_ptr<Vocabulary> vocabulary_;
    std::vector<bool> declared_;
    std::map<ExpandedName, std::vector<int>> attributesByName_; ///< numbers of the different declarations
};

} // namespace tavrin
