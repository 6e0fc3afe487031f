#pragma once

#include "platform/schema/Vocabulary.h"

#include <string_view>
#include <vector>

namespace tavrin {

/// What may stand in an attribute of one of XML Schema's built-in types, by the type's local name: "true" and
/// "false" for a boolean, for most a description, for strings and unknown names nothing.
[[nodiscard]] std::vector<AttributeValue> valuesOfDatatype(std::u16string_view type);

/// The words with bounds: "a number from 1 to 10". Empty bounds are left out.
[[nodiscard]] std::u16string withBounds(std::u16string words, std::u16string_view least,
                                        std::u16string_view greatest);

/// Adds values that are not there yet.
void addValues(std::vector<AttributeValue>& values, const std::vector<AttributeValue>& more);

} // namespace tavrin
