#include "replay/Interpreter.h"

#include <algorithm>
#include <istream>

namespace tavrin::replay {

namespace {

template <class Entry>
const Entry& lookUp(std::span<const Entry> table, std::string_view name, std::string_view kind) {
    const auto entry = std::ranges::find(table, name, &Entry::name);
    if (entry == table.end())
        throw BadLine("unknown " + std::string(kind) + " '" + std::string(name) + "'");
    return *entry;
}

/// Adds how the entry is written to a complaint about its arguments.
template <class Entry, class Run>
void withUsage(std::string_view before, const Entry& entry, Run run) {
    try {
        run();
    } catch (const BadArguments& error) {
        const std::string_view gap = entry.arguments.empty() ? "" : " ";
        throw BadLine(std::string(error.what()) + " (usage: " + std::string(before) +
                      std::string(entry.name) + std::string(gap) + std::string(entry.arguments) + ")");
    }
}

} // namespace

void Interpreter::run(std::istream& script) {
    std::string line;
    for (int number = 1; std::getline(script, line); ++number) {
        if (line.ends_with('\r'))
            line.pop_back();
        try {
            runLine(number, line);
        } catch (const std::exception& error) {
            throw ReplayError(number, error.what());
        }
    }
}

void Interpreter::runLine(int number, std::string_view line) {
    Arguments arguments(line);
    if (arguments.atEnd() || line[line.find_first_not_of(" \t")] == '#')
        return;
    const std::string_view name = arguments.word();
    if (name == "print") {
        print(number, arguments);
    } else if (name == "call") {
        const Command& operation = lookUp(operations(), arguments.word("the operation's name"), "operation");
        withUsage("call ", operation, [&] { operation.run(session_, arguments); });
    } else {
        const Command& command = lookUp(commands(), name, "command");
        withUsage("", command, [&] { command.run(session_, arguments); });
    }
}

void Interpreter::print(int number, Arguments& arguments) {
    const Question& question = lookUp(questions(), arguments.word("what to print"), "word after print");
    json::Writer out;
    withUsage("print ", question, [&] { question.answer(session_, arguments, out); });
    output_(number, out.text());
}

void requirePosition(ReplaySession& session, int line, int col) {
    const Buffer& buffer = session.buffer();
    if (buffer.getLineCount() == 0 && line == 0 && col == 0)
        return;
    requireLine(session, line);
    if (col < 0 || col > buffer.getLineLength(line))
        throw BadLine("line " + std::to_string(line) + " has no column " + std::to_string(col));
}

void requireLine(ReplaySession& session, int line) {
    if (line < 0 || line >= session.buffer().getLineCount())
        throw BadLine("the text has no line " + std::to_string(line));
}

} // namespace tavrin::replay
