#pragma once

#include "platform/headless/RecordingDC.h"
#include "platform/ui/CPrintInfo.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavrin {

/// A page as it was drawn.
struct PrintedPage {
    UINT number = 0;
    std::vector<Drawing> drawings;

    /// The texts alone, in order.
    [[nodiscard]] std::vector<DrawnText> texts() const;
};

/// What became of one print job.
struct PrintedJob {
    std::u16string title{};
    bool direct = false;
    bool preview = false;
    bool finished = false;            ///< false: cancelled, or still going on
    UINT announced = 0;               ///< how many pages startDoc was told to expect
    std::vector<PrintedPage> pages{}; ///< in the order printed
};

/// The printer of the headless platform, which keeps what is printed, and the user before its print dialog.
///
/// The paper is 2100 by 2970 units of a tenth of a millimetre, printable up to its edges, and every font is a
/// cell of 10 by 20 units.
class HeadlessPrinter {
  public:
    HeadlessPrinter();

    /// What jobs are printed on from now on.
    RecordingDevice device;

    // The user's answers

    bool accepts = true;                     ///< false: the print dialog is cancelled
    bool hasPrinter = true;                  ///< false: the dialog is accepted, but gives no context
    std::optional<std::vector<UINT>> wanted; ///< nothing: all; pages that do not exist are left out
    int cancelAfter = -1;                    ///< cancels a job after so many pages; -1: never

    /// All jobs, the latest last. The places of earlier ones stay.
    [[nodiscard]] const std::deque<PrintedJob>& jobs() const { return *jobs_; }

    /// Null when the dialog is cancelled.
    [[nodiscard]] std::shared_ptr<PrintJob> createJob(bool direct);
    /// The whole document, whatever the user would answer.
    [[nodiscard]] std::shared_ptr<PrintJob> createPreview();

  private:
    /// Shared with the jobs, which may outlive the printer.
    std::shared_ptr<std::deque<PrintedJob>> jobs_ = std::make_shared<std::deque<PrintedJob>>();
};

} // namespace tavrin
