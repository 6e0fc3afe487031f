#include "XmlDeclaration.h"

#include "buffer/Buffer.h"

#include <algorithm>
#include <span>

namespace tavrin::app {

namespace {

using std::u16string;
using std::u16string_view;

/// A declaration longer than this is none: what is typed at the top of a file is looked at whole, often.
constexpr std::size_t longestDeclaration = 1024;

constexpr u16string_view whitespace = u" \t\r\n";

/// The declaration's text and where its parts stand in it.
struct Declaration {
    /// From "<?xml" up to but not including "?>", lines joined by line feeds. Empty: there is none.
    u16string text;
    /// Of a pseudo-attribute's value: first code unit and one past the last. Equal to npos: it is not there.
    struct Value {
        std::size_t begin = u16string::npos;
        std::size_t end = u16string::npos;
        [[nodiscard]] bool exists() const { return begin != u16string::npos; }
    };
    Value version;
    Value encoding;
};

u16string textOfDeclaration(const Buffer& buffer) {
    u16string text;
    for (int line = 0; line < buffer.getLineCount() && text.size() < longestDeclaration; ++line) {
        if (line > 0)
            text += u'\n';
        text += buffer.getLineText(line).substr(0, longestDeclaration);
        const std::size_t end = text.find(u"?>");
        if (end != u16string::npos) {
            text.resize(end);
            const bool declaration = text.starts_with(u"<?xml") && text.size() > 5 &&
                                     whitespace.find(text[5]) != u16string_view::npos;
            return declaration ? text : u16string();
        }
    }
    return {};
}

/// The value of the pseudo-attribute `name`: name, optional white space, "=", the same again, a quoted value.
Declaration::Value findValue(const u16string& text, u16string_view name) {
    for (std::size_t at = text.find(name); at != u16string::npos; at = text.find(name, at + 1)) {
        if (whitespace.find(text[at - 1]) == u16string_view::npos)
            continue; // the end of a longer name; position 0 is "<"
        std::size_t next = text.find_first_not_of(whitespace, at + name.size());
        if (next == u16string::npos || text[next] != u'=')
            continue;
        next = text.find_first_not_of(whitespace, next + 1);
        if (next == u16string::npos || (text[next] != u'"' && text[next] != u'\''))
            continue;
        const std::size_t end = text.find(text[next], next + 1);
        if (end != u16string::npos)
            return {next + 1, end};
    }
    return {};
}

Declaration findDeclaration(const Buffer& buffer) {
    Declaration result;
    result.text = textOfDeclaration(buffer);
    if (!result.text.empty()) {
        result.version = findValue(result.text, u"version");
        result.encoding = findValue(result.text, u"encoding");
    }
    return result;
}

/// An edit at an offset into the declaration's text.
TextEdit editAt(const u16string& text, std::size_t offset, std::size_t length, u16string replacement) {
    const auto before = u16string_view(text).substr(0, offset);
    const auto line = std::count(before.begin(), before.end(), u'\n');
    const std::size_t lastBreak = before.rfind(u'\n');
    const std::size_t column = lastBreak == u16string_view::npos ? offset : offset - lastBreak - 1;
    return {static_cast<int>(line), static_cast<int>(column), static_cast<int>(length),
            std::move(replacement)};
}

u16string widen(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

/// What is not ASCII becomes "?", which no encoding's name has.
std::string narrow(u16string_view name) {
    std::string ascii;
    for (const char16_t c : name)
        ascii += c < 0x80 ? static_cast<char>(c) : '?';
    return ascii;
}

} // namespace

std::u16string declaredEncoding(const Buffer& buffer) {
    const Declaration declaration = findDeclaration(buffer);
    const auto [begin, end] = declaration.encoding;
    return declaration.encoding.exists() ? declaration.text.substr(begin, end - begin) : u16string();
}

std::optional<int> encodingNamed(std::u16string_view name, int present) {
    static constexpr int utf32[] = {ENCODING_UTF32, ENCODING_UTF32_BE, ENCODING_UTF32_2143,
                                    ENCODING_UTF32_3412};
    std::string lower = narrow(name);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    const auto among = [present](std::span<const int> codes) {
        return std::ranges::find(codes, present) != codes.end() ? present : codes.front();
    };
    if (lower == "utf-32" || lower == "ucs-4" || lower == "iso-10646-ucs-4")
        return among(utf32);
    if (lower == "utf-32le")
        return ENCODING_UTF32;
    if (lower == "utf-32be")
        return ENCODING_UTF32_BE;
    if (lower == "utf-16be")
        return ENCODING_UTF16_BE;
    const std::optional<int> code = encodingFromName(lower);
    static constexpr int utf16[] = {ENCODING_UTF16, ENCODING_UTF16_BE};
    return code == ENCODING_UTF16 && lower != "utf-16le" ? among(utf16) : code;
}

std::optional<TextEdit> declareEncoding(const Buffer& buffer, int encoding) {
    const Declaration declaration = findDeclaration(buffer);
    const u16string name = widen(encodingName(encoding));
    const auto& [begin, end] = declaration.encoding;
    if (declaration.encoding.exists()) {
        const u16string old = declaration.text.substr(begin, end - begin);
        if (encodingNamed(old, encoding) == encoding || old.find(u'\n') != u16string::npos)
            return {};
        return editAt(declaration.text, begin, end - begin, name);
    }
    if (encoding == ENCODING_UTF8 || isWideEncoding(encoding))
        return {}; // what readers assume, or see by the byte-order mark
    if (declaration.text.empty())
        return TextEdit{0, 0, 0, u"<?xml version=\"1.0\" encoding=\"" + name + u"\"?>\n"};
    // The order is fixed: version, encoding, standalone.
    const std::size_t place =
        declaration.version.exists() ? declaration.version.end + 1 : declaration.text.size();
    return editAt(declaration.text, place, 0, u" encoding=\"" + name + u"\"");
}

} // namespace tavrin::app
