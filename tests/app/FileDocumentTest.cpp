#include "app/FileDocument.h"

#include "ParsedBuffer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace tavrin;
using namespace tavrin::app;

namespace {

class FileDocumentTest : public testing::Test {
  protected:
    QString path(const QString& name) const { return folder_.filePath(name); }

    QString write(const QString& name, const QByteArray& bytes) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path(name);
    }
    static QByteArray read(const QString& path) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }
    QStringList filesInFolder() const {
        return QDir(folder_.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System);
    }
    void loaded(const QString& path) {
        ASSERT_EQ(document.load(path).status, FileDocument::LoadResult::Done);
    }

    QTemporaryDir folder_;
    ParsedBuffer text;
    FileDocument document{text.buffer};
};

/// Limits how large a file this process may write, as a full disk does, while it lives.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &old_);
        const rlimit limit{bytes, old_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, oldHandler_);
    }

  private:
    rlimit old_{};
    void (*oldHandler_)(int);
};

TEST_F(FileDocumentTest, loadsAndSavesUnderTheSamePath) {
    loaded(write("a.xml", "<a>\r\n\xC3\xA9</a>"));
    EXPECT_EQ(text.text(), "<a>\n\u00E9</a>");
    EXPECT_EQ(document.displayName(), "a.xml");
    text.buffer.insert(0, 0, u' ');
    ASSERT_EQ(document.save(document.path()), std::nullopt);
    EXPECT_EQ(read(path("a.xml")), " <a>\r\n\xC3\xA9</a>");
    EXPECT_EQ(document.diskChange(), DiskChange::None);
    EXPECT_EQ(filesInFolder(), QStringList("a.xml"));
}

TEST_F(FileDocumentTest, aNewTextHasNoFileAndSavesAnywhere) {
    loaded(write("old.xml", "<?xml version='1.0' encoding='iso-8859-1'?><a/>"));
    document.startNew();
    EXPECT_TRUE(document.path().isEmpty());
    EXPECT_EQ(document.diskChange(), DiskChange::None);
    ASSERT_EQ(document.save(path("new.xml")), std::nullopt);
    EXPECT_EQ(document.path(), path("new.xml"));
    EXPECT_EQ(read(path("new.xml")), "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n\n");
}

TEST_F(FileDocumentTest, anEditChangesItsPlaceInTheFileOnly) {
    const QByteArray file("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<a>\xFF</a>\n<b/>\r\n");
    loaded(write("a.xml", file));
    ASSERT_EQ(document.save(document.path()), std::nullopt);
    EXPECT_EQ(read(path("a.xml")), file);
    text.buffer.insert(2, 0, u'x');
    ASSERT_EQ(document.save(document.path()), std::nullopt);
    EXPECT_EQ(read(path("a.xml")), QByteArray(file).replace("<b/>", "x<b/>"));
}

TEST_F(FileDocumentTest, aHardLinkStaysOne) {
    const QString file = write("a.xml", "<a/>\n");
    ASSERT_EQ(::link(QFile::encodeName(file).constData(), QFile::encodeName(path("b.xml")).constData()), 0);
    FileDocument linked(text.buffer, path("state/backups").toStdString());
    ASSERT_EQ(linked.load(file).status, FileDocument::LoadResult::Done);
    text.buffer.insert(0, 0, u'x');
    ASSERT_EQ(linked.save(file), std::nullopt);
    EXPECT_EQ(read(path("b.xml")), "x<a/>\n");
    EXPECT_TRUE(QDir(path("state/backups")).isEmpty());
}

TEST_F(FileDocumentTest, whatCannotBeOpenedIsSaidInWordsAndChangesNothing) {
    loaded(write("good.xml", "<good/>"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    const struct {
        QString path;
        QString says;
    } cases[] = {
        {path("missing.xml"), "No such file"},       {folder_.path(), "is a folder"},
        {path("pipe"), "not an ordinary file"},      {"/dev/zero", "not an ordinary file"},
        {path("good.xml/below"), "Not a directory"}, {QString(), "is a folder"},
    };
    for (const auto& c : cases) {
        const auto result = document.load(c.path);
        EXPECT_EQ(result.status, FileDocument::LoadResult::Failed) << c.path.toStdString();
        EXPECT_TRUE(result.error.contains(c.says)) << result.error.toStdString();
    }
    EXPECT_EQ(text.text(), "<good/>");
    EXPECT_EQ(document.path(), path("good.xml"));
}

TEST_F(FileDocumentTest, anyBytesOpenAndInvalidOnesAreReported) {
    const struct {
        QByteArray bytes;
        QString text;
        std::size_t invalid;
        std::size_t first;
    } cases[] = {
        {"", "", 0, 0},
        {QByteArray("a\0b", 3), QString(QChar('a')) + QChar(0) + 'b', 0, 0},
        {"\xEF\xBB\xBF<a>\xFF</a>", "<a>\uFFFD</a>", 1, 6},
        {"<?xml version='1.0' encoding='utf-8'?>\xC3", "<?xml version='1.0' encoding='utf-8'?>\uFFFD", 1, 38},
        {QByteArray("\xFF\xFE<\0a", 5), "<\uFFFD", 1, 4},
    };
    for (const auto& c : cases) {
        const auto result = document.load(write("case.xml", c.bytes));
        ASSERT_EQ(result.status, FileDocument::LoadResult::Done);
        EXPECT_EQ(text.text(), c.text) << c.bytes.toPercentEncoding().toStdString();
        EXPECT_EQ(result.decoded.invalidCount, c.invalid) << c.bytes.toPercentEncoding().toStdString();
        if (c.invalid > 0) {
            EXPECT_EQ(result.decoded.firstInvalid, c.first) << c.bytes.toPercentEncoding().toStdString();
        }
    }
}

TEST_F(FileDocumentTest, readsFilesWhoseSizeTellsNothing) {
    loaded("/proc/self/status"); // its size is given as 0
    EXPECT_TRUE(text.text().startsWith("Name:"));
}

TEST_F(FileDocumentTest, readingCanBeFollowedAndCancelled) {
    loaded(write("old.xml", "<old/>"));
    const QString large = write("large.xml", QByteArray(9 << 20, 'x'));
    QList<qint64> steps;
    auto result = document.load(large, [&](qint64 done, qint64 total) {
        EXPECT_EQ(total, 9 << 20);
        steps += done;
        return steps.size() < 2;
    });
    EXPECT_EQ(result.status, FileDocument::LoadResult::Cancelled);
    EXPECT_EQ(steps.size(), 2);
    EXPECT_EQ(text.text(), "<old/>");
    EXPECT_EQ(document.path(), path("old.xml"));
    qint64 last = 0;
    result = document.load(large, [&](qint64 done, qint64) {
        EXPECT_GE(done, last);
        last = done;
        return true;
    });
    EXPECT_EQ(result.status, FileDocument::LoadResult::Done);
    EXPECT_EQ(last, 9 << 20);
}

TEST_F(FileDocumentTest, savingKeepsPermissionsAndSymbolicLinks) {
    const QString target = write("target.xml", "<a/>");
    ASSERT_TRUE(QFile::setPermissions(target, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                  QFileDevice::ReadGroup));
    ASSERT_TRUE(QFile::link("target.xml", path("first")));
    ASSERT_TRUE(QFile::link(path("first"), path("second")));
    const auto before = QFileInfo(target).permissions();
    loaded(path("second"));
    text.buffer.insert(0, 0, u' ');
    ASSERT_EQ(document.save(document.path()), std::nullopt);
    EXPECT_EQ(read(target), " <a/>");
    EXPECT_EQ(QFileInfo(target).permissions(), before);
    EXPECT_TRUE(QFileInfo(path("first")).isSymLink());
    EXPECT_TRUE(QFileInfo(path("second")).isSymLink());
    EXPECT_EQ(document.path(), path("second"));
}

TEST_F(FileDocumentTest, savingKeepsTheOwnerWhereTheSystemAllowsIt) {
    const QString file = write("a.xml", "<a/>");
    struct stat before {};
    // Only root may give a file away; for anyone else the owner is the same anyway.
    [[maybe_unused]] const int given = ::chown(QFile::encodeName(file).constData(), 12345, 12346);
    ASSERT_EQ(::stat(QFile::encodeName(file).constData(), &before), 0);
    loaded(file);
    ASSERT_EQ(document.save(file), std::nullopt);
    struct stat after {};
    ASSERT_EQ(::stat(QFile::encodeName(file).constData(), &after), 0);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_EQ(after.st_mode, before.st_mode);
}

TEST_F(FileDocumentTest, aWriteThatFailsMidwayLeavesTheOldFile) {
    const QString file = write("a.xml", "<old/>");
    loaded(file);
    text.setText(QString(3 << 20, 'x'));
    for (const rlim_t limit : {rlim_t(1), rlim_t(1 << 16), rlim_t((3 << 20) - 1)}) {
        const FileSizeLimit full(limit);
        const Failure failure = document.save(file);
        ASSERT_TRUE(failure) << limit;
        EXPECT_TRUE(failure->contains("could not be saved")) << failure->toStdString();
        EXPECT_EQ(read(file), "<old/>");
        EXPECT_EQ(filesInFolder(), QStringList("a.xml"));
    }
    EXPECT_EQ(document.diskChange(), DiskChange::None);
    EXPECT_EQ(document.save(file), std::nullopt);
    EXPECT_EQ(read(file).size(), 3 << 20);
}

TEST_F(FileDocumentTest, whatCannotBeSavedIsSaidInWords) {
    loaded(write("a.xml", "<a/>"));
    ASSERT_TRUE(QDir(folder_.path()).mkdir("closed"));
    QFile::setPermissions(path("closed"), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
    const QString places[] = {
        folder_.path(),      // a folder
        path("none/a.xml"),  // in no folder
        path("a.xml/b.xml"), // in a file
        path("pipe"),        // would be replaced
        "/dev/full",         // would be replaced
        "/proc/a.xml",       // nobody may write there, not even root
    };
    for (const QString& place : places) {
        const Failure failure = document.save(place);
        ASSERT_TRUE(failure) << place.toStdString();
        EXPECT_TRUE(failure->contains(place)) << failure->toStdString();
        EXPECT_EQ(document.path(), path("a.xml"));
    }
    EXPECT_TRUE(QFileInfo("/dev/full").exists());
    EXPECT_FALSE(QFileInfo("/dev/full").isFile());
    if (!QFileInfo(path("closed")).isWritable()) {
        EXPECT_TRUE(document.save(path("closed/a.xml")));
    }
}

TEST_F(FileDocumentTest, savesInTheBuffersEncoding) {
    text.setText("<a>\u0151\U0001F41D</a>");
    const struct {
        int encoding;
        QByteArray bytes;
    } cases[] = {
        {ENCODING_UTF8, "<a>\xC5\x91\xF0\x9F\x90\x9D</a>"},
        {ENCODING_UTF16, QByteArray("\xFF\xFE<\0a\0>\0\x51\x01\x3D\xD8\x1D\xDC<\0/\0a\0>\0", 22)},
        {ENCODING_LATIN2, "<a>\xF5?</a>"},
    };
    for (const auto& c : cases) {
        text.buffer.setEncoding(c.encoding);
        ASSERT_EQ(document.save(path("a.xml")), std::nullopt);
        EXPECT_EQ(read(path("a.xml")), c.bytes) << c.encoding;
    }
}

TEST_F(FileDocumentTest, changesOnDiskAreSeenUntilAcknowledged) {
    const QString file = write("a.xml", "<a/>");
    loaded(file);
    EXPECT_EQ(document.diskChange(), DiskChange::None);
    write("a.xml", "<longer/>");
    EXPECT_EQ(document.diskChange(), DiskChange::Changed);
    document.noteDiskChange();
    EXPECT_EQ(document.newDiskChange(), DiskChange::None);
    EXPECT_NE(document.diskChange(), DiskChange::None);
    document.acceptDiskChange();
    EXPECT_EQ(document.diskChange(), DiskChange::None);
    ASSERT_TRUE(QFile::remove(file));
    EXPECT_EQ(document.diskChange(), DiskChange::Gone);
    document.noteDiskChange();
    EXPECT_EQ(document.newDiskChange(), DiskChange::None);
    EXPECT_NE(document.diskChange(), DiskChange::None);
    document.acceptDiskChange();
    EXPECT_EQ(document.diskChange(), DiskChange::None);
    write("a.xml", "<a/>");
    EXPECT_EQ(document.diskChange(), DiskChange::Changed);
}

} // namespace
