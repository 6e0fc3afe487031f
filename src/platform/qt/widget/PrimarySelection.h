#pragma once

#include <functional>

class QString;
class QWidget;

namespace tavrin::qt {

/// On desktops where what is selected can be pasted with the middle button: offers a widget's selected text
/// to the others. `text` is asked when somebody takes it, and never after the widget is gone; offering copies
/// nothing.
void offerPrimarySelection(QWidget& widget, std::function<QString()> text);

} // namespace tavrin::qt
