#include "ScriptedPrompts.h"
#include "TypingScript.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/QtPlatform.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <new>
#include <poll.h>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace tavrin;
using namespace tavrin::app;
using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

/// A folder as a user's, and the program that runs in it.
class TypingSession {
  public:
    TypingSession() {
        QFile file(path("a.xml"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<a>\r\n  <b>e</b>\r\n</a>\r\n");
        const int diaryFile = ::open(path("diary").toLocal8Bit().constData(), O_RDWR | O_CREAT, 0600);
        EXPECT_EQ(::ftruncate(diaryFile, sizeof(TypingDiary)), 0);
        diary_ = static_cast<TypingDiary*>(
            ::mmap(nullptr, sizeof(TypingDiary), PROT_READ | PROT_WRITE, MAP_SHARED, diaryFile, 0));
        ::close(diaryFile);
    }
    TypingSession(const TypingSession&) = delete;
    TypingSession& operator=(const TypingSession&) = delete;
    ~TypingSession() { ::munmap(diary_, sizeof(TypingDiary)); }

    [[nodiscard]] QString path(const char* name) const { return folder_.filePath(name); }
    [[nodiscard]] const TypingDiary& diary() const { return *diary_; }
    /// `journals`: false for a window that leaves no trace.
    [[nodiscard]] Services services(bool journals) {
        Services all{platform_, settings_, prompts};
        if (journals)
            all.journals = path("state/journals").toStdString();
        return all;
    }
    /// Lets the program type and kills it after some time; when that was.
    Clock::time_point runAndKill(unsigned seed, int milliseconds) {
        const std::string folder = folder_.path().toStdString();
        const std::string number = std::to_string(seed);
        const pid_t child = ::fork();
        if (child == 0) {
            ::execl(TAVRIN_TYPIST, TAVRIN_TYPIST, folder.c_str(), number.c_str(), nullptr);
            ::_exit(127);
        }
        while (diary_->count == 0 && ::waitpid(child, nullptr, WNOHANG) == 0)
            ::poll(nullptr, 0, 5);
        ::poll(nullptr, 0, milliseconds);
        const auto killed = Clock::now();
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        return killed;
    }

    ScriptedPrompts prompts;

  private:
    QTemporaryDir folder_;
    qt::QtPlatform platform_{folder_.filePath("settings.ini")};
    QSettings settings_{folder_.filePath("window.ini"), QSettings::IniFormat};
    TypingDiary* diary_;
};

/// The texts that a script goes through, one a change, each with the number of commands done before.
class ExpectedTexts : private HistoryObserver {
  public:
    ExpectedTexts(unsigned seed, int commands) : window_(session_.services(false)) {
        window_.openFile(session_.path("a.xml"));
        window_.editor().control().AddHistoryObserver(*this);
        note();
        TypingScript script(seed);
        for (; commands_ < commands; ++commands_)
            script.next(window_);
        window_.editor().control().RemoveHistoryObserver(*this);
    }

    /// How many commands had been done, at the most, when the text was this one; -1: never.
    [[nodiscard]] int commandsAt(const QString& text) const {
        for (auto at = texts_.rbegin(); at != texts_.rend(); ++at)
            if (at->first == text)
                return at == texts_.rbegin() ? commands_ : std::prev(at)->second;
        return -1;
    }

  private:
    void note() { texts_.emplace_back(window_.editor().text(), commands_); }
    void actionAdded(const UndoableAction&, bool) override { note(); }
    void stepUndone() override { note(); }
    void stepRedone() override { note(); }

    TypingSession session_;
    MainWindow window_;
    int commands_ = 0;
    std::vector<std::pair<QString, int>> texts_;
};

/// How much of the end of a killed session was lost.
Clock::duration lostByKill(unsigned seed) {
    TypingSession session;
    std::mt19937 random(seed);
    const auto killed = session.runAndKill(seed, static_cast<int>(random() % 2500));
    const int done = session.diary().count;
    EXPECT_GT(done, 0) << "the program did not run";
    const ExpectedTexts expected(seed, std::min(done + 1, TypingDiary::mostCommands));

    MainWindow window(session.services(true));
    EXPECT_TRUE(window.openFile(session.path("a.xml")));
    session.prompts.recoveries += [](const QList<RecoveryOffer>& offers) {
        EXPECT_TRUE(offers[0].isReadable);
        return RecoveryChoice{0, RecoveryAction::Recover};
    };
    window.offerRecovery();
    for (const QString& asked : session.prompts.takeAsked())
        EXPECT_TRUE(asked.startsWith("recover a.xml")) << asked.toStdString();
    const int kept = expected.commandsAt(window.editor().text());
    EXPECT_GE(kept, 0) << "a text that never was: " << window.editor().text().toStdString();
    return kept < 0 || kept >= done ? Clock::duration{} : killed - session.diary().done[kept];
}

/// A second is the promise, and what it is held to when TAVRIN_KILLS sets the number of kills. In a run of
/// all tests at once the program may starve for longer than that.
TEST(KillOffscreen, losesAtMostTheLastSecond) {
    const char* wanted = std::getenv("TAVRIN_KILLS");
    const int kills = wanted ? std::atoi(wanted) : 3;
    const Clock::duration allowed = wanted ? 1s : 4s;
    Clock::duration worst{};
    for (int i = 0; i < kills; ++i) {
        SCOPED_TRACE("seed " + std::to_string(i));
        const Clock::duration lost = lostByKill(static_cast<unsigned>(i));
        EXPECT_LE(lost, allowed);
        worst = std::max(worst, lost);
    }
    std::printf("%d kills, at most %d ms lost\n", kills, static_cast<int>(worst / 1ms));
}

} // namespace
