#pragma once

#include "platform/schema/Vocabulary.h"

#include <functional>
#include <string>
#include <string_view>

namespace tavrin {

/// The prefix to write for an element's or an attribute's namespace; empty for none.
using PrefixOf = std::function<std::u16string(std::u16string_view namespaceName)>;

/// What follows the name of a new element, in the language of IXSchema::getElementTemplate: the template
/// written by hand with its prefixes replaced; else required attributes, required children in the order of
/// the content model up to its first choice, and the end tag. "*" stands in the first place to fill.
///
/// A tab is written "_", so names that hold one cannot be written: with such a name of the element or of a
/// required attribute the template is just ">*", and children stop before one.
[[nodiscard]] std::u16string elementTemplate(const Vocabulary& vocabulary, int element,
                                             const PrefixOf& elementPrefix, const PrefixOf& attributePrefix);

} // namespace tavrin
