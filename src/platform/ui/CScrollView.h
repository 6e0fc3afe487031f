#pragma once

#include "platform/ui/CWnd.h"

#include <string>

namespace tavrin {

class CFrameWnd;
class CPrintInfo;
class PrintJob;

/// A view that scrolls its content in pixels. It owns the scroll positions; the peer only shows them.
/// Every scroll request (bar codes, thumb, wheel) ends in OnScrollBy.
class CScrollView : public CWnd {
  public:
    using CWnd::CWnd;

    /// Sizes in pixels. Positions beyond the new limits are moved to them, and the view is then repainted.
    /// A zero page or line step means a tenth of the client size, a tenth of that.
    void SetScrollSizes(CSize total, CSize page = {}, CSize line = {});
    [[nodiscard]] CSize GetTotalSize() const { return total_; }
    [[nodiscard]] int GetScrollPos(ScrollBarKind bar) const;
    /// The largest position: total size less client size, never below 0.
    [[nodiscard]] int GetScrollLimit(ScrollBarKind bar) const;
    /// Sets both positions, limited to the range. Moves no pixels: the caller repaints.
    void ScrollToPosition(CPoint position);

    /// Calls OnUpdate (with no sender).
    virtual void OnInitialUpdate();
    /// The content or its look changed. The base repaints everything.
    virtual void OnUpdate();
    virtual void OnDraw(CDC* dc) = 0;
    /// Moves the content; true when the position changes (or, with doScroll false, would change).
    virtual bool OnScrollBy(CSize displacement, bool doScroll);

    /// The nearest frame around this view, or null.
    [[nodiscard]] CFrameWnd* GetParentFrame() const;

    // Printing: prepare, begin, once for each page, end

    /// What print jobs are called; the name of the document.
    void SetDocumentTitle(std::u16string_view title) { documentTitle_ = title; }
    [[nodiscard]] const std::u16string& GetDocumentTitle() const { return documentTitle_; }
    /// Asks for the printer and counts the pages (SetMaxPage). False: the user cancelled, or there is no
    /// printer.
    virtual bool OnPreparePrinting(CPrintInfo* info);
    virtual void OnBeginPrinting(CDC*, CPrintInfo*) {}
    /// Draws the page m_nCurPage. The base draws what is on screen.
    virtual void OnPrint(CDC* dc, CPrintInfo* info);
    virtual void OnEndPrinting(CDC*, CPrintInfo*) {}
    /// Prints the document into a job without asking for a printer. False: cancelled or failed.
    bool Print(std::shared_ptr<PrintJob> job);

  protected:
    /// Takes the printer from the user (a print dialog) or the default one (direct printing), unless the job
    /// is there.
    bool DoPreparePrinting(CPrintInfo* info);
    /// The standard print command, with a dialog or (ID_FILE_PRINT_DIRECT) without.
    void OnFilePrint();
    void OnFilePrintPreview();

    [[nodiscard]] const MessageMap& GetMessageMap() const override;
    void OnHScroll(UINT code, int position);
    void OnVScroll(UINT code, int position);
    void OnSize(UINT kind, int width, int height);
    bool OnMouseWheel(UINT flags, short delta, CPoint point);
    bool OnMouseHWheel(UINT flags, short delta, CPoint point);
    /// Turns the rotation of a wheel message (positive: away from the user, or to the right) into a
    /// displacement: lines or pages of the platform's setting for each WHEEL_DELTA, parts of a notch (touch
    /// pads) to the pixel, what is less than a pixel kept for the next message.
    bool DoMouseWheel(ScrollBarKind bar, int delta);
    LRESULT DefWindowProc(const MSG& message) override;

    void SetScrollPos(ScrollBarKind bar, int position);

    static const MessageMap theMessageMap;

  private:
    bool OnScroll(ScrollBarKind bar, UINT code, int position);
    bool scrollAlong(ScrollBarKind bar, long long distance);
    [[nodiscard]] CPoint limited(CPoint position) const;
    [[nodiscard]] CSize pageStep() const;
    [[nodiscard]] CSize lineStep() const;
    void showBar(ScrollBarKind bar);
    void updateBars();
    bool printPages(CPrintInfo& info);

    CSize total_{};
    CSize page_{};
    CSize line_{};
    CPoint position_{};
    CSize wheelRemainder_{}; ///< in pixels times WHEEL_DELTA, sign of the displacement
    bool updatingBars_ = false;
    std::u16string documentTitle_;
};

} // namespace tavrin
