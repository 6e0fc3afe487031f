#include "view/TextMeasure.h"

#include "platform/core/TextScan.h"
#include "platform/ui/Platform.h"

#include <algorithm>

namespace tavrin {

namespace {

/// The boundary of the character [column, column + 1) nearest to x, when its edges lie at `left` and `right`
/// > x.
int nearerBoundary(std::size_t column, int left, int right, int x) {
    return static_cast<int>(column) + (right - x < (right - left) / 2 ? 1 : 0);
}

} // namespace

void TextMeasure::setFont(Platform& platform, int points, std::u16string_view family) {
    std::unique_ptr<CFont> font = platform.createPointFont(points * 10, family);
    context_ = platform.createMeasureDC();
    context_->SelectObject(font.get());
    metrics_ = context_->GetTextMetrics();
    font_ = std::move(font);
}

int TextMeasure::plainWidth(std::u16string_view text) {
    return context_->GetTextExtent(text).cx;
}

int TextMeasure::tabbedWidth(std::u16string_view text, int tabSize, int from) {
    int x = from;
    std::size_t start = 0;
    for (std::size_t tab = scan::findUnit(text, u'\t', 0); tab != text.npos;
         tab = scan::findUnit(text, u'\t', start)) {
        x = nextTabStop(x + plainWidth(text.substr(start, tab - start)), tabSize);
        start = tab + 1;
    }
    return x + plainWidth(text.substr(start));
}

int TextMeasure::columnAt(std::u16string_view text, int x, int tabSize, int from) {
    int left = from; // the right edge of what has been passed
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(u'\t', start), text.size());
        const int origin = left;
        widths_.resize(end - start);
        context_->GetTextExtentExPoint(text.substr(start, end - start), widths_);
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            const int right = origin + widths_[i];
            if (right > x)
                return nearerBoundary(start + i, left, right, x);
            left = right;
        }
        if (end == text.size())
            break;
        const int right = nextTabStop(left, tabSize);
        if (right > x)
            return nearerBoundary(end, left, right, x);
        left = right;
        start = end + 1;
    }
    return static_cast<int>(text.size());
}

int TextMeasure::nextTabStop(int x, int tabSize) const {
    const int unit = std::max(1, metrics_.tmAveCharWidth * tabSize);
    return (x / unit + 1) * unit;
}

} // namespace tavrin
