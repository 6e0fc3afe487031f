#include "SchemaInput.h"

#include "FuzzTarget.h"
#include "platform/schema/ContentMatcher.h"
#include "platform/schema/ElementTemplate.h"

#include <algorithm>
#include <chrono>
#include <libxml/parser.h>
#include <set>
#include <utility>
#include <vector>

namespace tavrin::fuzz {

namespace {

constexpr std::string_view separator = "\n@@@ ";

/// Of elements of a vocabulary, those that are looked at closely: each costs a question with all its
/// children.
constexpr int elementsAsked = 40;

bool isWellFormed(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isHigh = (text[i] & 0xFC00) == 0xD800;
        const bool isPair = isHigh && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
        if ((text[i] & 0xF800) == 0xD800 && !isPair)
            return false;
        i += isPair ? 1 : 0;
    }
    return true;
}

void checkParticles(const Vocabulary& vocabulary) {
    const ParticlePool& pool = vocabulary.particles();
    std::set<Particle> seen;
    for (int node = 0; node < pool.size(); ++node) {
        const Particle& particle = pool.at(node);
        require(seen.insert(particle).second, "equal nodes of content models are one");
        require(particle.min >= 0 && (particle.max == Particle::unbounded || particle.max >= 1),
                "a node occurs a number of times");
        require(std::ranges::all_of(particle.parts, [&](int part) { return part >= 0 && part < node; }),
                "parts come before what they are parts of");
        if (particle.kind == ParticleKind::element)
            require(particle.index >= 0 && particle.index < vocabulary.elementCount(),
                    "a content model names elements of its vocabulary");
    }
}

void checkElement(const Vocabulary& vocabulary, int id) {
    const VocabularyElement& element = vocabulary.element(id);
    const auto isDeclared = [&](int other) {
        const ExpandedName& name = vocabulary.element(other).name;
        return vocabulary.findElement(name.namespaceName, name.localName) == other;
    };
    require(isWellFormed(element.name.localName) && isWellFormed(element.name.namespaceName) &&
                isWellFormed(element.documentation),
            "texts are UTF-16");
    const std::set<int> children(element.children.begin(), element.children.end());
    require(children.size() == element.children.size(), "a child is listed once");
    require(std::ranges::all_of(children, isDeclared), "children are declared");
    std::set<ExpandedName> attributes;
    for (const AttributeUse& use : element.attributes) {
        const VocabularyAttribute& attribute = vocabulary.attribute(use.attribute);
        require(attributes.insert(attribute.name).second, "an element has an attribute once");
        require(vocabulary.findAttribute(id, attribute.name) == &attribute,
                "an attribute is found by its name");
    }
    require(!element.isRoot || std::ranges::count(vocabulary.roots(), id) == 1, "roots are listed");
}

/// What completion asks of an element: the template, and which children have room between two of them.
void askAbout(const Vocabulary& vocabulary, ContentMatcher& matcher, int id) {
    const auto noPrefix = [](std::u16string_view) { return std::u16string(); };
    require(!elementTemplate(vocabulary, id, noPrefix, noPrefix).empty(), "every element has a template");
    const VocabularyElement& element = vocabulary.element(id);
    std::vector<ContentMatcher::Sibling> children;
    for (const int child : element.children)
        children.push_back({child, vocabulary.element(child).name.namespaceName});
    children.resize(std::min<std::size_t>(children.size(), elementsAsked));
    const std::vector<ContentMatcher::Sibling> before(
        children.begin(), children.begin() + std::min<long>(2, std::ssize(children)));
    const auto allowed = matcher.allowed(element.content, before, {}, true, children);
    require(allowed.size() == children.size(), "there is an answer for each candidate");
}

} // namespace

SchemaInput::SchemaInput(const std::uint8_t* data, std::size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    std::filesystem::path file = mainFile();
    while (true) {
        const std::size_t end = rest.find(separator);
        files_.try_emplace(file, rest.substr(0, end));
        if (end == std::string_view::npos)
            return;
        rest.remove_prefix(end + separator.size());
        const std::size_t lineEnd = std::min(rest.find('\n'), rest.size());
        file = std::filesystem::path("/in") / std::string(rest.substr(0, lineEnd));
        rest.remove_prefix(std::min(lineEnd + 1, rest.size()));
    }
}

SchemaFiles SchemaInput::files() const {
    return [this](const std::filesystem::path& file) -> std::optional<std::string> {
        const auto known = files_.find(file.lexically_normal());
        return known == files_.end() ? std::nullopt : std::optional(known->second);
    };
}

SchemaReadOptions SchemaInput::options() const {
    return {.files = files(),
            .limits = {.bytes = 1U << 18U,
                       .nodes = 20'000,
                       .entityText = 1U << 18U,
                       .workMemory = 32U << 20U,
                       .files = 20,
                       .time = std::chrono::milliseconds(1'000)}};
}

void forbidOtherFiles() {
    xmlInitParser();
    xmlSetExternalEntityLoader([](const char*, const char*, xmlParserCtxtPtr) -> xmlParserInputPtr {
        require(false, "nothing is opened but by way of the reading");
        return nullptr;
    });
}

void checkSchema(const SchemaReadResult& read) {
    require(read.vocabulary != nullptr, "there is a vocabulary, perhaps an empty one");
    for (const SchemaMessage& message : read.messages)
        require(!message.text.empty() && message.line >= 0 && message.column >= 0,
                "a message says something");
    const Vocabulary& vocabulary = *read.vocabulary;
    checkParticles(vocabulary);
    ContentMatcher matcher(vocabulary);
    int asked = 0;
    for (const std::u16string& space : vocabulary.namespaces()) {
        require(!vocabulary.elementsOf(space).empty(), "a namespace has elements");
        for (const int id : vocabulary.elementsOf(space)) {
            checkElement(vocabulary, id);
            if (asked++ < elementsAsked)
                askAbout(vocabulary, matcher, id);
        }
    }
}

} // namespace tavrin::fuzz
