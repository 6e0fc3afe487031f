#pragma once

#include "platform/ui/CDC.h"

#include <limits>
#include <memory>
#include <string_view>

namespace tavrin {

/// Pages from 1, both ends included; empty when the first lies behind the last.
struct PageRange {
    UINT first = 1;
    UINT last = std::numeric_limits<UINT>::max();

    [[nodiscard]] UINT count() const { return first > last ? 0 : last - first + 1; }
};

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
    /// The pages that the user asked for, whether they exist or not.
    [[nodiscard]] virtual PageRange wantedPages() const { return {}; }
    /// The user wants the last page printed first.
    [[nodiscard]] virtual bool isReversed() const { return false; }

    // In this order; the first false ends the job: the user has cancelled it, or it failed and the user
    // knows.

    /// `pages` are those that will come, which may be none.
    [[nodiscard]] virtual bool startDoc(std::u16string_view title, PageRange pages) = 0;
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
    /// The pages to be printed: the user's choice as far as there are pages.
    [[nodiscard]] PageRange pages() const {
        PageRange pages = m_pJob ? m_pJob->wantedPages() : PageRange{};
        if (pages.first < 1)
            pages.first = 1;
        if (pages.last > maxPage_)
            pages.last = maxPage_;
        return pages;
    }

  private:
    UINT maxPage_ = defaultMaxPage;
};

} // namespace tavrin
