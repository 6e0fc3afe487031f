#include "replay/Interpreter.h"

#include <algorithm>
#include <istream>
#include <utility>

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

/// Plays the user of popups while it lives.
class PopupUser {
  public:
    PopupUser(HeadlessPlatform& platform, std::function<bool()> play) : platform_(platform) {
        platform_.setPopupUser(std::move(play));
    }
    PopupUser(const PopupUser&) = delete;
    PopupUser& operator=(const PopupUser&) = delete;
    ~PopupUser() { platform_.setPopupUser({}); }

  private:
    HeadlessPlatform& platform_;
};

/// Nothing but blanks, or a comment.
bool isIdle(std::string_view line) {
    const std::size_t first = line.find_first_not_of(" \t");
    return first == line.npos || line[first] == '#';
}

} // namespace

void Interpreter::run(std::istream& script) {
    script_ = &script;
    number_ = 0;
    waiting_.reset();
    failure_.reset();
    const PopupUser user(session_.platform(), [this] { return playInPopup(); });
    while (const auto line = nextLine()) {
        runLine(*line);
        if (failure_)
            throw ReplayError(*failure_);
    }
}

std::optional<Interpreter::Line> Interpreter::nextLine() {
    if (waiting_)
        return std::exchange(waiting_, std::nullopt);
    Line line{++number_, {}};
    if (!std::getline(*script_, line.text))
        return std::nullopt;
    if (line.text.ends_with('\r'))
        line.text.pop_back();
    return line;
}

bool Interpreter::playInPopup() {
    if (session_.typeNext())
        return true;
    auto line = nextLine();
    if (!line)
        return false;
    if (!isForPopup(*line)) {
        waiting_ = std::move(line);
        return false;
    }
    try {
        runLine(*line);
    } catch (const ReplayError& error) { // must not pass through the window that runs the popup
        failure_ = error;
        return false;
    }
    return true;
}

bool Interpreter::isForPopup(const Line& line) const {
    Arguments arguments(line.text);
    if (isIdle(line.text))
        return true;
    const std::string_view name = arguments.word();
    if (name == "print")
        return true;
    const auto command = std::ranges::find(commands(), name, &Command::name);
    if (command == commands().end() || command->onPopup == OnPopup::Closes)
        return false;
    if (command->onPopup == OnPopup::Feeds)
        return true;
    try {
        const int x = arguments.integer("x");
        const CPoint point{x, arguments.integer("y")};
        return session_.platform().isOverPopup(session_.window(), point);
    } catch (const BadArguments&) {
        return false; // it will be said when the line runs
    }
}

void Interpreter::runLine(const Line& line) {
    try {
        runWords(line);
    } catch (const std::exception& error) {
        session_.dropTyped();
        throw ReplayError(line.number, error.what());
    }
}

void Interpreter::runWords(const Line& line) {
    if (isIdle(line.text))
        return;
    Arguments arguments(line.text);
    const std::string_view name = arguments.word();
    if (name == "print") {
        print(line.number, arguments);
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
