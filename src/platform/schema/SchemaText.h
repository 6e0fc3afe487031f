#pragma once

#include <string>
#include <string_view>

namespace tavrin {

/// Conversions for names and messages; what is not valid becomes U+FFFD.
[[nodiscard]] std::u16string toUtf16(std::string_view utf8);
[[nodiscard]] std::string toUtf8(std::u16string_view text);

/// Words with one space between them and none around.
[[nodiscard]] std::u16string collapseSpaces(std::u16string_view text);

} // namespace tavrin
