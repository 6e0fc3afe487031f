#include "platform/qt/KeyTranslation.h"

#include "platform/qt/Conversions.h"

#include <QKeyEvent>
#include <gtest/gtest.h>

namespace tavrin::qt {
namespace {

constexpr auto none = Qt::NoModifier;
constexpr auto shift = Qt::ShiftModifier;
constexpr auto ctrl = Qt::ControlModifier;
constexpr auto alt = Qt::AltModifier;

struct Case {
    const char* what;
    int key;
    Qt::KeyboardModifiers modifiers;
    QString text; ///< as the desktop gives it
    UINT virtualKey;
    std::u16string characters;
    bool editing;  ///< used by an editor
    bool outranks; ///< needed even against a host's shortcut
};

const Case cases[] = {
    {"letter", Qt::Key_A, none, "a", 'A', u"a", true, true},
    {"capital", Qt::Key_A, shift, "A", 'A', u"A", true, true},
    {"digit", Qt::Key_7, none, "7", '7', u"7", true, true},
    {"keypad digit", Qt::Key_7, Qt::KeypadModifier, "7", '7', u"7", true, true},
    {"angle bracket", Qt::Key_Less, none, "<", 0, u"<", true, true},
    {"umlaut", Qt::Key_Adiaeresis, none, QString(QChar(0xE4)), 0, u"\u00E4", true, true},
    {"emoji key", 0, none, QString::fromUcs4(U"\U0001F600"), 0, u"\U0001F600", true, true},
    {"at sign by AltGr", Qt::Key_At, Qt::GroupSwitchModifier, "@", 0, u"@", true, true},
    {"at sign by Ctrl+Alt", Qt::Key_At, ctrl | alt, "@", 0, u"@", true, true},
    {"Return", Qt::Key_Return, none, "\r", VK_RETURN, u"\r", true, true},
    {"Enter", Qt::Key_Enter, Qt::KeypadModifier, "\r", VK_RETURN, u"\r", true, true},
    {"Shift+Return", Qt::Key_Return, shift, "\r", VK_RETURN, u"\r", true, true},
    {"Ctrl+Return", Qt::Key_Return, ctrl, "\r", VK_RETURN, u"", true, false},
    {"Tab", Qt::Key_Tab, none, "\t", VK_TAB, u"\t", true, true},
    {"Shift+Tab", Qt::Key_Backtab, shift, "", VK_TAB, u"\t", true, true},
    {"Ctrl+Tab", Qt::Key_Tab, ctrl, "\t", VK_TAB, u"", false, false},
    {"Escape", Qt::Key_Escape, none, "\x1B", VK_ESCAPE, u"\x1B", true, true},
    {"Backspace", Qt::Key_Backspace, none, "\b", VK_BACK, u"\b", true, true},
    {"Ctrl+Backspace", Qt::Key_Backspace, ctrl, "\x7F", VK_BACK, u"", true, true},
    {"Delete", Qt::Key_Delete, none, "\x7F", VK_DELETE, u"", true, true},
    {"Left", Qt::Key_Left, none, "", VK_LEFT, u"", true, true},
    {"Ctrl+Shift+Right", Qt::Key_Right, ctrl | shift, "", VK_RIGHT, u"", true, true},
    {"Ctrl+Home", Qt::Key_Home, ctrl, "", VK_HOME, u"", true, true},
    {"Page Down", Qt::Key_PageDown, none, "", VK_NEXT, u"", true, true},
    {"Alt+Left", Qt::Key_Left, alt, "", VK_LEFT, u"", false, false},
    {"Ctrl+Space", Qt::Key_Space, ctrl, QString(QChar(0)), VK_SPACE, u" ", true, true},
    {"Ctrl+S", Qt::Key_S, ctrl, "\x13", 'S', u"\x13", false, false},
    {"Ctrl+1", Qt::Key_1, ctrl, "1", '1', u"", false, false},
    {"Ctrl+/", Qt::Key_Slash, ctrl, "\x1F", 0, u"", false, false},
    {"Alt+F", Qt::Key_F, alt, "f", 'F', u"", false, false},
    {"Meta+A", Qt::Key_A, Qt::MetaModifier, "a", 'A', u"", false, false},
    {"F3", Qt::Key_F3, none, "", VK_F1 + 2, u"", false, false},
    {"Insert", Qt::Key_Insert, none, "", VK_INSERT, u"", false, false},
    {"Shift alone", Qt::Key_Shift, shift, "", 0, u"", false, false},
};

TEST(KeyTranslation, keysAndCharactersAreThoseOfTheVocabulary) {
    for (const Case& each : cases) {
        const QKeyEvent event(QEvent::KeyPress, each.key, each.modifiers, each.text);
        const KeyPress press = translateKey(event);
        EXPECT_EQ(press.virtualKey, each.virtualKey) << each.what;
        EXPECT_EQ(toQString(press.characters), toQString(each.characters)) << each.what;
        EXPECT_EQ(isEditingKey(event), each.editing) << each.what;
        EXPECT_EQ(outranksShortcuts(event), each.outranks) << each.what;
    }
}

TEST(KeyTranslation, shortcutsWorkOnOtherLayouts) {
    constexpr quint32 keyOfC = 54;
    const QKeyEvent event(QEvent::KeyPress, 0x0421, ctrl, keyOfC, 0x6d3, 0, QString(QChar(0x0441)));
    EXPECT_EQ(translateKey(event).virtualKey, UINT('C'));
    const QKeyEvent typed(QEvent::KeyPress, 0x0421, none, keyOfC, 0x6d3, 0, QString(QChar(0x0441)));
    EXPECT_EQ(translateKey(typed).virtualKey, 0u);
    EXPECT_EQ(translateKey(typed).characters, u"\u0441");
}

TEST(KeyTranslation, desktopsOtherBindingsAreCommands) {
    const auto command = [](int key, Qt::KeyboardModifiers modifiers) {
        return desktopCommand(QKeyEvent(QEvent::KeyPress, key, modifiers));
    };
    EXPECT_EQ(command(Qt::Key_Insert, ctrl), ID_EDIT_COPY);
    EXPECT_EQ(command(Qt::Key_Insert, shift), ID_EDIT_PASTE);
    EXPECT_EQ(command(Qt::Key_Insert, shift | Qt::KeypadModifier), ID_EDIT_PASTE);
    EXPECT_EQ(command(Qt::Key_Delete, shift), ID_EDIT_CUT);
    EXPECT_EQ(command(Qt::Key_Z, ctrl | shift), ID_EDIT_REDO);
    EXPECT_EQ(command(Qt::Key_Insert, none), std::nullopt);
    EXPECT_EQ(command(Qt::Key_Delete, none), std::nullopt);
}

} // namespace
} // namespace tavrin::qt
