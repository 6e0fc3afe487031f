#pragma once

#include "platform/schema/DocumentSchemas.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace tavrin {

class Buffer;

/// The text of a buffer as DocumentSchemas asks for it. The buffer outlives what asks.
[[nodiscard]] DocumentSchemas::Document schemaDocument(const Buffer& buffer,
                                                       std::function<std::filesystem::path()> path);

/// What a buffer is completed with where nobody cares for schemas: XSLT and XSL-FO, without reading a file.
[[nodiscard]] std::unique_ptr<ISchemaSource> builtInSchemas(const Buffer& buffer);

} // namespace tavrin
