#include "platform/qt/KeyTranslation.h"

#include "platform/qt/Conversions.h"

#include <QKeyEvent>
#include <QKeySequence>

#include <algorithm>

namespace tavrin::qt {

namespace {

struct KeyNumber {
    int key;
    UINT virtualKey;
};

constexpr KeyNumber namedKeys[] = {
    {Qt::Key_Backspace, VK_BACK}, {Qt::Key_Tab, VK_TAB},       {Qt::Key_Backtab, VK_TAB},
    {Qt::Key_Return, VK_RETURN},  {Qt::Key_Enter, VK_RETURN},  {Qt::Key_Escape, VK_ESCAPE},
    {Qt::Key_Space, VK_SPACE},    {Qt::Key_PageUp, VK_PRIOR},  {Qt::Key_PageDown, VK_NEXT},
    {Qt::Key_End, VK_END},        {Qt::Key_Home, VK_HOME},     {Qt::Key_Left, VK_LEFT},
    {Qt::Key_Up, VK_UP},          {Qt::Key_Right, VK_RIGHT},   {Qt::Key_Down, VK_DOWN},
    {Qt::Key_Insert, VK_INSERT},  {Qt::Key_Delete, VK_DELETE},
};

/// Where the Latin letters are on a keyboard whose layout has others, by hardware key code: Ctrl with the key
/// of C copies on a Cyrillic keyboard too.
constexpr quint32 firstRowCode = 24;
constexpr quint32 secondRowCode = 38;
constexpr quint32 thirdRowCode = 52;

UINT latinLetterAt(quint32 keyCode) {
    const auto inRow = [&](quint32 first, std::string_view letters) -> UINT {
        return keyCode >= first && keyCode < first + letters.size()
                   ? static_cast<UINT>(letters[keyCode - first])
                   : 0;
    };
    return inRow(firstRowCode, "QWERTYUIOP") + inRow(secondRowCode, "ASDFGHJKL") +
           inRow(thirdRowCode, "ZXCVBNM");
}

bool isLetterKey(UINT key) {
    return key >= 'A' && key <= 'Z';
}

UINT virtualKey(const QKeyEvent& event) {
    const int key = event.key();
    for (const KeyNumber& named : namedKeys)
        if (named.key == key)
            return named.virtualKey;
    if (key >= Qt::Key_F1 && key <= Qt::Key_F12)
        return VK_F1 + static_cast<UINT>(key - Qt::Key_F1);
    if ((key >= Qt::Key_A && key <= Qt::Key_Z) || (key >= Qt::Key_0 && key <= Qt::Key_9))
        return static_cast<UINT>(key);
    if (event.modifiers().testFlag(Qt::ControlModifier) && key > 0xFF && key < Qt::Key_Escape)
        return latinLetterAt(event.nativeScanCode());
    return 0;
}

/// Of a press with Ctrl and without Alt.
std::u16string controlCharacters(UINT key) {
    if (isLetterKey(key))
        return {static_cast<char16_t>(key - 'A' + 1)};
    if (key == VK_SPACE)
        return u" ";
    return {};
}

bool isTypedCharacter(char16_t c) {
    return c >= 0x20 || c == u'\t';
}

} // namespace

KeyPress translateKey(const QKeyEvent& event) {
    const Qt::KeyboardModifiers held = event.modifiers();
    const bool ctrl = held.testFlag(Qt::ControlModifier);
    const bool alt = held.testFlag(Qt::AltModifier);
    KeyPress press{virtualKey(event), {}};
    if (held.testFlag(Qt::MetaModifier) || (alt && !ctrl))
        return press;
    if (ctrl && !alt) {
        press.characters = controlCharacters(press.virtualKey);
        return press;
    }
    switch (press.virtualKey) {
    case VK_RETURN:
    case VK_TAB:
    case VK_BACK:
    case VK_ESCAPE:
        if (!alt)
            press.characters = static_cast<char16_t>(press.virtualKey);
        break;
    case VK_DELETE:
        break;
    default:
        press.characters = toU16(event.text());
        if (!std::ranges::all_of(press.characters, isTypedCharacter))
            press.characters.clear();
        break;
    }
    return press;
}

bool isEditingKey(const QKeyEvent& event) {
    const KeyPress press = translateKey(event);
    if (std::ranges::any_of(press.characters, isTypedCharacter))
        return true;
    if (event.modifiers() & (Qt::AltModifier | Qt::MetaModifier))
        return false;
    const bool ctrl = event.modifiers().testFlag(Qt::ControlModifier);
    switch (press.virtualKey) {
    case VK_TAB:
        return !ctrl;
    case VK_BACK:
    case VK_RETURN:
    case VK_ESCAPE:
    case VK_DELETE:
        return true;
    default:
        return press.virtualKey >= VK_PRIOR && press.virtualKey <= VK_DOWN;
    }
}

bool outranksShortcuts(const QKeyEvent& event) {
    if (!isEditingKey(event))
        return false;
    if (!event.modifiers().testFlag(Qt::ControlModifier) || event.modifiers().testFlag(Qt::AltModifier))
        return true;
    const UINT key = translateKey(event).virtualKey;
    return key != VK_RETURN && key != VK_ESCAPE && !isLetterKey(key);
}

std::optional<UINT> desktopCommand(const QKeyEvent& event) {
    struct Binding {
        QKeySequence::StandardKey keys;
        UINT command;
    };
    static constexpr Binding bindings[] = {
        {QKeySequence::Copy, ID_EDIT_COPY},   {QKeySequence::Cut, ID_EDIT_CUT},
        {QKeySequence::Paste, ID_EDIT_PASTE}, {QKeySequence::SelectAll, ID_EDIT_SELECT_ALL},
        {QKeySequence::Undo, ID_EDIT_UNDO},   {QKeySequence::Redo, ID_EDIT_REDO},
    };
    const int combination = event.key() | static_cast<int>((event.modifiers() & ~Qt::KeypadModifier).toInt());
    for (const Binding& binding : bindings) {
        for (const QKeySequence& sequence : QKeySequence::keyBindings(binding.keys))
            if (sequence.count() == 1 && sequence[0].toCombined() == combination)
                return binding.command;
    }
    return std::nullopt;
}

} // namespace tavrin::qt
