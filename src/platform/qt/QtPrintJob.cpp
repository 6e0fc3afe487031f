#include "platform/qt/QtPrintJob.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/PdfFile.h"
#include "platform/qt/QtPlatform.h"

#include <QDir>
#include <QMessageBox>
#include <QPageLayout>
#include <QPdfWriter>
#include <QPrinter>

#include <algorithm>

namespace tavrin::qt {

// Which pages

PageChoice PageChoice::of(const QPrinter& printer) {
    PageChoice choice;
    choice.lastFirst = printer.pageOrder() == QPrinter::LastPageFirst;
    const QPageRanges ranges = printer.pageRanges();
    for (const QPageRanges::Range& range : ranges.toRangeList())
        choice.ranges.emplace_back(std::max(range.from, 1), std::max(range.to, 0));
    return choice;
}

std::vector<UINT> PageChoice::pages(UINT count) const {
    const auto wanted = [this](UINT page) {
        return ranges.empty() || std::ranges::any_of(ranges, [page](const auto& range) {
                   return page >= range.first && page <= range.second;
               });
    };
    std::vector<UINT> result;
    for (UINT page = 1; page <= count; ++page)
        if (wanted(page))
            result.push_back(page);
    if (lastFirst)
        std::ranges::reverse(result);
    return result;
}

// Any device

QtPrintJob::QtPrintJob(QtPlatform& platform, std::shared_ptr<QPagedPaintDevice> device, QWidget* window,
                       PageChoice choice)
    : device_(std::move(device)),
      window_(window),
      choice_(std::move(choice)),
      dc_(*device_, platform.defaultFont()) {}

bool QtPrintJob::fail(const QString& message) {
    error_ = message;
    progress_.reset();
    if (window_)
        QMessageBox(QMessageBox::Critical, QString(), message, QMessageBox::Ok, window_).exec();
    return false;
}

QString QtPrintJob::progressLabel() const {
    return tr("Printing page %1 of %2…");
}

bool QtPrintJob::startDoc(std::u16string_view title, UINT pages) {
    if (pages == 0)
        return fail(tr("The text has none of the pages that were asked for."));
    if (!open(toQString(title)))
        return false;
    if (!painter_.begin(device_.get()))
        return fail(tr("The printer can't be used."));
    dc_.setPainter(&painter_);
    if (window_)
        progress_.emplace(window_, progressLabel(), static_cast<int>(pages));
    return true;
}

bool QtPrintJob::startPage(UINT) {
    ++pagesStarted_;
    if (progress_ && !progress_->report(pagesStarted_))
        return false;
    if (pagesStarted_ > 1 && !device_->newPage())
        return fail(tr("The printer failed at page %1.").arg(pagesStarted_));
    return true;
}

bool QtPrintJob::endDoc() {
    dc_.setPainter(nullptr);
    progress_.reset();
    if (!painter_.end())
        return fail(tr("The printer failed."));
    return close();
}

// PDF

struct PdfJob::Output {
    explicit Output(const QString& path) : file(path), writer(&file) {}
    PdfFile file;
    QPdfWriter writer;
};

PdfJob::PdfJob(QtPlatform& platform, const QString& path, const QPageLayout& layout, QWidget* window,
               PageChoice choice)
    : PdfJob(platform, std::make_shared<Output>(QDir::current().absoluteFilePath(path)), path, window,
             std::move(choice)) {
    output_->writer.setPageLayout(layout);
}

PdfJob::PdfJob(QtPlatform& platform, std::shared_ptr<Output> output, const QString& path, QWidget* window,
               PageChoice choice)
    : QtPrintJob(platform, std::shared_ptr<QPagedPaintDevice>(output, &output->writer), window,
                 std::move(choice)),
      output_(std::move(output)),
      path_(path) {}

bool PdfJob::open(const QString& title) {
    if (!output_->file.open(QIODevice::WriteOnly))
        return fail(tr("“%1” could not be written: %2").arg(path_, output_->file.why()));
    output_->writer.setTitle(title);
    output_->writer.setCreator(QCoreApplication::applicationName());
    return true;
}

bool PdfJob::close() {
    return output_->file.commit() ||
           fail(tr("“%1” could not be written: %2").arg(path_, output_->file.why()));
}

} // namespace tavrin::qt
