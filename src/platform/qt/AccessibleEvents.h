#pragma once

#include <QAccessible>

namespace tavrin::qt {

/// Tells assistive technology of an event.
void sendAccessible(QAccessibleEvent& event);

/// Who gets the events in the place of Qt, which hands its own update handlers none while no assistive
/// technology is connected; null for Qt.
void setAccessibleEventHandler(QAccessible::UpdateHandler handler);

} // namespace tavrin::qt
