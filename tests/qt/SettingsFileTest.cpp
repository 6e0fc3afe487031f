#include "QtFixture.h"
#include "platform/qt/SettingsFormat.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavrin::qt {
namespace {

/// While one lives, writes end after so many bytes of a file, as on a disk that is full.
class ShortDisk {
  public:
    explicit ShortDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ShortDisk(const ShortDisk&) = delete;
    ShortDisk& operator=(const ShortDisk&) = delete;
    ~ShortDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

  private:
    rlimit before_{};
    void (*handler_)(int);
};

/// While one lives, permissions count even where the tests run as root.
class OrdinaryUser {
  public:
    OrdinaryUser() : root_(geteuid() == 0 && setresuid(nobody, nobody, 0) == 0) {}
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() {
        if (root_ && setresuid(0, 0, 0) != 0)
            ADD_FAILURE() << "still another user";
    }
    static constexpr uid_t nobody = 65534;

  private:
    bool root_;
};

class SettingsFileTest : public testing::Test {
  protected:
    [[nodiscard]] QString file() const { return folder_.filePath("settings.ini"); }
    [[nodiscard]] QByteArray content(const QString& name = "settings.ini") const {
        QFile stored(folder_.filePath(name));
        return stored.open(QIODevice::ReadOnly) ? stored.readAll() : QByteArray();
    }
    void write(const QByteArray& text) {
        QFile stored(file());
        ASSERT_TRUE(stored.open(QIODevice::WriteOnly));
        ASSERT_EQ(stored.write(text), text.size());
    }
    /// Gives the file a time so many seconds ahead.
    void touch(int seconds) {
        QFile stored(file());
        ASSERT_TRUE(stored.open(QIODevice::ReadWrite));
        ASSERT_TRUE(stored.setFileTime(QDateTime::currentDateTime().addSecs(seconds),
                                       QFileDevice::FileModificationTime));
    }
    /// Sets one value in a platform of its own, which then ends.
    void set(const char* key, int value) {
        QtPlatform platform(file());
        platform.settings().setIntValue("Xml Editor", key, value);
    }
    [[nodiscard]] QStringList entries() const {
        return QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden);
    }
    static int stored(QtPlatform& platform, const char* key) {
        return platform.settings().getIntValue("Xml Editor", key, -1);
    }

    QTemporaryDir folder_;
};

TEST_F(SettingsFileTest, aWriteThatTheDiskCutsShortLeavesTheFileAsItWas) {
    {
        QtPlatform platform(file());
        platform.settings().setStringValue("Xml Editor", "Font Family", std::u16string(40000, u'x'));
    }
    const QByteArray before = content();
    ASSERT_GT(before.size(), 40000);
    for (const rlim_t limit : {0, 1, 100, 16384, 20000, 39999, 40031}) {
        QStringList problems;
        QtPlatform platform(file());
        platform.setSettingsReporter([&](const QString& problem) { problems += problem; });
        {
            const ShortDisk disk(limit);
            for (int size : {10, 11}) {
                platform.settings().setIntValue("Xml Editor", "Font Size", size);
                QApplication::processEvents();
            }
        }
        EXPECT_EQ(content(), before) << limit;
        EXPECT_EQ(stored(platform, "Font Size"), 11) << "holds until the end";
        ASSERT_EQ(problems.size(), 1) << "said once";
        EXPECT_TRUE(problems[0].contains(file()) && problems[0].contains("could not be saved"))
            << problems[0].toStdString();
        // There is room again: nothing is lost.
        platform.settings().setIntValue("Xml Editor", "Font Size", 12);
        QApplication::processEvents();
        EXPECT_GT(content().size(), before.size()) << limit;
        write(before);
    }
    EXPECT_EQ(entries(), QStringList("settings.ini")) << "nothing is left behind";
}

TEST_F(SettingsFileTest, whatAKilledProgramLeftBehindDoesNotHinder) {
    set("Font Size", 10);
    QFile torso(folder_.filePath("settings.ini.AbCdEf")); // a new file that never came into place
    ASSERT_TRUE(torso.open(QIODevice::WriteOnly));
    torso.write("[Xml%20Ed");
    QFile lock(file() + ".lock"); // of a process that is gone
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.write("999999999\ntavrin-xml-editor\n\n\n\n");
    lock.close();
    set("Tab Size", 2);
    QtPlatform platform(file());
    EXPECT_EQ(stored(platform, "Font Size"), 10);
    EXPECT_EQ(stored(platform, "Tab Size"), 2);
}

TEST_F(SettingsFileTest, aFileThatMayNotBeWrittenIsReportedOnce) {
    set("Font Size", 10);
    ASSERT_EQ(chmod(file().toLocal8Bit().constData(), 0444), 0);
    const QByteArray folder = folder_.path().toLocal8Bit();
    ASSERT_TRUE(geteuid() != 0 || chown(folder.constData(), OrdinaryUser::nobody, -1) == 0);
    const QByteArray before = content();
    QStringList problems;
    {
        const OrdinaryUser user;
        QtPlatform platform(file());
        platform.setSettingsReporter([&](const QString& problem) { problems += problem; });
        for (int size : {11, 12, 13}) {
            platform.settings().setIntValue("Xml Editor", "Font Size", size);
            QApplication::processEvents();
        }
        EXPECT_EQ(stored(platform, "Font Size"), 13);
    }
    EXPECT_EQ(problems, QStringList("Settings could not be saved in “" + file() +
                                    "”: the file may not be written to. They hold until the program ends."));
    EXPECT_EQ(content(), before);
}

TEST_F(SettingsFileTest, aDamagedFileIsKeptAsideAndTheDefaultsApply) {
    const QByteArray damages[] = {
        "\x01\x02[[[ not a settings file\n====\n",
        "[Xml%20Editor]\nFont%20Size=12\nFont%20Fam",
        "[Xml%20Editor]\nFont%20Size=12\n[Wind",
        QByteArray(300, '\0'),
    };
    int kept = 0;
    for (const QByteArray& damage : damages) {
        const QString aside =
            ++kept == 1 ? QString("settings.ini.damaged") : QString("settings.ini.damaged-%1").arg(kept);
        for (int run = 0; run < 2; ++run) { // the second finds it kept already
            write(damage);
            touch(60 * (2 * kept + run)); // one process reads a file again only when its time has changed
            QStringList problems;
            QtPlatform platform(file());
            EXPECT_EQ(stored(platform, "Font Size"), -1);
            platform.setSettingsReporter([&](const QString& problem) { problems += problem; });
            ASSERT_EQ(problems.size(), 1) << kept << " run " << run;
            EXPECT_TRUE(problems[0].contains("damaged") && problems[0].contains(aside))
                << problems[0].toStdString();
            EXPECT_EQ(content(aside), damage);
            EXPECT_EQ(entries().size(), 1 + kept);
        }
        set("Tab Size", 3);
        QStringList problems;
        QtPlatform platform(file());
        platform.setSettingsReporter([&](const QString& problem) { problems += problem; });
        EXPECT_EQ(stored(platform, "Tab Size"), 3);
        EXPECT_EQ(problems, QStringList());
        EXPECT_EQ(content(aside), damage);
    }
}

TEST_F(SettingsFileTest, aDamagedFileThatCanNotBeKeptIsNotWritten) {
    const QByteArray damage = "[Xml%20Editor]\nFont%20Size=12\nrubbish";
    write(damage);
    QStringList problems;
    {
        const ShortDisk disk(20);
        QtPlatform platform(file());
        platform.setSettingsReporter([&](const QString& problem) { problems += problem; });
        EXPECT_EQ(problems.size(), 1);
        EXPECT_EQ(stored(platform, "Font Size"), -1);
        platform.settings().setIntValue("Xml Editor", "Font Size", 11);
        QApplication::processEvents();
    }
    EXPECT_EQ(content(), damage);
    EXPECT_EQ(problems.size(), 2);
}

TEST_F(SettingsFileTest, twoProgramsKeepEachOthersValues) {
    QtPlatform first(file());
    QSettings second(file(), QSettings::IniFormat);
    second.setValue("Window/Recent Files", QStringList{"/a b.xml", "/ä,\"=.xml"});
    second.setValue("Window/Place", QByteArray("\x00\xFF\n;", 4));
    second.sync();
    first.settings().setIntValue("Xml Editor", "Font Size", 11);
    QApplication::processEvents();
    QSettings reader(file(), QSettings::IniFormat);
    EXPECT_EQ(reader.value("Window/Recent Files").toStringList(), (QStringList{"/a b.xml", "/ä,\"=.xml"}));
    EXPECT_EQ(reader.value("Window/Place").toByteArray(), QByteArray("\x00\xFF\n;", 4));
    EXPECT_EQ(reader.value("Xml Editor/Font Size").toInt(), 11);
}

} // namespace
} // namespace tavrin::qt
