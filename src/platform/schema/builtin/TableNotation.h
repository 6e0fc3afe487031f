#pragma once

#include "platform/schema/VocabularyBuilder.h"
#include "platform/schema/builtin/TableRows.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Reads the notation of TableRows.h. What is not written as it says is a mistake in a table of this folder
/// and throws std::logic_error.
namespace tavrin::builtin {

/// The tables are ASCII.
[[nodiscard]] std::u16string widen(std::string_view ascii);

/// The text with each "%name" replaced by the group's members, and those in them.
[[nodiscard]] std::string expandGroups(std::string_view text, std::span<const GroupRow> groups);

struct Content {
    int node = ParticlePool::empty;
    bool textAllowed = false;
};

/// Content without groups, as a node of the builder's pool. Its names are in that namespace.
[[nodiscard]] Content readContent(std::string_view content, std::u16string_view namespaceName,
                                  VocabularyBuilder& builder);

struct AttributeMention {
    std::string name;
    bool isRequired = false;
};

/// A list of attributes without groups.
[[nodiscard]] std::vector<AttributeMention> readAttributes(std::string_view list);

/// The keywords in their order; then, if there are any, the descriptions of the other values. (A list that
/// would only say that there is nothing to choose is none.)
[[nodiscard]] std::vector<AttributeValue> readValues(std::string_view values);

/// The kinds of value that a list names.
[[nodiscard]] std::vector<std::string_view> kindsIn(std::string_view values);

} // namespace tavrin::builtin
