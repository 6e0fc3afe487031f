// The platform's printing: print dialog, default printer and preview.

#include "platform/core/UserSettings.h"
#include "platform/qt/Conversions.h"
#include "platform/qt/PageSetup.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/QtPrintJob.h"
#include "platform/qt/QtWindowPeer.h"

#include <QLocale>
#include <QMessageBox>
#include <QPaintEngine>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>

namespace tavrin::qt {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("QtPrinting", text);
}

/// A preview keeps all its pages, drawn, in memory.
constexpr UINT maximumPreviewPages = 500;

class PrinterJob final : public QtPrintJob {
  public:
    PrinterJob(QtPlatform& platform, std::shared_ptr<QPrinter> printer, QWidget* window, PageChoice choice)
        : QtPrintJob(platform, printer, window, std::move(choice)), printer_(std::move(printer)) {}
    ~PrinterJob() override {
        if (!finished_)
            printer_->abort();
    }

  protected:
    [[nodiscard]] bool open(const QString& title) override {
        printer_->setDocName(title);
        return true;
    }
    [[nodiscard]] bool close() override {
        finished_ = true;
        return printer_->printerState() != QPrinter::Error || fail(tr("The printer failed."));
    }

  private:
    std::shared_ptr<QPrinter> printer_;
    bool finished_ = false;
};

/// The pages of a preview, which belong to its dialog.
class PreviewJob final : public QtPrintJob {
  public:
    PreviewJob(QtPlatform& platform, QPrinter& printer, QPrintPreviewDialog& dialog)
        : QtPrintJob(platform, std::shared_ptr<QPagedPaintDevice>(&printer, [](QPagedPaintDevice*) {}),
                     &dialog, {}),
          dialog_(dialog) {}
    ~PreviewJob() override {
        const QLocale locale;
        const QString title = tr("Print Preview");
        dialog_.setWindowTitle(shown_ < count_
                                   ? tr("%1 – the first %2 of %3 pages")
                                         .arg(title, locale.toString(shown_), locale.toString(count_))
                                   : title);
    }

    [[nodiscard]] bool isPreview() const override { return true; }
    [[nodiscard]] std::vector<UINT> wantedPages(UINT count) const override {
        count_ = count;
        return QtPrintJob::wantedPages(std::min(count, maximumPreviewPages));
    }
    [[nodiscard]] bool endPage() override {
        ++shown_;
        return true;
    }

  protected:
    [[nodiscard]] bool open(const QString&) override { return true; }
    [[nodiscard]] QString progressLabel() const override { return tr("Preparing page %1 of %2…"); }

  private:
    QPrintPreviewDialog& dialog_;
    mutable UINT count_ = 0;
    UINT shown_ = 0;
};

QWidget* topWindow(const CWnd& window) {
    const QtWindowPeer* peer = QtWindowPeer::of(window);
    return peer ? peer->widget().window() : nullptr;
}

/// What a printer was set up for becomes a job: PDF files are written by ourselves, so that a failure shows.
std::shared_ptr<PrintJob> jobFor(QtPlatform& platform, const std::shared_ptr<QPrinter>& printer,
                                 QWidget* window) {
    const PageChoice choice = PageChoice::of(*printer);
    if (printer->outputFormat() == QPrinter::PdfFormat)
        return std::make_shared<PdfJob>(platform, printer->outputFileName(), printer->pageLayout(), window,
                                        choice);
    return std::make_shared<PrinterJob>(platform, printer, window, choice);
}

} // namespace

std::shared_ptr<QPrinter> QtPlatform::createPrinter(std::u16string_view title) {
    auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
    if (!printerName_.isEmpty())
        printer->setPrinterName(printerName_);
    printer->setPageLayout(readPageLayout(settings_));
    printer->setDocName(toQString(title)); // print dialogs propose a file of that name
    return printer;
}

std::shared_ptr<PrintJob> QtPlatform::createPrintJob(CWnd& window, std::u16string_view title, bool direct) {
    QWidget* parent = topWindow(window);
    if (direct && QPrinterInfo::defaultPrinter().isNull()) {
        QMessageBox box(QMessageBox::Warning, QString(), tr("There is no default printer."), QMessageBox::Ok,
                        parent);
        box.setInformativeText(tr("“Print…” can write a PDF file instead."));
        box.exec();
        return nullptr;
    }
    auto printer = createPrinter(title);
    if (!direct) {
        QPrintDialog dialog(printer.get(), parent);
        if (dialog.exec() != QDialog::Accepted)
            return nullptr;
        printerName_ = printer->outputFormat() == QPrinter::PdfFormat ? QString() : printer->printerName();
    }
    return jobFor(*this, printer, parent);
}

void QtPlatform::showPrintPreview(CWnd& window, std::u16string_view title,
                                  const std::function<void(std::shared_ptr<PrintJob>)>& print) {
    const auto printer = createPrinter(title);
    QWidget* parent = topWindow(window);
    QPrintPreviewDialog dialog(printer.get(), parent);
    if (parent)
        dialog.resize(parent->size()); // a page can nearly be read then
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog, [&](QPrinter* device) {
        const QPaintEngine* engine = device->paintEngine();
        if (engine && engine->type() == QPaintEngine::Picture)
            print(std::make_shared<PreviewJob>(*this, *device, dialog));
        else
            print(jobFor(*this, printer, &dialog)); // its own print button
    });
    dialog.exec();
}

} // namespace tavrin::qt
