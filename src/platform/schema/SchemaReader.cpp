#include "platform/schema/SchemaReader.h"

#include "platform/schema/GuardedXml.h"

#include <algorithm>
#include <cctype>
#include <fstream>

namespace tavrin {

namespace fs = std::filesystem;

namespace {

/// Enough of a file to hold its first tag.
constexpr std::streamsize headSize = 8192;

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

} // namespace

SchemaLanguage schemaLanguageOf(const fs::path& file) {
    std::string ending = file.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return std::tolower(c); });
    if (ending == ".xsd")
        return SchemaLanguage::xmlSchema;
    if (ending == ".rng")
        return SchemaLanguage::relaxNg;
    if (ending == ".dtd" || ending == ".mod" || ending == ".ent")
        return SchemaLanguage::dtd;
    std::string head(headSize, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(head.data(), headSize);
    head.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    std::erase(head, '\0'); // UTF-16
    if (holds(head, "http://relaxng.org/ns/structure/1.0"))
        return SchemaLanguage::relaxNg;
    if (holds(head, "http://www.w3.org/2001/XMLSchema"))
        return SchemaLanguage::xmlSchema;
    return SchemaLanguage::dtd;
}

SchemaReadResult readSchema(const fs::path& file, SchemaLanguage language, const SchemaReadOptions& options) {
    switch (language) {
    case SchemaLanguage::xmlSchema:
        return readXmlSchema(file, options);
    case SchemaLanguage::dtd:
        return readDtd(file, options);
    case SchemaLanguage::relaxNg:
        return readRelaxNg(file, options);
    }
    return {};
}

} // namespace tavrin
