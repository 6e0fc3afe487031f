#pragma once

#include "platform/ui/CDC.h"

#include <memory>
#include <string_view>
#include <vector>

namespace tavrin {

class Platform;

/// A font, and the pixel widths of text in it, on a context that measures as the screen does.
/// Tab stops stand every `tabSize` average character widths from the start of the text; a tab on a stop goes
/// to the next one. REQUIRES of all but setFont: a font has been set.
class TextMeasure {
  public:
    /// Size in points. The old font goes; whoever has it selected must have let go.
    void setFont(Platform& platform, int points, std::u16string_view family);
    [[nodiscard]] const CFont* font() const { return font_.get(); }
    [[nodiscard]] const TEXTMETRIC& metrics() const { return metrics_; }

    /// Width of text without tabs.
    [[nodiscard]] int plainWidth(std::u16string_view text);
    /// Where the text ends with its tabs expanded, when it begins at `from`.
    [[nodiscard]] int tabbedWidth(std::u16string_view text, int tabSize, int from = 0);
    /// The boundary between characters nearest to x; in the exact middle of a character the one before it.
    /// The text begins at `from`. One walk over it up to x.
    [[nodiscard]] int columnAt(std::u16string_view text, int x, int tabSize, int from = 0);

  private:
    [[nodiscard]] int nextTabStop(int x, int tabSize) const;

    std::unique_ptr<CFont> font_; // outlives the context that has it selected
    std::unique_ptr<CDC> context_;
    TEXTMETRIC metrics_{};
    std::vector<int> widths_; // room for columnAt, kept between calls
};

} // namespace tavrin
