#pragma once

#include "platform/ui/Constants.h"
#include "platform/ui/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tavrin {

class CImageList;

/// A font of the platform; made by Platform::createPointFont, kept alive while a CDC has it selected.
class CFont {
  public:
    virtual ~CFont() = default;
};

struct FontStyle {
    bool bold = false;
    bool italic = false;
};

/// Whole pixels (device units on paper).
struct TEXTMETRIC {
    int tmHeight = 0; ///< cell height: ascent plus descent
    int tmAveCharWidth = 0;
    int tmMaxCharWidth = 0;
};

enum class BackgroundMode { Transparent = 1, Opaque = 2 };

/// Device figures that printing asks for, in device units unless noted.
/// The printable area (HorzRes by VertRes) begins at the physical offset from the corner of the paper.
enum class DeviceCap {
    HorzRes,
    VertRes,
    LogPixelsX, ///< device units an inch
    LogPixelsY,
    PhysicalOffsetX,
    PhysicalOffsetY,
    PhysicalWidth, ///< of the paper; 0 for a screen
    PhysicalHeight,
};
inline constexpr std::size_t deviceCapCount = 8;

/// How a row of a view looks.
struct RowLook {
    std::uint64_t content; ///< stands for everything that its pixels follow from
    int end;               ///< from this x on it shows nothing but paper
    COLORREF paper;
};

/// A drawing context: where text is measured and drawn, on screen, on paper or into a record.
///
/// Text is a run of code units without tabs or line breaks, drawn from its top left corner. Measuring
/// and drawing agree: the pixel just after drawn text is x plus its extent.
class CDC {
  public:
    CDC() = default;
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;
    virtual ~CDC() = default;

    [[nodiscard]] virtual bool IsPrinting() const = 0;
    [[nodiscard]] virtual int GetDeviceCaps(DeviceCap cap) const = 0;

    /// Returns the font selected before (null for the platform's default).
    virtual const CFont* SelectObject(const CFont* font) = 0;
    virtual void SetTextColor(COLORREF colour) = 0;
    virtual void SetBkColor(COLORREF colour) = 0;
    virtual void SetBkMode(BackgroundMode mode) = 0;
    virtual void SetViewportOrg(CPoint origin) = 0;
    [[nodiscard]] virtual CPoint GetWindowOrg() const = 0;
    /// Device units to the logical ones that drawing takes.
    [[nodiscard]] virtual CPoint DPtoLP(CPoint point) const = 0;
    /// Makes the rectangle the only clip area.
    virtual void SelectClipRect(const CRect& rect) = 0;

    /// Asked before a row of a view is drawn, from the top down: `rect` is all that it covers. False: it need
    /// not be drawn now, since it is not exposed or shows that look already.
    [[nodiscard]] virtual bool WantsRow([[maybe_unused]] const CRect& rect,
                                        [[maybe_unused]] const RowLook& look) {
        return true;
    }

    /// In opaque mode the cell (extent by cell height) is filled with the background colour first.
    virtual void TextOut(int x, int y, std::u16string_view text) = 0;
    /// A single line at the top of the rectangle, its right edge at the rectangle's.
    virtual void DrawTextRight(std::u16string_view text, const CRect& rect) = 0;
    virtual void FillSolidRect(const CRect& rect, COLORREF colour) = 0;
    /// A picture with its top left corner at `at`. REQUIRES: the list has it.
    virtual void DrawImage(const CImageList& images, int index, CPoint at) = 0;

    [[nodiscard]] virtual TEXTMETRIC GetTextMetrics() = 0;
    [[nodiscard]] virtual CSize GetTextExtent(std::u16string_view text) = 0;
    /// Fills widths[i] with the width of the first i + 1 code units of text, never falling; the last equals
    /// GetTextExtent. One walk over the text. REQUIRES: widths.size() == text.size().
    virtual void GetTextExtentExPoint(std::u16string_view text, std::span<int> widths) = 0;
};

} // namespace tavrin
