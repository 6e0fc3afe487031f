#pragma once

#include "platform/schema/builtin/TableRows.h"

namespace tavrin::builtin {

inline constexpr std::string_view foNamespace = "http://www.w3.org/1999/XSL/Format";

extern const std::span<const NamedRow> foContentGroups;
extern const std::span<const NamedRow> foAttributeGroups;
extern const std::span<const ElementRow> foElements;

/// The properties, in three tables: of areas and speech, of text, of pages and structure.
extern const std::span<const PropertyRow> foBoxProperties;
extern const std::span<const PropertyRow> foTextProperties;
extern const std::span<const PropertyRow> foPageProperties;

extern const std::span<const ShorthandRow> foShorthands;
extern const std::span<const ComponentRow> foComponents;
extern const std::span<const NamedRow> foKinds;

} // namespace tavrin::builtin
