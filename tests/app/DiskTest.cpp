// One file, several programs and windows.

#include "WindowFixture.h"

#include <QFileInfo>

#include <csignal>
#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

using namespace tavrin;
using namespace tavrin::app;

namespace {

class DiskTest : public WindowFixture {
  protected:
    void link(const QString& from, const QString& to) const {
        ASSERT_EQ(::link(QFile::encodeName(path(from)).constData(), QFile::encodeName(path(to)).constData()),
                  0);
    }
    [[nodiscard]] QStringList filesIn(const QString& name) const {
        return QDir(path(name)).entryList(QDir::Files);
    }
    /// Puts a save in place aside that was killed while it wrote.
    void leaveInterruptedSave(const QString& name) const {
        const pid_t child = ::fork();
        if (child == 0) {
            int readings = 0;
            const FileReplacement saver(path("state/backups").toStdString());
            static_cast<void>(saver.replace(path(name).toStdString(), [&](const ByteSink& sink) {
                const bool goesOn = sink("half of");
                if (++readings == 2)
                    ::kill(::getpid(), SIGKILL);
                return goesOn && sink(" the new text");
            }));
            ::_exit(1);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
    }
};

TEST_F(DiskTest, reloadIsOneStepAndTakesOverTheFormOfTheFile) {
    opened(write("a.xml", "<a>\n<b/></a>\n"));
    type("x");
    const QByteArray fresh("<?xml version='1.0' encoding='iso-8859-1'?>\r\n<a>\xE9</a>\r\n");
    write("a.xml", fresh);
    prompts.diskAnswers = {DiskAnswer::Reload};
    window->checkDisk();
    EXPECT_EQ(prompts.takeAsked(), QStringList("changed on disk a.xml, changed here"));
    EXPECT_EQ(text(), "<?xml version='1.0' encoding='iso-8859-1'?>\n<a>\u00E9</a>");
    EXPECT_FALSE(window->isWindowModified());
    window->editor().undo();
    EXPECT_EQ(text(), "x<a>\n<b/></a>");
    EXPECT_TRUE(window->isWindowModified());
    window->editor().redo();
    EXPECT_FALSE(window->isWindowModified());
    window->editor().gotoLineCol(1, 0);
    type("\u00E8");
    ASSERT_TRUE(window->save());
    EXPECT_EQ(read("a.xml"), QByteArray(fresh).replace("<a>", "\xE8<a>"));
    while (window->editor().canUndo())
        window->editor().undo();
    EXPECT_EQ(text(), "<a>\n<b/></a>");
    ASSERT_TRUE(window->save());
    EXPECT_EQ(read("a.xml"), "<a>\n<b/></a>\n");
    EXPECT_EQ(prompts.takeAsked(), QStringList());
}

TEST_F(DiskTest, whatIsKeptCountsAsUnsaved) {
    opened(write("a.xml", "<a/>"));
    write("a.xml", "<other/>");
    window->checkDisk();
    EXPECT_EQ(prompts.takeAsked(), QStringList("changed on disk a.xml"));
    EXPECT_TRUE(window->isWindowModified());
    window->checkDisk();
    ASSERT_TRUE(window->save());
    EXPECT_EQ(prompts.takeAsked(), QStringList()) << "asked once is enough";
    EXPECT_EQ(read("a.xml"), "<a/>");
}

TEST_F(DiskTest, comparingShowsNumberedLinesAndAsksAgain) {
    opened(write("a.xml", "1\n2\n3\n4\n5\n6\n"));
    write("a.xml", "1\n2\n3\n4\nfive\n6\n");
    prompts.diskAnswers = {DiskAnswer::Compare, DiskAnswer::Reload};
    window->checkDisk();
    EXPECT_EQ(prompts.takeAsked(),
              QStringList({"changed on disk a.xml", "differences|…3 |=3 3|=4 4|-5 5|+5 five|=6 6",
                           "changed on disk a.xml"}));
    EXPECT_EQ(text(), "1\n2\n3\n4\nfive\n6");
}

TEST_F(DiskTest, aSaveOverAChangeIsTheUsersDecision) {
    opened(write("a.xml", "<a/>"));
    type("x");
    write("a.xml", "<other/>");
    EXPECT_FALSE(window->save());
    window->checkDisk();
    EXPECT_EQ(prompts.takeAsked(), QStringList("changed on disk a.xml, changed here, saving"))
        << "a cancelled save is not followed by the same question";
    EXPECT_EQ(read("a.xml"), "<other/>");
    prompts.diskAnswers = {DiskAnswer::Reload};
    EXPECT_FALSE(window->save());
    EXPECT_EQ(text(), "<other/>");
    window->editor().undo();
    write("a.xml", "<once more/>");
    prompts.diskAnswers = {DiskAnswer::KeepMine};
    EXPECT_TRUE(window->save());
    EXPECT_EQ(read("a.xml"), "x<a/>");
}

TEST_F(DiskTest, aFileThatIsGoneIsWrittenAgain) {
    opened(write("a.xml", "<a/>\n"));
    ASSERT_TRUE(QFile::remove(path("a.xml")));
    window->checkDisk();
    EXPECT_EQ(text(), "<a/>");
    EXPECT_TRUE(window->isWindowModified());
    window->reloadFile();
    EXPECT_TRUE(prompts.takeAsked().join(' ').contains("could not be opened"));
    ASSERT_TRUE(window->save());
    EXPECT_EQ(read("a.xml"), "<a/>\n");
    ASSERT_TRUE(QFile::remove(path("a.xml"))); // and nobody has noticed yet
    type("x");
    ASSERT_TRUE(window->save());
    EXPECT_EQ(read("a.xml"), "x<a/>\n");
    EXPECT_EQ(prompts.takeAsked(), QStringList());
}

TEST_F(DiskTest, aSessionWithAReloadInItIsRecovered) {
    const QString file = write("a.xml", "<a/>\r\n");
    for (const bool wasChangedBefore : {false, true}) {
        write("a.xml", "<a/>\r\n");
        {
            MainWindow lost(services());
            ASSERT_TRUE(lost.openFile(file));
            if (wasChangedBefore)
                type(lost, "x");
            write("new", "<b>\n</b>\n"); // as most programs save: a new file in place of the old one
            ASSERT_EQ(
                std::rename(QFile::encodeName(path("new")).constData(), QFile::encodeName(file).constData()),
                0);
            lost.reloadFile();
            type(lost, "y");
        }
        prompts.recoveries += [](const QList<RecoveryOffer>& offers) {
            EXPECT_TRUE(offers[0].remark.isEmpty()) << "the file is as it was reloaded";
            return RecoveryChoice{0, RecoveryAction::Recover};
        };
        window->offerRecovery();
        EXPECT_EQ(text(), wasChangedBefore ? "<yb>\n</b>" : "y<b>\n</b>") << "the caret kept its column";
        window->editor().undo();
        EXPECT_FALSE(window->isWindowModified());
        window->editor().undo();
        EXPECT_EQ(text(), wasChangedBefore ? "x<a/>" : "<a/>");
        ASSERT_TRUE(window->save());
        EXPECT_EQ(read("a.xml"), wasChangedBefore ? "x<a/>\r\n" : "<a/>\r\n");
        window->newFile();
        prompts.takeAsked();
    }
}

TEST_F(DiskTest, aFileIsInOneWindowOnly) {
    opened(write("a.xml", "<a/>"));
    ASSERT_TRUE(QFile::link(path("a.xml"), path("symbolic.xml")));
    link("a.xml", "hard.xml");
    type("x");
    MainWindow other(services());
    for (const char* name : {"a.xml", "symbolic.xml", "hard.xml", "./a.xml"}) {
        EXPECT_TRUE(other.openFile(path(name)));
        EXPECT_TRUE(other.document().path().isEmpty()) << name;
    }
    EXPECT_EQ(prompts.takeAsked(), QStringList());
    ASSERT_TRUE(window->openFile(path("hard.xml")));
    EXPECT_EQ(text(), "x<a/>") << "it is here already";
    ASSERT_TRUE(window->save());
    write("a.xml", "<other/>");
    ASSERT_TRUE(other.openFile(path("hard.xml")));
    EXPECT_EQ(text(), "<other/>") << "and is shown as it is now";
    prompts.saveTarget = {path("symbolic.xml"), ENCODING_UTF8};
    EXPECT_FALSE(other.saveAs());
    EXPECT_TRUE(prompts.takeAsked().last().contains("open in another window"));
    EXPECT_EQ(read("a.xml"), "<other/>");
    other.openFiles({path("a.xml"), write("b.xml", "<b/>")});
    EXPECT_TRUE(other.document().path().isEmpty());
    EXPECT_EQ(MainWindow::all().size(), 3) << "and b.xml in one of its own";
}

TEST_F(DiskTest, anotherRunningProgramOfOursIsNamedBeforeAFileIsSharedWithIt) {
    const QString file = write("a.xml", "<a/>");
    FileClaim others(path("state/open").toStdString());
    others.claim(file.toStdString());
    EXPECT_FALSE(window->openFile(file));
    EXPECT_TRUE(prompts.takeAsked().value(0).contains("open in another running editor"));
    EXPECT_TRUE(window->document().path().isEmpty());
    prompts.saveTarget = {file, ENCODING_UTF8};
    EXPECT_FALSE(window->saveAs());
    EXPECT_EQ(read("a.xml"), "<a/>");
    prompts.yes = true;
    EXPECT_TRUE(window->openFile(file));
    prompts.takeAsked();
    others.claim({});
    EXPECT_TRUE(window->openFile(write("b.xml", "<b/>")));
    EXPECT_EQ(prompts.takeAsked(), QStringList());
    EXPECT_TRUE(others.isHeldByOthers(path("b.xml").toStdString()));
}

TEST_F(DiskTest, savesAFileWithTwoNamesInPlaceAndOffersWhatAKilledSaveLeft) {
    opened(write("a.xml", "<old/>\n"));
    link("a.xml", "b.xml");
    type("x");
    ASSERT_TRUE(window->save());
    EXPECT_EQ(read("b.xml"), "x<old/>\n");
    EXPECT_EQ(filesIn("state/backups"), QStringList());

    const struct {
        QList<bool> answers;
        bool isPutBack;
        bool isKept;
    } cases[] = {
        {{true}, true, false},
        {{false, false}, false, true},
        {{false, true}, false, false},
    };
    for (const auto& c : cases) {
        leaveInterruptedSave("a.xml");
        const QByteArray half = read("a.xml");
        EXPECT_TRUE(half.startsWith("half of"));
        prompts.confirmations = c.answers;
        window->offerBackups();
        const QStringList asked = prompts.takeAsked();
        EXPECT_EQ(asked.size(), c.answers.size());
        EXPECT_TRUE(asked.value(0).contains("was cut off"));
        EXPECT_EQ(read("b.xml"), c.isPutBack ? "x<old/>\n" : half);
        EXPECT_EQ(filesIn("state/backups").size(), c.isKept ? 2 : 0);
        for (const QString& left : filesIn("state/backups"))
            QFile::remove(path("state/backups/" + left));
        QFile file(path("a.xml")); // in place: the other name stays
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("x<old/>\n");
    }
}

} // namespace
