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

/// Where the character after the one at `at` begins in UTF-8.
std::size_t nextCharacter(std::string_view text, std::size_t at) {
    do
        ++at;
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80);
    return at;
}

/// Only the last "*" passed ever takes more: what an earlier one could take instead, that one can too. So the
/// work is at most the product of both lengths, however many stars there are.
bool matches(std::string_view text, std::string_view pattern) {
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t afterStar = std::string_view::npos;
    std::size_t starEnd = 0; // of what the star has taken
    while (at < text.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            afterStar = ++in;
            starEnd = at;
        } else if (in < pattern.size() && pattern[in] == '?') {
            ++in;
            at = nextCharacter(text, at);
        } else if (in < pattern.size() && pattern[in] == text[at]) {
            ++in;
            ++at;
        } else if (afterStar != std::string_view::npos) {
            in = afterStar;
            at = starEnd = nextCharacter(text, starEnd);
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == std::string_view::npos;
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
