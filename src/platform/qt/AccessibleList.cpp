#include "platform/qt/AccessibleList.h"

#include "platform/qt/Conversions.h"
#include "platform/qt/ViewWidget.h"
#include "platform/ui/CListCtrl.h"

namespace tavrin::qt {

namespace {

class AccessibleItem final : public QAccessibleInterface {
  public:
    AccessibleItem(const AccessibleList& list, int item) : list_(list), item_(item) {}

    [[nodiscard]] int item() const { return item_; }

    [[nodiscard]] bool isValid() const override { return list_.isValid() && item_ < list_.childCount(); }
    [[nodiscard]] QObject* object() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(list_.object());
    }
    [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name && isValid() ? list_.itemText(item_) : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}
    [[nodiscard]] QRect rect() const override { return isValid() ? list_.itemRect(item_) : QRect(); }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }
    [[nodiscard]] QAccessible::State state() const override {
        return isValid() ? list_.itemState(item_) : QAccessible::State();
    }

  private:
    const AccessibleList& list_; ///< which takes its items with it
    int item_;
};

} // namespace

AccessibleList::AccessibleList(ViewWidget& view, const CListCtrl& list)
    : QAccessibleWidget(&view, QAccessible::List), view_(view), list_(list), watch_(list) {}

AccessibleList::~AccessibleList() {
    for (const auto& [item, id] : children_)
        QAccessible::deleteAccessibleInterface(id);
}

bool AccessibleList::isValid() const {
    return QAccessibleWidget::isValid() && watch_.isAlive();
}

int AccessibleList::childCount() const {
    return isValid() ? list_.GetItemCount() : 0;
}

QAccessibleInterface* AccessibleList::child(int index) const {
    if (index < 0 || index >= childCount())
        return nullptr;
    const auto [found, isNew] = children_.try_emplace(index);
    if (isNew)
        found->second = QAccessible::registerAccessibleInterface(new AccessibleItem(*this, index));
    return QAccessible::accessibleInterface(found->second);
}

QAccessibleInterface* AccessibleList::childAt(int x, int y) const {
    return isValid() ? child(list_.HitTest(toCPoint(view_.viewport()->mapFromGlobal(QPoint(x, y)))))
                     : nullptr;
}

QAccessibleInterface* AccessibleList::focusChild() const {
    return isValid() ? child(list_.GetFocusedItem()) : nullptr;
}

int AccessibleList::indexOfChild(const QAccessibleInterface* child) const {
    const auto* const item = dynamic_cast<const AccessibleItem*>(child);
    return item ? item->item() : -1;
}

QString AccessibleList::itemText(int item) const {
    return toQString(list_.GetItemText(item));
}

QRect AccessibleList::itemRect(int item) const {
    const QRect inView = toQRect(list_.GetItemRect(item));
    return {view_.viewport()->mapToGlobal(inView.topLeft()), inView.size()};
}

QAccessible::State AccessibleList::itemState(int item) const {
    QAccessible::State state;
    state.selectable = true;
    state.focusable = true;
    state.selected = state.focused = state.active = item == list_.GetFocusedItem();
    state.offscreen = !toQRect(list_.GetItemRect(item)).intersects(view_.viewport()->rect());
    return state;
}

} // namespace tavrin::qt
