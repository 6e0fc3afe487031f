#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <string_view>
#include <sys/wait.h>

namespace tavrin::test {
namespace {

struct Outcome {
    std::string output; ///< standard output, then standard error, as they arrived
    int status = -1;
};

/// Runs the tool with a script on its standard input; both outputs go into one pipe.
Outcome run(const std::string& arguments, const std::string& script) {
    const std::string command =
        "printf '" + script + "' | '" TAVRIN_REPLAY_PROGRAM "' " + arguments + " 2>&1";
    Outcome outcome;
    std::FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return outcome;
    std::array<char, 4096> block{};
    for (std::size_t got; (got = std::fread(block.data(), 1, block.size(), pipe)) > 0;)
        outcome.output.append(block.data(), got);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

TEST(ReplayTool, printsEverythingBeforeItsErrorAndSaysHowItEnded) {
    struct Case {
        std::string_view arguments;
        std::string_view script;
        std::string_view output;
        int status;
    };
    for (const Case& c : {
             Case{"", "", "", 0},
             Case{"", "print lines\\n", "0\n", 0},
             Case{"--size 90x32", "call redraw\\nprint invalid\\n", "[[0,0,90,32]]\n", 0},
             Case{"", "print lines\\nprint caret\\nbad\\nprint lines\\n",
                  "0\n[0,0]\nline 3: unknown command 'bad'\n", 2},
             Case{"no/such/script", "", "tavrin-replay: can't open 'no/such/script'\n", 2},
             Case{"/", "", "tavrin-replay: can't read '/'\n", 2},
         }) {
        const Outcome outcome = run(std::string(c.arguments), std::string(c.script));
        EXPECT_EQ(outcome.output, c.output) << c.arguments << " " << c.script;
        EXPECT_EQ(outcome.status, c.status) << c.arguments << " " << c.script;
    }
}

TEST(ReplayTool, refusesOptionsThatMakeNoSense) {
    for (const std::string arguments :
         {"--size", "--size 8", "--size 8x", "--size -1x5", "--size 8x9x", "--other", "one two"}) {
        const Outcome outcome = run(arguments, "");
        EXPECT_TRUE(outcome.output.starts_with("usage: ")) << arguments << ": " << outcome.output;
        EXPECT_EQ(outcome.status, 2) << arguments;
    }
}

} // namespace
} // namespace tavrin::test
