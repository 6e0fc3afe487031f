// How a scroll view prints: the same loop for printer, file and preview.

#include "platform/ui/CPrintInfo.h"
#include "platform/ui/CScrollView.h"

#include <utility>

namespace tavrin {

bool CScrollView::OnPreparePrinting(CPrintInfo* info) {
    return DoPreparePrinting(info);
}

bool CScrollView::DoPreparePrinting(CPrintInfo* info) {
    if (!info->m_pJob)
        info->m_pJob = platform().createPrintJob(*this, info->m_bDirect);
    return info->m_pJob != nullptr;
}

void CScrollView::OnPrint(CDC* dc, CPrintInfo*) {
    OnDraw(dc);
}

void CScrollView::OnFilePrint() {
    CPrintInfo info;
    const MSG* command = GetCurrentMessage();
    info.m_bDirect = command && command->key == ID_FILE_PRINT_DIRECT;
    printPages(info);
}

void CScrollView::OnFilePrintPreview() {
    platform().showPrintPreview(*this, [this](std::shared_ptr<PrintJob> job) { Print(std::move(job)); });
}

bool CScrollView::Print(std::shared_ptr<PrintJob> job) {
    CPrintInfo info;
    info.m_bPreview = job->isPreview();
    info.m_pJob = std::move(job);
    return printPages(info);
}

bool CScrollView::printPages(CPrintInfo& info) {
    if (!OnPreparePrinting(&info))
        return false;
    CDC* dc = info.printerDC();
    if (!dc)
        return false;
    const PageRange pages = info.pages();
    PrintJob& job = *info.m_pJob;
    if (!job.startDoc(documentTitle_, pages))
        return false;
    OnBeginPrinting(dc, &info);
    bool going = true;
    for (UINT i = 0; i < pages.count() && going && info.m_bContinuePrinting; ++i) {
        info.m_nCurPage = job.isReversed() ? pages.last - i : pages.first + i;
        going = job.startPage(info.m_nCurPage);
        if (!going)
            break;
        OnPrint(dc, &info);
        going = job.endPage();
    }
    OnEndPrinting(dc, &info);
    return going && job.endDoc();
}

} // namespace tavrin
