#pragma once

#include "platform/schema/builtin/TableRows.h"

namespace tavrin::builtin {

extern const std::span<const GroupRow> xsltContentGroups;
extern const std::span<const GroupRow> xsltAttributeGroups;
extern const std::span<const ElementRow> xsltElements;
extern const std::span<const AttributeRow> xsltAttributes;
/// Attributes of the XSLT namespace on elements of any other.
extern const std::span<const AttributeRow> xsltAttributesElsewhere;

} // namespace tavrin::builtin
