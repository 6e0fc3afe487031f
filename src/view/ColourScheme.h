#pragma once

#include "platform/ui/Constants.h"
#include "view/EditorSettings.h"

#include <array>

namespace tavrin {

class Platform;
class UserSettings;

/// Codes that no character of a line has, but that colours are asked for by.
inline constexpr int normalFormat = 0;
inline constexpr int selectionFormat = 1;
inline constexpr int lineNumbersFormat = 2;

/// The colours of the settings, and which of them a format code is drawn in. A code without colours of its
/// own is black on white.
class ColourScheme {
  public:
    void load(const UserSettings& store);
    /// Where the setting leaves it to the system: its colour for text, of a selection for selected text.
    [[nodiscard]] COLORREF text(int code, const Platform& platform) const;
    /// Where the setting leaves it to the system: the normal background, and the system's for that one and
    /// the selection.
    [[nodiscard]] COLORREF background(int code, const Platform& platform) const;

  private:
    struct Colours {
        COLORREF fore = 0;
        COLORREF back = 0;
    };

    [[nodiscard]] const Colours* coloursOf(int code) const;

    std::array<Colours, settings::displayItemCount> items_{}; // by DisplayItem
    Colours lineNumbers_;
};

} // namespace tavrin
