#pragma once

#include "platform/ui/DialogTemplate.h"

#include <utility>
#include <vector>

class QWidget;

namespace tavrin::qt {

/// Arranges a dialog's widgets as its template does. The edges in the template become the lines of a grid, so
/// that controls keep their rows and columns while each has the size that the style and the font ask for.
void arrangeByTemplate(QWidget& page, const std::vector<std::pair<const DialogItem*, QWidget*>>& widgets);

} // namespace tavrin::qt
