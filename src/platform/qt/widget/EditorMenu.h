#pragma once

#include "platform/ui/Constants.h"

#include <functional>

class QMenu;
class QWidget;

namespace tavrin {

class CWnd;

namespace qt {

/// The standard menu of an editor, its entries enabled as the window's update handlers say. Deletes itself
/// when it closes. `run` is called with the command chosen.
[[nodiscard]] QMenu* makeEditorMenu(CWnd& window, QWidget& parent, std::function<void(UINT command)> run);

} // namespace qt
} // namespace tavrin
