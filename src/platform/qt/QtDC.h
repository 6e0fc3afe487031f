#pragma once

#include "platform/qt/TextRenderer.h"

#include <QColor>
#include <QRegion>

#include <optional>

class QPainter;

namespace tavrin::qt {

/// A font with what measures and draws its text.
class QtFont final : public CFont {
  public:
    explicit QtFont(const QFont& font) : renderer_(font) {}

    /// The renderer's caches change when it is used; what it answers does not.
    [[nodiscard]] TextRenderer& renderer() const { return renderer_; }

  private:
    mutable TextRenderer renderer_;
};

/// A drawing context on a painter, or one that only measures.
class QtDC : public CDC {
  public:
    /// Measures. The default font outlives the context.
    explicit QtDC(const QtFont& defaultFont) : font_(&defaultFont), defaultFont_(defaultFont) {}
    /// Draws what lies in `exposed`; text outside it costs nothing.
    QtDC(QPainter& painter, const QRegion& exposed, const QtFont& defaultFont)
        : painter_(&painter), exposed_(exposed), font_(&defaultFont), defaultFont_(defaultFont) {}

    [[nodiscard]] bool IsPrinting() const override { return false; }
    [[nodiscard]] int GetDeviceCaps(DeviceCap cap) const override;

    const CFont* SelectObject(const CFont* font) override;
    void SetTextColor(COLORREF colour) override { textColour_ = colour; }
    void SetBkColor(COLORREF colour) override { backColour_ = colour; }
    void SetBkMode(BackgroundMode mode) override { backMode_ = mode; }
    void SetViewportOrg(CPoint origin) override { origin_ = origin; }
    [[nodiscard]] CPoint GetWindowOrg() const override { return {}; }
    [[nodiscard]] CPoint DPtoLP(CPoint point) const override {
        return {point.x - origin_.x, point.y - origin_.y};
    }
    void SelectClipRect(const CRect& rect) override;

    void TextOut(int x, int y, std::u16string_view text) override;
    void DrawTextRight(std::u16string_view text, const CRect& rect) override;
    void FillSolidRect(const CRect& rect, COLORREF colour) override;
    void DrawImage(const CImageList& images, int index, CPoint at) override;

    [[nodiscard]] TEXTMETRIC GetTextMetrics() override { return renderer().metrics(); }
    [[nodiscard]] CSize GetTextExtent(std::u16string_view text) override;
    void GetTextExtentExPoint(std::u16string_view text, std::span<int> widths) override;

    /// The font selected last.
    [[nodiscard]] const QFont& currentFont() const { return renderer().font(); }

  protected:
    [[nodiscard]] TextRenderer& renderer() const { return font_->renderer(); }
    /// The cells of a run; nothing when it need not be drawn.
    [[nodiscard]] std::optional<QRect> cellsToDraw(int x, int y, std::u16string_view text) const;
    [[nodiscard]] QColor textColour() const;
    /// Of the cells; nothing when text is drawn transparently.
    [[nodiscard]] std::optional<QColor> backColour() const;
    [[nodiscard]] CPoint origin() const { return origin_; }
    /// Null: from now on the context only measures.
    void drawOn(QPainter* painter, const QRegion& exposed) {
        painter_ = painter;
        exposed_ = exposed;
    }

  private:
    QPainter* painter_ = nullptr;
    QRegion exposed_;
    const QtFont* font_;
    const QtFont& defaultFont_;
    COLORREF textColour_ = 0;
    COLORREF backColour_ = 0xFFFFFF;
    BackgroundMode backMode_ = BackgroundMode::Opaque;
    CPoint origin_{};
};

} // namespace tavrin::qt
