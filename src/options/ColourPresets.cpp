#include "options/ColourPresets.h"

namespace tavrin {

namespace {

/// A colour as it is usually written, red first.
constexpr COLORREF rgb(unsigned value) {
    return (value & 0xFF) << 16 | (value & 0xFF00) | value >> 16;
}

constexpr ColourPreset defaults() {
    ColourPreset preset{u"Default", {}};
    for (std::size_t i = 0; i < settings::displayItemCount; ++i)
        preset.colours[i] = {settings::itemColours[i].defaultFore, settings::itemColours[i].defaultBack};
    preset.colours.back() = {settings::lineNumberColours.defaultFore,
                             settings::lineNumberColours.defaultBack};
    return preset;
}

constexpr COLORREF night = rgb(0x1E1E1E);
constexpr COLORREF black = rgb(0x000000);

// In the order Normal, Selection, CDATA, Comments, Punctuation, String, XML tag, XML attribute, line numbers.
constexpr ColourPreset presets[] = {
    defaults(),
    {u"Dark",
     {{{rgb(0xD8D8D8), night},
       {rgb(0xFFFFFF), rgb(0x2B5B8C)},
       {rgb(0xD7A6E0), night},
       {rgb(0x84B373), night},
       {rgb(0x9AA7B5), night},
       {rgb(0xE0A070), night},
       {rgb(0x6FB3E8), night},
       {rgb(0xB5D0F0), night},
       {rgb(0x9DA5AE), rgb(0x282828)}}}},
    {u"High Contrast",
     {{{rgb(0xFFFFFF), black},
       {rgb(0x000000), rgb(0xFFFF00)},
       {rgb(0xFF9CFF), black},
       {rgb(0x7CFF7C), black},
       {rgb(0xFFFFFF), black},
       {rgb(0xFFC04D), black},
       {rgb(0x5CE1FF), black},
       {rgb(0xFFFF66), black},
       {rgb(0xFFFFFF), rgb(0x202020)}}}},
};

} // namespace

std::span<const ColourPreset> colourPresets() {
    return presets;
}

} // namespace tavrin
