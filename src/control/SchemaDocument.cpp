#include "control/SchemaDocument.h"

#include "buffer/Buffer.h"
#include "platform/schema/SchemaSources.h"

#include <string>
#include <utility>

namespace tavrin {

namespace {

std::u16string beginningOf(const Buffer& buffer, std::size_t atMost) {
    std::u16string text;
    for (int line = 0; line < buffer.getLineCount() && text.size() < atMost; ++line) {
        if (line > 0)
            text += u'\n';
        text += buffer.getLineText(line).substr(0, atMost - text.size());
    }
    return text;
}

} // namespace

DocumentSchemas::Document schemaDocument(const Buffer& buffer, std::function<std::filesystem::path()> path) {
    return {.beginning = [&buffer](std::size_t atMost) { return beginningOf(buffer, atMost); },
            .path = std::move(path)};
}

std::unique_ptr<ISchemaSource> builtInSchemas(const Buffer& buffer) {
    return std::make_unique<DocumentSchemas>(schemaDocument(buffer, [] { return std::filesystem::path(); }),
                                             builtInVocabularies());
}

} // namespace tavrin
