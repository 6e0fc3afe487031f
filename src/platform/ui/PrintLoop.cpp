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
        info->m_pJob = platform().createPrintJob(*this, documentTitle_, info->m_bDirect);
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
    platform().showPrintPreview(*this, documentTitle_,
                                [this](std::shared_ptr<PrintJob> job) { Print(std::move(job)); });
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
    PrintJob& job = *info.m_pJob;
    const std::vector<UINT> pages = job.wantedPages(info.GetMaxPage());
    if (!job.startDoc(documentTitle_, static_cast<UINT>(pages.size())))
        return false;
    OnBeginPrinting(dc, &info);
    bool going = true;
    for (auto page = pages.begin(); page != pages.end() && going && info.m_bContinuePrinting; ++page) {
        info.m_nCurPage = *page;
        going = job.startPage(*page);
        if (!going)
            break;
        OnPrint(dc, &info);
        going = job.endPage();
    }
    OnEndPrinting(dc, &info);
    return going && job.endDoc();
}

} // namespace tavrin
