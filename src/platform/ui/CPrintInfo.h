#pragma once

#include "platform/ui/CDC.h"

#include <memory>
#include <numeric>
#include <string_view>
#include <vector>

namespace tavrin {

/// Where printed pages go: to a printer or into a file as the user chose it, or to a preview. Made by the
/// platform, which tells its user by itself what goes wrong. A job that is destroyed before it has ended
/// leaves nothing behind.
class PrintJob {
  public:
    PrintJob() = default;
    PrintJob(const PrintJob&) = delete;
    PrintJob& operator=(const PrintJob&) = delete;
    virtual ~PrintJob() = default;

    /// The printer's context: measures at any time, draws between startPage and endPage, with its origin at
    /// the top left corner of the printable area. Null when the choice gave no printer.
    [[nodiscard]] virtual CDC* printerDC() = 0;
    [[nodiscard]] virtual bool isPreview() const = 0;
    /// Which of the pages 1 to `count` the user wants, in the order in which they are to come. By default all
    /// of them.
    [[nodiscard]] virtual std::vector<UINT> wantedPages(UINT count) const {
        std::vector<UINT> pages(count);
        std::iota(pages.begin(), pages.end(), 1U);
        return pages;
    }

    // In this order; the first false ends the job: the user has cancelled it, or it failed and the user
    // knows.

    /// `pages`: how many will come, which may be none.
    [[nodiscard]] virtual bool startDoc(std::u16string_view title, UINT pages) = 0;
    [[nodiscard]] virtual bool startPage(UINT page) = 0;
    [[nodiscard]] virtual bool endPage() = 0;
    [[nodiscard]] virtual bool endDoc() = 0;
};

/// What a view works out for one job when it prepares it and needs again for each page.
class PrintJobData {
  public:
    virtual ~PrintJobData() = default;
};

/// One print job on its way through the operations of a view.
class CPrintInfo {
  public:
    static constexpr UINT defaultMaxPage = 0xFFFF; ///< as long as nobody counts the pages

    bool m_bPreview = false;
    bool m_bDirect = false;          ///< on the default printer, without a dialog
    bool m_bContinuePrinting = true; ///< cleared by the view in OnPrint: the page is the last
    UINT m_nCurPage = 1;             ///< from 1
    std::shared_ptr<PrintJob> m_pJob;
    std::shared_ptr<const PrintJobData> m_pUserData;

    void SetMaxPage(UINT page) { maxPage_ = page; }
    [[nodiscard]] UINT GetMaxPage() const { return maxPage_; }
    /// Null without a printer.
    [[nodiscard]] CDC* printerDC() const { return m_pJob ? m_pJob->printerDC() : nullptr; }

  private:
    UINT maxPage_ = defaultMaxPage;
};

} // namespace tavrin
