#pragma once

#include <string>

struct _xmlNode;

namespace tavrin {

/// Whether an element of a schema document says a pattern that values must match.
[[nodiscard]] bool isXmlSchemaPattern(const _xmlNode* element);

/// Puts spaces in place of the patterns of a schema, so that lines and columns stay; `bytes` is the document
/// of the tree below `root`: well-formed, UTF-8, without a document type.
///
/// Xerces tries values that the schema itself gives (defaults, enumerations) against patterns, going back and
/// forth in a way that never ends for some of them, and deeper than any stack for others; it asks for no
/// memory meanwhile, so that nothing could stop it. Nobody is offered anything because of a pattern.
void blankXmlSchemaPatterns(std::string& bytes, const _xmlNode* root);

} // namespace tavrin
