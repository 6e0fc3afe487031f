#pragma once

#include "platform/schema/builtin/TableRows.h"

namespace tavrin::builtin {

extern const std::span<const GroupRow> foContentGroups;
extern const std::span<const GroupRow> foAttributeGroups;
extern const std::span<const ElementRow> foElements;

/// The properties, in three tables: of areas and speech, of text, of pages and structure.
extern const std::span<const PropertyRow> foBoxProperties;
extern const std::span<const PropertyRow> foTextProperties;
extern const std::span<const PropertyRow> foPageProperties;

extern const std::span<const ShorthandRow> foShorthands;
extern const std::span<const ComponentRow> foComponents;

} // namespace tavrin::builtin
