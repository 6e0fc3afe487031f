// Geometry and painting: the gutter, the lines in their colours, the selection over them.

#include "buffer/Buffer.h"
#include "platform/core/TextScan.h"
#include "view/CTextEditorView.h"
#include "view/Decimal.h"

#include <algorithm>
#include <array>
#include <bit>
#include <bitset>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace tavrin {

namespace {

/// No edge at all, but pixels can still be added to it.
constexpr int paperEdge = std::numeric_limits<int>::max() / 2;

/// Stands for the area below the text.
constexpr int noLine = -1;

std::u16string_view part(std::u16string_view text, int start, int end) {
    return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

/// Walks a line's format codes as maximal runs of equal code.
class RunWalk {
  public:
    /// Up to the column `length`, beginning with the run that column `start` lies in.
    RunWalk(std::span<const FormatRun> runs, int start, int length) : runs_(runs), length_(length) {
        const auto first = std::ranges::upper_bound(runs, start, {}, &FormatRun::end);
        index_ = static_cast<std::size_t>(first - runs.begin());
    }

    /// The next run: its code, and where it ends.
    FormatRun next() {
        if (index_ == runs_.size())
            return {length_, normalFormat};
        FormatRun run = runs_[index_++];
        while (index_ < runs_.size() && runs_[index_].format == run.format)
            run.end = runs_[index_++].end;
        run.end = index_ == runs_.size() ? length_ : std::min(run.end, length_);
        return run;
    }

  private:
    std::span<const FormatRun> runs_;
    std::size_t index_ = 0;
    int length_;
};

/// The colours of format codes, each asked for once.
class KnownColours {
  public:
    explicit KnownColours(CTextEditorView& view) : view_(view) {}

    struct Colours {
        COLORREF text;
        COLORREF back;
    };
    Colours of(int code) {
        if (code < 0 || code >= ordinaryCodes)
            return {view_.getTextColor(code), view_.getBackgroundColor(code)};
        const auto at = static_cast<std::size_t>(code);
        if (!known_.test(at))
            ordinary_[at] = {view_.getTextColor(code), view_.getBackgroundColor(code)};
        known_.set(at);
        return ordinary_[at];
    }

  private:
    static constexpr int ordinaryCodes = 16;

    CTextEditorView& view_;
    std::array<Colours, ordinaryCodes> ordinary_;
    std::bitset<ordinaryCodes> known_;
};

} // namespace

CRect CTextEditorView::getLineNumbersArea() {
    if (!displayLineNumbers())
        return {};
    return {0, topMargin, gutterWidth(), GetClientRect().bottom - bottomMargin};
}

int CTextEditorView::gutterWidth() {
    if (!displayLineNumbers())
        return 0;
    const int lineCount = getBuffer().getLineCount();
    if (gutterLineCount_ != lineCount) {
        const int numberWidth = measure().plainWidth(decimal(lineCount + 1));
        gutterWidth_ = std::max(minimumGutterWidth, numberWidth + 2 * lineNumbersMargin);
        gutterLineCount_ = lineCount;
    }
    return gutterWidth_;
}

CRect CTextEditorView::getEditArea() {
    const CRect client = GetClientRect();
    return {gutterWidth(), topMargin, client.right - rightMargin, client.bottom - bottomMargin};
}

int CTextEditorView::lineTop(int line) const {
    return topMargin + line * lineHeight_ - GetScrollPos(SB_VERT);
}

int CTextEditorView::columnX(int line, int col) {
    return gutterWidth() - GetScrollPos(SB_HORZ) + xInLine(line, col);
}

LineMarks& CTextEditorView::marks(int line) {
    TextMeasure& measure = this->measure(); // may read the settings
    marks_.turnTo(getBuffer(), line, measure, tabSize, settingsRead_);
    return marks_;
}

int CTextEditorView::xInLine(int line, int col) {
    LineMarks& known = marks(line);
    const LineMarks::Mark from = known.beforeColumn(col);
    const std::u16string_view text = known.text().substr(static_cast<std::size_t>(from.col));
    return measure().tabbedWidth(text.substr(0, static_cast<std::size_t>(col - from.col)), tabSize, from.x);
}

int CTextEditorView::getTabbedStringWidth(std::u16string_view text, int count, int tabColumns) {
    return measure().tabbedWidth(text.substr(0, static_cast<std::size_t>(count)), tabColumns);
}

void CTextEditorView::fillRectangle(CDC& dc, int x, int y, int width, int height, COLORREF colour) {
    dc.FillSolidRect({x, y, x + width, y + height}, colour);
}

void CTextEditorView::setClipRect(CDC& dc, const CRect& rect) {
    const CPoint origin = dc.GetWindowOrg();
    dc.SelectClipRect(
        {rect.left - origin.x, rect.top - origin.y, rect.right - origin.x, rect.bottom - origin.y});
}

int CTextEditorView::drawTabbedText(CDC& dc, int x, int y, std::u16string_view text, int tabOrigin,
                                    int tabColumns) {
    constexpr std::u16string_view spaces = u"    ";
    int unit = 0; // measured at the first tab
    std::size_t start = 0;
    const auto drawUpTo = [&](std::size_t end) {
        const std::u16string_view segment = text.substr(start, end - start);
        dc.TextOut(x, y, segment);
        x += dc.GetTextExtent(segment).cx;
    };
    for (std::size_t tab = text.find(u'\t'); tab != text.npos; tab = text.find(u'\t', start)) {
        if (unit == 0)
            unit = std::max(1, dc.GetTextExtent(u" ").cx * tabColumns);
        drawUpTo(tab);
        const int stop = (x - tabOrigin) / unit + 1;
        // The gap shows the background; spaces beyond it are drawn over by what follows.
        const int gap = stop * tabColumns - static_cast<int>(tab - start);
        if (gap > 0)
            dc.TextOut(x, y, spaces.substr(0, static_cast<std::size_t>(gap)));
        x = tabOrigin + stop * unit;
        start = tab + 1;
    }
    drawUpTo(text.size());
    return x;
}

CTextEditorView::SelectedColumns CTextEditorView::selectedColumns(int line, int length) const {
    const Position start = selectionStart();
    const Position end = selectionEnd();
    if (start == end || line < start.line || line > end.line)
        return {false, 0, 0};
    return {true, line == start.line ? start.col : 0, line == end.line ? end.col : length};
}

CTextEditorView::SeenColumns CTextEditorView::seenColumns(int line, int x) {
    const int left = -lineHeight_; // glyphs lean out of their cells
    const int right = GetClientRect().right + lineHeight_;
    LineMarks& known = marks(line);
    const LineMarks::Mark from = known.beforeX(left - x - 1);
    return {from.col, known.endBeyond(right - x), from.x};
}

void CTextEditorView::drawLine(CDC& dc, int line, int x, int y) {
    SeenColumns seen{0, getBuffer().getLineLength(line), 0};
    if (!dc.IsPrinting())
        seen = seenColumns(line, x);
    drawColumns(dc, line, seen.start, seen.end, x + seen.x, y, x);
}

void CTextEditorView::drawColumns(CDC& dc, int line, int startColumn, int endColumn, int x, int y,
                                  int tabOrigin) {
    const bool printing = dc.IsPrinting();
    const int maxX = printing ? paperEdge : GetClientRect().right - rightMargin;
    dc.SetBkMode(printing ? BackgroundMode::Transparent : BackgroundMode::Opaque);

    Buffer& buffer = getBuffer();
    RunWalk runs(buffer.getLineFormats(line), startColumn, endColumn);
    const std::u16string_view text = buffer.getLineText(line);
    const SelectedColumns selected = selectedColumns(line, static_cast<int>(text.size()));

    KnownColours colours(*this);
    /// False: the right edge is reached.
    const auto draw = [&](int start, int end, int code) {
        const KnownColours::Colours known = colours.of(code);
        dc.SetTextColor(known.text);
        dc.SetBkColor(known.back);
        x = drawTabbedText(dc, x, y, part(text, start, end), tabOrigin, tabSize);
        return x < maxX;
    };
    for (int pos = startColumn; pos < endColumn;) {
        const auto [end, code] = runs.next();
        if (end <= pos)
            continue;
        if (selected.any && pos <= selected.end && end >= selected.start) {
            const int selectedFrom = std::max(pos, selected.start);
            const int selectedTo = std::min(end, selected.end);
            if (selectedFrom > pos && !draw(pos, selectedFrom, code))
                return;
            if (!draw(selectedFrom, selectedTo, printing ? normalFormat : selectionFormat))
                return;
            if (selectedTo < end && !draw(selectedTo, end, code))
                return;
        } else if (!draw(pos, end, code)) {
            return;
        }
        pos = end;
    }
    if (!printing && x < maxX)
        fillRectangle(dc, x, y, maxX - x, lineHeight_, getBackgroundColor(normalFormat));
}

void CTextEditorView::drawLineNumbers(CDC& dc, std::span<const int> lines) {
    const int right = gutterWidth() - lineNumbersMargin;
    dc.SetTextColor(getTextColor(lineNumbersFormat));
    dc.SetBkMode(BackgroundMode::Transparent);
    for (const int line : lines) {
        const int y = lineTop(line);
        dc.DrawTextRight(decimal(line + 1), {0, y, right, y + lineHeight_});
    }
}

int CTextEditorView::rowEnd(int line, const SeenColumns& seen) {
    const int right = GetClientRect().right;
    const TEXTMETRIC& font = measure().metrics();
    if (font.tmMaxCharWidth <= 0 || seen.end - seen.start > right / font.tmMaxCharWidth)
        return right;
    // Not measured, for every row is asked this for every key: no cell is wider than the widest.
    const std::u16string_view text = part(getBuffer().getLineText(line), seen.start, seen.end);
    const std::size_t tabs = std::min(text.find_first_not_of(u'\t'), text.size());
    if (!scan::isPrintableAscii(text.substr(tabs)))
        return right;
    const int leaning = lineHeight_; // of glyphs out of their cells
    return gutterWidth() - GetScrollPos(SB_HORZ) + seen.x + (seen.end - seen.start) * font.tmMaxCharWidth +
           static_cast<int>(tabs) * tabSize * font.tmAveCharWidth + leaning;
}

RowLook CTextEditorView::rowLook(int line) {
    Buffer& buffer = getBuffer();
    RowLook look{0, gutterWidth(), 0}; // the paper is the same for all rows: OnDraw knows it
    const auto add = [&look](std::uint64_t value) {
        constexpr std::uint64_t odd = 0x9E3779B97F4A7C15; // spreads neighbouring values
        look.content = std::rotl(look.content ^ value, 23) * odd;
    };
    // Font, colours and line numbers are the settings'.
    add(settingsRead_);
    add(static_cast<std::uint64_t>(line));
    add(static_cast<std::uint64_t>(gutterWidth()));
    add(static_cast<std::uint64_t>(GetScrollPos(SB_HORZ)));
    if (line == noLine)
        return look;
    const std::span<const FormatRun> runs = buffer.getLineFormats(line);
    const std::u16string_view text = buffer.getLineText(line);
    const SeenColumns seen = seenColumns(line, gutterWidth() - GetScrollPos(SB_HORZ));
    look.end = std::max(look.end, rowEnd(line, seen));
    add(static_cast<std::uint64_t>(seen.start) << 32 | static_cast<std::uint32_t>(seen.x));
    for (auto run = std::ranges::upper_bound(runs, seen.start, {}, &FormatRun::end); run != runs.end();
         ++run) {
        add(static_cast<std::uint64_t>(run->end) << 32 | static_cast<std::uint32_t>(run->format));
        if (run->end >= seen.end)
            break;
    }
    add(std::hash<std::u16string_view>{}(part(text, seen.start, seen.end)));
    const SelectedColumns selected = selectedColumns(line, static_cast<int>(text.size()));
    if (selected.any)
        add(static_cast<std::uint64_t>(selected.start) << 32 | static_cast<std::uint32_t>(selected.end));
    return look;
}

void CTextEditorView::OnDraw(CDC* dc) {
    const CRect client = GetClientRect();
    const CRect edit = getEditArea();
    const int gutter = gutterWidth();
    const int sx = GetScrollPos(SB_HORZ);
    const int sy = GetScrollPos(SB_VERT);
    const COLORREF background = getBackgroundColor(normalFormat);

    dc->SetViewportOrg({0, 0});
    fillRectangle(*dc, 0, 0, gutter, client.bottom, getBackgroundColor(lineNumbersFormat));
    fillRectangle(*dc, edit.right, 0, rightMargin, client.bottom, background);
    fillRectangle(*dc, gutter, edit.bottom, client.right - gutter, bottomMargin, background);
    fillRectangle(*dc, gutter, 0, client.right - gutter, topMargin, background);

    const int x0 = gutter - sx;
    const int first = sy / lineHeight_;
    const int last = getLastVisibleLineIdx();
    const CFont* previous = dc->SelectObject(getEditorNormalFont());
    std::vector<int> lines; // to be drawn
    const auto wantsRow = [&](const CRect& row, int line) {
        RowLook look = rowLook(line);
        look.paper = background;
        return dc->WantsRow(row, look);
    };
    for (int line = first; line <= last; ++line) {
        const int top = lineTop(line);
        const CRect row{0, std::max(0, top), client.right, std::min(client.bottom, top + lineHeight_)};
        if (wantsRow(row, line))
            lines.push_back(line);
    }
    const int below = lineTop(last + 1);
    // What is below the lines is a row without a line; its fills cost nothing where it is not wanted.
    (void)wantsRow({0, std::max(0, below), client.right, client.bottom}, noLine);
    if (displayLineNumbers())
        drawLineNumbers(*dc, lines);

    setClipRect(*dc, edit);
    for (const int line : lines)
        drawLine(*dc, line, x0, lineTop(line));
    fillRectangle(*dc, x0, below, client.right + sx - x0 + rightMargin,
                  client.bottom + sy - below + bottomMargin, background);
    dc->SelectObject(previous);
}

bool CTextEditorView::OnEraseBkgnd(CDC*) {
    return false;
} // OnDraw paints every pixel

bool CTextEditorView::OnSetCursor(CWnd*, UINT hitTest, UINT) {
    if (hitTest != HTCLIENT)
        return Default() != 0;
    const bool inGutter = getLineNumbersArea().PtInRect(GetCurrentMessage()->point);
    peer()->setCursor(inGutter ? CursorShape::Gutter : CursorShape::IBeam);
    return false;
}

} // namespace tavrin
