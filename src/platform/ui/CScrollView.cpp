#include "platform/ui/CScrollView.h"

#include "platform/ui/CFrameWnd.h"

#include <algorithm>

namespace tavrin {

namespace {

/// Parts of the client size (page step) and of the page (line step) that one step moves when none is set.
constexpr int defaultStepDivisor = 10;

/// While the bars are shown or hidden the client area may change, which may change the bars; it settles at
/// once or not at all.
constexpr int maxBarPasses = 4;

int stepOr(int step, int whole) {
    return step > 0 ? step : std::max(1, whole / defaultStepDivisor);
}

} // namespace

const MessageMap CScrollView::theMessageMap = [] {
    static constexpr MessageMapEntry rows[] = {
        route<&CScrollView::OnHScroll>(WM_HSCROLL, "OnHScroll"),
        route<&CScrollView::OnVScroll>(WM_VSCROLL, "OnVScroll"),
        route<&CScrollView::OnSize>(WM_SIZE, "OnSize"),
        route<&CScrollView::OnMouseWheel>(WM_MOUSEWHEEL, "OnMouseWheel"),
        route<&CScrollView::OnMouseHWheel>(WM_MOUSEHWHEEL, "OnMouseHWheel"),
    };
    return MessageMap{&CWnd::theMessageMap, rows};
}();

const MessageMap& CScrollView::GetMessageMap() const {
    return theMessageMap;
}

// Sizes and positions

void CScrollView::SetScrollSizes(CSize total, CSize page, CSize line) {
    total_ = total;
    page_ = page;
    line_ = line;
    updateBars();
}

CSize CScrollView::pageStep() const {
    const CRect client = GetClientRect();
    return {stepOr(page_.cx, client.Width()), stepOr(page_.cy, client.Height())};
}

CSize CScrollView::lineStep() const {
    const CSize page = pageStep();
    return {stepOr(line_.cx, page.cx), stepOr(line_.cy, page.cy)};
}

int CScrollView::GetScrollPos(ScrollBarKind bar) const {
    return bar == SB_HORZ ? position_.x : position_.y;
}

int CScrollView::GetScrollLimit(ScrollBarKind bar) const {
    const CRect client = GetClientRect();
    const int outside = bar == SB_HORZ ? total_.cx - client.Width() : total_.cy - client.Height();
    return std::max(0, outside);
}

CPoint CScrollView::limited(CPoint position) const {
    return {std::clamp(position.x, 0, GetScrollLimit(SB_HORZ)),
            std::clamp(position.y, 0, GetScrollLimit(SB_VERT))};
}

void CScrollView::SetScrollPos(ScrollBarKind bar, int position) {
    const int limitedPosition = std::clamp(position, 0, GetScrollLimit(bar));
    (bar == SB_HORZ ? position_.x : position_.y) = limitedPosition;
    showBar(bar);
}

void CScrollView::ScrollToPosition(CPoint position) {
    position_ = limited(position);
    showBar(SB_HORZ);
    showBar(SB_VERT);
}

void CScrollView::showBar(ScrollBarKind bar) {
    if (!peer())
        return;
    const bool horizontal = bar == SB_HORZ;
    peer()->setScrollInfo(bar, {.total = horizontal ? total_.cx : total_.cy,
                                .page = horizontal ? pageStep().cx : pageStep().cy,
                                .line = horizontal ? lineStep().cx : lineStep().cy,
                                .position = GetScrollPos(bar)});
}

void CScrollView::updateBars() {
    if (updatingBars_)
        return; // a bar appeared or vanished: the pass under way looks at the new client size itself
    updatingBars_ = true;
    const CPoint before = position_;
    CRect client;
    int passes = 0;
    do {
        client = GetClientRect();
        position_ = limited(position_);
        showBar(SB_HORZ);
        showBar(SB_VERT);
    } while (client != GetClientRect() && ++passes < maxBarPasses);
    position_ = limited(position_);
    updatingBars_ = false;
    if (position_ != before)
        Invalidate();
}

// Moving

bool CScrollView::OnScrollBy(CSize displacement, bool doScroll) {
    if (!peer())
        return false;
    if (!peer()->isScrollBarEnabled(SB_HORZ))
        displacement.cx = 0;
    if (!peer()->isScrollBarEnabled(SB_VERT))
        displacement.cy = 0;
    const CPoint target = limited({position_.x + displacement.cx, position_.y + displacement.cy});
    if (target == position_)
        return false;
    if (doScroll) {
        peer()->scrollWindow(position_.x - target.x, position_.y - target.y, GetClientRect());
        ScrollToPosition(target);
    }
    return true;
}

void CScrollView::OnHScroll(UINT code, int position) {
    OnScroll(SB_HORZ, code, position);
}

void CScrollView::OnVScroll(UINT code, int position) {
    OnScroll(SB_VERT, code, position);
}

bool CScrollView::OnScroll(ScrollBarKind bar, UINT code, int position) {
    const int current = GetScrollPos(bar);
    const int line = bar == SB_HORZ ? lineStep().cx : lineStep().cy;
    const int page = bar == SB_HORZ ? pageStep().cx : pageStep().cy;
    long long distance = 0;
    switch (code & 0xFF) {
    case SB_LINEUP:
        distance = -line;
        break;
    case SB_LINEDOWN:
        distance = line;
        break;
    case SB_PAGEUP:
        distance = -page;
        break;
    case SB_PAGEDOWN:
        distance = page;
        break;
    case SB_THUMBPOSITION:
    case SB_THUMBTRACK:
        distance = static_cast<long long>(position) - current;
        break;
    case SB_TOP:
        distance = -current;
        break;
    case SB_BOTTOM:
        distance = GetScrollLimit(bar) - current;
        break;
    default:
        return false;
    }
    return scrollAlong(bar, distance);
}

bool CScrollView::OnMouseWheel(UINT, short delta, CPoint) {
    DoMouseWheel(SB_VERT, delta);
    return true;
}

bool CScrollView::OnMouseHWheel(UINT, short delta, CPoint) {
    DoMouseWheel(SB_HORZ, delta);
    return true;
}

bool CScrollView::DoMouseWheel(ScrollBarKind bar, int delta) {
    const bool horizontal = bar == SB_HORZ;
    const WheelScroll wheel = platform().wheelScroll();
    const int line = horizontal ? lineStep().cx : lineStep().cy;
    const int page = horizontal ? pageStep().cx : pageStep().cy;
    const long long notch = wheel.byPage ? page : static_cast<long long>(wheel.linesPerNotch) * line;
    const long long rotation = horizontal ? delta : -delta;

    int& remainder = horizontal ? wheelRemainder_.cx : wheelRemainder_.cy;
    if ((remainder < 0) != (rotation < 0))
        remainder = 0; // what was left of the other direction would delay the answer to this one
    const long long distance = remainder + notch * rotation;
    remainder = static_cast<int>(distance % WHEEL_DELTA);
    return scrollAlong(bar, distance / WHEEL_DELTA);
}

bool CScrollView::scrollAlong(ScrollBarKind bar, long long distance) {
    const int current = GetScrollPos(bar);
    const long long target = std::clamp<long long>(current + distance, 0, GetScrollLimit(bar));
    const int inRange = static_cast<int>(target - current);
    return OnScrollBy(bar == SB_HORZ ? CSize{inRange, 0} : CSize{0, inRange}, true);
}

// The window

void CScrollView::OnSize(UINT, int, int) {
    updateBars();
}

LRESULT CScrollView::DefWindowProc(const MSG& message) {
    if (message.message == WM_PAINT && message.dc) {
        OnDraw(message.dc);
        return 0;
    }
    return CWnd::DefWindowProc(message);
}

void CScrollView::OnInitialUpdate() {
    OnUpdate();
}

void CScrollView::OnUpdate() {
    Invalidate();
}

CFrameWnd* CScrollView::GetParentFrame() const {
    for (CWnd* window = GetParent(); window; window = window->GetParent())
        if (auto* frame = dynamic_cast<CFrameWnd*>(window))
            return frame;
    return nullptr;
}

} // namespace tavrin
