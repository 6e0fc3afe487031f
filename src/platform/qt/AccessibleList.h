#pragma once

#include "platform/ui/CWnd.h"

#include <QAccessibleWidget>

#include <unordered_map>

namespace tavrin {

class CListCtrl;

namespace qt {

class ViewWidget;

/// A list of ours for assistive technology: its items are its children, made when somebody asks for them.
class AccessibleList final : public QAccessibleWidget {
  public:
    /// Once the list is gone the object is not valid any more.
    AccessibleList(ViewWidget& view, const CListCtrl& list);
    ~AccessibleList() override;

    [[nodiscard]] bool isValid() const override;
    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface* child(int index) const override;
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface* focusChild() const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;

    [[nodiscard]] QString itemText(int item) const;
    /// On the screen.
    [[nodiscard]] QRect itemRect(int item) const;
    [[nodiscard]] QAccessible::State itemState(int item) const;

  private:
    ViewWidget& view_;
    const CListCtrl& list_;
    CWnd::Watch watch_;
    mutable std::unordered_map<int, QAccessible::Id> children_; ///< those that were asked for, by item
};

} // namespace qt
} // namespace tavrin
