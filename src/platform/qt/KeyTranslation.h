#pragma once

#include "platform/ui/Constants.h"

#include <optional>
#include <string>

class QKeyEvent;

namespace tavrin::qt {

/// One key press in the vocabulary of the window messages.
struct KeyPress {
    UINT virtualKey = 0;       ///< for WM_KEYDOWN; 0: no key of the vocabulary
    std::u16string characters; ///< for WM_CHAR, one message a code unit
};

/// Characters are those that a keyboard gives there: the text typed; a control code for Return, Backspace,
/// Tab, Escape and Ctrl with a letter; a blank for Ctrl+Space; none for Delete, for Ctrl with anything else,
/// and with Alt except where Alt belongs to the character (AltGr).
[[nodiscard]] KeyPress translateKey(const QKeyEvent& event);

/// Whether the press does something in an editor: it types, edits or moves. Other presses (function keys, Alt
/// and most Ctrl combinations) are left to the host after the editor has seen them.
[[nodiscard]] bool isEditingKey(const QKeyEvent& event);

/// Whether the editor needs the press even where the host has a shortcut for it. Leaves to the host what it
/// commonly has shortcuts for and the editor could do without: Return, Tab and Escape with Ctrl.
[[nodiscard]] bool outranksShortcuts(const QKeyEvent& event);

/// The desktop's other key combinations for the standard commands, such as Shift+Insert for Paste.
[[nodiscard]] std::optional<UINT> desktopCommand(const QKeyEvent& event);

} // namespace tavrin::qt
