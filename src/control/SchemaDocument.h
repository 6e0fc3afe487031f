#pragma once

#include "platform/schema/DocumentSchemas.h"

#include <filesystem>
#include <functional>

namespace tavrin {

class Buffer;

/// The text of a buffer as DocumentSchemas asks for it. The buffer outlives what asks.
[[nodiscard]] DocumentSchemas::Document schemaDocument(const Buffer& buffer,
                                                       std::function<std::filesystem::path()> path);

} // namespace tavrin
