#pragma once

#include "platform/ui/Constants.h"
#include "view/EditorSettings.h"

#include <array>
#include <span>
#include <string_view>

namespace tavrin {

/// A ready choice for all colours of the options page.
struct ColourPreset {
    struct Pair {
        COLORREF fore;
        COLORREF back;

        bool operator==(const Pair&) const = default;
    };

    std::u16string_view name;
    /// By settings::DisplayItem; the last are the line numbers.
    std::array<Pair, settings::displayItemCount + 1> colours;
};

/// "Default" (what the settings hold when nothing was chosen), "Dark" and "High Contrast". The colours of
/// the last two are all fixed; text stands out against its background by at least 4.5:1 and 7:1.
[[nodiscard]] std::span<const ColourPreset> colourPresets();

} // namespace tavrin
