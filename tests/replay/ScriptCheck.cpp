#include "ScriptCheck.h"

#include "replay/Interpreter.h"

#include <map>
#include <optional>
#include <sstream>

namespace tavrin::test {

namespace {

constexpr std::string_view outputMark = "#> ";
constexpr std::string_view errorMark = "#! ";

/// What a line of the script gives, or should give.
struct Result {
    std::optional<std::string> output;
    std::optional<std::string> error;

    friend bool operator==(const Result&, const Result&) = default;
};

std::vector<std::string> splitLines(const std::string& script) {
    std::vector<std::string> lines;
    std::istringstream in(script);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

/// By line number, counted from 1. An expectation belongs to the line just before it.
std::map<int, Result> expectedResults(const std::vector<std::string>& lines) {
    std::map<int, Result> expected;
    for (int number = 2; number <= static_cast<int>(lines.size()); ++number) {
        const std::string_view line = lines[static_cast<std::size_t>(number - 1)];
        if (line.starts_with(outputMark))
            expected[number - 1].output = line.substr(outputMark.size());
        else if (line.starts_with(errorMark))
            expected[number - 1].error = line.substr(errorMark.size());
    }
    return expected;
}

std::map<int, Result> actualResults(const std::string& script, replay::ReplaySession& session) {
    std::map<int, Result> actual;
    replay::Interpreter interpreter(session,
                                    [&](int line, const std::string& json) { actual[line].output = json; });
    std::istringstream in(script);
    try {
        interpreter.run(in);
    } catch (const replay::ReplayError& error) {
        actual[error.line()].error = error.reason();
    }
    return actual;
}

std::string describe(const Result& result) {
    std::string text;
    if (result.output)
        text += std::string(outputMark) + *result.output;
    if (result.error)
        text += std::string(errorMark) + *result.error;
    return text.empty() ? "nothing" : text;
}

} // namespace

std::vector<std::string> checkScript(const std::string& script, replay::ReplaySession& session) {
    const std::vector<std::string> lines = splitLines(script);
    std::map<int, Result> expected = expectedResults(lines);
    if (expected.empty())
        return {"the script expects nothing"};
    std::map<int, Result> actual = actualResults(script, session);

    std::map<int, Result> either = expected;
    either.insert(actual.begin(), actual.end());
    std::vector<std::string> complaints;
    for (const auto& [number, ignored] : either)
        if (expected[number] != actual[number])
            complaints.push_back(
                "line " + std::to_string(number) + ": " + lines[static_cast<std::size_t>(number - 1)] +
                "\n  expected: " + describe(expected[number]) + "\n  actual:   " + describe(actual[number]));
    return complaints;
}

} // namespace tavrin::test
