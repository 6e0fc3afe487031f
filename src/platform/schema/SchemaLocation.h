#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tavrin {

/// Paths as texts are UTF-8, whatever the locale.
[[nodiscard]] std::filesystem::path pathOf(std::string_view utf8);
[[nodiscard]] std::string pathText(const std::filesystem::path& path);

/// "%20" and its like as the bytes that they stand for; what is no such escape stays.
[[nodiscard]] std::string percentDecoded(std::string_view text);

/// The scheme of a URI in lower case ("http"); empty for a relative reference or a path.
[[nodiscard]] std::string schemeOf(std::string_view uri);

/// The local file that a URI reference means, relative ones below `folder`. Nothing for what lies on a
/// network, for other schemes, and for a relative reference when there is no folder.
[[nodiscard]] std::optional<std::filesystem::path> localFile(std::string_view reference,
                                                             const std::filesystem::path& folder);

/// Whether a file's name matches a pattern of "*" and "?"; one with a "/" is compared with the whole path.
[[nodiscard]] bool matchesFilePattern(const std::filesystem::path& file, std::string_view pattern);

} // namespace tavrin
