#include "SchemaChecks.h"

#include "platform/schema/SchemaText.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace tavrin {

namespace fs = std::filesystem;

SchemaFolder::SchemaFolder() {
    std::string name = (fs::temp_directory_path() / "tavrin-schema-XXXXXX").string();
    if (!::mkdtemp(name.data()))
        throw std::runtime_error("no folder for schemas");
    path_ = name;
}

SchemaFolder::~SchemaFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path SchemaFolder::write(const std::string& name, std::string_view text) const {
    fs::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << text;
    return path_ / name;
}

namespace {

std::string nameOf(const ExpandedName& name, std::u16string_view home) {
    const std::string local = toUtf8(name.localName);
    return name.namespaceName == home ? local : "{" + toUtf8(name.namespaceName) + "}" + local;
}

std::string wildcardText(const Wildcard& wildcard) {
    std::string text = wildcard.isExcept ? "*{!" : "*{";
    for (std::size_t i = 0; i < wildcard.namespaces.size(); ++i)
        text += (i ? " " : "") + toUtf8(wildcard.namespaces[i]);
    return text + "}";
}

std::string occurrence(const Particle& particle) {
    if (particle.min == 1 && particle.max == 1)
        return "";
    if (particle.max == Particle::unbounded && particle.min <= 1)
        return particle.min == 0 ? "*" : "+";
    if (particle.min == 0 && particle.max == 1)
        return "?";
    const std::string max = particle.max == Particle::unbounded ? "" : std::to_string(particle.max);
    return "{" + std::to_string(particle.min) + "," + max + "}";
}

std::string particleText(const Vocabulary& vocabulary, int node, std::u16string_view home) {
    const Particle& particle = vocabulary.particles().at(node);
    std::string text;
    switch (particle.kind) {
    case ParticleKind::nothing:
        return "nothing";
    case ParticleKind::empty:
        return "()";
    case ParticleKind::element:
        text = nameOf(vocabulary.element(particle.index).name, home);
        break;
    case ParticleKind::wildcard:
        text = wildcardText(vocabulary.wildcard(particle.index));
        break;
    case ParticleKind::sequence:
    case ParticleKind::choice:
    case ParticleKind::interleave:
        const char* between = particle.kind == ParticleKind::sequence ? ", "
                              : particle.kind == ParticleKind::choice ? " | "
                                                                      : " & ";
        for (const int part : particle.parts)
            text += (text.empty() ? "(" : between) + particleText(vocabulary, part, home);
        text += ")";
        break;
    }
    return text + occurrence(particle);
}

} // namespace

std::string contentOf(const Vocabulary& vocabulary, std::u16string_view namespaceName,
                      std::u16string_view localName) {
    const int id = vocabulary.findElement(namespaceName, localName);
    if (id < 0)
        return "not there";
    const VocabularyElement& element = vocabulary.element(id);
    const std::string content = particleText(vocabulary, element.content.root, namespaceName);
    return (element.textAllowed ? "text " : "") + content;
}

std::string attributesOf(const Vocabulary& vocabulary, std::u16string_view namespaceName,
                         std::u16string_view localName) {
    const int id = vocabulary.findElement(namespaceName, localName);
    if (id < 0)
        return "not there";
    std::string text;
    for (const AttributeUse& use : vocabulary.element(id).attributes) {
        const VocabularyAttribute& attribute = vocabulary.attribute(use.attribute);
        text += (text.empty() ? "" : " ") + nameOf(attribute.name, u"");
        text += std::string(use.isRequired ? "!" : "") + (attribute.hasDefault ? "^" : "");
        const char* before = "=";
        for (const AttributeValue& value : attribute.values) {
            const std::string shown = toUtf8(value.text);
            text += before + (value.isDescription ? "<" + shown + ">" : shown);
            if (!value.documentation.empty())
                text += "(" + toUtf8(value.documentation) + ")";
            before = "|";
        }
    }
    return text;
}

std::string rootsOf(const Vocabulary& vocabulary) {
    std::string text;
    for (const int root : vocabulary.roots())
        text += (text.empty() ? "" : " ") + toUtf8(vocabulary.element(root).name.localName);
    return text;
}

std::string messagesOf(const SchemaReadResult& result) {
    std::string text;
    for (const SchemaMessage& message : result.messages)
        text += fs::path(message.file).filename().string() + ":" + std::to_string(message.line) + ":" +
                std::to_string(message.column) + ": " + message.text + "\n";
    return text;
}

} // namespace tavrin
