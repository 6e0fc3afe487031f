#include "platform/headless/HeadlessPrinter.h"

#include <utility>

namespace tavrin {

namespace {

class HeadlessPrintJob final : public PrintJob {
  public:
    HeadlessPrintJob(std::shared_ptr<std::deque<PrintedJob>> jobs, const HeadlessPrinter& printer,
                     bool preview)
        : jobs_(std::move(jobs)),
          record_(jobs_->back()),
          dc_(printer.device),
          hasPrinter_(preview || printer.hasPrinter),
          wanted_(preview ? std::nullopt : printer.wanted),
          pagesLeft_(preview ? -1 : printer.cancelAfter) {}

    [[nodiscard]] CDC* printerDC() override { return hasPrinter_ ? &dc_ : nullptr; }
    [[nodiscard]] bool isPreview() const override { return record_.preview; }
    [[nodiscard]] std::vector<UINT> wantedPages(UINT count) const override {
        std::vector<UINT> pages = wanted_ ? *wanted_ : PrintJob::wantedPages(count);
        std::erase_if(pages, [count](UINT page) { return page < 1 || page > count; });
        return pages;
    }

    [[nodiscard]] bool startDoc(std::u16string_view title, UINT pages) override {
        record_.title = title;
        record_.announced = pages;
        return true;
    }
    [[nodiscard]] bool startPage(UINT page) override {
        if (pagesLeft_ == 0)
            return false;
        --pagesLeft_;
        record_.pages.push_back({page, {}});
        pageStart_ = dc_.drawings().size();
        return true;
    }
    [[nodiscard]] bool endPage() override {
        const std::vector<Drawing>& all = dc_.drawings();
        record_.pages.back().drawings.assign(all.begin() + static_cast<std::ptrdiff_t>(pageStart_),
                                             all.end());
        return true;
    }
    [[nodiscard]] bool endDoc() override {
        record_.finished = true;
        return true;
    }

  private:
    std::shared_ptr<std::deque<PrintedJob>> jobs_;
    PrintedJob& record_;
    RecordingDC dc_;
    bool hasPrinter_;
    std::optional<std::vector<UINT>> wanted_;
    int pagesLeft_;
    std::size_t pageStart_ = 0; ///< of the page being printed, among the drawings of all
};

} // namespace

std::vector<DrawnText> PrintedPage::texts() const {
    std::vector<DrawnText> result;
    for (const Drawing& drawing : drawings)
        if (const auto* text = std::get_if<DrawnText>(&drawing))
            result.push_back(*text);
    return result;
}

HeadlessPrinter::HeadlessPrinter()
    : device{.printing = true, .cell = CSize{10, 20}, .caps = {2100, 2970, 254, 254, 0, 0, 2100, 2970}} {}

std::shared_ptr<PrintJob> HeadlessPrinter::createJob(bool direct) {
    if (!accepts && !direct)
        return nullptr;
    jobs_->push_back({.direct = direct});
    return std::make_shared<HeadlessPrintJob>(jobs_, *this, false);
}

std::shared_ptr<PrintJob> HeadlessPrinter::createPreview() {
    jobs_->push_back({.preview = true});
    return std::make_shared<HeadlessPrintJob>(jobs_, *this, true);
}

} // namespace tavrin
