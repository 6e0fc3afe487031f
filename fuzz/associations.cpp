// Any stored preferences and any document lead to candidates that are files, built in, or tell what is wrong.
//
// Lines that begin with "Rule ", "Catalog " or "Document " are entries of the user's preferences as settings
// hold them; the other lines are the beginning of a document.

#include "FuzzTarget.h"
#include "platform/core/MemorySettings.h"
#include "platform/schema/SchemaAssociation.h"
#include "platform/schema/SchemaLocation.h"
#include "platform/schema/SchemaText.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

using namespace tavrin;
using fuzz::require;

namespace {

/// Whether the name matches, found by trying every pair of lengths.
bool matchesByTable(std::string_view name, std::string_view pattern) {
    std::vector<bool> row(name.size() + 1); // whether the pattern so far matches each beginning of the name
    row[0] = true;
    for (const char c : pattern) {
        std::vector<bool> next(name.size() + 1);
        next[0] = c == '*' && row[0];
        for (std::size_t i = 1; i <= name.size(); ++i)
            next[i] = c == '*' ? row[i] || next[i - 1] : row[i - 1] && (c == '?' || c == name[i - 1]);
        row = std::move(next);
    }
    return row.back();
}

void checkPattern(const std::filesystem::path& file, const std::string& pattern) {
    const std::string name = pathText(pattern.find('/') == std::string::npos ? file.filename() : file);
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (!pattern.empty() && std::ranges::all_of(name, isAscii))
        require(matchesFilePattern(file, pattern) == matchesByTable(name, pattern),
                "a pattern matches what trying everything matches");
}

void checkCandidates(const SchemaPreferences& preferences, std::u16string_view beginning,
                     const std::filesystem::path& document) {
    const XmlCatalog noCatalog;
    AssociationInput input{.document = document, .preferences = preferences, .catalog = &noCatalog};
    input.declarations = readDeclarations(beginning);
    require(!input.declarations.isComplete || input.declarations.root,
            "a document that goes beyond its first tag has one");
    for (const auto& [prefix, name] : input.declarations.bindings)
        input.namespaces.push_back(name);
    for (const SchemaCandidate& candidate : associate(input)) {
        require(!candidate.reason.empty(), "a candidate tells why it is one");
        require(candidate.request.has_value() != !candidate.problem.empty(),
                "a candidate is to be read, or tells why it can't be");
    }
    for (const SchemaRule& rule : preferences.rules)
        if (rule.kind == SchemaRule::Kind::filePattern)
            checkPattern(document, rule.pattern);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream input(
        std::string(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 16384)));
    MemorySettings settings;
    std::map<std::string, int> counts;
    std::string document;
    for (std::string line; std::getline(input, line);) {
        const std::string list = line.substr(0, std::min(line.find(' '), line.size()));
        if (list == "Rule" || list == "Catalog" || list == "Document")
            settings.setStringValue("Schemas", list + ' ' + std::to_string(++counts[list]),
                                    toUtf16(line.substr(std::min(list.size() + 1, line.size()))));
        else
            document += line + '\n';
    }
    for (const auto& [list, count] : counts)
        settings.setIntValue("Schemas", list + " Count", count);

    const SchemaPreferences preferences = loadSchemaPreferences(settings);
    MemorySettings written;
    saveSchemaPreferences(preferences, written);
    require(loadSchemaPreferences(written) == preferences, "preferences that were written read as the same");
    for (const char* path : {"", "/folder/document.xml", "/folder/ab.abab"})
        checkCandidates(preferences, toUtf16(document), path);
    return 0;
}
