#include "platform/qt/AccessibleEvents.h"

namespace tavrin::qt {

namespace {

QAccessible::UpdateHandler send = QAccessible::updateAccessibility;

} // namespace

void sendAccessible(QAccessibleEvent& event) {
    send(&event);
}

void setAccessibleEventHandler(QAccessible::UpdateHandler handler) {
    send = handler ? handler : QAccessible::updateAccessibility;
}

} // namespace tavrin::qt
