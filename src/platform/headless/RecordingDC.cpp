#include "platform/headless/RecordingDC.h"

#include <utility>

namespace tavrin {

namespace {

template <class Kind>
std::vector<Kind> only(const std::vector<Drawing>& drawings) {
    std::vector<Kind> result;
    for (const Drawing& drawing : drawings)
        if (const auto* wanted = std::get_if<Kind>(&drawing))
            result.push_back(*wanted);
    return result;
}

} // namespace

std::vector<DrawnText> RecordingDC::texts() const {
    return only<DrawnText>(drawings_);
}

std::vector<DrawnFill> RecordingDC::fills() const {
    return only<DrawnFill>(drawings_);
}

std::vector<DrawnImage> RecordingDC::images() const {
    return only<DrawnImage>(drawings_);
}

int RecordingDC::GetDeviceCaps(DeviceCap cap) const {
    return device_.caps[static_cast<std::size_t>(cap)];
}

const CFont* RecordingDC::SelectObject(const CFont* font) {
    return std::exchange(font_, static_cast<const HeadlessFont*>(font));
}

CSize RecordingDC::cell() const {
    if (device_.cell)
        return *device_.cell;
    return font_ ? font_->cell() : defaultCellSize;
}

void RecordingDC::TextOut(int x, int y, std::u16string_view text) {
    if (text.empty())
        return;
    const auto back = mode_ == BackgroundMode::Opaque ? std::optional(back_) : std::nullopt;
    drawings_.push_back(DrawnText{origin_.x + x, origin_.y + y, std::u16string(text), fore_, back, clip_,
                                  font_ ? font_->style() : FontStyle{}});
}

void RecordingDC::DrawTextRight(std::u16string_view text, const CRect& rect) {
    TextOut(rect.right - GetTextExtent(text).cx, rect.top, text);
}

void RecordingDC::FillSolidRect(const CRect& rect, COLORREF colour) {
    const CRect onDevice{origin_.x + rect.left, origin_.y + rect.top, origin_.x + rect.right,
                         origin_.y + rect.bottom};
    drawings_.push_back(DrawnFill{onDevice, colour, clip_});
}

void RecordingDC::DrawImage(const CImageList&, int index, CPoint at) {
    const DrawnImage image{{origin_.x + at.x, origin_.y + at.y}, index};
    drawings_.emplace_back(std::in_place_type<DrawnImage>, image);
}

TEXTMETRIC RecordingDC::GetTextMetrics() {
    const CSize size = cell();
    return {.tmHeight = size.cy, .tmAveCharWidth = size.cx, .tmMaxCharWidth = size.cx};
}

CSize RecordingDC::GetTextExtent(std::u16string_view text) {
    const CSize size = cell();
    return {static_cast<int>(text.size()) * size.cx, size.cy};
}

void RecordingDC::GetTextExtentExPoint(std::u16string_view text, std::span<int> widths) {
    const int width = cell().cx;
    for (std::size_t i = 0; i < text.size(); ++i)
        widths[i] = static_cast<int>(i + 1) * width;
}

} // namespace tavrin
