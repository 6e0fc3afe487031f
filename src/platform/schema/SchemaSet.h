#pragma once

#include "platform/schema/ContentMatcher.h"
#include "platform/schema/Vocabulary.h"
#include "platform/schema/XSchema.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// A vocabulary with the matcher of its content models.
class VocabularyInUse {
  public:
    explicit VocabularyInUse(std::shared_ptr<const Vocabulary> vocabulary)
        : vocabulary_(std::move(vocabulary)) {}

    [[nodiscard]] const Vocabulary& vocabulary() const { return *vocabulary_; }
    [[nodiscard]] const std::shared_ptr<const Vocabulary>& shared() const { return vocabulary_; }
    /// Made when it is first wanted, and anew when it has grown by very many questions.
    [[nodiscard]] ContentMatcher& matcher();

  private:
    std::shared_ptr<const Vocabulary> vocabulary_;
    std::unique_ptr<ContentMatcher> matcher_;
    int questions_ = 0;
};

/// The vocabularies of one document at one time, and which of them answers for which namespace.
struct SchemaSet {
    struct Member {
        std::shared_ptr<VocabularyInUse> use;
        bool isBuiltIn = false;
        bool givesRoots = false; ///< its root elements are offered in a document without one
    };

    std::vector<Member> members = {};
    /// Namespace name to index into `members`.
    std::map<std::u16string, int, std::less<>> answering = {};
    /// The member that the DOCTYPE gave; it knows names that have no namespace in the text but one by a fixed
    /// xmlns attribute in the DTD. -1: none.
    int documentType = -1;
    std::u16string rootName = {};          ///< of the DOCTYPE
    std::optional<ExpandedName> root = {}; ///< the document element

    [[nodiscard]] const Vocabulary& vocabulary(int member) const { return members[member].use->vocabulary(); }
};

/// The schema service for one place of a document.
///
/// Beside what the schemas say of an element itself it offers
/// - where a content model has a wildcard: the elements of the document's other vocabularies (below an XSLT
///   element all of them, elsewhere their root elements); not XSL-FO's below XSLT and the other way round,
///   which whoever asks adds itself;
/// - below and on literal result elements of a stylesheet, that is elements that are neither XSLT nor XSL-FO
///   where the XSLT namespace is bound: the instructions of XSLT, and its attributes for such elements;
/// - where the schema instance namespace is bound: its attributes.
[[nodiscard]] SmartPtr<IXSchema> makeSchemaService(std::shared_ptr<const SchemaSet> schemas,
                                                   SchemaContext context);

} // namespace tavrin
