// Files that take their time, and what may happen to a window meanwhile.

#include "ScriptedPrompts.h"
#include "app/FileDocument.h"
#include "app/FirstPage.h"
#include "app/MainWindow.h"
#include "app/RecentFiles.h"
#include "buffer/Buffer.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QAction>
#include <QApplication>
#include <QDeadlineTimer>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QSettings>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QToolButton>
#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <limits>
#include <mutex>

using namespace tavrin;
using namespace tavrin::app;

namespace {

/// Bytes that come as a test lets them.
struct Source {
    QByteArray bytes;
    qint64 toldSize = bytes.size();
    qint64 failsAt = std::numeric_limits<qint64>::max();

    void allow(qint64 most) {
        const std::lock_guard lock(mutex);
        allowed = most;
        changed.notify_all();
    }
    void allowAll() { allow(std::numeric_limits<qint64>::max()); }

    std::mutex mutex;
    std::condition_variable changed;
    qint64 allowed = 0;
};

class SlowDevice : public QIODevice {
  public:
    explicit SlowDevice(std::shared_ptr<Source> source) : source_(std::move(source)) {}
    [[nodiscard]] qint64 size() const override { return source_->toldSize; }

  protected:
    qint64 readData(char* to, qint64 most) override {
        std::unique_lock lock(source_->mutex);
        source_->changed.wait(lock, [&] { return source_->allowed > at_; });
        if (at_ >= source_->failsAt) {
            setErrorString("Input/output error");
            return -1;
        }
        const qint64 end = std::min({source_->allowed, source_->failsAt, qint64{source_->bytes.size()}});
        const qint64 count = std::min(most, end - at_);
        std::copy_n(source_->bytes.data() + at_, count, to);
        at_ += count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }
    [[nodiscard]] bool isSequential() const override { return true; } // no size is believed

  private:
    std::shared_ptr<Source> source_;
    qint64 at_ = 0;
};

constexpr int largeLines = 300'000;

QByteArray largeText(const QByteArray& name) {
    return "<" + name + ">\n" +
           QByteArray("<line>of the text</line> and its end\n").repeated(largeLines - 2) + "</" + name +
           ">\n";
}

class LoadingTest : public testing::Test {
  protected:
    ~LoadingTest() override {
        for (MainWindow* opened : windows())
            delete opened;
        for (const auto& [path, source] : sources)
            source->allowAll(); // what still reads it ends
    }

    std::shared_ptr<Source> source(const QString& name, const QByteArray& bytes) {
        auto made = std::make_shared<Source>();
        made->bytes = bytes;
        made->toldSize = bytes.size();
        sources[folder.filePath(name)] = made;
        return made;
    }
    DeviceForPath devices() {
        return [this](const QString& path) { return std::make_unique<SlowDevice>(sources.at(path)); };
    }
    bool open(const QString& name) { return window->openFile(folder.filePath(name)); }

    static QList<MainWindow*> windows() {
        QList<MainWindow*> all;
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<MainWindow*>(widget))
                all += found;
        return all;
    }

    static bool waitUntil(const std::function<bool()>& condition) {
        const QDeadlineTimer deadline(20000);
        while (!condition()) {
            if (deadline.hasExpired())
                return false;
            QApplication::processEvents(QEventLoop::AllEvents, 20);
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        return true;
    }
    static void press(QWidget* widget, int key, const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(widget, &event);
    }
    FirstPage* firstPage() { return window->findChild<FirstPage*>(); }
    QStackedWidget* pages() { return window->findChild<QStackedWidget*>(); }
    QString shown() {
        QString all;
        for (const QLabel* label : window->findChildren<QLabel*>())
            all += label->text() + '\n';
        return all;
    }
    QAction* menu(int index) { return window->menuBar()->actions()[index]; }

    QTemporaryDir folder;
    std::map<QString, std::shared_ptr<Source>> sources;
    qt::QtPlatform platform{folder.filePath("settings.ini")};
    QSettings settings{folder.filePath("window.ini"), QSettings::IniFormat};
    ScriptedPrompts prompts;
    QPointer<MainWindow> window =
        new MainWindow({.platform = platform, .settings = settings, .prompts = prompts, .device = devices()});
};

TEST_F(LoadingTest, theFirstPageShowsAtOnceAndKeepsItsPlaceWhenTheRestIsThere) {
    const auto file = source("a.xml", largeText("a"));
    file->allow(1 << 20);
    window->show();
    ASSERT_TRUE(open("a.xml"));
    ASSERT_TRUE(window->isLoading());
    ASSERT_TRUE(waitUntil([&] { return firstPage() != nullptr; }));
    EXPECT_TRUE(window->windowTitle().startsWith("a.xml (opening)"));
    qt::XmlEditorWidget& page = firstPage()->editor();
    EXPECT_TRUE(page.text().startsWith("<a>\n<line>"));
    EXPECT_TRUE(page.text().endsWith("its end")) << "no line is shown in part";

    QWidget* const keys = page.focusProxy();
    const QString before = page.text();
    press(keys, Qt::Key_X, "x");
    press(keys, Qt::Key_Return, "\r");
    press(keys, Qt::Key_Delete, "\x7F");
    EXPECT_TRUE(shown().contains("still being opened"));
    EXPECT_FALSE(window->save());
    EXPECT_FALSE(window->saveAs());
    window->gotoLine();
    EXPECT_EQ(prompts.takeAsked(), QStringList());
    EXPECT_FALSE(menu(1)->isEnabled());
    EXPECT_EQ(page.text(), before);
    for (int i = 0; i < 3; ++i)
        press(keys, Qt::Key_PageDown);
    const int line = page.currentLine();
    const int scrolled = page.control().GetScrollPos(SB_VERT);
    EXPECT_GT(line, 3);
    EXPECT_TRUE(shown().contains(QString("Line %1,").arg(line + 1)));

    file->allowAll();
    ASSERT_TRUE(waitUntil([&] { return !window->isLoading() && !firstPage(); }));
    qt::XmlEditorWidget& editor = window->editor();
    EXPECT_EQ(editor.control().getBuffer().getLineCount(), largeLines);
    EXPECT_EQ(editor.currentLine(), line);
    EXPECT_EQ(editor.control().GetScrollPos(SB_VERT), scrolled);
    EXPECT_FALSE(editor.isModified() || editor.canUndo());
    EXPECT_TRUE(menu(1)->isEnabled());
    EXPECT_EQ(RecentFiles(settings).paths(), QStringList(folder.filePath("a.xml")));
    press(editor.focusProxy(), Qt::Key_X, "x");
    EXPECT_TRUE(editor.isModified());
}

TEST_F(LoadingTest, aLoadThatDoesNotComeToItsEndLeavesTheDocumentAsItWas) {
    source("old.xml", "<old>\n</old>")->allowAll();
    ASSERT_TRUE(open("old.xml"));
    qt::XmlEditorWidget& editor = window->editor();
    editor.gotoLineCol(1, 2);
    press(editor.focusProxy(), Qt::Key_X, "x");
    prompts.saveAnswer = SaveAnswer::Discard;
    const struct {
        const char* what;
        std::function<void(Source&)> end;
        const char* says;
    } ways[] = {
        {"Escape on the page", [&](Source&) { press(firstPage()->editor().focusProxy(), Qt::Key_Escape); },
         ""},
        {"the button",
         [&](Source&) {
             for (QToolButton* button : window->findChildren<QToolButton*>())
                 if (button->text() == "Cancel")
                     button->click();
         },
         ""},
        {"a read error",
         [](Source& file) {
             file.failsAt = 2 << 20;
             file.allowAll();
         },
         "Input/output error"},
        {"invalid bytes that are not wanted", [](Source& file) { file.allowAll(); }, "not valid UTF-8"},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(way.what);
        const auto file = source("new.xml", "\xEF\xBB\xBF" + largeText("new") + "\xFF");
        file->allow(1 << 20);
        const int column = editor.currentColumn();
        ASSERT_TRUE(open("new.xml"));
        ASSERT_TRUE(waitUntil([&] { return firstPage() != nullptr; }));
        EXPECT_EQ(prompts.takeAsked(), QStringList("save old.xml"));
        for (QAction* action : menu(0)->menu()->actions())
            if (action->text().remove('&').startsWith("Reload"))
                action->trigger();
        EXPECT_EQ(prompts.takeAsked(), QStringList()) << "what is loaded is read from the disk just now";
        way.end(*file);
        ASSERT_TRUE(waitUntil([&] { return !window->isLoading() && !firstPage(); }));
        EXPECT_TRUE(prompts.takeAsked().join(' ').contains(way.says));
        EXPECT_EQ(editor.text(), "<old>\n</xold>");
        EXPECT_EQ(window->document().path(), folder.filePath("old.xml"));
        EXPECT_TRUE(window->windowTitle().startsWith("old.xml"));
        EXPECT_TRUE(window->isWindowModified());
        EXPECT_EQ(editor.currentColumn(), column);
        EXPECT_TRUE(editor.isEnabled());
        editor.undo();
        EXPECT_EQ(editor.text(), "<old>\n</old>");
        editor.redo();
        file->allowAll();
    }
    EXPECT_EQ(RecentFiles(settings).paths(), QStringList(folder.filePath("old.xml")));
}

TEST_F(LoadingTest, aReloadLeavesTheTextInSightUntilItIsThere) {
    source("a.xml", "<old>\n</old>")->allowAll();
    ASSERT_TRUE(open("a.xml"));
    qt::XmlEditorWidget& editor = window->editor();
    press(editor.focusProxy(), Qt::Key_X, "x");
    const struct {
        const char* what;
        std::function<void(Source&)> end;
        const char* says;
        bool isReloaded;
    } ways[] = {
        {"Escape", [&](Source&) { press(window, Qt::Key_Escape); }, "", false},
        {"a read error",
         [](Source& file) {
             file.failsAt = 2 << 20;
             file.allowAll();
         },
         "Input/output error", false},
        {"a new document that is not wanted after all", [&](Source&) { window->newFile(); }, "save a.xml",
         false},
        {"it is there", [](Source& file) { file.allowAll(); }, "", true},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(way.what);
        const auto file = source("a.xml", largeText("new"));
        file->allow(1 << 20);
        window->reloadFile();
        ASSERT_TRUE(window->isLoading());
        EXPECT_TRUE(window->windowTitle().startsWith("a.xml (reloading)"));
        EXPECT_TRUE(window->isWindowModified());
        EXPECT_EQ(pages()->currentWidget(), &editor);
        EXPECT_FALSE(editor.isEnabled()) << "what is typed now would be taken back";
        press(window, Qt::Key_X, "x");
        EXPECT_TRUE(shown().contains("still being reloaded"));
        EXPECT_FALSE(window->save());
        window->reloadFile();
        EXPECT_EQ(prompts.takeAsked(), QStringList());
        EXPECT_EQ(editor.text(), "x<old>\n</old>");
        way.end(*file);
        ASSERT_TRUE(waitUntil([&] { return !window->isLoading(); }));
        EXPECT_TRUE(prompts.takeAsked().join(' ').contains(way.says));
        EXPECT_EQ(window->windowTitle().contains("reloading"), false);
        EXPECT_TRUE(editor.isEnabled());
        EXPECT_EQ(editor.control().getBuffer().getLineCount(), way.isReloaded ? largeLines : 2);
        EXPECT_EQ(window->isWindowModified(), !way.isReloaded);
        file->allowAll();
    }
    EXPECT_EQ(editor.currentColumn(), 1);
    editor.undo();
    EXPECT_EQ(editor.text(), "x<old>\n</old>") << "one step";
    EXPECT_TRUE(window->isWindowModified());
    editor.undo();
    EXPECT_EQ(editor.text(), "<old>\n</old>");
}

TEST_F(LoadingTest, nothingHasToWaitForALoadThatHangs) {
    source("other.xml", "<other/>")->allowAll();
    source("hangs.xml", largeText("a"));
    const struct {
        const char* what;
        std::function<void()> act;
        QString text;
    } ways[] = {
        {"a new document", [&] { window->newFile(); }, "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"},
        {"another file", [&] { EXPECT_TRUE(open("other.xml")); }, "<other/>"},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(way.what);
        ASSERT_TRUE(open("hangs.xml"));
        ASSERT_TRUE(window->isLoading());
        EXPECT_FALSE(window->editor().isEnabled()) << "what is typed now would be lost";
        way.act();
        EXPECT_FALSE(window->isLoading());
        EXPECT_EQ(window->editor().text(), way.text);
        EXPECT_TRUE(window->editor().isEnabled());
    }
    ASSERT_TRUE(open("hangs.xml"));
    EXPECT_TRUE(window->close());
    EXPECT_TRUE(waitUntil([&] { return !window; }));
}

TEST_F(LoadingTest, severalFilesLoadAtOnceEachInItsWindow) {
    const auto first = source("1.xml", largeText("first"));
    const auto second = source("2.xml", largeText("second"));
    window->openFiles({folder.filePath("1.xml"), folder.filePath("2.xml")});
    ASSERT_EQ(windows().size(), 2);
    MainWindow* const other = windows()[windows()[0] == window ? 1 : 0];
    second->allowAll();
    EXPECT_TRUE(waitUntil([&] { return !other->isLoading(); }));
    EXPECT_TRUE(window->isLoading());
    EXPECT_EQ(other->editor().control().getBuffer().getLineText(0), u"<second>");
    first->allowAll();
    EXPECT_TRUE(waitUntil([&] { return !window->isLoading(); }));
    EXPECT_EQ(window->editor().control().getBuffer().getLineText(0), u"<first>");
}

TEST_F(LoadingTest, aFileMayHoldMoreOrLessThanItsSizeTells) {
    const QByteArray bytes = largeText("a");
    const auto file = source("a.xml", bytes);
    file->allowAll();
    for (const qint64 told : {qint64{0}, bytes.size() / 3, bytes.size() - 1, bytes.size() * 2}) {
        file->toldSize = told;
        auto read = FileDocument::read(folder.filePath("a.xml"), {.device = devices()});
        ASSERT_EQ(read.status, FileDocument::LoadResult::Done);
        FileDocument document(window->editor().control().getBuffer());
        document.adopt(std::move(read.contents));
        EXPECT_EQ(window->editor().control().getBuffer().getLineCount(), largeLines) << told;
        EXPECT_EQ(window->editor().control().getBuffer().getLineText(largeLines - 1), u"</a>");
    }
}

} // namespace
