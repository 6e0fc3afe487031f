#include "files/FileClaim.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <unistd.h>

namespace tavrin {
namespace {

namespace fs = std::filesystem;

class FileClaimTest : public testing::Test {
  protected:
    FileClaimTest() {
        std::string name = (fs::temp_directory_path() / "tavrin-claim-XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
        std::ofstream(folder_ / "a.xml") << "<a/>";
    }
    ~FileClaimTest() override { fs::remove_all(folder_); }

    [[nodiscard]] fs::path file(const char* name) const { return folder_ / name; }
    [[nodiscard]] fs::path locks() const { return folder_ / "state" / "open"; }

    fs::path folder_;
};

TEST_F(FileClaimTest, isSeenByOthersWhateverPathLeadsToTheFile) {
    fs::create_symlink("a.xml", file("symbolic.xml"));
    FileClaim mine(locks());
    const FileClaim other(locks());
    EXPECT_FALSE(other.isHeldByOthers(file("a.xml")));
    mine.claim(file("a.xml"));
    EXPECT_FALSE(mine.isHeldByOthers(file("a.xml")));
    for (const char* name : {"a.xml", "symbolic.xml", "./a.xml"})
        EXPECT_TRUE(other.isHeldByOthers(file(name))) << name;
    fs::rename(file("a.xml"), file("old"));
    std::ofstream(file("a.xml")) << "saved as a new file";
    EXPECT_TRUE(other.isHeldByOthers(file("a.xml")));
    fs::create_hard_link(file("a.xml"), file("hard.xml"));
    mine.claim(file("a.xml")); // what tells it now is not its path any more
    EXPECT_TRUE(other.isHeldByOthers(file("hard.xml")));
    mine.claim(file("not there yet.xml"));
    EXPECT_FALSE(other.isHeldByOthers(file("a.xml")));
    EXPECT_TRUE(other.isHeldByOthers(file("not there yet.xml")));
}

TEST_F(FileClaimTest, goesWithItsOwnerAndPassesOn) {
    FileClaim second(locks());
    {
        FileClaim first(locks());
        first.claim(file("a.xml"));
        second.claim(file("a.xml"));
        EXPECT_FALSE(first.isHeldByOthers(file("a.xml"))) << "the second got none";
    }
    EXPECT_FALSE(second.isHeldByOthers(file("a.xml")));
    EXPECT_TRUE(fs::is_empty(locks()));
    std::ofstream(locks() / "left by a killed program.open");
    second.claim(file("a.xml"));
    EXPECT_TRUE(FileClaim(locks()).isHeldByOthers(file("a.xml")));
    second.claim({});
    FileClaim nowhere{fs::path()};
    nowhere.claim(file("a.xml"));
    EXPECT_FALSE(nowhere.isHeldByOthers(file("a.xml")));
}

} // namespace
} // namespace tavrin
