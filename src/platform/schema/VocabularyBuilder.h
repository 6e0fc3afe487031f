#pragma once

#include "platform/schema/Vocabulary.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
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

    /// Whether something was left out because there is far too much of it; stays after finish().
    [[nodiscard]] bool isCutShort() const { return isCutShort_; }

  private:
    /// A set of small numbers that is emptied in no time.
    class Marks {
      public:
        explicit Marks(int size) : marks_(size) {}
        void clear(int size) {
            marks_.resize(size);
            ++current_;
        }
        /// False when the number was there.
        bool insert(int number) { return std::exchange(marks_[number], current_) != current_; }

      private:
        std::vector<int> marks_;
        int current_ = 1;
    };
    /// Values that one namespace has.
    struct SeenValues {
        std::unordered_set<int> attributes;
        std::unordered_map<const ExpandedName*, std::unordered_set<std::u16string>> texts;
    };

    void merge(VocabularyElement& element, ElementDeclaration& declaration);
    void mergeAttributes(VocabularyElement& element, const ElementDeclaration& declaration, bool isFirst);
    int attributeNumber(const VocabularyAttribute& attribute);
    void collectChildren(VocabularyElement& element, Marks& nodes, Marks& children);
    void collectValues(const VocabularyElement& element, SeenValues& seen);
    [[nodiscard]] bool spend(std::size_t& spent, std::size_t count, std::size_t limit);

    std::unique_ptr<Vocabulary> vocabulary_;
    std::vector<bool> declared_;
    std::vector<std::vector<int>> contents_;                    ///< of each element, as its declarations say
    std::map<ExpandedName, std::vector<int>> attributesByName_; ///< numbers of the different declarations
    std::vector<const ExpandedName*> attributeNames_;           ///< keys of that map, by attribute number
    std::size_t uses_ = 0;
    std::size_t childCount_ = 0;
    std::size_t steps_ = 0;
    std::size_t valueCount_ = 0;
    std::size_t collectedValues_ = 0;
    bool isCutShort_ = false;
};

} // namespace tavrin
