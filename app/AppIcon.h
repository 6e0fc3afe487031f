#pragma once

#include <QIcon>

namespace tavrin::app {

/// The program's own icon, in the sizes that desktops ask for.
[[nodiscard]] QIcon appIcon();

} // namespace tavrin::app
