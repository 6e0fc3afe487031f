#include "WindowFixture.h"

using namespace tavrin;
using namespace tavrin::app;

namespace {

class RecoveryTest : public WindowFixture {
  protected:
    [[nodiscard]] QStringList journals() const {
        return QDir(path("state/journals")).entryList({"*.journal"}, QDir::Files);
    }
    /// A session that types and ends as if the power failed: the window goes without a question.
    void leave(const QString& file, const QString& typed) {
        MainWindow lost(services());
        if (!file.isEmpty()) {
            ASSERT_TRUE(lost.openFile(file));
        }
        type(lost, typed);
    }
    void answer(RecoveryAction action) {
        prompts.recoveries += [action](const QList<RecoveryOffer>&) { return RecoveryChoice{0, action}; };
    }
};

TEST_F(RecoveryTest, whatWasTypedComesBackWithItsHistoryAndGoesWhenSaved) {
    const QString file = write("a.xml", "<a/>\n");
    leave(file, "lost ");
    prompts.recoveries += [](const QList<RecoveryOffer>& offers) {
        EXPECT_EQ(offers.size(), 1);
        EXPECT_TRUE(offers[0].remark.isEmpty());
        QStringList shown;
        for (const DifferenceLine& line : offers[0].differences())
            shown += QString::number(line.kind) + line.text;
        EXPECT_EQ(shown, QStringList({"1<a/>", "2lost <a/>"}));
        return RecoveryChoice{0, RecoveryAction::Recover};
    };
    window->offerRecovery();
    EXPECT_EQ(window->editor().text(), "lost <a/>");
    EXPECT_EQ(window->document().path(), file);
    EXPECT_TRUE(window->isWindowModified());
    EXPECT_EQ(window->document().diskChange(), DiskChange::None);
    window->editor().undo();
    EXPECT_FALSE(window->editor().isModified());
    window->editor().redo();
    ASSERT_TRUE(window->save());
    EXPECT_EQ(read("a.xml").trimmed(), "lost <a/>");
    prompts.takeAsked();
    window->offerRecovery();
    EXPECT_EQ(prompts.takeAsked(), QStringList());
    window->close();
    EXPECT_EQ(journals(), QStringList());
}

TEST_F(RecoveryTest, aCrashRightAfterTheFirstSaveCostsNothing) {
    {
        MainWindow lost(services());
        ASSERT_TRUE(lost.openFile(write("a.xml", "<a/>\n")));
        type(lost, "new ");
        ASSERT_TRUE(lost.save());
        ASSERT_EQ(journals().size(), 1);
        ASSERT_TRUE(QDir(folder.path()).mkpath("after/journals"));
        for (const QString& name : QDir(path("state/journals")).entryList(QDir::Files))
            ASSERT_TRUE(QFile::copy(path("state/journals/" + name), path("after/journals/" + name)));
    }
    write("a.xml", "written by somebody else\n"); // so that the journal is of use
    answer(RecoveryAction::Recover);
    Services next = services();
    next.journals = path("after/journals").toStdString();
    MainWindow after(next);
    after.offerRecovery();
    EXPECT_EQ(after.editor().text(), "new <a/>");
    after.editor().undo();
    EXPECT_EQ(after.editor().text(), "<a/>");
}

TEST_F(RecoveryTest, aJournalThatDoesNotFitIsKeptUntilItIsGivenUpTwice) {
    const QString file = write("a.xml", "<a/>\n");
    leave(file, "lost ");
    write("a.xml", "<other and longer/>\n");
    window->offerRecovery();
    EXPECT_TRUE(prompts.takeAsked().value(0).contains("changed by another program"));
    answer(RecoveryAction::Keep);
    window->offerRecovery();
    EXPECT_EQ(journals().size(), 1);
    answer(RecoveryAction::SaveElsewhere);
    prompts.saveTarget = {path("copy.xml"), ENCODING_UTF8};
    window->offerRecovery();
    EXPECT_EQ(read("copy.xml").trimmed(), "lost <a/>");
    EXPECT_EQ(read("a.xml"), "<other and longer/>\n");
    EXPECT_EQ(journals().size(), 1);
    answer(RecoveryAction::Discard);
    window->offerRecovery();
    EXPECT_EQ(journals().size(), 1) << "the user did not mean it";
    prompts.takeAsked();
    prompts.yes = true;
    answer(RecoveryAction::Discard);
    window->offerRecovery();
    EXPECT_EQ(prompts.takeAsked().size(), 3) << "the offer and two questions";
    EXPECT_EQ(journals(), QStringList());
}

TEST_F(RecoveryTest, textsWithoutFilesAndSeveralAtOnce) {
    leave({}, "one");
    leave({}, "two");
    answer(RecoveryAction::Recover);
    answer(RecoveryAction::Recover);
    window->offerRecovery();
    QStringList texts;
    for (MainWindow* each : MainWindow::all()) {
        texts += each->editor().text().contains("one") ? "one" : "two";
        EXPECT_TRUE(each->document().path().isEmpty());
        if (each != window)
            delete each;
    }
    texts.sort();
    EXPECT_EQ(texts, QStringList({"one", "two"}));
    EXPECT_EQ(journals().size(), 2) << "unsaved still";
}

TEST_F(RecoveryTest, closingOnPurposeLeavesNothing) {
    type("x");
    prompts.saveAnswer = SaveAnswer::Discard;
    window->close();
    EXPECT_EQ(journals(), QStringList());
}

TEST(TextDifferences, showChangedLinesWithTheirSurroundings) {
    const struct {
        QString before;
        QString after;
        QString shown;
    } cases[] = {
        {"a", "a", ""},
        {"", "x", "-1 +1x"},
        {"1\n2\n3\n4\n5\n6\n7", "1\n2\n3\n4\nfive\n6\n7", "…3  33  44 -55 +5five  66  77"},
        {"a\nb\nc", "a\nc", " 1a -2b  2c"},
        {"a\nb\n1\n2\n3\n4\n5\n6\nc", "A\nb\n1\n2\n3\n4\n5\n6\nC", "-1a +1A  2b  31 …7  75  86 -9c +9C"},
    };
    for (const auto& c : cases) {
        QStringList shown;
        for (const DifferenceLine& line : lineDifferences(c.before, c.after))
            shown += QString(" -+…")[line.kind] + QString::number(line.line) + line.text;
        EXPECT_EQ(shown.join(' '), c.shown) << c.before.toStdString();
    }
}

} // namespace
