#pragma once

#include "platform/schema/SchemaLibrary.h"

namespace tavrin {

/// Reads schemas from files with this library's readers; what a schema names in turn is looked up in the
/// catalogs first.
[[nodiscard]] SchemaLoader fileSchemaLoader();

/// XSLT 1.0 and XSL-FO 1.0.
[[nodiscard]] std::vector<std::shared_ptr<const Vocabulary>> builtInVocabularies();

} // namespace tavrin
