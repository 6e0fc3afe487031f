#pragma once

#include <algorithm>

namespace tavrin {

/// Pixels, origin at the top left.
struct CPoint {
    int x = 0;
    int y = 0;
    friend bool operator==(const CPoint&, const CPoint&) = default;
};

struct CSize {
    int cx = 0;
    int cy = 0;
    friend bool operator==(const CSize&, const CSize&) = default;
};

/// Half open: right and bottom lie just outside. May be empty or inverted, as computed.
struct CRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    [[nodiscard]] int Width() const { return right - left; }
    [[nodiscard]] int Height() const { return bottom - top; }
    [[nodiscard]] bool IsRectEmpty() const { return right <= left || bottom <= top; }
    [[nodiscard]] bool PtInRect(CPoint p) const {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }
    [[nodiscard]] CRect intersect(const CRect& o) const {
        return {std::max(left, o.left), std::max(top, o.top), std::min(right, o.right),
                std::min(bottom, o.bottom)};
    }
    friend bool operator==(const CRect&, const CRect&) = default;
};

} // namespace tavrin
