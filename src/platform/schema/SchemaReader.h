#pragma once

#include "platform/schema/Vocabulary.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tavrin {

/// Something that a reader has to say of a schema, in words.
struct SchemaMessage {
    enum class Severity { warning, error };

    Severity severity = Severity::error;
    std::string file = {}; ///< path or URI, UTF-8; empty when it is about the whole
    int line = 0;          ///< counted from 1; 0 when not known
    int column = 0;        ///< counted from 1; 0 when not known
    std::string text = {}; ///< UTF-8
};

/// What came of reading a schema. What could be read is used even if there were errors.
struct SchemaReadResult {
    std::shared_ptr<const Vocabulary> vocabulary; ///< never null; without elements when nothing could be read
    std::vector<SchemaMessage> messages;
    std::vector<std::filesystem::path> files; ///< all that were read, for noticing that one changed
};

enum class SchemaLanguage { xmlSchema, dtd, relaxNg };

/// The language of a schema document, told by its name's ending; then by its root element.
[[nodiscard]] SchemaLanguage schemaLanguageOf(const std::filesystem::path& file);

} // namespace tavrin
