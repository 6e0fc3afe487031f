#pragma once

#include "app/MainWindow.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QApplication>
#include <QKeyEvent>

#include <atomic>
#include <chrono>
#include <random>

/// When each command of a script was done, in memory that survives the process.
struct TypingDiary {
    static constexpr int mostCommands = 4000;

    std::atomic<int> count;
    std::chrono::steady_clock::time_point done[mostCommands];
};

/// What somebody in a hurry does to a document, the same each time for a seed: keys, and a save now and then.
class TypingScript {
  public:
    explicit TypingScript(unsigned seed) : random_(seed) {}

    void next(tavrin::app::MainWindow& window) {
        QWidget* const editor = window.editor().focusProxy();
        const auto press = [editor](Qt::Key key, Qt::KeyboardModifiers modifiers, const QString& text) {
            QKeyEvent down(QEvent::KeyPress, key, modifiers, text);
            QApplication::sendEvent(editor, &down);
            QKeyEvent up(QEvent::KeyRelease, key, modifiers, text);
            QApplication::sendEvent(editor, &up);
        };
        switch (random_() % 24) {
        case 0:
            return press(Qt::Key_Return, Qt::NoModifier, "\r");
        case 1:
            return press(Qt::Key_Backspace, Qt::NoModifier, "\b");
        case 2:
            return press(Qt::Key_Delete, Qt::NoModifier, {});
        case 3:
            return press(Qt::Key_Z, Qt::ControlModifier, "\x1A");
        case 4:
            return press(Qt::Key_Y, Qt::ControlModifier, "\x19");
        case 5:
            return press(Qt::Key_Up, Qt::NoModifier, {});
        case 6:
            return press(Qt::Key_End, Qt::NoModifier, {});
        case 7:
            return press(Qt::Key_Left, Qt::ShiftModifier, {});
        case 8:
            return press(Qt::Key_Tab, Qt::NoModifier, "\t");
        case 9:
            if (random_() % 8 == 0)
                static_cast<void>(window.save());
            return;
        default:
            const auto letter = static_cast<int>(random_() % 26);
            return press(static_cast<Qt::Key>(Qt::Key_A + letter), Qt::NoModifier, QChar('a' + letter));
        }
    }

  private:
    std::mt19937 random_;
};
