#pragma once

#include "platform/qt/QtDC.h"

class QPagedPaintDevice;

namespace tavrin::qt {

/// A drawing context on the pages of a printer, a PDF file or a preview. Its origin is the top left corner
/// inside the page's margins, which are what a printer can't print on.
class PrinterDC final : public QtDC {
  public:
    /// Measures until it gets a painter.
    PrinterDC(const QPagedPaintDevice& device, const QtFont& defaultFont)
        : QtDC(defaultFont), device_(device) {}

    /// A painter that is active on the device; null: only measures again.
    void setPainter(QPainter* painter);

    [[nodiscard]] bool IsPrinting() const override { return true; }
    [[nodiscard]] int GetDeviceCaps(DeviceCap cap) const override;
    /// Draws no further than to the edge of the paper, however long the text is.
    void TextOut(int x, int y, std::u16string_view text) override;

  private:
    const QPagedPaintDevice& device_;
};

} // namespace tavrin::qt
