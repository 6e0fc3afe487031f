// Any script runs to its end or stops with a reason; undoing everything restores the text from before.

#include "FuzzTarget.h"
#include "replay/Interpreter.h"
#include "replay/ReplaySession.h"

#include <array>
#include <sstream>
#include <string>

using namespace tavrin;

namespace {

/// Scripts of a fuzzer must not touch files.
bool namesFile(const std::string& line) {
    static constexpr std::array words = {"open", "save", "schema", "load"};
    for (const char* word : words)
        if (line.find(word) != std::string::npos)
            return true;
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream input(
        std::string(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 8192)));
    replay::ReplaySession session;
    replay::Interpreter interpreter(session, [](int, const std::string&) {});
    for (std::string line; std::getline(input, line);) {
        if (namesFile(line))
            continue;
        std::istringstream one(line);
        try {
            interpreter.run(one);
        } catch (const replay::ReplayError&) {
            // a line that can't be carried out; the next one may
        }
        session.buffer().checkInvariants();
    }
    return 0;
}
