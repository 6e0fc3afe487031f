#pragma once

#include "platform/schema/SchemaReading.h"
#include "platform/schema/VocabularyBuilder.h"
#include "platform/schema/XmlSchemaDocuments.h"

namespace tavrin {

/// The components of a schema as Xerces gives them; defined where Xerces is included.
struct XmlSchemaComponents;

/// Declares the elements of the components.
void declareComponents(SchemaReading& reading, const XmlSchemaDocuments& documents,
                       XmlSchemaComponents& components, VocabularyBuilder& builder);

} // namespace tavrin
