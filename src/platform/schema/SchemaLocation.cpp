#include "platform/schema/SchemaLocation.h"

#include <algorithm>
#include <charconv>

namespace tavrin {

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isSchemeCharacter(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

bool matches(std::string_view text, std::string_view pattern) {
    while (!pattern.empty()) {
        if (pattern.front() == '*') {
            pattern.remove_prefix(std::min(pattern.find_first_not_of('*'), pattern.size()));
            for (std::size_t skipped = 0; skipped <= text.size(); ++skipped)
                if (matches(text.substr(skipped), pattern))
                    return true;
            return false;
        }
        if (text.empty() || (pattern.front() != '?' && pattern.front() != text.front()))
            return false;
        text.remove_prefix(1);
        pattern.remove_prefix(1);
    }
    return text.empty();
}

} // namespace

std::filesystem::path pathOf(std::string_view utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string pathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string percentDecoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned value = 0;
        if (text[i] == '%' && i + 2 < text.size()) {
            const char* digits = text.data() + i + 1;
            const auto [end, error] = std::from_chars(digits, digits + 2, value, 16);
            if (error == std::errc() && end == digits + 2 && value != 0) {
                result += static_cast<char>(value);
                i += 2;
                continue;
            }
        }
        result += text[i];
    }
    return result;
}

std::string schemeOf(std::string_view uri) {
    const std::size_t colon = uri.find(':');
    // One letter is a drive.
    if (colon == std::string_view::npos || colon < 2 || !isLetter(uri.front()) ||
        !std::ranges::all_of(uri.substr(0, colon), isSchemeCharacter))
        return {};
    std::string scheme(uri.substr(0, colon));
    for (char& c : scheme)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return scheme;
}

std::optional<std::filesystem::path> localFile(std::string_view reference,
                                               const std::filesystem::path& folder) {
    const std::string scheme = schemeOf(reference);
    reference = reference.substr(0, reference.find('#'));
    if (reference.empty())
        return std::nullopt;
    if (scheme == "file") {
        reference.remove_prefix(scheme.size() + 1);
        if (reference.starts_with("//")) {
            reference.remove_prefix(2);
            const std::size_t path = reference.find('/');
            const std::string_view host = reference.substr(0, path);
            if (path == std::string_view::npos || (!host.empty() && host != "localhost"))
                return std::nullopt;
            reference.remove_prefix(path);
        }
    } else if (!scheme.empty() || reference.starts_with("//")) {
        return std::nullopt;
    }
    const std::filesystem::path path = pathOf(percentDecoded(reference));
    if (path.is_absolute())
        return path.lexically_normal();
    if (folder.empty())
        return std::nullopt;
    return (folder / path).lexically_normal();
}

bool matchesFilePattern(const std::filesystem::path& file, std::string_view pattern) {
    const bool isWhole = pattern.find('/') != std::string_view::npos;
    return !pattern.empty() && matches(pathText(isWhole ? file : file.filename()), pattern);
}

} // namespace tavrin
