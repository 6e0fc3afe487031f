#include "platform/ui/ModalPopupCtrl.h"

#include <algorithm>

namespace tavrin {

namespace {

CRect shiftedInside(CPoint corner, CSize size, const CRect& area) {
    corner.x = std::max(area.left, std::min(corner.x, area.right - size.cx));
    corner.y = std::max(area.top, std::min(corner.y, area.bottom - size.cy));
    return {corner.x, corner.y, corner.x + size.cx, corner.y + size.cy};
}

} // namespace

CRect placeAtLine(const CRect& line, CSize size, const CRect& area) {
    const int below = area.bottom - line.bottom;
    const int above = line.top - area.top;
    const bool goesAbove = size.cy > below && above > below;
    return shiftedInside({line.left, goesAbove ? line.top - size.cy : line.bottom}, size, area);
}

CRect placeBeside(const CRect& window, CSize size, const CRect& area) {
    if (window.right + size.cx <= area.right)
        return shiftedInside({window.right, window.top}, size, area);
    if (window.left - size.cx >= area.left)
        return shiftedInside({window.left - size.cx, window.top}, size, area);
    return {};
}

void ModalPopupCtrl::Track(CPoint point, CSize size, int lineHeight, bool) {
    CWnd* window = Create(&owner_, size);
    if (!window || !window->peer())
        return;
    Platform& platform = window->platform();
    const int top = point.y - lineHeight / 2;
    const CRect line{point.x, top, point.x, top + lineHeight};
    const CRect whole = window->peer()->windowRect();
    const CRect place = placeAtLine(line, {whole.Width(), whole.Height()}, platform.workArea(point));
    window->peer()->movePopup({place.left, place.top});
    window->ShowWindow(true);
    OnShown();
    platform.runPopup(*window);
}

} // namespace tavrin
