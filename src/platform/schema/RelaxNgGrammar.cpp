#include "platform/schema/RelaxNgGrammar.h"

#include <algorithm>
#include <utility>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view relaxNgUri = "http://relaxng.org/ns/structure/1.0";

std::string trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t start = text.find_first_not_of(blanks);
    if (start == std::string_view::npos)
        return {};
    return std::string(text.substr(start, text.find_last_not_of(blanks) - start + 1));
}

/// Names that the children of an include define, so that those of the included grammar give way.
void collectOverrides(const _xmlNode* container, std::set<std::string>& names) {
    for (const _xmlNode* child = relaxNgFrom(firstElement(container)); child;
         child = relaxNgFrom(nextElement(child))) {
        if (isRelaxNg(child, "define"))
            names.insert(trimmedAttribute(child, "name"));
        else if (isRelaxNg(child, "start"))
            names.insert("");
        else if (isRelaxNg(child, "div"))
            collectOverrides(child, names);
    }
}

} // namespace

bool isRelaxNg(const _xmlNode* node, std::string_view name) {
    return localName(node) == name && namespaceOf(node) == relaxNgUri;
}

const _xmlNode* relaxNgFrom(const _xmlNode* node) {
    while (node && namespaceOf(node) != relaxNgUri)
        node = nextElement(node);
    return node;
}

std::string trimmedAttribute(const _xmlNode* node, const char* name) {
    return trimmed(attributeOf(node, name));
}

std::string relaxNgNamespace(const RelaxNgPattern& pattern) {
    for (const _xmlNode* node = pattern.node; node; node = parentElement(node))
        if (hasAttribute(node, "ns"))
            return attributeOf(node, "ns");
    return pattern.document->outerNamespace;
}

SchemaPlace RelaxNgGrammars::placeOf(const RelaxNgPattern& pattern) {
    return {pattern.document->file.string(), lineOf(pattern.node)};
}

const RelaxNgDocument* RelaxNgGrammars::load(const fs::path& file, const SchemaPlace& from,
                                             const std::string& outerNamespace) {
    const auto known = std::ranges::find_if(documents_, [&](const RelaxNgDocument& document) {
        return document.file == file && document.outerNamespace == outerNamespace;
    });
    if (known != documents_.end())
        return known->tree ? &*known : nullptr;
    documents_.push_back({file, loadGuarded(reading_, file, from), outerNamespace});
    RelaxNgDocument& document = documents_.back();
    const _xmlNode* root = document.tree.root();
    if (root && relaxNgFrom(root) && !reading_.gaveUp())
        return &document;
    if (root)
        reading_.error({file.string(), lineOf(root)},
                       "The document is no RELAX NG schema: its first element is \"" +
                           std::string(localName(root)) + "\".");
    document.tree = XmlDocument(); // so that it is not taken for one when it is named again
    return nullptr;
}

const RelaxNgDocument* RelaxNgGrammars::loadReferenced(const RelaxNgPattern& reference) {
    const SchemaPlace place = placeOf(reference);
    const std::string href = trimmedAttribute(reference.node, "href");
    const auto file = reading_.locate(SchemaReading::referenceFrom(reference.document->file, href), place);
    if (!file)
        return nullptr;
    const fs::path path = file->lexically_normal();
    if (isOpen(path, reference.grammar)) {
        reading_.error(place,
                       "The file " + path.string() + " takes in itself, directly or by way of others.");
        return nullptr;
    }
    return load(path, place, relaxNgNamespace(reference));
}

bool RelaxNgGrammars::isOpen(const fs::path& file, const RelaxNgGrammar* grammar) const {
    for (; grammar; grammar = grammar->parent)
        if (grammar->file == file)
            return true;
    return std::ranges::find(open_, file) != open_.end();
}

RelaxNgPattern RelaxNgGrammars::open(const fs::path& file) {
    const fs::path path = file.lexically_normal();
    const RelaxNgDocument* document = load(path, {}, {});
    if (!document)
        return {};
    // Names of a schema that is no grammar refer to nothing.
    return {document->tree.root(), &grammars_.emplace_back(RelaxNgGrammar{.file = path}), document};
}

RelaxNgPattern RelaxNgGrammars::external(const RelaxNgPattern& reference) {
    const auto [at, isNew] = external_.try_emplace(reference);
    if (!isNew)
        return at->second;
    if (const RelaxNgDocument* document = loadReferenced(reference))
        at->second = {document->tree.root(), reference.grammar, document};
    return at->second;
}

RelaxNgGrammar& RelaxNgGrammars::grammarOf(const RelaxNgPattern& pattern) {
    RelaxNgGrammar*& known = byPattern_[pattern];
    if (!known) {
        known = &grammars_.emplace_back(
            RelaxNgGrammar{.parent = pattern.grammar, .file = pattern.document->file});
        collect({pattern.node, known, pattern.document}, {}, 0);
    }
    return *known;
}

void RelaxNgGrammars::collect(const RelaxNgPattern& container, const Names& overridden, int depth) {
    for (const _xmlNode* child = relaxNgFrom(firstElement(container.node)); child && reading_.mayGoOn();
         child = relaxNgFrom(nextElement(child))) {
        const RelaxNgPattern element{child, container.grammar, container.document};
        if (isRelaxNg(child, "div"))
            collect(element, overridden, depth + 1);
        else if (isRelaxNg(child, "include"))
            include(element, overridden, depth + 1);
        else if (const std::string name = isRelaxNg(child, "define") ? trimmedAttribute(child, "name") : "";
                 (isRelaxNg(child, "start") || !name.empty()) && !overridden.contains(name))
            define(element, name);
    }
}

void RelaxNgGrammars::include(const RelaxNgPattern& element, const Names& overridden, int depth) {
    if (depth > reading_.limits().depth) {
        reading_.error(placeOf(element), "Documents take in one another too deeply.");
        return;
    }
    Names all = overridden;
    collectOverrides(element.node, all);
    if (const RelaxNgDocument* document = loadReferenced(element)) {
        if (isRelaxNg(document->tree.root(), "grammar")) {
            open_.push_back(document->file);
            collect({document->tree.root(), element.grammar, document}, all, depth);
            open_.pop_back();
        } else {
            reading_.error(placeOf(element), "What is included must be a grammar.");
        }
    }
    collect(element, overridden, depth);
}

void RelaxNgGrammars::define(const RelaxNgPattern& element, const std::string& name) {
    RelaxNgDefinition& definition = element.grammar->definitions[name];
    definition.parts.push_back(element);
    const std::string combine = trimmedAttribute(element.node, "combine");
    if (combine == "interleave")
        definition.combine = RelaxNgDefinition::Combine::interleave;
    else if (combine == "choice")
        definition.combine = RelaxNgDefinition::Combine::choice;
}

} // namespace tavrin
