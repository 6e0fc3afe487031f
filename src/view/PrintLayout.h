#pragma once

#include "platform/ui/CPrintInfo.h"

#include <string_view>
#include <vector>

namespace tavrin {

class Buffer;
class UserSettings;

/// What the pages show beside the lines.
struct PrintOptions {
    bool wrappedLines = false; ///< lines go on in the next row instead of being cut off at the paper's edge
    bool lineNumbers = false;
    bool header = false; ///< name of the document and number of the page

    [[nodiscard]] static PrintOptions read(const UserSettings& settings);
};

/// Where on which page the lines of a text go. Without wrapped lines everything follows from the count of
/// lines; with them one walk over the text notes where each page begins, and a page then costs what it shows.
class PrintLayout final : public PrintJobData {
  public:
    /// A row of a page: a line, or a part of one.
    struct Row {
        int line = 0;
        int start = 0; ///< columns [start, end)
        int end = 0;
        int phase = 0;     ///< of a part: how far behind a tab stop its text begins, in logical units
        int nextPhase = 0; ///< the same for the part that follows
        bool goesOn = false;
    };

    /// A row that goes on in the next one ends with this, at the right edge.
    static constexpr std::u16string_view wrapMark = u"\u00BB";
    /// Rows that a header takes: itself and an empty one.
    static constexpr int headerRows = 2;

    /// The printer font is selected in `dc`. `rowsOfPage` rows fit a page; less than one: none.
    PrintLayout(const PrintOptions& options, const Buffer& buffer, CDC& dc, int rowsOfPage, int tabColumns);

    [[nodiscard]] const PrintOptions& options() const { return options_; }
    /// At least one: that of an empty text is blank.
    [[nodiscard]] int pageCount() const { return pageCount_; }
    /// False as well for the only page when not even one row fits.
    [[nodiscard]] bool hasPage(int page) const { return page >= 1 && page <= pageCount_ && rows_ > 0; }
    /// Text begins this far from the left edge, behind the line numbers.
    [[nodiscard]] int textLeft() const { return textLeft_; }
    [[nodiscard]] int numbersRight() const { return numbersRight_; }
    /// The right edge of the printable area.
    [[nodiscard]] int right() const { return right_; }
    /// The rows of a page from 1; none beyond the last page.
    [[nodiscard]] std::vector<Row> rowsOf(int page, const Buffer& buffer, CDC& dc) const;

  private:
    [[nodiscard]] bool isEnd(const Row& row) const { return row.line >= lineCount_; }
    /// Sets where the row ends; its line, start and phase are known.
    void complete(Row& row, const Buffer& buffer, CDC& dc) const;
    [[nodiscard]] static Row after(const Row& row);
    void wrapPages(const Buffer& buffer, CDC& dc);

    PrintOptions options_;
    int lineCount_;
    int rows_; ///< of text on a page
    int tabUnit_;
    int textLeft_ = 0;
    int numbersRight_ = 0;
    int right_;
    int markWidth_;
    int pageCount_ = 1;
    std::vector<Row> pageStarts_; ///< of wrapped pages; only line, start and phase
};

} // namespace tavrin
