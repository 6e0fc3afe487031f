#include "document/TextUndoScope.h"
#include "files/FaultInjection.h"
#include "files/TextFileContents.h"
#include "recovery/Session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sys/stat.h>

namespace tavrin::test {
namespace {

namespace fs = std::filesystem;

class JournalTest : public ::testing::Test {
  protected:
    [[nodiscard]] fs::path file() const { return folder_.path / "a.xml"; }
    [[nodiscard]] fs::path journals() const { return folder_.path / "state" / "journals"; }
    [[nodiscard]] fs::path afterCrash() const { return folder_.path / "after"; }

    /// What the disk would hold if the session ended now; no lock is held on it.
    void crash(Session& session) const {
        ASSERT_TRUE(session.journal.flush());
        fs::remove_all(afterCrash());
        fs::copy(journals(), afterCrash());
    }
    [[nodiscard]] AbandonedJournal onlyJournal() const {
        auto found = findAbandonedJournals(afterCrash());
        EXPECT_EQ(found.size(), 1U);
        return std::move(found.at(0));
    }
    [[nodiscard]] static int filesIn(const fs::path& where) {
        return fs::exists(where) ? static_cast<int>(std::distance(fs::directory_iterator(where), {})) : 0;
    }
    [[nodiscard]] fs::path writtenJournal() const {
        for (const auto& entry : fs::directory_iterator(journals()))
            if (entry.path().extension() == ".journal")
                return entry.path();
        return {};
    }
    /// Undoes and redoes everything; the text and the modified state at each place.
    static std::vector<std::u16string> history(Session& session) {
        std::vector<std::u16string> texts;
        const auto note = [&] {
            const TextForm form = session.editor.getBuffer().getForm();
            texts.push_back(session.text() + (session.editor.isModified() ? u"*" : u"") +
                            (form.hasMark ? u"m" : u"") +
                            static_cast<char16_t>(u'0' + static_cast<int>(form.lineEnds)));
        };
        for (note(); session.editor.CanUndo(); note())
            session.key('Z', true);
        for (; session.editor.CanRedo(); note())
            session.key('Y', true);
        return texts;
    }

    TemporaryFolder folder_;
};

/// What a save would write, in a form that keeps what can be kept.
std::string saved(Session& session) {
    std::string bytes;
    const Buffer& buffer = session.editor.getBuffer();
    textFileContents(buffer)([&](std::string_view piece) {
        bytes += piece;
        return true;
    });
    return bytes;
}

TEST_F(JournalTest, textAndHistoryComeBackWhateverWasDone) {
    const std::string otherVersions[] = {"<e>\r\ne\xFF\r</e>", "", std::string(1100, 'e') + "\n<e/>\n"};
    put(file(), "<?xml version='1.0' encoding='iso-8859-1'?>\r\n<a>\xE9t\xE9</a>\n" + std::string(1300, 'e') +
                    "\n\n");
    const char* wanted = std::getenv("TAVRIN_RANDOM_SESSIONS");
    const unsigned sessions = wanted ? static_cast<unsigned>(std::atoi(wanted)) : 40;
    for (unsigned seed = 1; seed <= sessions; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Session session(journals());
        if (seed % 4 == 0)
            session.startNew(u"<new>\neee</new>\n");
        else
            session.open(file());
        if (seed % 5 == 0)
            session.editor.SetUndoLimit(2000);
        session.type(u"e");
        for (int i = 0; i < 60; ++i) {
            session.randomCommand(random);
            if (random() % 20 == 0)
                session.editor.OnSaveDocument(u"");
            if (random() % 10 == 0)
                session.editor.changeForm({random() % 2 == 0 ? ENCODING_UTF16_BE : ENCODING_LATIN2,
                                           random() % 2 == 0, static_cast<LineEnd>(random() % 4)});
            if (random() % 40 == 0)
                session.editor.ClearUndo(&session.editor);
            if (random() % 30 == 0)
                session.reload(otherVersions[random() % std::size(otherVersions)]);
            if (random() % 40 == 0)
                session.editor.ForgetSavedState();
        }
        session.type(u"last");
        crash(session);
        Session second(folder_.path / "second");
        second.editor.SetUndoLimit(session.editor.GetUndoLimit());
        const RecoveredSession recovered = recover(onlyJournal(), second.editor, second.editor);
        ASSERT_TRUE(recovered.hasText);
        EXPECT_FALSE(recovered.problem) << *recovered.problem;
        EXPECT_EQ(second.text(), session.text());
        EXPECT_EQ(second.editor.getBuffer().getForm(), session.editor.getBuffer().getForm());
        if (seed % 4 != 0) { // ends and bytes of lines are those of files
            EXPECT_EQ(saved(second), saved(session));
        }
        EXPECT_EQ(second.editor.isModified(), session.editor.isModified());
        if (seed % 5 != 0) { // what the limit takes depends on when it takes it
            EXPECT_EQ(history(second), history(session));
        }
        second.editor.getBuffer().checkInvariants();
        session.journal.discard();
    }
}

TEST_F(JournalTest, anyCutAndAnyWrongByteCostsOnlyWhatComesAfterIt) {
    put(file(), "<a/>");
    Session session(journals());
    session.open(file());
    std::map<std::size_t, std::u16string> texts; // by the journal's length
    for (const char16_t* word : {u"x", u"yz", u"<b/>", u"Z"}) {
        word == std::u16string(u"Z") ? session.key('Z', true) : session.type(word);
        ASSERT_TRUE(session.journal.flush());
        texts[fs::file_size(writtenJournal())] = session.text();
    }
    crash(session);
    const fs::path journal = afterCrash() / writtenJournal().filename();
    const std::string whole = contentsOf(journal);
    ASSERT_TRUE(session.complaints.empty());
    const auto check = [&](const std::string& bytes, std::size_t good) {
        put(journal, bytes);
        auto found = findAbandonedJournals(afterCrash());
        const auto expected = texts.upper_bound(good);
        if (expected == texts.begin()) {
            // The change in which the copy's fingerprint stands is cut off: the file itself still helps.
            put(journal, whole);
            return;
        }
        ASSERT_EQ(found.size(), 1U);
        Session second(folder_.path / "second");
        const RecoveredSession recovered = recover(found[0], second.editor, second.editor);
        ASSERT_TRUE(recovered.hasText);
        EXPECT_EQ(second.text(), std::prev(expected)->second);
        EXPECT_LE(recovered.goodBytes, good);
    };
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        SCOPED_TRACE("cut at " + std::to_string(length));
        check(whole.substr(0, length), length);
        crash(session);
    }
    for (std::size_t at = 0; at < whole.size(); ++at) {
        SCOPED_TRACE("wrong byte at " + std::to_string(at));
        std::string bytes = whole;
        bytes[at] = static_cast<char>(bytes[at] ^ (1 << (at % 8)));
        check(bytes, at);
        crash(session);
    }
}

TEST_F(JournalTest, aJournalGoesOnlyWhenNothingUnsavedIsInIt) {
    put(file(), "<a/>");
    Session session(journals());
    session.open(file());
    EXPECT_EQ(filesIn(journals()), 0) << "looking at a file leaves nothing";
    session.type(u"x");
    ASSERT_TRUE(session.journal.flush());
    EXPECT_EQ(filesIn(journals()), 2);
    EXPECT_TRUE(findAbandonedJournals(journals()).empty()) << "its owner lives";
    for (const auto& entry : fs::directory_iterator(journals()))
        EXPECT_EQ(fs::status(entry.path()).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(journals()).permissions(), fs::perms(0700));

    crash(session);
    {
        const AbandonedJournal journal = onlyJournal();
        EXPECT_TRUE(journal.fitsFile());
        EXPECT_EQ(journal.about().file, file());
        EXPECT_EQ(journal.unsavedChanges(), 1U);
        EXPECT_TRUE(findAbandonedJournals(afterCrash()).empty()) << "offered once at a time";
    }
    put(file(), "<other/>");
    {
        AbandonedJournal journal = onlyJournal();
        EXPECT_FALSE(journal.fitsFile());
        Session second(folder_.path / "second");
        EXPECT_FALSE(recover(journal, second.editor, second.editor).problem);
        EXPECT_EQ(second.text(), u"x<a/>") << "the bytes from which it started are kept";
        journal.remove();
    }
    EXPECT_EQ(filesIn(afterCrash()), 0);

    put(file(), "x<a/>");
    session.editor.OnSaveDocument(u"");
    session.journal.saved(file(), stateOfFile(file()).value());
    crash(session);
    EXPECT_TRUE(findAbandonedJournals(afterCrash()).empty());
    EXPECT_EQ(filesIn(afterCrash()), 0) << "everything was saved";
    crash(session);
    put(file(), "<other program/>");
    EXPECT_EQ(findAbandonedJournals(afterCrash()).size(), 1U) << "kept, since it does not fit its file";
}

TEST_F(JournalTest, leavesWhatIsNotSavedAndRemovesWhatIs) {
    {
        Session session(journals());
        session.startNew(u"<a/>");
        session.type(u"unsaved");
    }
    EXPECT_EQ(findAbandonedJournals(journals()).size(), 1U);
    {
        Session session(journals());
        session.startNew(u"<a/>");
        session.type(u"x");
        session.key('Z', true);
    }
    {
        Session session(journals());
        session.startNew(u"<a/>");
        session.type(u"given up");
        session.journal.discard();
        session.type(u"and not followed any more");
    }
    put(journals() / "1-1.base", "of no journal");
    put(journals() / "1-2.journal", "");
    put(journals() / "1-3.journal", "no journal of ours, so not ours to remove");
    const auto found = findAbandonedJournals(journals());
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(filesIn(journals()), 2);
    EXPECT_EQ(std::ranges::count(found, false, &AbandonedJournal::isReadable), 1);
}

TEST_F(JournalTest, aRecoveredSessionGoesOnInTheSameJournal) {
    put(file(), "<a/>");
    Session first(journals());
    first.open(file());
    first.type(u"one ");
    crash(first);
    const fs::path again = folder_.path / "again";
    {
        Session second(folder_.path / "second");
        AbandonedJournal journal = onlyJournal();
        std::ofstream(journal.path(), std::ios::app | std::ios::binary) << "torn";
        const RecoveredSession recovered = recover(journal, second.editor, second.editor);
        second.journal.adopt(std::move(journal), recovered);
        EXPECT_TRUE(findAbandonedJournals(afterCrash()).empty()) << "locked";
        second.type(u"two ");
        ASSERT_TRUE(second.journal.flush());
        fs::copy(afterCrash(), again);
        second.journal.discard();
    }
    EXPECT_EQ(filesIn(afterCrash()), 0);
    Session third(folder_.path / "third");
    auto found = findAbandonedJournals(again);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_FALSE(recover(found[0], third.editor, third.editor).problem);
    EXPECT_EQ(third.text(), u"one two <a/>");
    third.key('Z', true);
    EXPECT_EQ(third.text(), u"<a/>") << "typing went on as one step";
    EXPECT_FALSE(third.editor.isModified());
}

TEST_F(JournalTest, aStepThatTheCrashCutOffIsAStep) {
    Session session(journals());
    session.startNew(u"abc");
    {
        const TextUndoScope scope(session.editor);
        session.editor.insert(0, 0, u"1");
        session.editor.insert(0, 2, u"2");
        crash(session);
    }
    Session second(folder_.path / "second");
    const RecoveredSession recovered = recover(onlyJournal(), second.editor, second.editor);
    EXPECT_TRUE(recovered.wasInGroup);
    EXPECT_EQ(second.text(), u"1a2bc");
    second.key('Z', true);
    EXPECT_EQ(second.text(), u"abc");
}

TEST_F(JournalTest, aFileThatWasReplacedBeforeTheFirstChangeDoesNoHarm) {
    for (const bool inPlace : {false, true}) {
        put(file(), "<old/>");
        Session session(journals());
        session.open(file());
        if (!inPlace)
            fs::remove(file());
        put(file(), "<something else/>");
        session.type(u"x");
        crash(session);
        Session second(folder_.path / "second");
        EXPECT_FALSE(recover(onlyJournal(), second.editor, second.editor).problem);
        EXPECT_EQ(second.text(), u"x<old/>");
        session.journal.discard();
    }
}

TEST_F(JournalTest, aTextWhoseFileIsGoneIsKeptThoughNobodyEditedIt) {
    put(file(), "<a/>\r\n");
    Session session(journals());
    session.open(file());
    fs::remove(file());
    session.editor.ForgetSavedState();
    EXPECT_TRUE(session.editor.isModified());
    crash(session);
    Session second(folder_.path / "second");
    const AbandonedJournal journal = onlyJournal();
    EXPECT_FALSE(journal.fitsFile());
    EXPECT_FALSE(recover(journal, second.editor, second.editor).problem);
    EXPECT_TRUE(second.editor.isModified());
    EXPECT_EQ(saved(second), "<a/>\r\n");
}

TEST_F(JournalTest, aDiskThatFailsIsToldOnceAndDisturbsNothing) {
    struct Case {
        Fault fault;
        bool stays;
        bool isTold;
    };
    const Case cases[] = {{Fault::noSpace, true, true},
                          {Fault::ioError, true, true},
                          {Fault::noSpace, false, true},
                          {Fault::shortWrite, true, false},
                          {Fault::interrupted, false, false}};
    for (const Case& c : cases) {
        for (int at = 0; at < 24; ++at) {
            const bool isOfFile = at % 2 == 1; // whose bytes are copied beside the journal
            const std::size_t mostComplaints = isOfFile ? 2 : 1;
            SCOPED_TRACE(std::to_string(static_cast<int>(c.fault)) + " at " + std::to_string(at));
            put(file(), "<a/>");
            Session session(journals());
            if (isOfFile)
                session.open(file());
            else
                session.startNew(u"<a/>");
            bool isWritten = false;
            {
                const FaultInjection full(c.fault, at / 2, c.stays);
                session.type(u"abc");
                isWritten = session.journal.flush();
                session.type(u"def");
                isWritten = session.journal.flush() && isWritten;
                EXPECT_TRUE(isWritten || c.isTold);
                EXPECT_LE(session.complaints.size(), mostComplaints);
                EXPECT_TRUE(isWritten || !session.complaints.empty());
                EXPECT_TRUE(c.isTold || session.complaints.empty());
            }
            session.type(u"ghi");
            EXPECT_TRUE(session.journal.flush());
            put(file(), "the journal does without the file");
            crash(session);
            Session second(folder_.path / "second");
            EXPECT_FALSE(recover(onlyJournal(), second.editor, second.editor).problem);
            EXPECT_EQ(second.text(), u"abcdefghi<a/>");
            session.journal.discard();
            EXPECT_TRUE(findAbandonedJournals(journals()).empty());
            EXPECT_EQ(filesIn(journals()), 0);
        }
    }
}

} // namespace
} // namespace tavrin::test
