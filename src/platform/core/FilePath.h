#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace tavrin {

/// A file path as the system's calls want it (UTF-8).
[[nodiscard]] std::string systemPath(std::u16string_view path);

/// Opens a file as fopen does; null when that fails, and for a directory.
[[nodiscard]] std::FILE* openFile(const char16_t* path, const char* mode);

} // namespace tavrin
