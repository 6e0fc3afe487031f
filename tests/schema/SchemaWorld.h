#pragma once

#include "platform/core/XmlNamespaces.h"
#include "platform/schema/DocumentSchemas.h"
#include "platform/schema/SchemaLocation.h"
#include "platform/schema/SchemaText.h"
#include "platform/schema/VocabularyBuilder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tavrin {

/// Schemas in a little language of their own, so that tests say in a line what a schema holds:
///
///     ns PREFIX NAMESPACE      (namespace of what follows; "-" for none)
///     root NAME CHILD* | el NAME CHILD*
///
/// A child is a name, "q{NAMESPACE}name", or "*" for any element of another namespace; children come in
/// order, each any number of times. "@name" and "@!name" are an attribute and a required one, "@name=a,b" has
/// values. "error TEXT" is a message.
inline SchemaReadResult readToy(std::istream& text, const std::filesystem::path& file) {
    SchemaReadResult result;
    result.files = {file};
    VocabularyBuilder builder;
    std::u16string space;
    std::string line;
    for (int number = 1; std::getline(text, line); ++number) {
        std::istringstream words(line);
        std::string kind;
        std::string word;
        words >> kind >> word;
        if (kind == "error") {
            result.messages.push_back({.file = pathText(file), .line = number, .text = line.substr(6)});
        } else if (kind == "ns") {
            std::string name;
            words >> name;
            space = name == "-" ? u"" : toUtf16(name);
            builder.notePrefix(space, word == "-" ? u"" : toUtf16(word));
        } else if (kind == "root" || kind == "el") {
            ElementDeclaration element{.name = {space, toUtf16(word)}, .isRoot = kind == "root"};
            std::vector<int> parts;
            while (words >> word) {
                if (word.starts_with("@")) {
                    const bool isRequired = word.starts_with("@!");
                    word.erase(0, isRequired ? 2 : 1);
                    VocabularyAttribute attribute{.name = {u"", toUtf16(word.substr(0, word.find('=')))}};
                    if (attribute.name.localName.starts_with(u"xlink:"))
                        attribute.name = {u"http://www.w3.org/1999/xlink",
                                          attribute.name.localName.substr(6)};
                    if (word.find('=') != std::string::npos) {
                        std::istringstream values(word.substr(word.find('=') + 1));
                        for (std::string value; std::getline(values, value, ',');)
                            attribute.values.push_back({.text = toUtf16(value)});
                    }
                    element.attributes.push_back({attribute, isRequired});
                } else if (word == "*") {
                    parts.push_back(builder.particles().anyElement({.namespaces = {space}}, 0, -1));
                } else {
                    ExpandedName name{space, toUtf16(word)};
                    if (const auto close = word.find('}'); word.starts_with("q{"))
                        name = {toUtf16(word.substr(2, close - 2)), toUtf16(word.substr(close + 1))};
                    parts.push_back(builder.particles().element(builder.reference(name), 0, -1));
                }
            }
            element.content = builder.particles().group(ParticleKind::sequence, std::move(parts));
            builder.declare(std::move(element));
        }
    }
    result.vocabulary = builder.finish();
    return result;
}

inline std::shared_ptr<const Vocabulary> toy(const std::string& text) {
    std::istringstream stream(text);
    return readToy(stream, "built-in").vocabulary;
}

/// A folder of files, a library that reads toy schemas from it and counts, and one document.
class SchemaWorld {
  public:
    explicit SchemaWorld(std::string documentName = "doc.xml")
        : folder(makeFolder()), documentPath(documentName.empty() ? "" : folder / documentName) {}
    ~SchemaWorld() { std::filesystem::remove_all(folder); }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(folder / name, std::ios::binary) << content;
    }

    SchemaLibrary& library() {
        if (!library_) {
            SchemaLibrary::Options options{
                .load =
                    [this](const SchemaRequest& request, const XmlCatalog&, const std::stop_token&) {
                        ++reads;
                        std::ifstream file(request.file);
                        if (!request.doctype.empty()) {
                            std::istringstream declared("root doctype");
                            return readToy(declared, {});
                        }
                        if (!file)
                            throw std::runtime_error("can't be read");
                        return readToy(file, request.file);
                    },
                .builtIn =
                    {toy("ns xsl http://www.w3.org/1999/XSL/Transform\nroot stylesheet template * @!version\n"
                         "el template param if *\nel if if\nel param"),
                     toy("ns fo http://www.w3.org/1999/XSL/Format\nroot root block\n"
                         "el block block * @color=red,blue")},
                .systemCatalogs = {folder / "catalog.xml"},
                .preferences = preferences};
            library_ = std::make_unique<SchemaLibrary>(thread, std::move(options));
        }
        return *library_;
    }

    DocumentSchemas& document() {
        if (!document_)
            document_ = std::make_unique<DocumentSchemas>(
                DocumentSchemas::Document{
                    .beginning = [this](std::size_t atMost) { return text.substr(0, atMost); },
                    .path = [this] { return documentPath; }},
                library());
        return *document_;
    }

    void settle() {
        while (!library().isIdle())
            thread.waitAndRun();
    }

    using Bindings = std::vector<std::pair<std::u16string, std::u16string>>;

    /// The service for a place with these bindings and siblings, when everything has been read.
    SmartPtr<IXSchema> at(Bindings bindings = {}, std::vector<ExpandedName> before = {},
                          std::vector<ExpandedName> after = {}) {
        SchemaContext context;
        context.bindings = std::move(bindings);
        context.siblingsBefore = std::move(before);
        context.siblingsAfter = std::move(after);
        (void)document().schemaAt(context);
        settle();
        SmartPtr<IXSchema> service = document().schemaAt(context);
        settle();
        return service;
    }

    std::filesystem::path folder;
    std::filesystem::path documentPath;
    std::u16string text;
    SchemaPreferences preferences;
    std::atomic<int> reads = 0;
    QueuedEditorThread thread;

  private:
    static std::filesystem::path makeFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tavrin-schemas-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no folder for the test");
        return name;
    }

    std::unique_ptr<SchemaLibrary> library_;
    std::unique_ptr<DocumentSchemas> document_;
};

/// The entries as "prefix:name"; those without room in brackets.
inline std::string list(const SmartPtr<SchemaElementEnum>& elements) {
    std::string result;
    while (elements->next()) {
        const std::string prefix = toUtf8(elements->getPrefix());
        const std::string name = (prefix.empty() ? "" : prefix + ":") + toUtf8(elements->getLocalName());
        result += (result.empty() ? "" : " ") + (elements->isAllowedHere() ? name : "(" + name + ")");
    }
    return result;
}
inline std::string list(const SmartPtr<SchemaAttributeEnum>& attributes) {
    std::string result;
    while (attributes->next())
        result += (result.empty() ? "" : " ") + toUtf8(attributes->getName()) +
                  (attributes->isEmphasised() ? "!" : "");
    return result;
}
inline std::string list(const SmartPtr<SchemaValueEnum>& values) {
    std::string result;
    while (values->next())
        result += (result.empty() ? "" : " ") + toUtf8(values->getValue());
    return result;
}

} // namespace tavrin
