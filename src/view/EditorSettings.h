#pragma once

#include <array>
#include <cstdint>
#include <string_view>

/// The settings of the editor in the host's store: section, keys and defaults, one set for all who read or
/// write them.
namespace tavrin::settings {

inline constexpr std::string_view section = "Xml Editor";

inline constexpr std::string_view fontFamily = "Font Family";
inline constexpr std::u16string_view defaultFontFamily = u"Courier New";
inline constexpr std::string_view fontSize = "Font Size"; ///< points
inline constexpr int defaultFontSize = 9;
inline constexpr std::string_view displayLineNumbers = "Display Line Numbers";
inline constexpr bool defaultDisplayLineNumbers = true;

/// Completion: whether elements that the schema has no room for at the place are left out, instead of shown
/// in grey.
inline constexpr std::string_view hideNotAllowedHere = "Hide Elements Not Allowed Here";
inline constexpr bool defaultHideNotAllowedHere = false;
// What printing may add to the plain lines; bools, false by default.
inline constexpr std::string_view printWrappedLines = "Print Wrapped Lines";
inline constexpr std::string_view printLineNumbers = "Print Line Numbers";
inline constexpr std::string_view printHeader = "Print Header";

/// Stands for the system's colour of the role in question. Other colours are 0x00BBGGRR.
inline constexpr std::uint32_t systemColour = 0x2000000;

/// What has a text colour and a background of its own.
enum class DisplayItem { Normal, Selection, CDATA, Comments, Punctuation, String, XmlTag, XmlAttribute };

struct ItemColours {
    std::string_view foreKey;
    std::uint32_t defaultFore;
    std::string_view backKey;
    std::uint32_t defaultBack;
};

inline constexpr std::size_t displayItemCount = 8;

/// Indexed by DisplayItem.
inline constexpr std::array<ItemColours, displayItemCount> itemColours{{
    {"Fore Color Normal", systemColour, "Back Color Normal", systemColour},
    {"Fore Color Selection", systemColour, "Back Color Selection", systemColour},
    {"Fore Color CDATA", 0xFF00FF, "Back Color CDATA", systemColour},
    {"Fore Color Comments", 0x008000, "Back Color Comments", systemColour},
    {"Fore Color Punctuation", 0xFF0000, "Back Color Punctuation", systemColour},
    {"Fore Color String", 0xFF0000, "Back Color String", systemColour},
    {"Fore Color Xml Tag", 0x000080, "Back Color Xml Tag", systemColour},
    {"Fore Color Xml Attribute", 0x0000FF, "Back Color Xml Attribute", systemColour},
}};

inline constexpr ItemColours lineNumberColours{"Fore Line Numbers", 0xFFFFFF, "Back Line Numbers", 0x808080};

/// Where the registry keeps the last search text. Whoever installs the program makes the key.
inline constexpr std::string_view findKey = "SOFTWARE\\Tavrin\\Xml Editor";
inline constexpr std::string_view findValue = "Find String";

} // namespace tavrin::settings
