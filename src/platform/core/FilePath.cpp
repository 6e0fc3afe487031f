#include "platform/core/FilePath.h"

#include <filesystem>

namespace tavrin {

std::string systemPath(std::u16string_view path) {
    const std::u8string utf8 = std::filesystem::path(path).u8string();
    return {reinterpret_cast<const char*>(utf8.data()), utf8.size()};
}

std::FILE* openFile(const char16_t* path, const char* mode) {
    std::error_code ignored;
    const std::filesystem::path file(path);
    if (std::filesystem::is_directory(file, ignored))
        return nullptr; // reading one would look like an empty file
    return std::fopen(file.c_str(), mode);
}

} // namespace tavrin
