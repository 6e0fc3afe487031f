#include "files/FileReplacement.h"

#include "files/FaultInjection.h"
#include "files/PosixFile.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tavrin {
namespace {

namespace fs = std::filesystem;
using test::Fault;
using test::FaultInjection;

std::string contentsOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void put(const fs::path& file, const std::string& contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

/// How the save finds its file.
enum class Kind { fresh, plain, symbolicLink, danglingLink, hardLink };

class FileReplacementTest : public testing::Test {
  protected:
    FileReplacementTest() {
        std::string name = (fs::temp_directory_path() / "tavrin-save-XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
        startAgain(Kind::plain);
    }
    ~FileReplacementTest() override { fs::remove_all(folder_); }

    /// Nothing in the folder but a file of that kind with the old contents.
    void startAgain(Kind kind) {
        for (const auto& entry : fs::directory_iterator(folder_))
            fs::remove_all(entry.path());
        file = real = folder_ / "a.xml";
        if (kind == Kind::symbolicLink || kind == Kind::danglingLink) {
            fs::create_directory(folder_ / "deep");
            real = folder_ / "deep" / "b.xml";
            fs::create_symlink("deep/b.xml", file);
        }
        if (kind != Kind::fresh && kind != Kind::danglingLink)
            put(real, old);
        if (kind == Kind::hardLink)
            fs::create_hard_link(real, folder_ / "other.xml");
    }

    [[nodiscard]] FileReplacement saver() const { return FileReplacement(folder_ / "state" / "backups"); }
    [[nodiscard]] auto save() const {
        return saver().replace(file, [this](const ByteSink& sink) {
            const std::string_view all = fresh;
            const std::string_view parts[] = {all.substr(0, 7), {}, all.substr(7, 5), all.substr(12, 1)};
            return sink(parts) && sink(all.substr(13));
        });
    }
    [[nodiscard]] int filesIn(const fs::path& where) const {
        return fs::exists(where) ? static_cast<int>(std::distance(fs::directory_iterator(where), {})) : 0;
    }

    const std::string old = "<old>what was there, and longer than the new</old>";
    const std::string fresh = "<new>what shall be there" + std::string(70'000, ' ') + "</new>";
    fs::path folder_;
    fs::path file; ///< the path that is saved to
    fs::path real; ///< the file that it means
};

const Kind allKinds[] = {Kind::fresh, Kind::plain, Kind::symbolicLink, Kind::danglingLink, Kind::hardLink};

TEST_F(FileReplacementTest, carriesOverWhatBelongsToTheFile) {
    for (const Kind kind : allKinds) {
        SCOPED_TRACE(static_cast<int>(kind));
        startAgain(kind);
        const bool isThere = fs::exists(real);
        if (isThere)
            fs::permissions(real, fs::perms(0640));
        EXPECT_FALSE(save());
        EXPECT_EQ(contentsOf(real), fresh);
        if (isThere) {
            EXPECT_EQ(fs::status(real).permissions(), fs::perms(0640));
        }
        EXPECT_EQ(fs::is_symlink(file), kind == Kind::symbolicLink || kind == Kind::danglingLink);
        if (kind == Kind::hardLink) {
            EXPECT_EQ(contentsOf(folder_ / "other.xml"), fresh);
        }
        EXPECT_EQ(filesIn(real.parent_path()), kind == Kind::hardLink ? 3 : 1) << "nothing is left behind";
        EXPECT_EQ(filesIn(folder_ / "state" / "backups"), 0);
    }
}

TEST_F(FileReplacementTest, refusesWhatIsNotTheUsersToReplace) {
    fs::remove(file);
    fs::create_symlink("a.xml", file);
    EXPECT_NE(save().value().what.find("symbolic link"), std::string::npos);
    fs::remove(file);
    ::mkfifo(file.c_str(), 0600);
    EXPECT_EQ(save().value().what, "it is not an ordinary file: Invalid argument");
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_TRUE(save());
    file = folder_ / "no" / "such" / "folder.xml";
    EXPECT_EQ(save().value().reason, std::errc::no_such_file_or_directory);
    if (::geteuid() != 0) {
        startAgain(Kind::plain);
        fs::permissions(file, fs::perms(0444));
        EXPECT_EQ(save().value().what, "the file may not be written: Permission denied");
    }
}

TEST_F(FileReplacementTest, takesThePlaceOfWhatAKilledSaveLeft) {
    for (const Kind kind : {Kind::fresh, Kind::plain}) {
        startAgain(Kind::fresh);
        EXPECT_FALSE(save());
        const fs::perms mode = fs::status(file).permissions();
        startAgain(kind);
        const fs::path left = folder_ / ".a.xml.saving";
        put(left, "half of a file that was cut off long ago, longer than what is saved now");
        fs::permissions(left, fs::perms(0600));
        EXPECT_FALSE(save());
        EXPECT_EQ(contentsOf(file), fresh);
        EXPECT_EQ(fs::status(file).permissions(), mode) << "not those of what was left";
        EXPECT_EQ(filesIn(folder_), 1);
    }
}

TEST_F(FileReplacementTest, goesRoundWhatAnotherSaveIsWriting) {
    const fs::path busy = folder_ / ".a.xml.saving";
    put(busy, "half");
    PosixFile writer;
    ASSERT_TRUE(!writer.open(busy, O_WRONLY) && writer.lock());
    EXPECT_FALSE(save());
    EXPECT_EQ(contentsOf(file), fresh);
    EXPECT_EQ(contentsOf(busy), "half");
    EXPECT_EQ(filesIn(folder_), 2);
}

TEST_F(FileReplacementTest, aNewFileHasThePermissionsThatTheUserWants) {
    for (const mode_t mask : {0022U, 0077U, 0002U}) {
        startAgain(Kind::fresh);
        const mode_t before = ::umask(mask);
        EXPECT_FALSE(save());
        ::umask(before);
        EXPECT_EQ(fs::status(file).permissions(), fs::perms(0666U & ~mask));
    }
}

TEST_F(FileReplacementTest, writesAnyNumberOfPartsInOrder) {
    std::string all;
    for (int i = 0; i < 1000; ++i)
        all += std::to_string(i);
    for (const std::size_t step : {1U, 7U, 45U}) {
        std::vector<std::string_view> parts;
        for (std::size_t at = 0; at < all.size(); at += step) {
            parts.push_back(std::string_view(all).substr(at, step));
            if (at % 3 == 0)
                parts.emplace_back();
        }
        for (int at = 0; at < 12; ++at) {
            const FaultInjection injection(Fault::shortWrite, at, true);
            EXPECT_FALSE(saver().replace(file, [&](const ByteSink& sink) { return sink(parts); }));
            EXPECT_EQ(contentsOf(file), all) << "parts of " << step;
        }
    }
}

// Every call of the system during a save fails in turn, once or from then on.
TEST_F(FileReplacementTest, afterAnyFailureTheFileIsTheOldOrTheNewOne) {
    for (const Kind kind : allKinds) {
        for (const Fault fault : {Fault::noSpace, Fault::ioError, Fault::shortWrite, Fault::interrupted}) {
            for (const bool stays : {false, true}) {
                for (int at = 0, calls = 1; at < calls; ++at) {
                    startAgain(kind);
                    const bool wasThere = fs::exists(real);
                    FaultInjection injection(fault, at, stays);
                    const auto failure = save();
                    calls = injection.calls();
                    SCOPED_TRACE(testing::Message()
                                 << "kind " << static_cast<int>(kind) << ", fault " << static_cast<int>(fault)
                                 << " at call " << at << (stays ? " and later" : ""));
                    const std::string now = contentsOf(real);
                    const bool isOld = now == old || (!wasThere && !fs::exists(real));
                    if (!failure)
                        EXPECT_EQ(now, fresh);
                    else if (failure->backup.empty())
                        EXPECT_TRUE(isOld || now == fresh) << now << ", told: " << failure->what;
                    else
                        EXPECT_EQ(contentsOf(failure->backup), old);
                    if (fault == Fault::shortWrite || fault == Fault::interrupted) {
                        EXPECT_TRUE(!failure) << failure->what;
                    }
                }
            }
        }
    }
}

// The process is killed before and after every call; what the next start finds decides.
TEST_F(FileReplacementTest, afterAKillTheFileOrItsBackupIsWhole) {
    int offered = 0;
    for (const Kind kind : allKinds) {
        for (const Fault fault : {Fault::killedBefore, Fault::killedAfter}) {
            bool killed = true;
            for (int at = 0; killed; ++at) {
                ASSERT_LT(at, 200);
                startAgain(kind);
                const bool wasThere = fs::exists(real);
                killed = !test::survives([&] {
                    FaultInjection injection(fault, at);
                    static_cast<void>(save());
                });
                SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(kind) << ", fault "
                                                << static_cast<int>(fault) << " at call " << at);
                const auto interrupted = saver().interruptedSaves();
                if (!interrupted.empty()) {
                    ++offered;
                    ASSERT_EQ(interrupted.size(), 1u);
                    EXPECT_TRUE(fs::equivalent(interrupted[0].file, real));
                    EXPECT_EQ(contentsOf(interrupted[0].backup), old);
                    EXPECT_FALSE(saver().restore(interrupted[0]));
                    EXPECT_EQ(contentsOf(real), old);
                    EXPECT_TRUE(saver().interruptedSaves().empty());
                }
                const std::string now = contentsOf(real);
                EXPECT_TRUE(now == fresh || now == old || (!wasThere && !fs::exists(real))) << now;
                EXPECT_FALSE(save()) << "what was left is in nobody's way";
                EXPECT_EQ(contentsOf(real), fresh);
            }
        }
    }
    EXPECT_GT(offered, 0);
}

TEST_F(FileReplacementTest, leavesAloneWhatAnotherProgramIsWriting) {
    startAgain(Kind::hardLink);
    bool looked = false;
    const auto result = saver().replace(file, [&](const ByteSink& sink) {
        looked |= fs::exists(folder_ / "state" / "backups");
        // Seen from another program, since a lock of one's own is no obstacle.
        const bool isAlone = test::survives([&] {
            if (!saver().interruptedSaves().empty())
                ::_exit(1);
        });
        return isAlone && sink(fresh);
    });
    EXPECT_FALSE(result);
    EXPECT_TRUE(looked);
    EXPECT_EQ(contentsOf(real), fresh);
}

TEST_F(FileReplacementTest, aConditionThatFailsAtTheLastMomentLeavesEverythingAsItWas) {
    for (const Kind kind : {Kind::plain, Kind::symbolicLink, Kind::hardLink}) {
        startAgain(kind);
        const int files = filesIn(real.parent_path());
        const auto save = [&](bool isWanted) {
            return saver().replace(
                file, [](const ByteSink& sink) { return sink("fresh"); }, [&] { return isWanted; });
        };
        const auto failure = save(false);
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->reason, std::errc::operation_canceled);
        EXPECT_TRUE(failure->backup.empty());
        EXPECT_EQ(contentsOf(real), old);
        EXPECT_TRUE(saver().interruptedSaves().empty());
        if (kind != Kind::hardLink) {
            EXPECT_EQ(filesIn(real.parent_path()), files);
        }
        EXPECT_FALSE(save(true));
        EXPECT_EQ(contentsOf(real), "fresh");
    }
}

} // namespace
} // namespace tavrin
