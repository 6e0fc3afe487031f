#include "view/PrintLayout.h"

#include "buffer/Buffer.h"
#include "platform/core/UserSettings.h"
#include "view/Decimal.h"
#include "view/EditorSettings.h"

#include <algorithm>
#include <array>

namespace tavrin {

namespace {

/// Text is measured in pieces of this many code units, so that a row costs the same however long its line is.
constexpr std::size_t pieceLength = 256;

bool isLowSurrogate(char16_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

/// Walks a text from a column on and tells where each of its code units ends.
class WidthWalk {
  public:
    /// `phase`: how far behind a tab stop the text begins.
    WidthWalk(std::u16string_view text, int column, int phase, int tabUnit, CDC& dc)
        : text_(text),
          next_(static_cast<std::size_t>(column)),
          x_(phase),
          phase_(phase),
          tabUnit_(tabUnit),
          dc_(dc) {}

    [[nodiscard]] bool atEnd() const { return next_ == text_.size(); }
    /// The right edge of the next code unit, counted from where the walk began.
    int next() {
        if (text_[next_] == u'\t')
            x_ = (x_ / tabUnit_ + 1) * tabUnit_;
        else
            x_ = pieceLeft_ + widths()[next_ - pieceStart_];
        ++next_;
        return x_ - phase_;
    }

  private:
    /// The widths of the piece that holds the next unit.
    const std::array<int, pieceLength>& widths() {
        if (next_ >= pieceStart_ && next_ < pieceEnd_)
            return widths_;
        pieceStart_ = next_;
        pieceLeft_ = x_;
        std::u16string_view piece = text_.substr(next_, pieceLength);
        piece = piece.substr(0, piece.find(u'\t'));
        if (piece.size() == pieceLength && next_ + pieceLength < text_.size() &&
            isLowSurrogate(text_[next_ + pieceLength]))
            piece.remove_suffix(1);
        pieceEnd_ = pieceStart_ + piece.size();
        dc_.GetTextExtentExPoint(piece, {widths_.data(), piece.size()});
        return widths_;
    }

    std::u16string_view text_;
    std::size_t next_;
    int x_; ///< from the tab stop before the start
    int phase_;
    int tabUnit_;
    CDC& dc_;
    std::size_t pieceStart_ = 0;
    std::size_t pieceEnd_ = 0;
    int pieceLeft_ = 0;
    std::array<int, pieceLength> widths_{};
};

} // namespace

PrintOptions PrintOptions::read(const UserSettings& store) {
    const auto on = [&store](std::string_view key) {
        return store.getBoolValue(settings::section, key, false);
    };
    return {on(settings::printWrappedLines), on(settings::printLineNumbers), on(settings::printHeader)};
}

PrintLayout::PrintLayout(const PrintOptions& options, const Buffer& buffer, CDC& dc, int rowsOfPage,
                         int tabColumns)
    : options_(options),
      lineCount_(buffer.getLineCount()),
      rows_(std::max(0, options.header ? rowsOfPage - headerRows : rowsOfPage)),
      tabUnit_(std::max(1, dc.GetTextExtent(u" ").cx * tabColumns)),
      right_(dc.DPtoLP({dc.GetDeviceCaps(DeviceCap::HorzRes), 0}).x),
      markWidth_(dc.GetTextExtent(wrapMark).cx) {
    if (options.lineNumbers) {
        numbersRight_ = dc.GetTextExtent(decimal(lineCount_)).cx;
        textLeft_ = numbersRight_ + dc.GetTextExtent(u"  ").cx;
    }
    if (rows_ == 0)
        return;
    if (options.wrappedLines)
        wrapPages(buffer, dc);
    else
        pageCount_ = std::max(1, lineCount_ / rows_ + (lineCount_ % rows_ > 0 ? 1 : 0));
}

void PrintLayout::wrapPages(const Buffer& buffer, CDC& dc) {
    for (Row row; !isEnd(row);) {
        pageStarts_.push_back(row);
        for (int i = 0; i < rows_ && !isEnd(row); ++i) {
            complete(row, buffer, dc);
            row = after(row);
        }
    }
    pageCount_ = std::max(1, static_cast<int>(pageStarts_.size()));
}

PrintLayout::Row PrintLayout::after(const Row& row) {
    if (row.goesOn)
        return {.line = row.line, .start = row.end, .phase = row.nextPhase};
    return {.line = row.line + 1};
}

void PrintLayout::complete(Row& row, const Buffer& buffer, CDC& dc) const {
    const std::u16string_view text = buffer.getLineText(row.line);
    row.end = static_cast<int>(text.size());
    if (!options_.wrappedLines)
        return;
    const int width = right_ - textLeft_;
    const int length = row.end;
    int breakX = 0;
    row.end = row.start;
    int column = row.start;
    for (WidthWalk walk(text, row.start, row.phase, tabUnit_, dc); !walk.atEnd();) {
        const int x = walk.next();
        ++column;
        row.goesOn |= x > width;
        // A row holds a character at least, and no break parts a surrogate pair.
        const bool mayBreak = column == length || !isLowSurrogate(text[static_cast<std::size_t>(column)]);
        if (mayBreak && (row.end == row.start || x <= width - markWidth_)) {
            row.end = column;
            breakX = x;
        }
        if (row.goesOn && row.end > row.start)
            break;
    }
    if (!row.goesOn)
        row.end = length;
    row.goesOn = row.end < length;
    row.nextPhase = (row.phase + breakX) % tabUnit_;
}

std::vector<PrintLayout::Row> PrintLayout::rowsOf(int page, const Buffer& buffer, CDC& dc) const {
    std::vector<Row> rows;
    if (!hasPage(page) || lineCount_ == 0)
        return rows;
    Row row{.line = (page - 1) * rows_};
    if (options_.wrappedLines)
        row = pageStarts_[static_cast<std::size_t>(page - 1)];
    for (int i = 0; i < rows_ && !isEnd(row); ++i) {
        complete(row, buffer, dc);
        rows.push_back(row);
        row = after(row);
    }
    return rows;
}

} // namespace tavrin
