#include "replay/Json.h"

#include <algorithm>
#include <charconv>

namespace tavrin::json {

namespace {

constexpr char16_t highSurrogateFirst = 0xD800;
constexpr char16_t lowSurrogateFirst = 0xDC00;
constexpr char16_t surrogateEnd = 0xE000;
constexpr char32_t replacement = 0xFFFD;

bool isHigh(char16_t unit) {
    return unit >= highSurrogateFirst && unit < lowSurrogateFirst;
}
bool isLow(char16_t unit) {
    return unit >= lowSurrogateFirst && unit < surrogateEnd;
}

void appendUtf16(char32_t character, std::u16string& out) {
    if (character < 0x10000) {
        out += static_cast<char16_t>(character);
        return;
    }
    out += static_cast<char16_t>(highSurrogateFirst + ((character - 0x10000) >> 10));
    out += static_cast<char16_t>(lowSurrogateFirst + ((character - 0x10000) & 0x3FF));
}

void appendUtf8(char32_t character, std::string& out) {
    const auto trail = [&](int shift) { out += static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
        out += static_cast<char>(character);
    } else if (character < 0x800) {
        out += static_cast<char>(0xC0 | (character >> 6));
        trail(0);
    } else if (character < 0x10000) {
        out += static_cast<char>(0xE0 | (character >> 12));
        trail(6);
        trail(0);
    } else {
        out += static_cast<char>(0xF0 | (character >> 18));
        trail(12);
        trail(6);
        trail(0);
    }
}

/// The character that `text` begins with; takes it off. REQUIRES: !text.empty().
char32_t takeUtf8(std::string_view& text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    std::size_t length = 1;
    char32_t character = byte(0);
    char32_t smallest = 0; // that needs this length
    if (character >= 0xF0 && character < 0xF8) {
        length = 4, character &= 0x07, smallest = 0x10000;
    } else if (character >= 0xE0) {
        length = 3, character &= 0x0F, smallest = 0x800;
    } else if (character >= 0xC0) {
        length = 2, character &= 0x1F, smallest = 0x80;
    } else if (character >= 0x80) {
        throw Error("not valid UTF-8");
    }
    if (byte(0) >= 0xF8 || text.size() < length)
        throw Error("not valid UTF-8");
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            throw Error("not valid UTF-8");
        character = (character << 6) | (byte(i) & 0x3F);
    }
    const bool surrogate = character >= highSurrogateFirst && character < surrogateEnd;
    if (character < smallest || character > 0x10FFFF || surrogate)
        throw Error("not valid UTF-8");
    text.remove_prefix(length);
    return character;
}

char16_t takeHexUnit(std::string_view& text) {
    constexpr std::size_t digits = 4;
    unsigned unit = 0;
    const char* end = text.data() + std::min(digits, text.size());
    const auto [stopped, error] = std::from_chars(text.data(), end, unit, 16);
    if (error != std::errc{} || stopped != text.data() + digits)
        throw Error("\\u needs four hexadecimal digits");
    text.remove_prefix(digits);
    return static_cast<char16_t>(unit);
}

/// What follows a backslash.
char16_t takeEscape(std::string_view& text) {
    if (text.empty())
        throw Error("string without a closing quote");
    const char escape = text.front();
    text.remove_prefix(1);
    switch (escape) {
    case '"':
    case '\\':
    case '/':
        return static_cast<char16_t>(escape);
    case 'b':
        return u'\b';
    case 'f':
        return u'\f';
    case 'n':
        return u'\n';
    case 'r':
        return u'\r';
    case 't':
        return u'\t';
    case 'u':
        return takeHexUnit(text);
    default:
        throw Error(std::string("unknown escape \\") + escape);
    }
}

void appendUnicodeEscape(char16_t unit, std::string& out) {
    constexpr std::string_view digits = "0123456789abcdef";
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        out += digits[(unit >> shift) & 0xF];
}

/// The escape's letter for a code unit that has a short one, else 0.
char shortEscape(char16_t unit) {
    switch (unit) {
    case u'"':
        return '"';
    case u'\\':
        return '\\';
    case u'\b':
        return 'b';
    case u'\f':
        return 'f';
    case u'\n':
        return 'n';
    case u'\r':
        return 'r';
    case u'\t':
        return 't';
    default:
        return 0;
    }
}

void appendQuoted(std::u16string_view text, std::string& out) {
    out += '"';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (const char letter = shortEscape(unit)) {
            out += '\\';
            out += letter;
        } else if (isHigh(unit) && i + 1 < text.size() && isLow(text[i + 1])) {
            appendUtf8(0x10000 + ((unit - char32_t{highSurrogateFirst}) << 10) +
                           (text[++i] - char32_t{lowSurrogateFirst}),
                       out);
        } else if (unit < 0x20 || isHigh(unit) || isLow(unit)) {
            appendUnicodeEscape(unit, out);
        } else {
            appendUtf8(unit, out);
        }
    }
    out += '"';
}

} // namespace

std::u16string fromUtf8(std::string_view bytes) {
    std::u16string text;
    while (!bytes.empty())
        appendUtf16(takeUtf8(bytes), text);
    return text;
}

std::string toUtf8(std::u16string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (isHigh(unit) && i + 1 < text.size() && isLow(text[i + 1]))
            appendUtf8(0x10000 + ((unit - char32_t{highSurrogateFirst}) << 10) +
                           (text[++i] - char32_t{lowSurrogateFirst}),
                       bytes);
        else
            appendUtf8(isHigh(unit) || isLow(unit) ? replacement : unit, bytes);
    }
    return bytes;
}

std::u16string takeString(std::string_view& text) {
    if (text.empty() || text.front() != '"')
        throw Error("a JSON string is needed");
    std::string_view rest = text.substr(1);
    std::u16string result;
    while (!rest.empty()) {
        const char next = rest.front();
        if (next == '"') {
            text = rest.substr(1);
            return result;
        }
        if (static_cast<unsigned char>(next) < 0x20)
            throw Error("control characters in a string must be escaped");
        if (next == '\\') {
            rest.remove_prefix(1);
            result += takeEscape(rest);
        } else {
            appendUtf16(takeUtf8(rest), result);
        }
    }
    throw Error("string without a closing quote");
}

std::optional<int> toInteger(std::string_view word) {
    const std::string_view digits = word.starts_with('-') ? word.substr(1) : word;
    if (digits.empty() || (digits.size() > 1 && digits.front() == '0'))
        return std::nullopt;
    int number = 0;
    const auto [stopped, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc{} || stopped != word.data() + word.size())
        return std::nullopt;
    return number;
}

Scalar takeScalar(std::string_view& text) {
    if (text.starts_with('"'))
        return takeString(text);
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    Scalar result;
    if (word == "true" || word == "false")
        result = word == "true";
    else if (const auto number = toInteger(word))
        result = *number;
    else
        throw Error("a JSON string, an integer, true or false is needed");
    text.remove_prefix(word.size());
    return result;
}

// Writing

void Writer::separate() {
    if (afterValue_)
        text_ += ',';
    afterValue_ = true;
}

Writer& Writer::open(char bracket) {
    separate();
    text_ += bracket;
    afterValue_ = false;
    return *this;
}

Writer& Writer::close(char bracket) {
    text_ += bracket;
    afterValue_ = true;
    return *this;
}

Writer& Writer::key(std::string_view name) {
    separate();
    appendQuoted(fromUtf8(name), text_);
    text_ += ':';
    afterValue_ = false;
    return *this;
}

Writer& Writer::value(int number) {
    separate();
    text_ += std::to_string(number);
    return *this;
}

Writer& Writer::literal(std::string_view word) {
    separate();
    text_ += word;
    return *this;
}

Writer& Writer::value(std::u16string_view text) {
    separate();
    appendQuoted(text, text_);
    return *this;
}

Writer& Writer::value(std::span<const int> numbers) {
    beginArray();
    for (const int number : numbers)
        value(number);
    return endArray();
}

} // namespace tavrin::json
