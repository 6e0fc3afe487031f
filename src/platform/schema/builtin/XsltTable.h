#pragma once

#include "platform/schema/builtin/TableRows.h"

namespace tavrin::builtin {

inline constexpr std::string_view xsltNamespace = "http://www.w3.org/1999/XSL/Transform";

extern const std::span<const NamedRow> xsltContentGroups;
extern const std::span<const NamedRow> xsltAttributeGroups;
extern const std::span<const NamedRow> xsltKinds;
extern const std::span<const ElementRow> xsltElements;
extern const std::span<const AttributeRow> xsltAttributes;
/// Attributes of the XSLT namespace on elements of any other.
extern const std::span<const AttributeRow> xsltAttributesElsewhere;

} // namespace tavrin::builtin
