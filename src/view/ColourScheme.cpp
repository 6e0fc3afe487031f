#include "view/ColourScheme.h"

#include "platform/ui/Platform.h"

#include <optional>

namespace tavrin {

namespace {

using settings::DisplayItem;

constexpr COLORREF black = 0x000000;
constexpr COLORREF white = 0xFFFFFF;

std::optional<DisplayItem> itemOf(int code) {
    switch (code) {
    case normalFormat:
        return DisplayItem::Normal;
    case selectionFormat:
        return DisplayItem::Selection;
    case 3:
        return DisplayItem::Comments;
    case 5:
        return DisplayItem::String;
    case 7:
        return DisplayItem::XmlTag;
    case 8:
        return DisplayItem::XmlAttribute;
    case 9:
        return DisplayItem::CDATA;
    case 10:
        return DisplayItem::Punctuation;
    default:
        return std::nullopt;
    }
}

} // namespace

void ColourScheme::load(const UserSettings& store) {
    const auto read = [&store](std::string_view key, COLORREF byDefault) {
        return static_cast<COLORREF>(store.getIntValue(settings::section, key, static_cast<int>(byDefault)));
    };
    const auto readItem = [&read](const settings::ItemColours& item) {
        return Colours{read(item.foreKey, item.defaultFore), read(item.backKey, item.defaultBack)};
    };
    for (std::size_t i = 0; i < items_.size(); ++i)
        items_[i] = readItem(settings::itemColours[i]);
    lineNumbers_ = readItem(settings::lineNumberColours);
}

const ColourScheme::Colours* ColourScheme::coloursOf(int code) const {
    if (code == lineNumbersFormat)
        return &lineNumbers_;
    const std::optional<DisplayItem> item = itemOf(code);
    return item ? &items_[static_cast<std::size_t>(*item)] : nullptr;
}

COLORREF ColourScheme::text(int code, const Platform& platform) const {
    const Colours* colours = coloursOf(code);
    if (!colours)
        return black;
    if (colours->fore != settings::systemColour)
        return colours->fore;
    return platform.GetSysColor(code == selectionFormat ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT);
}

COLORREF ColourScheme::background(int code, const Platform& platform) const {
    const Colours* colours = coloursOf(code);
    if (!colours)
        return white;
    if (colours->back != settings::systemColour)
        return colours->back;
    if (code == selectionFormat)
        return platform.GetSysColor(COLOR_HIGHLIGHT);
    const COLORREF normal = items_[static_cast<std::size_t>(DisplayItem::Normal)].back;
    return normal == settings::systemColour ? platform.GetSysColor(COLOR_WINDOW) : normal;
}

} // namespace tavrin
