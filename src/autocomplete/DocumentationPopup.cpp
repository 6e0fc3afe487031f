#include "autocomplete/DocumentationPopup.h"

#include "platform/ui/ModalPopupCtrl.h"

#include <algorithm>

namespace tavrin {

namespace {

constexpr int margin = 6;
constexpr int widestLine = 340; ///< pixels
constexpr std::size_t mostLines = 14;
constexpr std::size_t longestText = 4000; ///< code units; far more than the lines hold

bool isBlank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r';
}

/// The first line of `text` that fits, without the blanks at its end; removes it from `text`.
std::u16string takeLine(CDC& dc, std::u16string_view& text) {
    const std::u16string_view paragraph = text.substr(0, text.find(u'\n'));
    std::vector<int> widths(paragraph.size());
    dc.GetTextExtentExPoint(paragraph, widths);
    auto length = static_cast<std::size_t>(std::ranges::upper_bound(widths, widestLine) - widths.begin());
    std::size_t next = length + 1; // after the line break
    if (length < paragraph.size()) {
        next = std::max<std::size_t>(1, length);
        const std::size_t blank = paragraph.find_last_of(u" \t", length);
        if (blank != paragraph.npos && blank > 0)
            next = length = blank;
        length = std::max<std::size_t>(1, length);
        while (next < text.size() && isBlank(text[next]))
            ++next;
    }
    std::u16string line(paragraph.substr(0, length));
    while (!line.empty() && isBlank(line.back()))
        line.pop_back();
    text.remove_prefix(std::min(next, text.size()));
    return line;
}

} // namespace

const MessageMap& DocumentationPopup::GetMessageMap() const {
    static const MessageMapEntry entries[] = {
        route<&DocumentationPopup::OnPaint>(WM_PAINT, "OnPaint"),
    };
    static const MessageMap map{&CWnd::theMessageMap, entries};
    return map;
}

void DocumentationPopup::showBeside(CWnd& list, std::u16string_view text) {
    text_.clear();
    if (text.empty() || !list.peer()) {
        ShowWindow(false);
        return;
    }
    if (!peer() && !CreateWindowIn(&list, {.visible = false, .popup = true}))
        return;
    layOut(text.substr(0, longestText));
    MoveWindow({0, 0, size_.cx, size_.cy});
    const CRect beside = list.peer()->windowRect();
    const CRect whole = peer()->windowRect();
    const CRect place =
        placeBeside(beside, {whole.Width(), whole.Height()}, platform().workArea({beside.left, beside.top}));
    if (place.IsRectEmpty()) {
        ShowWindow(false);
        return;
    }
    text_ = text;
    peer()->movePopup({place.left, place.top});
    ShowWindow(true);
    Invalidate();
}

void DocumentationPopup::layOut(std::u16string_view text) {
    if (!font_)
        font_ = platform().createListFont();
    const std::unique_ptr<CDC> dc = platform().createMeasureDC();
    dc->SelectObject(font_.get());
    lineHeight_ = dc->GetTextMetrics().tmHeight;
    lines_.clear();
    int widest = 0;
    while (!text.empty() && lines_.size() < mostLines) {
        lines_.push_back(takeLine(*dc, text));
        if (lines_.size() == mostLines && !text.empty())
            lines_.back() += u" \u2026";
        widest = std::max(widest, dc->GetTextExtent(lines_.back()).cx);
    }
    size_ = {widest + 2 * margin, static_cast<int>(lines_.size()) * lineHeight_ + 2 * margin};
}

LRESULT DocumentationPopup::OnPaint(const MSG& message) {
    if (!message.dc)
        return 0;
    CDC& dc = *message.dc;
    dc.FillSolidRect(GetClientRect(), platform().GetSysColor(COLOR_WINDOW));
    dc.SelectObject(font_.get());
    dc.SetTextColor(platform().GetSysColor(COLOR_WINDOWTEXT));
    dc.SetBkMode(BackgroundMode::Transparent);
    int y = margin;
    for (const std::u16string& line : lines_) {
        dc.TextOut(margin, y, line);
        y += lineHeight_;
    }
    return 0;
}

} // namespace tavrin
