#include "platform/schema/DocumentSchemas.h"

#include "platform/core/XmlNamespaces.h"
#include "platform/schema/SchemaLocation.h"

#include <algorithm>
#include <utility>

namespace tavrin {

namespace {

namespace fs = std::filesystem;

/// Enough for the beginnings of most documents.
constexpr std::size_t usualBeginning = 4096;
/// A document that binds more namespaces is none that somebody writes.
constexpr std::size_t mostNamespaces = 100;

bool namesVocabulary(std::u16string_view namespaceName) {
    return namespaceName != schemaInstanceNamespace &&
           namespaceName != u"http://www.w3.org/XML/1998/namespace";
}

bool hasElements(const std::shared_ptr<const Vocabulary>& vocabulary, std::u16string_view namespaceName) {
    return vocabulary && !vocabulary->elementsOf(namespaceName).empty();
}

std::u16string localPart(const std::u16string& qualified) {
    return qualified.substr(qualified.find(u':') + 1); // all of it without a colon
}

/// Whether the file's ending says that it is a document of the built-in vocabulary; empty: it says nothing.
std::u16string_view namespaceOfEnding(const fs::path& path) {
    for (const char* pattern : {"*.xsl", "*.xslt", "*.XSL", "*.XSLT"})
        if (matchesFilePattern(path, pattern))
            return xsltNamespace;
    return matchesFilePattern(path, "*.fo") || matchesFilePattern(path, "*.FO") ? xslFoNamespace
                                                                                : std::u16string_view();
}

} // namespace

bool DocumentSchemas::Candidate::isReading() const {
    return schema && schema->state == SchemaState::reading;
}

DocumentSchemas::DocumentSchemas(Document document, SchemaLibrary& library)
    : document_(std::move(document)),
      library_(&library),
      builtIn_(library.builtIn()),
      subscription_(library.subscribe([this] {
          isStale_ = true;
          update();
      })) {}

DocumentSchemas::DocumentSchemas(Document document, std::vector<std::shared_ptr<const Vocabulary>> builtIn)
    : document_(std::move(document)), builtIn_(std::move(builtIn)) {}

void DocumentSchemas::bind(const fs::path& schema, SchemaOrigin by) {
    unbind(schema, by);
    bound_.push_back({schema, by});
    isStale_ = true;
    update();
}

bool DocumentSchemas::unbind(const fs::path& schema, SchemaOrigin by) {
    if (std::erase(bound_, AssociationInput::Bound{schema, by}) == 0)
        return false;
    isStale_ = true;
    update();
    return true;
}

void DocumentSchemas::setBound(std::vector<AssociationInput::Bound> bound) {
    if (bound == bound_)
        return;
    bound_ = std::move(bound);
    isStale_ = true;
    update();
}

void DocumentSchemas::readBeginning() {
    fs::path path = document_.path();
    for (const std::size_t length : {usualBeginning, longestBeginning}) {
        std::u16string beginning = document_.beginning(length);
        if (beginning == beginning_ && path == path_)
            return;
        DocumentDeclarations declarations = readDeclarations(beginning);
        if (!declarations.isComplete && beginning.size() >= length && length < longestBeginning)
            continue;
        if (declarations != declarations_ || path != path_) {
            namespaces_.clear();
            isStale_ = true;
        }
        declarations_ = std::move(declarations);
        path_ = std::move(path);
        beginning_ = std::move(beginning);
        return;
    }
}

void DocumentSchemas::update() {
    readBeginning();
    const bool wasStale = isStale_;
    if (isStale_)
        associateAll();
    if (library_)
        library_->checkCatalogs();
    requestSchemas();
    compose();
    isStale_ = false; // not before all was done
    if (wasStale && changed_)
        changed_();
}

void DocumentSchemas::associateAll() {
    static const SchemaPreferences noPreferences;
    std::set<std::u16string, std::less<>> names = namespaces_;
    if (declarations_.root)
        names.insert(declarations_.root->namespaceName);
    for (const auto& [prefix, name] : declarations_.bindings)
        if (namesVocabulary(name))
            names.insert(name);
    const AssociationInput input{.bound = bound_,
                                 .declarations = declarations_,
                                 .document = path_,
                                 .namespaces = {names.begin(), names.end()},
                                 .preferences = library_ ? library_->preferences() : noPreferences,
                                 .catalog = library_ ? library_->catalog().get() : nullptr,
                                 .builtIn = builtIn_};
    std::vector<Candidate> candidates;
    for (SchemaCandidate& is : associate(input)) {
        // One that is known already is held over, so that it is not read again.
        const auto old = std::ranges::find(candidates_, is, &Candidate::is);
        candidates.push_back(old == candidates_.end() ? Candidate{.is = std::move(is)} : *old);
    }
    candidates_ = std::move(candidates);
}

/// What the user's map and catalogs know is read only when nothing before it answers for the namespace.
bool DocumentSchemas::isNeeded(const Candidate& candidate, std::size_t index) const {
    if (candidate.is.origin < SchemaOrigin::userMap)
        return true;
    const std::u16string name = candidate.is.namespaceName ? *candidate.is.namespaceName
                                : declarations_.root       ? declarations_.root->namespaceName
                                                           : std::u16string();
    return std::none_of(candidates_.begin(), candidates_.begin() + index, [&](const Candidate& before) {
        return before.isReading() || hasElements(before.vocabulary, name);
    });
}

void DocumentSchemas::requestSchemas() {
    for (std::size_t i = 0; i < candidates_.size(); ++i) {
        Candidate& candidate = candidates_[i];
        candidate.vocabulary = candidate.is.builtIn;
        if (!candidate.is.request || !library_)
            continue;
        if (!isNeeded(candidate, i)) {
            candidate.schema.reset();
            continue;
        }
        candidate.schema = library_->request(*candidate.is.request);
        if (candidate.schema->vocabulary->elementCount() > 0)
            candidate.vocabulary = candidate.schema->vocabulary;
    }
}

std::shared_ptr<VocabularyInUse> DocumentSchemas::use(const std::shared_ptr<const Vocabulary>& vocabulary) {
    const auto found = std::ranges::find(uses_, vocabulary, &VocabularyInUse::shared);
    return found == uses_.end() ? std::make_shared<VocabularyInUse>(vocabulary) : *found;
}

void DocumentSchemas::compose() {
    auto set = std::make_shared<SchemaSet>();
    for (Candidate& candidate : candidates_) {
        candidate.member = -1;
        if (!candidate.vocabulary)
            continue;
        const auto known = std::ranges::find_if(set->members, [&](const SchemaSet::Member& member) {
            return member.use->shared() == candidate.vocabulary;
        });
        candidate.member = static_cast<int>(known - set->members.begin());
        if (known == set->members.end())
            set->members.push_back(
                {.use = use(candidate.vocabulary), .isBuiltIn = candidate.is.builtIn != nullptr});
        if (candidate.is.origin == SchemaOrigin::documentType)
            set->documentType = candidate.member;
    }
    if (declarations_.documentType)
        set->rootName = localPart(declarations_.documentType->rootName);
    set->root = declarations_.root;
    decideAnswers(*set);
    decideRoots(*set);
    uses_.clear();
    for (const SchemaSet::Member& member : set->members)
        uses_.push_back(member.use);
    set_ = std::move(set);
}

/// The first origin that has a namespace answers for it; of one origin, the schema that is given for it
/// before one that holds it beside others. A schema that is given for it and still being read keeps those
/// after it from answering, so that nothing else is offered meanwhile.
void DocumentSchemas::decideAnswers(SchemaSet& set) const {
    constexpr int pending = -1;
    for (auto first = candidates_.begin(); first != candidates_.end();) {
        const auto last = std::find_if(first, candidates_.end(), [&](const Candidate& candidate) {
            return candidate.is.origin != first->is.origin;
        });
        for (auto it = first; it != last; ++it) {
            const auto& name = it->is.namespaceName;
            if (name && it->isReading())
                set.answering.emplace(*name, pending);
            else if (name && hasElements(it->vocabulary, *name))
                set.answering.emplace(*name, it->member);
        }
        for (auto it = first; it != last; ++it)
            if (it->vocabulary)
                for (const std::u16string& name : it->vocabulary->namespaces())
                    set.answering.emplace(name, it->member);
        first = last;
    }
    std::erase_if(set.answering, [](const auto& answer) { return answer.second == pending; });
}

/// A document without an element is offered the roots of the schemas that it is given; without any, those of
/// the built-in one that its file's ending names, or of all.
void DocumentSchemas::decideRoots(SchemaSet& set) const {
    bool isGiven = false;
    for (const Candidate& candidate : candidates_) {
        const bool isOwn = candidate.is.origin != SchemaOrigin::builtIn;
        if (isOwn && candidate.member >= 0)
            set.members[candidate.member].givesRoots = true;
        isGiven = isGiven || (isOwn && (candidate.member >= 0 || candidate.isReading()));
    }
    if (isGiven)
        return;
    const std::u16string_view wanted = namespaceOfEnding(path_);
    for (SchemaSet::Member& member : set.members)
        member.givesRoots = wanted.empty() || !member.use->vocabulary().elementsOf(wanted).empty();
}

bool DocumentSchemas::isReading() const {
    const bool awaitsCatalog = library_ && !library_->catalog();
    return awaitsCatalog || std::ranges::any_of(candidates_, &Candidate::isReading);
}

std::vector<SchemaDecision> DocumentSchemas::decisions() const {
    std::vector<SchemaDecision> result;
    for (const Candidate& candidate : candidates_) {
        SchemaDecision decision{.candidate = candidate.is, .schema = candidate.schema};
        for (const auto& [name, member] : set_->answering) {
            const bool isMeant =
                !candidate.is.namespaceName || *candidate.is.namespaceName == name ||
                std::ranges::none_of(candidates_, [&name = name, member = member](const Candidate& other) {
                    return other.member == member && other.is.namespaceName == name;
                });
            if (candidate.member == member && isMeant)
                decision.answersFor.push_back(name);
        }
        result.push_back(std::move(decision));
    }
    return result;
}

SmartPtr<IXSchema> DocumentSchemas::schemaAt(const SchemaContext& context) {
    for (const auto& [prefix, name] : context.bindings)
        if (namesVocabulary(name) && namespaces_.size() < mostNamespaces && namespaces_.insert(name).second)
            isStale_ = true;
    update();
    return makeSchemaService(set_, context);
}

} // namespace tavrin
