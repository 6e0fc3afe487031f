#pragma once

#include "platform/ui/CDC.h"

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavrin {

/// The cell of a font on the headless platform when nothing else is set; pixels, for every code unit.
inline constexpr CSize defaultCellSize{8, 16};

/// A font that is only a cell: every code unit is as wide as every other.
class HeadlessFont : public CFont {
  public:
    HeadlessFont(int tenthsOfPoint, std::u16string_view family, CSize cell, FontStyle style = {})
        : tenthsOfPoint_(tenthsOfPoint), family_(family), cell_(cell), style_(style) {}

    [[nodiscard]] int tenthsOfPoint() const { return tenthsOfPoint_; }
    [[nodiscard]] const std::u16string& family() const { return family_; }
    [[nodiscard]] CSize cell() const { return cell_; }
    [[nodiscard]] FontStyle style() const { return style_; }

  private:
    int tenthsOfPoint_;
    std::u16string family_;
    CSize cell_;
    FontStyle style_;
};

/// What a RecordingDC draws on: a screen, unless set otherwise.
struct RecordingDevice {
    bool printing = false;
    /// The cell of every font on this device, as a printer scales fonts in its own way. Without it, a font's
    /// own.
    std::optional<CSize> cell{};
    /// By DeviceCap.
    std::array<int, deviceCapCount> caps{0, 0, 96, 96, 0, 0, 0, 0};
};

/// Text drawn from its top left corner.
struct DrawnText {
    int x = 0;
    int y = 0;
    std::u16string text;
    COLORREF fore = 0;
    std::optional<COLORREF> back; ///< nothing when drawn transparently
    std::optional<CRect> clip;    ///< the clip area in force, if one was set
    FontStyle style{};
};

struct DrawnFill {
    CRect rect;
    COLORREF colour = 0;
    std::optional<CRect> clip;
};

struct DrawnImage {
    CPoint at;
    int index = 0;
};

using Drawing = std::variant<DrawnText, DrawnFill, DrawnImage>;

/// A drawing context that writes down what is drawn, in order and in device coordinates. Clipping removes
/// nothing: what would be cut off is recorded with the clip area. Empty text draws nothing.
class RecordingDC : public CDC {
  public:
    explicit RecordingDC(RecordingDevice device = {}) : device_(device) {}

    [[nodiscard]] const std::vector<Drawing>& drawings() const { return drawings_; }
    /// The texts alone, in order.
    [[nodiscard]] std::vector<DrawnText> texts() const;
    /// The fills alone, in order; opaque text adds none.
    [[nodiscard]] std::vector<DrawnFill> fills() const;
    [[nodiscard]] std::vector<DrawnImage> images() const;

    [[nodiscard]] bool IsPrinting() const override { return device_.printing; }
    [[nodiscard]] int GetDeviceCaps(DeviceCap cap) const override;
    const CFont* SelectObject(const CFont* font) override;
    void SetTextColor(COLORREF colour) override { fore_ = colour; }
    void SetBkColor(COLORREF colour) override { back_ = colour; }
    void SetBkMode(BackgroundMode mode) override { mode_ = mode; }
    void SetViewportOrg(CPoint origin) override { origin_ = origin; }
    [[nodiscard]] CPoint GetWindowOrg() const override { return {}; }
    [[nodiscard]] CPoint DPtoLP(CPoint point) const override {
        return {point.x - origin_.x, point.y - origin_.y};
    }
    void SelectClipRect(const CRect& rect) override { clip_ = rect; }
    void TextOut(int x, int y, std::u16string_view text) override;
    void DrawTextRight(std::u16string_view text, const CRect& rect) override;
    void FillSolidRect(const CRect& rect, COLORREF colour) override;
    void DrawImage(const CImageList& images, int index, CPoint at) override;
    [[nodiscard]] TEXTMETRIC GetTextMetrics() override;
    [[nodiscard]] CSize GetTextExtent(std::u16string_view text) override;
    void GetTextExtentExPoint(std::u16string_view text, std::span<int> widths) override;

  private:
    [[nodiscard]] CSize cell() const;

    RecordingDevice device_;
    const HeadlessFont* font_ = nullptr;
    COLORREF fore_ = 0x000000;
    COLORREF back_ = 0xFFFFFF;
    BackgroundMode mode_ = BackgroundMode::Opaque;
    CPoint origin_{};
    std::optional<CRect> clip_;
    std::vector<Drawing> drawings_;
};

} // namespace tavrin
