#include "platform/schema/DatatypeValues.h"
#include "platform/schema/RelaxNgGrammar.h"
#include "platform/schema/SchemaText.h"

#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

namespace tavrin {

namespace {

constexpr char annotationsUri[] = "http://relaxng.org/ns/compatibility/annotations/1.0";
constexpr std::string_view datatypesUri = "http://www.w3.org/2001/XMLSchema-datatypes";
constexpr std::u16string_view xmlNamespace = u"http://www.w3.org/XML/1998/namespace";

/// Of patterns in patterns, by way of references.
constexpr int maxDepth = 1000;

struct NameClass {
    std::vector<ExpandedName> names = {};
    std::vector<Wildcard> wildcards = {};
};

bool isAnnotation(const _xmlNode* node) {
    return localName(node) == "documentation" && namespaceOf(node) == annotationsUri;
}

std::u16string joined(const std::u16string& before, const _xmlNode* annotation) {
    return (before.empty() ? u"" : before + u"\n") + collapseSpaces(toUtf16(textOf(annotation)));
}

/// What stands in an element as documentation. Beyond the first pattern it is about that.
std::u16string documentationIn(const _xmlNode* node) {
    std::u16string text;
    const _xmlNode* end = relaxNgFrom(firstElement(node));
    for (const _xmlNode* child = firstElement(node); child != end; child = nextElement(child))
        if (isAnnotation(child))
            text = joined(text, child);
    return text;
}

/// A value can't hold its documentation, which follows it.
std::u16string documentationAfter(const _xmlNode* node) {
    std::u16string text;
    for (const _xmlNode* next = nextElement(node); next && isAnnotation(next); next = nextElement(next))
        text = joined(text, next);
    return text;
}

std::u16string documentationOf(const _xmlNode* pattern) {
    std::u16string text = documentationIn(pattern);
    const _xmlNode* parent = parentElement(pattern);
    return text.empty() && parent && isRelaxNg(parent, "define") ? documentationIn(parent) : text;
}

std::vector<RelaxNgPattern> partsOf(const RelaxNgPattern& pattern) {
    std::vector<RelaxNgPattern> parts;
    for (const _xmlNode* child = relaxNgFrom(firstElement(pattern.node)); child;
         child = relaxNgFrom(nextElement(child)))
        parts.push_back({child, pattern.grammar, pattern.document});
    return parts;
}

/// Compiles the patterns of a schema into declarations.
class RelaxNgReader {
  public:
    RelaxNgReader(SchemaReading& reading, VocabularyBuilder& builder)
        : reading_(reading), builder_(builder), grammars_(reading) {}

    void read(const std::filesystem::path& file);

  private:
    struct Use {
        int attribute = 0; ///< index of attributes_
        bool isRequired = false;
    };
    /// What a pattern allows in an element.
    struct Content {
        int particle = ParticlePool::empty;
        bool hasText = false;
        std::vector<Use> attributes = {};

        [[nodiscard]] bool isImpossible() const { return particle == ParticlePool::nothing; }
    };
    struct Values {
        bool isPossible = true;
        std::vector<AttributeValue> values = {};
    };

    [[nodiscard]] static Content impossible() { return {.particle = ParticlePool::nothing}; }
    [[nodiscard]] Content compile(const RelaxNgPattern& pattern, int depth);
    [[nodiscard]] Content compileParts(const RelaxNgPattern& pattern, ParticleKind kind, int depth,
                                       std::size_t skip = 0);
    [[nodiscard]] Content both(ParticleKind kind, const std::vector<Content>& parts);
    [[nodiscard]] Content either(const std::vector<Content>& parts);
    [[nodiscard]] Content repeated(Content content, int min, int max);
    [[nodiscard]] Content element(const RelaxNgPattern& pattern);
    void readBody(const RelaxNgPattern& pattern);
    [[nodiscard]] Content attribute(const RelaxNgPattern& pattern);
    [[nodiscard]] Content reference(const RelaxNgPattern& pattern, RelaxNgGrammar* grammar, int depth);
    [[nodiscard]] Content definition(RelaxNgGrammar& grammar, const std::string& name,
                                     const RelaxNgPattern& from, int depth);

    /// Whether anything at all matches. What is still being looked into counts as possible.
    [[nodiscard]] bool isPossible(const RelaxNgPattern& pattern, int depth);
    [[nodiscard]] bool areAllPossible(const std::vector<RelaxNgPattern>& parts, int depth);
    [[nodiscard]] bool isDefinitionPossible(RelaxNgGrammar& grammar, const std::string& name, int depth);

    [[nodiscard]] Values valuesOf(const RelaxNgPattern& pattern, int depth);
    [[nodiscard]] Values valuesOfAll(const std::vector<RelaxNgPattern>& parts, bool isChoice, int depth);
    [[nodiscard]] static std::vector<AttributeValue> valuesOfData(const _xmlNode* data);

    [[nodiscard]] static NameClass nameClassOf(const RelaxNgPattern& pattern);
    static void addNames(const RelaxNgPattern& nameClass, NameClass& names);
    [[nodiscard]] static ExpandedName nameFrom(const RelaxNgPattern& pattern, const std::string& qualified,
                                               const std::string& defaultNamespace);

    [[nodiscard]] int attributeIndex(VocabularyAttribute attribute);
    [[nodiscard]] int united(int one, int other);
    [[nodiscard]] std::set<int> elementsIn(int particle);
    void notePrefixes();
    void error(const RelaxNgPattern& pattern, std::string text) {
        reading_.error(RelaxNgGrammars::placeOf(pattern), std::move(text));
    }

    SchemaReading& reading_;
    VocabularyBuilder& builder_;
    RelaxNgGrammars grammars_;
    std::vector<VocabularyAttribute> attributes_;
    std::vector<int> attributeNames_; ///< the same number for the same name
    std::map<ExpandedName, int> nameNumbers_;
    std::map<std::pair<int, int>, int> united_;
    std::map<RelaxNgPattern, int> elements_;  ///< their particles
    std::deque<RelaxNgPattern> open_;         ///< elements whose content is still to be read
    std::map<RelaxNgPattern, bool> possible_; ///< elements
    std::set<int> roots_;
    using DefinitionKey = std::pair<const RelaxNgGrammar*, std::string>;
    std::map<DefinitionKey, std::optional<Content>> definitions_; ///< empty while they are compiled
    std::map<DefinitionKey, bool> possibleDefinitions_;
    std::map<DefinitionKey, Values> values_;
};

int RelaxNgReader::attributeIndex(VocabularyAttribute attribute) {
    const auto next = static_cast<int>(nameNumbers_.size());
    attributeNames_.push_back(nameNumbers_.try_emplace(attribute.name, next).first->second);
    attributes_.push_back(std::move(attribute));
    return static_cast<int>(attributes_.size()) - 1;
}

int RelaxNgReader::united(int one, int other) {
    if (one == other)
        return one;
    const auto [at, isNew] = united_.try_emplace({one, other});
    if (isNew) {
        VocabularyAttribute both = attributes_[one];
        addValues(both.values, attributes_[other].values);
        if (both.documentation.empty())
            both.documentation = attributes_[other].documentation;
        both.hasDefault |= attributes_[other].hasDefault;
        at->second = attributeIndex(std::move(both));
    }
    return at->second;
}

RelaxNgReader::Content RelaxNgReader::both(ParticleKind kind, const std::vector<Content>& parts) {
    Content result;
    std::vector<int> particles;
    std::unordered_map<int, std::size_t> places; // of attribute names in the result
    for (const Content& part : parts) {
        if (part.isImpossible())
            return impossible();
        particles.push_back(part.particle);
        result.hasText |= part.hasText;
        for (const Use& use : part.attributes) {
            const auto [place, isNew] =
                places.try_emplace(attributeNames_[use.attribute], result.attributes.size());
            if (isNew) {
                result.attributes.push_back(use);
                continue;
            }
            Use& known = result.attributes[place->second];
            known = {united(known.attribute, use.attribute), known.isRequired || use.isRequired};
        }
    }
    result.particle = builder_.particles().group(kind, std::move(particles));
    return result;
}

RelaxNgReader::Content RelaxNgReader::either(const std::vector<Content>& parts) {
    Content result = impossible();
    std::vector<int> particles;
    std::unordered_map<int, std::size_t> required; // by name: in how many parts
    std::unordered_map<int, std::size_t> places;   // of attribute names in the result
    std::size_t possible = 0;
    for (const Content& part : parts) {
        if (part.isImpossible())
            continue;
        ++possible;
        particles.push_back(part.particle);
        result.hasText |= part.hasText;
        for (const Use& use : part.attributes) {
            required[attributeNames_[use.attribute]] += use.isRequired ? 1 : 0;
            const auto [place, isNew] =
                places.try_emplace(attributeNames_[use.attribute], result.attributes.size());
            if (isNew)
                result.attributes.push_back(use);
            else
                result.attributes[place->second].attribute =
                    united(result.attributes[place->second].attribute, use.attribute);
        }
    }
    for (Use& use : result.attributes)
        use.isRequired = required[attributeNames_[use.attribute]] == possible;
    result.particle = builder_.particles().group(ParticleKind::choice, std::move(particles));
    return result;
}

RelaxNgReader::Content RelaxNgReader::repeated(Content content, int min, int max) {
    if (content.isImpossible())
        return min == 0 ? Content() : impossible();
    const Particle particle = builder_.particles().at(content.particle);
    const bool isChoice = particle.kind == ParticleKind::choice && particle.min == 1 && particle.max == 1;
    if (isChoice && max == Particle::unbounded &&
        std::ranges::find(particle.parts, ParticlePool::empty) != particle.parts.end()) {
        std::vector<int> parts =
            particle.parts; // (empty | a)+ is a*; text between elements gives such choices
        std::erase(parts, ParticlePool::empty);
        content.particle = builder_.particles().group(ParticleKind::choice, std::move(parts));
        content.particle = builder_.particles().repeat(content.particle, 0, max);
    } else {
        content.particle = builder_.particles().repeat(content.particle, min, max);
    }
    if (min == 0)
        for (Use& use : content.attributes)
            use.isRequired = false;
    return content;
}

RelaxNgReader::Content RelaxNgReader::compileParts(const RelaxNgPattern& pattern, ParticleKind kind,
                                                   int depth, std::size_t skip) {
    std::vector<Content> contents;
    for (const RelaxNgPattern& part : partsOf(pattern))
        if (skip > 0)
            --skip;
        else
            contents.push_back(compile(part, depth + 1));
    return kind == ParticleKind::choice ? either(contents) : both(kind, contents);
}

RelaxNgReader::Content RelaxNgReader::compile(const RelaxNgPattern& pattern, int depth) {
    if (!reading_.mayGoOn())
        return {};
    if (depth > maxDepth) {
        error(pattern, "Patterns refer to one another in too long chains.");
        return {};
    }
    const std::string_view name = localName(pattern.node);
    const auto parts = [&](ParticleKind kind) { return compileParts(pattern, kind, depth); };
    if (name == "element")
        return element(pattern);
    if (name == "attribute")
        return attribute(pattern);
    if (name == "group" || name == "start" || name == "define")
        return parts(ParticleKind::sequence);
    if (name == "interleave")
        return parts(ParticleKind::interleave);
    if (name == "choice")
        return parts(ParticleKind::choice);
    if (name == "optional")
        return repeated(parts(ParticleKind::sequence), 0, 1);
    if (name == "zeroOrMore")
        return repeated(parts(ParticleKind::sequence), 0, Particle::unbounded);
    if (name == "oneOrMore")
        return repeated(parts(ParticleKind::sequence), 1, Particle::unbounded);
    if (name == "mixed") {
        Content content = parts(ParticleKind::sequence);
        content.hasText = !content.isImpossible();
        return content;
    }
    if (name == "ref")
        return reference(pattern, pattern.grammar, depth);
    if (name == "parentRef")
        return reference(pattern, pattern.grammar->parent, depth);
    if (name == "grammar")
        return definition(grammars_.grammarOf(pattern), "", pattern, depth);
    if (name == "externalRef") {
        const RelaxNgPattern other = grammars_.external(pattern);
        return other.node ? compile(other, depth + 1) : Content();
    }
    if (name == "notAllowed")
        return impossible();
    if (name == "text" || name == "data" || name == "value" || name == "list")
        return {.hasText = true};
    if (name != "empty")
        error(pattern, "\"" + std::string(name) + "\" is no pattern.");
    return {};
}

RelaxNgReader::Content RelaxNgReader::reference(const RelaxNgPattern& pattern, RelaxNgGrammar* grammar,
                                                int depth) {
    const std::string name = trimmedAttribute(pattern.node, "name");
    if (!grammar || name.empty() || !grammar->definitions.contains(name)) {
        error(pattern, "Nothing defines \"" + name + "\".");
        return {};
    }
    return definition(*grammar, name, pattern, depth);
}

RelaxNgReader::Content RelaxNgReader::definition(RelaxNgGrammar& grammar, const std::string& name,
                                                 const RelaxNgPattern& from, int depth) {
    const auto [at, isNew] = definitions_.try_emplace({&grammar, name});
    if (!isNew) {
        if (!at->second)
            error(from, "\"" + name + "\" refers to itself without an element in between.");
        return at->second.value_or(Content());
    }
    const RelaxNgDefinition& known = grammar.definitions[name];
    std::vector<Content> contents;
    for (const RelaxNgPattern& part : known.parts)
        contents.push_back(compile(part, depth + 1));
    if (contents.empty())
        error(from, "The grammar has no start.");
    if (contents.size() > 1 && known.combine == RelaxNgDefinition::Combine::unknown)
        error(known.parts[1],
              "\"" + name + "\" is defined more than once and nothing says how to combine it.");
    Content result;
    if (contents.size() == 1)
        result = std::move(contents.front());
    else if (known.combine == RelaxNgDefinition::Combine::interleave || contents.empty())
        result = both(ParticleKind::interleave, contents);
    else
        result = either(contents);
    definitions_[{&grammar, name}] = result;
    return result;
}

ExpandedName RelaxNgReader::nameFrom(const RelaxNgPattern& pattern, const std::string& qualified,
                                     const std::string& defaultNamespace) {
    const std::size_t colon = qualified.find(':');
    if (colon == std::string::npos)
        return {toUtf16(defaultNamespace), toUtf16(qualified)};
    return {toUtf16(namespaceOfPrefix(pattern.node, qualified.substr(0, colon))),
            toUtf16(qualified.substr(colon + 1))};
}

void RelaxNgReader::addNames(const RelaxNgPattern& nameClass, NameClass& names) {
    const std::string_view kind = localName(nameClass.node);
    if (kind == "name") {
        std::string text = textOf(nameClass.node);
        std::erase_if(text, [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; });
        names.names.push_back(nameFrom(nameClass, text, relaxNgNamespace(nameClass)));
    } else if (kind == "nsName") {
        names.wildcards.push_back({.namespaces = {toUtf16(relaxNgNamespace(nameClass))}, .isExcept = false});
    } else if (kind == "anyName") {
        Wildcard any;
        for (const RelaxNgPattern& except : partsOf(nameClass)) {
            NameClass excepted;
            for (const RelaxNgPattern& part : partsOf(except))
                addNames(part, excepted);
            for (const Wildcard& wildcard : excepted.wildcards)
                if (!wildcard.isExcept)
                    any.namespaces.insert(any.namespaces.end(), wildcard.namespaces.begin(),
                                          wildcard.namespaces.end());
        }
        names.wildcards.push_back(std::move(any));
    } else if (kind == "choice") {
        for (const RelaxNgPattern& part : partsOf(nameClass))
            addNames(part, names);
    }
}

NameClass RelaxNgReader::nameClassOf(const RelaxNgPattern& pattern) {
    NameClass names;
    if (hasAttribute(pattern.node, "name")) {
        // Attributes have no namespace unless they are given one themselves.
        const bool isAttribute = localName(pattern.node) == "attribute";
        const std::string space = isAttribute ? attributeOf(pattern.node, "ns") : relaxNgNamespace(pattern);
        names.names.push_back(nameFrom(pattern, trimmedAttribute(pattern.node, "name"), space));
    } else if (const auto parts = partsOf(pattern); !parts.empty()) {
        addNames(parts.front(), names);
    }
    return names;
}

bool RelaxNgReader::areAllPossible(const std::vector<RelaxNgPattern>& parts, int depth) {
    return std::ranges::all_of(parts,
                               [&](const RelaxNgPattern& part) { return isPossible(part, depth + 1); });
}

bool RelaxNgReader::isDefinitionPossible(RelaxNgGrammar& grammar, const std::string& name, int depth) {
    const auto [at, isNew] = possibleDefinitions_.try_emplace({&grammar, name}, true);
    if (!isNew)
        return at->second;
    const RelaxNgDefinition& known = grammar.definitions[name];
    bool result = areAllPossible(known.parts, depth);
    if (known.combine != RelaxNgDefinition::Combine::interleave)
        result = known.parts.empty() || std::ranges::any_of(known.parts, [&](const RelaxNgPattern& part) {
                     return isPossible(part, depth + 1);
                 });
    return possibleDefinitions_[{&grammar, name}] = result;
}

bool RelaxNgReader::isPossible(const RelaxNgPattern& pattern, int depth) {
    const std::string_view name = localName(pattern.node);
    if (depth > maxDepth || name == "optional" || name == "zeroOrMore" || !reading_.mayGoOn())
        return true;
    if (name == "notAllowed")
        return false;
    if (name == "ref" || name == "parentRef") {
        RelaxNgGrammar* grammar = name == "ref" ? pattern.grammar : pattern.grammar->parent;
        const std::string to = trimmedAttribute(pattern.node, "name");
        return !grammar || !grammar->definitions.contains(to) || isDefinitionPossible(*grammar, to, depth);
    }
    if (name == "grammar")
        return isDefinitionPossible(grammars_.grammarOf(pattern), "", depth);
    if (name == "externalRef") {
        const RelaxNgPattern other = grammars_.external(pattern);
        return !other.node || isPossible(other, depth + 1);
    }
    if (name == "attribute")
        return !attribute(pattern).isImpossible();
    std::vector<RelaxNgPattern> parts = partsOf(pattern);
    if (name == "choice")
        return std::ranges::any_of(parts,
                                   [&](const RelaxNgPattern& part) { return isPossible(part, depth + 1); });
    if (name != "element")
        return areAllPossible(parts, depth);
    const auto [at, isNew] = possible_.try_emplace(pattern, true);
    if (!isNew)
        return at->second;
    if (!hasAttribute(pattern.node, "name") && !parts.empty())
        parts.erase(parts.begin());
    return possible_[pattern] = areAllPossible(parts, depth);
}

RelaxNgReader::Content RelaxNgReader::element(const RelaxNgPattern& pattern) {
    if (const auto known = elements_.find(pattern); known != elements_.end())
        return {.particle = known->second};
    if (!isPossible(pattern, 0)) {
        elements_[pattern] = ParticlePool::nothing;
        return impossible();
    }
    const NameClass names = nameClassOf(pattern);
    std::vector<int> choice;
    for (const ExpandedName& name : names.names)
        choice.push_back(builder_.particles().element(builder_.reference(name)));
    for (const Wildcard& wildcard : names.wildcards)
        choice.push_back(builder_.particles().anyElement(wildcard));
    elements_[pattern] = builder_.particles().group(ParticleKind::choice, std::move(choice));
    open_.push_back(pattern);
    return {.particle = elements_[pattern]};
}

void RelaxNgReader::readBody(const RelaxNgPattern& pattern) {
    const bool isNamed = hasAttribute(pattern.node, "name");
    const Content content = compileParts(pattern, ParticleKind::sequence, 0, isNamed ? 0 : 1);
    if (content.isImpossible())
        return;
    for (const ExpandedName& name : nameClassOf(pattern).names) {
        ElementDeclaration declaration{.name = name,
                                       .documentation = documentationOf(pattern.node),
                                       .textAllowed = content.hasText,
                                       .isRoot = roots_.contains(builder_.reference(name)),
                                       .content = content.particle};
        for (const Use& use : content.attributes)
            declaration.attributes.push_back({attributes_[use.attribute], use.isRequired});
        builder_.declare(std::move(declaration));
    }
}

RelaxNgReader::Content RelaxNgReader::attribute(const RelaxNgPattern& pattern) {
    std::vector<RelaxNgPattern> parts = partsOf(pattern);
    if (!hasAttribute(pattern.node, "name") && !parts.empty())
        parts.erase(parts.begin());
    const Values values = valuesOfAll(parts, false, 0);
    if (!values.isPossible)
        return impossible();
    Content result;
    if (!reading_.spendNodes(values.values.size()))
        return result;
    const NameClass names = nameClassOf(pattern);
    const std::string defaultValue = attributeOf(pattern.node, annotationsUri, "defaultValue");
    for (const ExpandedName& name : names.names) {
        VocabularyAttribute attribute{.name = name,
                                      .documentation = documentationOf(pattern.node),
                                      .values = values.values,
                                      .hasDefault = !defaultValue.empty()};
        if (attribute.hasDefault)
            addValues(attribute.values, {{.text = toUtf16(defaultValue)}});
        const bool isOnlyName = names.names.size() == 1 && names.wildcards.empty();
        result.attributes.push_back({attributeIndex(std::move(attribute)), isOnlyName});
    }
    return result;
}

RelaxNgReader::Values RelaxNgReader::valuesOfAll(const std::vector<RelaxNgPattern>& parts, bool isChoice,
                                                 int depth) {
    Values result{.isPossible = !isChoice};
    for (const RelaxNgPattern& part : parts) {
        const Values one = valuesOf(part, depth);
        result.isPossible =
            isChoice ? result.isPossible || one.isPossible : result.isPossible && one.isPossible;
        if (one.isPossible)
            addValues(result.values, one.values);
    }
    return result;
}

RelaxNgReader::Values RelaxNgReader::valuesOf(const RelaxNgPattern& pattern, int depth) {
    const std::string_view name = localName(pattern.node);
    if (depth > reading_.limits().depth || !reading_.mayGoOn())
        return {};
    if (name == "value") {
        const std::u16string text = collapseSpaces(toUtf16(textOf(pattern.node)));
        if (text.empty())
            return {};
        return {.values = {{.text = text, .documentation = documentationAfter(pattern.node)}}};
    }
    if (name == "data")
        return {.values = valuesOfData(pattern.node)};
    if (name == "notAllowed")
        return {.isPossible = false};
    if (name == "ref" || name == "parentRef") {
        RelaxNgGrammar* grammar = name == "ref" ? pattern.grammar : pattern.grammar->parent;
        const std::string to = trimmedAttribute(pattern.node, "name");
        if (!grammar || !grammar->definitions.contains(to)) {
            error(pattern, "Nothing defines \"" + to + "\".");
            return {};
        }
        const auto [at, isNew] = values_.try_emplace({grammar, to});
        if (!isNew)
            return at->second;
        const RelaxNgDefinition& known = grammar->definitions[to];
        const bool isChoice = known.combine == RelaxNgDefinition::Combine::choice;
        return values_[{grammar, to}] = valuesOfAll(known.parts, isChoice, depth + 1);
    }
    const bool isDispensable = name == "optional" || name == "zeroOrMore";
    Values result = valuesOfAll(partsOf(pattern), name == "choice", depth + 1);
    result.isPossible |= isDispensable;
    return result;
}

std::vector<AttributeValue> RelaxNgReader::valuesOfData(const _xmlNode* data) {
    const _xmlNode* node = data;
    while (node && !hasAttribute(node, "datatypeLibrary"))
        node = parentElement(node);
    if (!node || trimmedAttribute(node, "datatypeLibrary") != datatypesUri)
        return {};
    std::vector<AttributeValue> values = valuesOfDatatype(toUtf16(trimmedAttribute(data, "type")));
    std::u16string least;
    std::u16string greatest;
    for (const _xmlNode* child = relaxNgFrom(firstElement(data)); child;
         child = relaxNgFrom(nextElement(child))) {
        const std::string name = trimmedAttribute(child, "name");
        if (name == "minInclusive")
            least = collapseSpaces(toUtf16(textOf(child)));
        else if (name == "maxInclusive")
            greatest = collapseSpaces(toUtf16(textOf(child)));
    }
    if (values.size() == 1)
        values[0].text = withBounds(values[0].text, least, greatest);
    return values;
}

std::set<int> RelaxNgReader::elementsIn(int particle) {
    std::set<int> elements;
    std::set<int> seen;
    std::vector<int> open = {particle};
    while (!open.empty()) {
        const int node = open.back();
        open.pop_back();
        if (!seen.insert(node).second)
            continue;
        const Particle& part = builder_.particles().at(node);
        if (part.kind == ParticleKind::element)
            elements.insert(part.index);
        open.insert(open.end(), part.parts.begin(), part.parts.end());
    }
    return elements;
}

/// Prefixes declared in the documents; not those that stand for the schema language's own namespaces.
void RelaxNgReader::notePrefixes() {
    for (const RelaxNgDocument& document : grammars_.documents())
        if (const _xmlNode* root = document.tree.root())
            forEachDeclaration(root, [this](std::string_view prefix, std::string_view name) {
                builder_.notePrefix(toUtf16(name), toUtf16(prefix));
            });
    builder_.notePrefix(xmlNamespace, u"xml");
}

void RelaxNgReader::read(const std::filesystem::path& file) {
    const RelaxNgPattern start = grammars_.open(file);
    if (!start.node)
        return;
    const Content content = compile(start, 0);
    roots_ = elementsIn(content.particle);
    for (; !open_.empty() && reading_.mayGoOn(); open_.pop_front())
        readBody(open_.front());
    notePrefixes();
}

} // namespace

SchemaReadResult readRelaxNg(const std::filesystem::path& file, const SchemaReadOptions& options) {
    return readGuarded([&] {
        SchemaReading reading(options);
        VocabularyBuilder builder;
        RelaxNgReader(reading, builder).read(file);
        return reading.finish(builder);
    });
}

} // namespace tavrin
