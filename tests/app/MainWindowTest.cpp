#include "app/MainWindow.h"

#include "WindowFixture.h"
#include "app/OptionsDialog.h"
#include "buffer/Buffer.h"
#include "platform/qt/widget/XmlEditorOptionsPage.h"

#include <QAction>
#include <QDeadlineTimer>
#include <QDropEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTimer>
#include <QToolButton>
#include <QUrl>

#include <cstdio>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

using namespace tavrin;
using namespace tavrin::app;

namespace {

/// Runs the event loop until the condition holds; false when it never does.
template <class Condition>
bool waitUntil(Condition condition) {
    const QDeadlineTimer deadline(20000);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QApplication::processEvents(QEventLoop::AllEvents, 50);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

class MainWindowTest : public WindowFixture {
  protected:
    /// A menu's command by its path, such as "File/Save".
    QAction* command(const QString& where) {
        const QStringList names = where.split('/');
        QList<QAction*> actions = window->menuBar()->actions();
        QAction* found = nullptr;
        for (const QString& name : names) {
            found = nullptr;
            for (QAction* action : actions)
                if (!found && action->text().remove('&').startsWith(name))
                    found = action;
            if (!found)
                throw std::runtime_error("no command " + where.toStdString());
            if (found->menu()) {
                emit found->menu()->aboutToShow();
                actions = found->menu()->actions();
            }
        }
        return found;
    }
    bool statusShows(const QString& text) {
        for (const QLabel* label : window->findChildren<QLabel*>())
            if (label->text().contains(text))
                return true;
        for (const QToolButton* button : window->findChildren<QToolButton*>())
            if (button->text() == text)
                return true;
        return false;
    }
};

TEST_F(MainWindowTest, titleAndStatusLineFollowTheDocument) {
    EXPECT_TRUE(window->windowTitle().startsWith("Untitled.xml[*]"));
    EXPECT_FALSE(window->isWindowModified());
    opened(write("a[*].xml", "<a>\n\u00E4</a>\n"));
    EXPECT_TRUE(window->windowTitle().startsWith("a[*][*].xml[*]"));
    EXPECT_TRUE(statusShows("Line 1, Column 1"));
    EXPECT_TRUE(statusShows("UTF-8"));
    EXPECT_TRUE(statusShows("2 lines"));
    editor().gotoLineCol(1, 1);
    EXPECT_TRUE(statusShows("Line 2, Column 2"));
    EXPECT_FALSE(window->isWindowModified());
    type("x");
    EXPECT_TRUE(window->isWindowModified());
    EXPECT_TRUE(command("Edit/Undo")->isEnabled());
    command("Edit/Undo")->trigger();
    EXPECT_FALSE(window->isWindowModified());
    EXPECT_TRUE(command("Edit/Redo")->isEnabled());
    command("Edit/Redo")->trigger();
    command("File/Save")->trigger();
    EXPECT_FALSE(window->isWindowModified());
    EXPECT_EQ(read("a[*].xml"), "<a>\n\xC3\xA4x</a>\n");
}

TEST_F(MainWindowTest, unsavedChangesAreNotLostUnasked) {
    const QString file = write("a.xml", "<a/>");
    const QString other = write("b.xml", "<b/>");
    prompts.fileToOpen = other;
    const std::function<void()> ways[] = {
        [&] { command("File/New")->trigger(); },
        [&] { command("File/Open")->trigger(); },
        [&] { command("File/Close")->trigger(); },
        [&] { command("File/Open Recent/2  b.xml")->trigger(); },
    };
    opened(other);
    for (const auto& lose : ways) {
        opened(file);
        type("x");
        EXPECT_EQ(prompts.takeAsked(), QStringList());
        lose();
        EXPECT_EQ(prompts.takeAsked(), QStringList("save a.xml"));
        ASSERT_TRUE(window);
        EXPECT_EQ(editor().text(), "x<a/>");
        editor().undo();
        opened(other);
    }
}

TEST_F(MainWindowTest, theAnswerSaveSavesFirst) {
    opened(write("a.xml", "<a/>"));
    type("x");
    prompts.saveAnswer = SaveAnswer::Save;
    command("File/New")->trigger();
    EXPECT_EQ(read("a.xml"), "x<a/>");
    EXPECT_TRUE(window->document().path().isEmpty());
    EXPECT_FALSE(window->isWindowModified());
    // A new text has nowhere to go yet; who backs out of that keeps it.
    type("y");
    command("File/Close")->trigger();
    EXPECT_EQ(prompts.takeAsked(), QStringList({"save a.xml", "save Untitled.xml",
                                                "where " + QDir::current().filePath("Untitled.xml")}));
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isWindowModified());
    prompts.saveAnswer = SaveAnswer::Discard;
    command("File/Close")->trigger();
    EXPECT_TRUE(waitUntil([&] { return !window; }));
}

TEST_F(MainWindowTest, filesThatWereOpenedOrSavedAreRecent) {
    const QString a = write("a.xml", "<a/>");
    const QString b = write("b & c.xml", "<b/>");
    opened(a);
    opened(b);
    opened(a);
    EXPECT_EQ(RecentFiles(settings).paths(), QStringList({a, b}));
    command("File/Open Recent/2  b")->trigger();
    EXPECT_EQ(window->document().path(), b);
    prompts.saveTarget = SaveTarget{path("c.xml"), ENCODING_UTF8};
    command("File/Save As")->trigger();
    EXPECT_EQ(RecentFiles(settings).paths(), QStringList({path("c.xml"), b, a}));
    ASSERT_TRUE(QFile::remove(a));
    EXPECT_FALSE(window->openFile(a));
    EXPECT_EQ(RecentFiles(settings).paths(), QStringList({path("c.xml"), b}));
    for (int i = 0; i < 20; ++i)
        RecentFiles(settings).add(path(QString::number(i)));
    EXPECT_EQ(RecentFiles(settings).paths().size(), RecentFiles::most);
    command("File/Open Recent/Clear")->trigger();
    EXPECT_EQ(RecentFiles(settings).paths(), QStringList());
}

TEST_F(MainWindowTest, goToLineCountsFromOne) {
    opened(write("a.xml", "<a>\n<b/>\n</a>"));
    prompts.line = 3;
    command("Edit/Go to Line")->trigger();
    EXPECT_EQ(prompts.takeAsked(), QStringList("line 1 of 3"));
    EXPECT_EQ(editor().currentLine(), 2);
    prompts.line.reset();
    command("Edit/Go to Line")->trigger();
    EXPECT_EQ(editor().currentLine(), 2);
}

TEST_F(MainWindowTest, droppedFilesOpen) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(write("a.xml", "<a/>")), QUrl("http://example.org/x.xml"),
                  QUrl::fromLocalFile(write("b.xml", "<b/>"))});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &drop);
    ASSERT_TRUE(waitUntil([&] { return window->document().path() == path("a.xml"); }));
    MainWindow* second = nullptr;
    ASSERT_TRUE(waitUntil([&] {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* other = qobject_cast<MainWindow*>(widget); other && other != window)
                second = other;
        return second != nullptr;
    }));
    EXPECT_EQ(second->document().path(), path("b.xml"));
    delete second;

    QMimeData text;
    text.setText("no file");
    QDragEnterEvent refused({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    refused.ignore();
    QApplication::sendEvent(window, &refused);
    EXPECT_FALSE(refused.isAccepted());
}

TEST_F(MainWindowTest, aFileWithInvalidBytesOpensOnlyWhenWanted) {
    const QString good = write("good.xml", "<good/>");
    const QString bad = write("bad.xml", "\xEF\xBB\xBF<a>\xFF\xFF</a>");
    opened(good);
    EXPECT_FALSE(window->openFile(bad));
    const QString asked = prompts.takeAsked().join('\n');
    EXPECT_TRUE(asked.contains("bad.xml") && asked.contains("UTF-8") && asked.contains("byte 6, in line 1"))
        << asked.toStdString();
    EXPECT_EQ(window->document().path(), good);
    EXPECT_EQ(editor().text(), "<good/>");
    EXPECT_EQ(RecentFiles(settings).paths(), QStringList(good));
    prompts.yes = true;
    EXPECT_TRUE(window->openFile(bad));
    EXPECT_EQ(window->document().path(), bad);
}

TEST_F(MainWindowTest, saveAsDeclaresTheEncodingThatItWrites) {
    opened(write("a.xml", "<a>\xC5\x91</a>"));
    editor().gotoLineCol(0, 3);
    prompts.saveTarget = SaveTarget{path("b.xml"), ENCODING_LATIN2};
    prompts.yes = true;
    command("File/Save As")->trigger();
    EXPECT_EQ(read("b.xml"), "<?xml version=\"1.0\" encoding=\"iso-8859-2\"?>\r\n<a>\xF5</a>");
    EXPECT_FALSE(window->isWindowModified());
    EXPECT_TRUE(statusShows("ISO-8859-2"));
    EXPECT_EQ(editor().currentLine(), 1);
    EXPECT_EQ(editor().currentColumn(), 3);
    prompts.saveTarget = SaveTarget{path("none/c.xml"), ENCODING_UTF16};
    command("File/Save As")->trigger();
    EXPECT_TRUE(prompts.takeAsked().last().startsWith("error: "));
    EXPECT_EQ(window->document().path(), path("b.xml"));
    EXPECT_TRUE(statusShows("ISO-8859-2"));
    EXPECT_TRUE(editor().text().contains("iso-8859-2"));
}

TEST_F(MainWindowTest, saveWritesTheEncodingThatTheDeclarationNames) {
    opened(write("a.xml", "<?xml version='1.0' encoding='utf-8'?><a>\xC3\xA9</a>"));
    TextEditorCtrl& control = editor().control();
    const auto rename = [&](std::u16string_view name) {
        const int start = 30;
        const auto end = static_cast<int>(control.getBuffer().getLineText(0).find(u'\'', start));
        control.erase(0, start, 0, end);
        control.insert(0, start, name);
        editor().gotoLineCol(0, 0);
    };
    rename(u"iso-8859-1");
    command("File/Save")->trigger();
    EXPECT_TRUE(read("a.xml").endsWith("<a>\xE9</a>"));
    EXPECT_TRUE(statusShows("ISO-8859-1"));
    rename(u"x-nonsense");
    command("File/Save")->trigger();
    EXPECT_TRUE(prompts.takeAsked().join('\n').contains("x-nonsense"));
    EXPECT_TRUE(window->isWindowModified());
}

TEST_F(MainWindowTest, changesByOtherProgramsAreNoticed) {
    const QString file = write("a.xml", "<a>\n<b/></a>");
    opened(file);
    editor().gotoLineCol(1, 2);
    const auto replaceAtomically = [&](const QByteArray& bytes) {
        write("new", bytes);
        ASSERT_EQ(
            std::rename(QFile::encodeName(path("new")).constData(), QFile::encodeName(file).constData()), 0);
    };
    for (const QByteArray bytes : {"<a>\n<bb/></a>", "<a>\n<bbb/></a>"}) {
        prompts.diskAnswers = {DiskAnswer::Reload};
        replaceAtomically(bytes);
        EXPECT_TRUE(waitUntil([&] { return editor().text() == QString(bytes); }));
        EXPECT_EQ(prompts.takeAsked(), QStringList("changed on disk a.xml"));
        EXPECT_EQ(editor().currentLine(), 1);
        EXPECT_EQ(editor().currentColumn(), 2);
    }
    replaceAtomically("<other/>"); // and what is here is kept
    QStringList asked;
    EXPECT_TRUE(waitUntil([&] { return !(asked += prompts.takeAsked()).isEmpty(); }));
    EXPECT_EQ(editor().text(), "<a>\n<bbb/></a>");
    command("File/Save")->trigger(); // asked once is enough
    EXPECT_EQ(prompts.takeAsked(), QStringList());
    EXPECT_EQ(read("a.xml"), "<a>\n<bbb/></a>");

    ASSERT_TRUE(QFile::remove(file));
    EXPECT_TRUE(waitUntil([&] { return statusShows("moved or deleted"); }));
    write("a.xml", "<back/>");
    EXPECT_TRUE(waitUntil([&] { return !prompts.takeAsked().isEmpty(); }));
}

TEST_F(MainWindowTest, ourOwnSavesAreNoChangesByOthers) {
    opened(write("a.xml", "<a/>"));
    for (int i = 0; i < 3; ++i) {
        type("x");
        command("File/Save")->trigger();
        window->checkDisk();
    }
    EXPECT_EQ(prompts.takeAsked(), QStringList());
    EXPECT_EQ(read("a.xml"), "xxx<a/>");
}

TEST_F(MainWindowTest, savingOverAChangeThatWasNotSeenYetAsks) {
    opened(write("a.xml", "<a/>"));
    type("x");
    write("a.xml", "<changed/>");
    command("File/Save")->trigger();
    EXPECT_EQ(prompts.takeAsked().size(), 1);
    EXPECT_EQ(read("a.xml"), "<changed/>");
}

TEST_F(MainWindowTest, lineNumbersAndZoomAreSettingsOfAllWindows) {
    QAction* numbers = command("View/Line Numbers");
    EXPECT_TRUE(numbers->isChecked());
    numbers->trigger();
    EXPECT_FALSE(platform.settings().getBoolValue("Xml Editor", "Display Line Numbers", true));
    EXPECT_FALSE(command("View/Line Numbers")->isChecked());
    const std::unique_ptr<MainWindow> other(new MainWindow({platform, settings, prompts}));
    EXPECT_FALSE(other->editor().control().displayLineNumbers());
    command("View/Line Numbers")->trigger();
    EXPECT_TRUE(other->editor().control().displayLineNumbers());
    command("View/Zoom In")->trigger();
    EXPECT_EQ(platform.settings().getIntValue("Xml Editor", "Font Size", 9), 10);
    command("View/Reset Zoom")->trigger();
    EXPECT_EQ(platform.settings().getIntValue("Xml Editor", "Font Size", 9), 9);
}

TEST_F(MainWindowTest, elementsNotAllowedHereAreHiddenFromTheNextListOn) {
    opened(write("a.xsl", "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>\n"
                          "<xsl:choose>\n\n<xsl:otherwise/></xsl:choose>\n</xsl:stylesheet>"));
    // What the first row of the list fills in; "<" alone when there is no list.
    const auto firstElement = [this] {
        editor().gotoLineCol(2, 0);
        QTimer::singleShot(0, window, [this] {
            for (const auto& [key, text] : {std::pair(Qt::Key_Down, ""), std::pair(Qt::Key_Space, " ")}) {
                QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
                QApplication::sendEvent(editor().focusProxy(), &press);
            }
        });
        type("<");
        const QString line = editor().text().split('\n')[2];
        while (editor().control().CanUndo())
            editor().undo();
        return line;
    };
    QAction* hide = command("Tools/Hide Elements Not Allowed Here");
    EXPECT_FALSE(hide->isChecked());
    EXPECT_EQ(firstElement(), "<xsl:otherwise");
    hide->trigger();
    EXPECT_TRUE(command("Tools/Hide Elements Not Allowed Here")->isChecked());
    EXPECT_EQ(firstElement(), "<xsl:when");
}

TEST_F(MainWindowTest, savedOptionsShowInAllWindowsAndCancelledOnesNowhere) {
    const std::unique_ptr<MainWindow> other(new MainWindow({platform, settings, prompts}));
    const auto backgrounds = [&] {
        return std::pair(editor().control().getBackgroundColor(0),
                         other->editor().control().getBackgroundColor(0));
    };
    const auto before = backgrounds();
    for (const bool saved : {false, true}) {
        command("Tools/Options")->trigger();
        auto* dialog = window->findChild<OptionsDialog*>();
        ASSERT_NE(dialog, nullptr);
        dialog->editorPage().applyScheme("Dark");
        saved ? dialog->accept() : dialog->reject();
        EXPECT_TRUE(waitUntil([&] { return !window->findChild<OptionsDialog*>(); }));
        EXPECT_EQ(backgrounds(), saved ? std::pair(COLORREF(0x1E1E1E), COLORREF(0x1E1E1E)) : before);
        EXPECT_EQ(platform.settings().getIntValue("Xml Editor", "Font Size", -1), saved ? 9 : -1);
    }
}

TEST_F(MainWindowTest, theWindowsPlaceIsRemembered) {
    window->resize(640, 480);
    window->show();
    EXPECT_TRUE(window->close());
    const std::unique_ptr<MainWindow> next(new MainWindow({platform, settings, prompts}));
    EXPECT_EQ(next->size(), QSize(640, 480));
}

} // namespace
