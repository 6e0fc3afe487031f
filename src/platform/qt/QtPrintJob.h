#pragma once

#include "platform/qt/PrintProgress.h"
#include "platform/qt/PrinterDC.h"
#include "platform/ui/CPrintInfo.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPointer>
#include <QWidget>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

class QPageLayout;
class QPagedPaintDevice;
class QPrinter;

namespace tavrin::qt {

class QtPlatform;

/// Which pages a print dialog was asked for.
struct PageChoice {
    std::vector<std::pair<UINT, UINT>> ranges; ///< first and last; none: all pages
    bool lastFirst = false;

    [[nodiscard]] static PageChoice of(const QPrinter& printer);
    [[nodiscard]] std::vector<UINT> pages(UINT count) const;
};

/// What print jobs on Qt have in common: a painter on a device with pages, progress, and words for what goes
/// wrong.
class QtPrintJob : public PrintJob {
    Q_DECLARE_TR_FUNCTIONS(QtPrintJob)

  public:
    [[nodiscard]] CDC* printerDC() override { return &dc_; }
    [[nodiscard]] bool isPreview() const override { return false; }
    [[nodiscard]] std::vector<UINT> wantedPages(UINT count) const override { return choice_.pages(count); }
    [[nodiscard]] bool startDoc(std::u16string_view title, UINT pages) override;
    [[nodiscard]] bool startPage(UINT page) override;
    [[nodiscard]] bool endPage() override { return true; }
    [[nodiscard]] bool endDoc() override;

    /// Why the job failed, in words; empty when it did not or was cancelled.
    [[nodiscard]] const QString& error() const { return error_; }

  protected:
    /// `window`: where progress and errors are shown; null: nowhere.
    QtPrintJob(QtPlatform& platform, std::shared_ptr<QPagedPaintDevice> device, QWidget* window,
               PageChoice choice);

    /// Whether the device can be painted on; else fail() has said why.
    [[nodiscard]] virtual bool open(const QString& title) = 0;
    /// All pages are painted. False: fail() has said why.
    [[nodiscard]] virtual bool close() { return true; }
    [[nodiscard]] virtual QString progressLabel() const;
    /// Remembers and shows what went wrong; always false.
    bool fail(const QString& message);

  private:
    std::shared_ptr<QPagedPaintDevice> device_; ///< goes after the painter
    QPointer<QWidget> window_;
    PageChoice choice_;
    PrinterDC dc_;
    QPainter painter_;
    std::optional<PrintProgress> progress_;
    int pagesStarted_ = 0;
    QString error_;
};

/// A PDF file, written as a whole or not at all.
class PdfJob final : public QtPrintJob {
    Q_DECLARE_TR_FUNCTIONS(PdfJob)

  public:
    PdfJob(QtPlatform& platform, const QString& path, const QPageLayout& layout, QWidget* window = nullptr,
           PageChoice choice = {});

  protected:
    [[nodiscard]] bool open(const QString& title) override;
    [[nodiscard]] bool close() override;

  private:
    struct Output;

    PdfJob(QtPlatform& platform, std::shared_ptr<Output> output, const QString& path, QWidget* window,
           PageChoice choice);

    std::shared_ptr<Output> output_;
    QString path_;
};

} // namespace tavrin::qt
