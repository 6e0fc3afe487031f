#pragma once

#include "platform/ui/WindowPeer.h"

#include <QCursor>

namespace tavrin::qt {

[[nodiscard]] QCursor cursorFor(CursorShape shape);

} // namespace tavrin::qt
