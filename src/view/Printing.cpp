// Printing: as many whole lines a page as fit, in their colours, in a fixed font.
//
// Nothing that a page shows is kept from one page to the next but where wrapped lines begin; font and
// geometry are made anew for each, so that preview and printout can't differ.

#include "buffer/Buffer.h"
#include "document/TextDocument.h"
#include "view/CTextEditorView.h"
#include "view/Decimal.h"
#include "view/PrintLayout.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace tavrin {

namespace {

constexpr std::u16string_view printerFontFamily = u"Courier New";
constexpr int printerFontSize = 90; // tenths of a point
constexpr std::u16string_view ellipsis = u"...";

/// The printer's font, selected into its context while this lives.
class PrinterFont {
  public:
    PrinterFont(Platform& platform, CDC& dc)
        : dc_(dc),
          font_(platform.createPrinterFont(dc, printerFontSize, printerFontFamily)),
          previous_(dc.SelectObject(font_.get())),
          lineHeight_(std::max(1, dc.GetTextMetrics().tmHeight)) {}
    PrinterFont(const PrinterFont&) = delete;
    PrinterFont& operator=(const PrinterFont&) = delete;
    ~PrinterFont() { dc_.SelectObject(previous_); }

    [[nodiscard]] int lineHeight() const { return lineHeight_; }

  private:
    CDC& dc_;
    std::unique_ptr<CFont> font_;
    const CFont* previous_;
    int lineHeight_;
};

/// The title as it fits into a width: without control characters, and cut off if it is too long.
std::u16string fittingTitle(std::u16string title, int width, CDC& dc) {
    std::ranges::replace_if(
        title, [](char16_t c) { return c < u' '; }, u' ');
    if (dc.GetTextExtent(title).cx <= width)
        return title;
    const int room = width - dc.GetTextExtent(ellipsis).cx;
    std::vector<int> widths(title.size());
    dc.GetTextExtentExPoint(title, widths);
    const auto end = std::ranges::upper_bound(widths, room);
    title.resize(static_cast<std::size_t>(end - widths.begin()));
    return title.append(ellipsis);
}

} // namespace

CRect CTextEditorView::getContentPrintRect(CDC& dc) const {
    const int offX = dc.GetDeviceCaps(DeviceCap::PhysicalOffsetX);
    const int offY = dc.GetDeviceCaps(DeviceCap::PhysicalOffsetY);
    const CPoint topLeft = dc.DPtoLP({offX, offY});
    const CPoint bottomRight = dc.DPtoLP({dc.GetDeviceCaps(DeviceCap::PhysicalWidth) - 2 * offX,
                                          dc.GetDeviceCaps(DeviceCap::PhysicalHeight) - 2 * offY});
    return {topLeft.x, topLeft.y, bottomRight.x, bottomRight.y};
}

std::shared_ptr<const PrintLayout> CTextEditorView::printLayout(CDC& dc, int rowHeight) {
    const int linesPerPage = getContentPrintRect(dc).Height() / rowHeight;
    return std::make_shared<PrintLayout>(PrintOptions::read(platform().settings()), getBuffer(), dc,
                                         linesPerPage, tabSize);
}

bool CTextEditorView::OnPreparePrinting(CPrintInfo* info) {
    if (!DoPreparePrinting(info))
        return false;
    CDC* dc = info->printerDC();
    if (!dc)
        return true;
    const PrinterFont font(platform(), *dc);
    const auto layout = printLayout(*dc, font.lineHeight());
    info->SetMaxPage(static_cast<UINT>(layout->pageCount()));
    info->m_pUserData = layout;
    return true;
}

void CTextEditorView::OnBeginPrinting(CDC*, CPrintInfo*) {}

void CTextEditorView::OnEndPrinting(CDC*, CPrintInfo*) {}

void CTextEditorView::OnPrint(CDC* dc, CPrintInfo* info) {
    const PrinterFont font(platform(), *dc);
    auto layout = std::dynamic_pointer_cast<const PrintLayout>(info->m_pUserData);
    if (!layout) // a host prints a page without having prepared
        layout = printLayout(*dc, font.lineHeight());
    const int page = static_cast<int>(std::min<UINT>(info->m_nCurPage, std::numeric_limits<int>::max()));
    const std::vector<PrintLayout::Row> rows = layout->rowsOf(page, getBuffer(), *dc);
    int y = 0;
    if (layout->options().header)
        y = printHeader(*dc, *layout, page, font.lineHeight());
    for (const PrintLayout::Row& row : rows) {
        printRow(*dc, *layout, row, y);
        y += font.lineHeight();
    }
}

int CTextEditorView::printHeader(CDC& dc, const PrintLayout& layout, int page, int rowHeight) {
    if (!layout.hasPage(page))
        return 0;
    const std::u16string number = decimal(page) + u" / " + decimal(layout.pageCount());
    const int room = layout.right() - dc.GetTextExtent(number + u"  ").cx;
    dc.SetBkMode(BackgroundMode::Transparent);
    dc.SetTextColor(getTextColor(normalFormat));
    dc.TextOut(0, 0, fittingTitle(GetDocumentTitle(), room, dc));
    dc.DrawTextRight(number, {0, 0, layout.right(), rowHeight});
    return PrintLayout::headerRows * rowHeight;
}

void CTextEditorView::printRow(CDC& dc, const PrintLayout& layout, const PrintLayout::Row& row, int y) {
    dc.SetBkMode(BackgroundMode::Transparent);
    dc.SetTextColor(getTextColor(normalFormat));
    if (layout.options().lineNumbers && row.start == 0)
        dc.DrawTextRight(decimal(row.line + 1), {0, y, layout.numbersRight(), y});
    if (row.goesOn)
        dc.DrawTextRight(PrintLayout::wrapMark, {0, y, layout.right(), y});
    const int x = layout.textLeft();
    drawColumns(dc, row.line, row.start, row.end, x, y, x - row.phase);
}

} // namespace tavrin
