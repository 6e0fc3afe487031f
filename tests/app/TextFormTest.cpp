#include "ScriptedPrompts.h"
#include "app/MainWindow.h"
#include "buffer/Buffer.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QSettings>
#include <QTemporaryDir>
#include <QToolButton>
#include <gtest/gtest.h>

#include <algorithm>

using namespace tavrin;
using namespace tavrin::app;

namespace {

class TextFormTest : public testing::Test {
  protected:
    ~TextFormTest() override { delete window; }

    /// Opens a file of its own: one that is shown already would not be read again.
    void open(const QByteArray& bytes) {
        name = QString("a%1.xml").arg(++files);
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        prompts.saveAnswer = SaveAnswer::Discard;
        ASSERT_TRUE(window->openFile(folder.filePath(name)));
        prompts.takeAsked();
    }
    QByteArray read() const {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    QByteArray saved() {
        window->save();
        return read();
    }
    qt::XmlEditorWidget& editor() { return window->editor(); }
    void type(int line, int column, const QString& text) {
        editor().gotoLineCol(line, column);
        for (const QChar ch : text) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(ch));
            QApplication::sendEvent(editor().focusProxy(), &press);
        }
    }
    /// A command of the Document menu by the names on the way to it.
    void choose(const QStringList& names) {
        QList<QAction*> actions = window->menuBar()->actions();
        for (const QString& item : QStringList("Document") + names) {
            const auto found = std::find_if(actions.begin(), actions.end(), [&](QAction* action) {
                return action->text().remove('&') == item;
            });
            ASSERT_NE(found, actions.end()) << item.toStdString();
            if (!(*found)->menu())
                return (*found)->trigger();
            emit(*found)->menu()->aboutToShow();
            actions = (*found)->menu()->actions();
        }
    }
    /// What the buttons in the status line show.
    QString shown() const {
        QStringList texts;
        for (const char* what : {"Encoding", "Line Ends"})
            for (const QToolButton* button : window->findChildren<QToolButton*>())
                if (button->accessibleName() == what)
                    texts += button->text();
        return texts.join(", ");
    }
    [[nodiscard]] Services services() {
        return {platform, settings, prompts, nullptr, folder.filePath("state/journals").toStdString()};
    }

    QTemporaryDir folder;
    QString name; ///< of the file that is open
    int files = 0;
    qt::QtPlatform platform{folder.filePath("settings.ini")};
    QSettings settings{folder.filePath("window.ini"), QSettings::IniFormat};
    ScriptedPrompts prompts;
    QPointer<MainWindow> window = new MainWindow(services());
};

TEST_F(TextFormTest, eachChangeIsOneStepThatIsSavedAndUndone) {
    const QByteArray file = "\xEF\xBB\xBF<a>\r\n\xC3\xA9\n</a>\r";
    const struct {
        QStringList command;
        QByteArray bytes;
        QString shown;
    } cases[] = {
        {{"Line Ends", "Unix (LF)"}, "\xEF\xBB\xBF<a>\n\xC3\xA9\n</a>\n", "UTF-8 with mark, LF"},
        {{"Line Ends", "Windows (CR LF)"},
         "\xEF\xBB\xBF<a>\r\n\xC3\xA9\r\n</a>\r\n",
         "UTF-8 with mark, CR LF"},
        {{"Line Ends", "Classic Mac (CR)"}, "\xEF\xBB\xBF<a>\r\xC3\xA9\r</a>\r", "UTF-8 with mark, CR"},
        {{"Byte-Order Mark"}, "<a>\r\n\xC3\xA9\n</a>\r", "UTF-8, Mixed"},
        {{"Encoding", "ISO-8859-1"}, "<a>\r\n\xE9\n</a>\r", "ISO-8859-1, Mixed"},
        {{"Encoding", "UTF-16 BE"},
         QByteArray("\xFE\xFF\0<\0a\0>\0\r\0\n\0\xE9\0\n\0<\0/\0a\0>\0\r", 26),
         "UTF-16 BE, Mixed"},
    };
    for (const auto& c : cases) {
        open(file);
        EXPECT_EQ(shown(), "UTF-8 with mark, Mixed");
        choose(c.command);
        EXPECT_TRUE(window->isWindowModified());
        EXPECT_EQ(shown(), c.shown);
        EXPECT_EQ(saved(), c.bytes) << c.shown.toStdString();
        EXPECT_FALSE(window->isWindowModified());
        editor().undo();
        EXPECT_TRUE(window->isWindowModified());
        EXPECT_FALSE(editor().canUndo());
        EXPECT_EQ(shown(), "UTF-8 with mark, Mixed");
        EXPECT_EQ(saved(), file);
        editor().redo();
        EXPECT_EQ(saved(), c.bytes);
    }
}

TEST_F(TextFormTest, aChosenEncodingWinsOverTheDeclarationThatMayFollow) {
    const QByteArray file = "<?xml version='1.0' encoding='utf-8'?>\n<a>\xC3\xA9</a>";
    open(file);
    choose({"Encoding", "ISO-8859-1"});
    EXPECT_TRUE(prompts.takeAsked().join("").contains("“utf-8”. Change it to “iso-8859-1”"));
    EXPECT_EQ(saved(), "<?xml version='1.0' encoding='utf-8'?>\n<a>\xE9</a>") << "it was left";
    type(1, 3, "x");
    EXPECT_TRUE(saved().endsWith("<a>x\xE9</a>"));
    open(file);
    prompts.yes = true;
    choose({"Encoding", "ISO-8859-1"});
    EXPECT_EQ(saved(), "<?xml version='1.0' encoding='iso-8859-1'?>\n<a>\xE9</a>");
    editor().undo();
    EXPECT_FALSE(editor().canUndo()) << "name and encoding are one step";
    EXPECT_EQ(saved(), file);
    // What nobody edited is written as it was, whatever it says of itself.
    const QByteArray wrong = "\xEF\xBB\xBF<?xml version='1.0' encoding='iso-8859-1'?>\n<a>\xC3\xA9</a>";
    open(wrong);
    EXPECT_EQ(saved(), wrong);
    type(1, 3, "x");
    EXPECT_EQ(saved(), "<?xml version='1.0' encoding='iso-8859-1'?>\n<a>x\xE9</a>");
}

TEST_F(TextFormTest, charactersThatDoNotFitAreNeverReplacedUnasked) {
    const QByteArray file = "<?xml version='1.0' encoding='iso-8859-1'?>\n<a b='x'>y</a><!-- z -->";
    open(file);
    editor().control().insert(1, 6, u"\U0001F41D");
    type(1, 11, QStringLiteral("\u0151"));
    EXPECT_EQ(saved(), file);
    EXPECT_EQ(prompts.takeAsked(), QStringList("2 lost, 0 without references"));
    EXPECT_EQ(editor().currentColumn(), 6) << "at the first of them";
    EXPECT_TRUE(window->isWindowModified());
    editor().gotoLineCol(1, 12);
    prompts.lossAnswers = {{LossAction::WriteReferences}};
    EXPECT_TRUE(saved().endsWith("<a b='&#x1F41D;x'>&#x151;y</a><!-- z -->"));
    EXPECT_EQ(editor().currentColumn(), 25) << "the caret stays with its text";
    EXPECT_TRUE(editor().text().contains("&#x151;")) << "what is seen is what is in the file";
    editor().undo();
    EXPECT_TRUE(editor().text().contains(QStringLiteral("\u0151")));

    open(file);
    type(1, 18, QStringLiteral("\u0151"));
    prompts.lossAnswers = {{LossAction::ShowPlace, 0, 0}};
    EXPECT_EQ(saved(), file);
    ASSERT_EQ(prompts.losses.last().places.size(), 1);
    EXPECT_EQ(prompts.losses.last().places[0].kind, XmlPlace::Comment);
    EXPECT_EQ(editor().currentColumn(), 18);
    prompts.yes = true;
    prompts.lossAnswers = {{LossAction::WriteReferences}};
    EXPECT_EQ(saved(), file) << "a comment has no references";
    type(1, 9, QStringLiteral("\u0151"));
    prompts.lossAnswers = {{LossAction::WriteReferences}};
    EXPECT_EQ(saved(), file) << "what is left is asked about";
    EXPECT_TRUE(editor().text().contains("&#x151;y"));
    EXPECT_EQ(prompts.losses.last().count, 1);
    editor().undo();
    editor().undo();
    prompts.lossAnswers = {{LossAction::UseEncoding, ENCODING_UTF8}};
    EXPECT_EQ(saved(), "<?xml version='1.0' encoding='utf-8'?>\n<a b='x'>y</a><!--\xC5\x91 z -->");
    EXPECT_EQ(shown(), "UTF-8, LF");
}

TEST_F(TextFormTest, bytesThatAreNotValidGoOnlyWhenTheUserSaysSo) {
    prompts.yes = true;
    const QByteArray head = "<?xml version='1.0' encoding='utf-8'?>\n";
    open(head + "\xFF\n\xFF\n<a/>");
    type(0, 0, " ");
    editor().undo();
    type(3, 0, "x");
    EXPECT_EQ(saved(), head + "\xFF\n\xFF\nx<a/>");
    EXPECT_EQ(prompts.takeAsked(), QStringList());
    prompts.yes = false;
    type(2, 1, "y");
    EXPECT_EQ(saved(), head + "\xFF\n\xFF\nx<a/>");
    EXPECT_TRUE(prompts.takeAsked().join("").contains("Places: 1, the first at byte 41."));
    prompts.yes = true;
    EXPECT_EQ(saved(), head + "\xFF\n\xEF\xBF\xBDy\nx<a/>");
    prompts.takeAsked();
    type(3, 1, "z");
    window->save();
    EXPECT_EQ(prompts.takeAsked(), QStringList()) << "asked once";
}

TEST_F(TextFormTest, aCrashKeepsTheForm) {
    const QByteArray file = "<a>\r\n\xC3\xA9\n</a>";
    open(file);
    choose({"Line Ends", "Classic Mac (CR)"});
    choose({"Encoding", "UTF-16"});
    type(1, 0, "x");
    delete window; // as if the power failed
    window = new MainWindow(services());
    prompts.recoveries += [](const QList<RecoveryOffer>&) {
        return RecoveryChoice{0, RecoveryAction::Recover};
    };
    window->offerRecovery();
    EXPECT_EQ(shown(), "UTF-16, CR");
    EXPECT_EQ(saved(), QByteArray("\xFF\xFE<\0a\0>\0\r\0x\0\xE9\0\r\0<\0/\0a\0>\0", 24));
    for (int i = 0; i < 3; ++i)
        editor().undo();
    EXPECT_FALSE(editor().canUndo());
    EXPECT_EQ(shown(), "UTF-8, Mixed");
    EXPECT_EQ(saved(), file);
}

} // namespace
