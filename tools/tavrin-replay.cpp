#include "replay/Interpreter.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr int exitBad = 2;
constexpr int largestSize = 1'000'000; // pixels

constexpr std::string_view usage =
    "usage: tavrin-replay [--size WxH] [SCRIPT]\n"
    "Drives the editor control from a script, one command a line, without a window system.\n"
    "Reads standard input without SCRIPT; WxH is the client area in pixels (800x480).\n";

struct Options {
    tavrin::CSize client = tavrin::replay::defaultClientSize;
    std::optional<std::string> script;
};

std::optional<tavrin::CSize> parseSize(std::string_view text) {
    const std::size_t cross = text.find('x');
    if (cross == std::string_view::npos)
        return std::nullopt;
    const auto width = tavrin::json::toInteger(text.substr(0, cross));
    const auto height = tavrin::json::toInteger(text.substr(cross + 1));
    if (!width || !height || *width < 0 || *height < 0 || *width > largestSize || *height > largestSize)
        return std::nullopt;
    return tavrin::CSize{*width, *height};
}

/// Nothing when the arguments make no sense.
std::optional<Options> parseOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--size" && i + 1 < argc) {
            const auto size = parseSize(argv[++i]);
            if (!size)
                return std::nullopt;
            options.client = *size;
        } else if (argument.starts_with("-") || options.script) {
            return std::nullopt;
        } else {
            options.script = argument;
        }
    }
    return options;
}

int run(const Options& options) {
    std::ifstream file;
    if (options.script) {
        file.open(*options.script);
        if (!file) {
            std::cerr << "tavrin-replay: can't open '" << *options.script << "'\n";
            return exitBad;
        }
    }
    tavrin::replay::ReplaySession session(options.client);
    tavrin::replay::Interpreter interpreter(session,
                                            [](int, const std::string& json) { std::cout << json << '\n'; });
    try {
        interpreter.run(options.script ? file : std::cin);
    } catch (const tavrin::replay::ReplayError& error) {
        std::cout.flush();
        std::cerr << error.what() << '\n';
        return exitBad;
    }
    std::cout.flush();
    if (file.bad()) {
        std::cerr << "tavrin-replay: can't read '" << *options.script << "'\n";
        return exitBad;
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--help") {
        std::cout << usage;
        return EXIT_SUCCESS;
    }
    const auto options = parseOptions(argc, argv);
    if (!options) {
        std::cerr << usage;
        return exitBad;
    }
    std::ios::sync_with_stdio(false);
    return run(*options);
}
