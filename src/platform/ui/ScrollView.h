#pragma once

#include "platform/ui/CScrollView.h"

namespace tavrin {

/// What a view contributes to the bars (menus, tool bars) of its host.
class BarContext {
  public:
    virtual ~BarContext() = default;
    virtual void LoadBars() = 0;
    virtual void SaveBars() = 0;
};

/// The scroll view that editors derive from.
class ScrollView : public CScrollView, public BarContext {
  public:
    using CScrollView::CScrollView;
};

} // namespace tavrin
