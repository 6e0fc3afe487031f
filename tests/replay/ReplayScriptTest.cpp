#include "ScriptCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace tavrin::test {
namespace {

namespace fs = std::filesystem;

/// A fresh folder as the working directory while it lives, with links `files` (what lies beside the scripts)
/// and `samples` in it, so that scripts can load by relative paths and save where they like.
class WorkingFolder {
  public:
    WorkingFolder() : before_(fs::current_path()) {
        std::string pattern = (fs::temp_directory_path() / "tavrin-replay-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("no temporary folder");
        folder_ = pattern;
        fs::create_directory_symlink(fs::path(TAVRIN_REPLAY_SCRIPTS) / "files", folder_ / "files");
        fs::create_directory_symlink(TAVRIN_SAMPLES, folder_ / "samples");
        fs::current_path(folder_);
    }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;
    ~WorkingFolder() {
        fs::current_path(before_);
        fs::remove_all(folder_);
    }

  private:
    fs::path before_;
    fs::path folder_;
};

std::vector<fs::path> scripts() {
    std::vector<fs::path> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(TAVRIN_REPLAY_SCRIPTS))
        if (entry.path().extension() == ".replay")
            found.push_back(entry.path());
    std::ranges::sort(found);
    return found;
}

std::string read(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

class ReplayScript : public testing::TestWithParam<fs::path> {};

TEST_P(ReplayScript, printsWhatItExpects) {
    const WorkingFolder folder;
    replay::ReplaySession session;
    for (const std::string& complaint : checkScript(read(GetParam()), session))
        ADD_FAILURE() << GetParam().filename().string() << " " << complaint;
    session.buffer().checkInvariants();
}

std::string testName(const testing::TestParamInfo<fs::path>& script) {
    std::string name = script.param.stem().string();
    std::ranges::replace_if(
        name, [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Scripts, ReplayScript, testing::ValuesIn(scripts()), testName);

TEST(ScriptCheck, reportsEveryDifference) {
    struct Case {
        std::string_view script;
        std::vector<std::string> complaints;
    };
    const std::vector<Case> cases{
        {"print lines\n#> 0\n", {}},
        {"bogus\n#! unknown command 'bogus'\n", {}},
        {"print lines\n", {"the script expects nothing"}},
        {"print lines\n#> 1\n", {"line 1: print lines\n  expected: #> 1\n  actual:   #> 0"}},
        {"print lines\nprint caret\n#> [0,0]\n",
         {"line 1: print lines\n  expected: nothing\n  actual:   #> 0"}},
        {"focus on\n#> 1\n", {"line 1: focus on\n  expected: #> 1\n  actual:   nothing"}},
        {"print lines\n#> 0\nbogus\nprint lines\n#> 0\n",
         {"line 3: bogus\n  expected: nothing\n  actual:   #! unknown command 'bogus'",
          "line 4: print lines\n  expected: #> 0\n  actual:   nothing"}},
    };
    for (const Case& c : cases) {
        replay::ReplaySession session;
        EXPECT_EQ(checkScript(std::string(c.script), session), c.complaints) << c.script;
    }
}

} // namespace
} // namespace tavrin::test
