#pragma once

#include "platform/schema/SchemaAssociation.h"
#include "platform/schema/SchemaLibrary.h"
#include "platform/schema/SchemaSet.h"
#include "platform/schema/XSchema.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tavrin {

/// What became of one candidate, for people who want to know.
struct SchemaDecision {
    SchemaCandidate candidate = {};
    std::shared_ptr<const SharedSchema> schema = {}; ///< null: built in, has a problem, or was not needed
    std::vector<std::u16string> answersFor = {};     ///< namespaces; empty: another one came first
};

/// The schemas of one document: finds them out anew whenever completion asks, which costs a look at the
/// beginning of the text, and gives the service that answers for a place.
class DocumentSchemas final : public ISchemaSource {
  public:
    struct Document {
        /// The text up to so many code units, lines divided by line feeds.
        std::function<std::u16string(std::size_t atMost)> beginning;
        /// Empty for a document without a file.
        std::function<std::filesystem::path()> path;
    };

    /// What a document says of itself must stand within so many code units.
    static constexpr std::size_t longestBeginning = 64 * 1024;

    /// `library` outlives the object.
    DocumentSchemas(Document document, SchemaLibrary& library);
    /// With nothing but these vocabularies: no file is read.
    DocumentSchemas(Document document, std::vector<std::shared_ptr<const Vocabulary>> builtIn);

    /// The file is to be asked before everything else, and those bound later after those bound before.
    void bind(const std::filesystem::path& schema, SchemaOrigin by = SchemaOrigin::host);
    /// False when it is not bound so.
    bool unbind(const std::filesystem::path& schema, SchemaOrigin by = SchemaOrigin::host);
    [[nodiscard]] const std::vector<AssociationInput::Bound>& bound() const { return bound_; }
    void setBound(std::vector<AssociationInput::Bound> bound);

    /// Looks at the document, has its schemas read and compared with the disk.
    void update();
    /// Schemas that the document needs are being read.
    [[nodiscard]] bool isReading() const;
    /// All candidates, the most preferred first, as of the last update.
    [[nodiscard]] std::vector<SchemaDecision> decisions() const;
    [[nodiscard]] const DocumentDeclarations& declarations() const { return declarations_; }
    /// Called when the decisions are other than before.
    void setOnChanged(std::function<void()> changed) { changed_ = std::move(changed); }

    [[nodiscard]] SmartPtr<IXSchema> schemaAt(const SchemaContext& context) override;

  private:
    struct Candidate {
        SchemaCandidate is = {};
        std::shared_ptr<const SharedSchema> schema = {};
        std::shared_ptr<const Vocabulary> vocabulary = {}; ///< null: none, or not yet
        int member = -1;

        [[nodiscard]] bool isReading() const;
    };

    void readBeginning();
    void associateAll();
    [[nodiscard]] bool isNeeded(const Candidate& candidate, std::size_t index) const;
    void requestSchemas();
    void compose();
    void decideAnswers(SchemaSet& set) const;
    void decideRoots(SchemaSet& set) const;
    [[nodiscard]] std::shared_ptr<VocabularyInUse> use(const std::shared_ptr<const Vocabulary>& vocabulary);

    Document document_;
    SchemaLibrary* library_ = nullptr;
    std::vector<std::shared_ptr<const Vocabulary>> builtIn_;
    std::vector<AssociationInput::Bound> bound_;
    std::u16string beginning_;
    std::filesystem::path path_;
    DocumentDeclarations declarations_;
    std::set<std::u16string, std::less<>> namespaces_; ///< bound where completion was asked for
    std::vector<Candidate> candidates_;
    std::vector<std::shared_ptr<VocabularyInUse>> uses_;
    std::shared_ptr<const SchemaSet> set_ = std::make_shared<SchemaSet>();
    std::function<void()> changed_;
    bool isStale_ = true; ///< preferences, catalogs or bindings are other than at the last association
    SchemaLibrary::Subscription subscription_;
};

} // namespace tavrin
