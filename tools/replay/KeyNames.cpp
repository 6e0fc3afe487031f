#include "replay/KeyNames.h"

#include "replay/Json.h"

#include <algorithm>

namespace tavrin::replay {

namespace {

struct NamedKey {
    std::string_view name;
    UINT key;
    char16_t character; ///< 0: none
};

constexpr NamedKey namedKeys[] = {
    {"Left", VK_LEFT, 0},      {"Right", VK_RIGHT, 0},   {"Up", VK_UP, 0},          {"Down", VK_DOWN, 0},
    {"Home", VK_HOME, 0},      {"End", VK_END, 0},       {"PageUp", VK_PRIOR, 0},   {"PageDown", VK_NEXT, 0},
    {"Insert", VK_INSERT, 0},  {"Delete", VK_DELETE, 0}, {"Return", VK_RETURN, 13}, {"Enter", VK_RETURN, 13},
    {"Backspace", VK_BACK, 8}, {"Tab", VK_TAB, 9},       {"Escape", VK_ESCAPE, 27}, {"Space", VK_SPACE, 32},
};

/// A key whose two characters are not a letter's.
struct PrintableKey {
    UINT key;
    char plain;
    char shifted;
};

constexpr PrintableKey printableKeys[] = {
    {'1', '1', '!'},   {'2', '2', '@'},  {'3', '3', '#'},  {'4', '4', '$'},   {'5', '5', '%'},
    {'6', '6', '^'},   {'7', '7', '&'},  {'8', '8', '*'},  {'9', '9', '('},   {'0', '0', ')'},
    {0xBA, ';', ':'},  {0xBB, '=', '+'}, {0xBC, ',', '<'}, {0xBD, '-', '_'},  {0xBE, '.', '>'},
    {0xBF, '/', '?'},  {0xC0, '`', '~'}, {0xDB, '[', '{'}, {0xDC, '\\', '|'}, {0xDD, ']', '}'},
    {0xDE, '\'', '"'},
};

bool isLower(char c) {
    return c >= 'a' && c <= 'z';
}
bool isUpper(char c) {
    return c >= 'A' && c <= 'Z';
}
char upper(char c) {
    return isLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
}
char lower(char c) {
    return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Takes a modifier's prefix off the name. False when there is none, or when nothing would be left.
bool takePrefix(std::string_view& name, std::string_view prefix, bool& held) {
    if (held || !name.starts_with(prefix) || name.size() == prefix.size())
        return false;
    name.remove_prefix(prefix.size());
    return held = true;
}

bool parseFunctionKey(std::string_view name, KeyStroke& stroke) {
    constexpr int lastFunctionKey = 12;
    if (!name.starts_with('F'))
        return false;
    const auto number = json::toInteger(name.substr(1));
    if (!number || *number < 1 || *number > lastFunctionKey)
        return false;
    stroke.key = VK_F1 + static_cast<UINT>(*number - 1);
    return true;
}

bool parseLetter(char letter, KeyStroke& stroke) {
    if (!isLower(letter) && !isUpper(letter))
        return false;
    stroke.key = static_cast<UINT>(upper(letter));
    if (stroke.ctrl) {
        stroke.character = static_cast<char16_t>(upper(letter) - 'A' + 1);
        return true;
    }
    stroke.shift = stroke.shift || (isUpper(letter) && !stroke.alt);
    stroke.character = static_cast<char16_t>(stroke.shift ? upper(letter) : lower(letter));
    return true;
}

bool parsePrintable(char character, KeyStroke& stroke) {
    const auto* key = std::ranges::find_if(printableKeys, [&](const PrintableKey& candidate) {
        return candidate.plain == character || candidate.shifted == character;
    });
    if (key == std::end(printableKeys))
        return false;
    stroke.key = key->key;
    stroke.shift = stroke.shift || key->shifted == character;
    if (!stroke.ctrl)
        stroke.character = static_cast<char16_t>(stroke.shift ? key->shifted : key->plain);
    return true;
}

} // namespace

std::optional<KeyStroke> parseKey(std::string_view name) {
    KeyStroke stroke;
    while (takePrefix(name, "Ctrl+", stroke.ctrl) || takePrefix(name, "Shift+", stroke.shift) ||
           takePrefix(name, "Alt+", stroke.alt)) {
    }
    bool known = true;
    if (const auto* named = std::ranges::find(namedKeys, name, &NamedKey::name);
        named != std::end(namedKeys)) {
        stroke.key = named->key;
        stroke.character = named->character;
    } else if (name.size() == 1) {
        known = parseLetter(name.front(), stroke) || parsePrintable(name.front(), stroke);
    } else {
        known = parseFunctionKey(name, stroke);
    }
    if (!known)
        return std::nullopt;
    if (stroke.alt)
        stroke.character = 0;
    return stroke;
}

} // namespace tavrin::replay
