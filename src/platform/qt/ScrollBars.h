#pragma once

#include "platform/ui/Platform.h"

#include <QAbstractScrollArea>

#include <array>
#include <functional>

class QScrollBar;

namespace tavrin::qt {

/// The scroll bars of a scroll area: they show positions that the view owns, and tell it what the user asks
/// of them.
class ScrollBars {
  public:
    /// Called with WM_HSCROLL or WM_VSCROLL, the ScrollCode and, while the thumb is dragged, its position.
    using Request = std::function<void(UINT message, UINT code, int position)>;

    /// `create` says which bars the area has at all.
    ScrollBars(QAbstractScrollArea& area, const CREATESTRUCT& create, Request request);

    void setInfo(ScrollBarKind bar, const ScrollInfo& info);
    [[nodiscard]] int trackPosition(ScrollBarKind bar) const;
    [[nodiscard]] bool isEnabled(ScrollBarKind bar) const;
    [[nodiscard]] bool canScroll(ScrollBarKind bar) const;

  private:
    struct Bar {
        bool wanted = false;
        ScrollInfo info{};
    };

    [[nodiscard]] QScrollBar& widget(ScrollBarKind bar) const;
    void connectBar(ScrollBarKind bar);
    void showNeededBars();
    void showInfo(ScrollBarKind bar);

    QAbstractScrollArea& area_;
    Request request_;
    std::array<Bar, 2> bars_{}; ///< by ScrollBarKind
};

} // namespace tavrin::qt
