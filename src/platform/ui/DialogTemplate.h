#pragma once

#include "platform/ui/Constants.h"
#include "platform/ui/Geometry.h"

#include <span>
#include <string_view>

namespace tavrin {

enum class ControlKind {
    Label,     ///< text; its mnemonic leads to the next control
    EditBox,   ///< one line of text
    CheckBox,  ///< text with a mark
    ListBox,   ///< sorted entries, one of them chosen
    FontBox,   ///< drop-down list of font faces
    ColourBox, ///< drop-down list of colours
    TextPanel, ///< sample text, centred in a sunken frame
};

/// One control of a dialog. "&" in the text stands before the mnemonic.
struct DialogItem {
    UINT id; ///< 0: nobody asks for it
    ControlKind kind;
    std::u16string_view text;
    CPoint place; ///< top left corner, dialog units
    CSize size;   ///< dialog units; of a drop-down list the height when it is open
};

/// What a dialog's window holds, in tab order. Dialog units are a quarter of the average character's width
/// and an eighth of its height in the dialog's font. A platform may give controls the sizes that are usual on
/// it, but keeps their arrangement.
struct DialogTemplate {
    UINT id;
    CSize size; ///< dialog units
    std::u16string_view fontFamily;
    int fontPoints;
    std::span<const DialogItem> items;
};

} // namespace tavrin
