#pragma once

#include "replay/Arguments.h"
#include "replay/ReplaySession.h"

#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tavrin::replay {

/// A script that stopped; what() is "line N: reason".
class ReplayError : public std::runtime_error {
  public:
    ReplayError(int line, const std::string& reason)
        : std::runtime_error("line " + std::to_string(line) + ": " + reason), line_(line), reason_(reason) {}
    /// Counted from 1.
    [[nodiscard]] int line() const { return line_; }
    [[nodiscard]] const std::string& reason() const { return reason_; }

  private:
    int line_;
    std::string reason_;
};

/// What a command does to a popup that is up.
enum class OnPopup {
    Closes,  ///< closes it, then runs
    Feeds,   ///< acts on it
    AtPoint, ///< acts on it when its first two arguments are a point that the popup covers, else closes it
};

/// One word that a line may begin with. `run` reads all its arguments before it changes anything, and throws
/// BadLine for what it can't carry out.
struct Command {
    std::string_view name;
    std::string_view arguments; ///< for people: "L C"
    void (*run)(ReplaySession& session, Arguments& arguments);
    OnPopup onPopup = OnPopup::Closes;
};

/// One word that may follow `print`.
struct Question {
    std::string_view name;
    std::string_view arguments;
    void (*answer)(ReplaySession& session, Arguments& arguments, json::Writer& out);
};

/// Every command but `print` and `call`.
[[nodiscard]] std::span<const Command> commands();
/// The operations of `call`.
[[nodiscard]] std::span<const Command> operations();
/// The words of `print`.
[[nodiscard]] std::span<const Question> questions();

/// Runs a script line by line on a session.
class Interpreter {
  public:
    /// Gets each line of output, without its line feed, and the number of the line that printed it.
    using Output = std::function<void(int line, const std::string& json)>;

    Interpreter(ReplaySession& session, Output output) : session_(session), output_(std::move(output)) {}

    /// Reads to the end; throws ReplayError at the first line that can't be carried out. Lines end with LF or
    /// CR LF. A popup that is up at the end is closed.
    ///
    /// A command that shows a popup returns only when the popup has gone. While it is up the platform asks
    /// for input, and gets what is left of a `type` and then the following lines; a line that is not for the
    /// popup closes it and is run when that command has returned.
    void run(std::istream& script);

  private:
    struct Line {
        int number;
        std::string text;
    };

    [[nodiscard]] std::optional<Line> nextLine();
    void runLine(const Line& line);
    void runWords(const Line& line);
    void print(int number, Arguments& arguments);
    /// One input of the user's while a popup is up; false closes it.
    bool playInPopup();
    [[nodiscard]] bool isForPopup(const Line& line) const;

    ReplaySession& session_;
    Output output_;
    std::istream* script_ = nullptr;
    int number_ = 0;
    std::optional<Line> waiting_;        ///< read, but not yet run
    std::optional<ReplayError> failure_; ///< of a line that ran while a popup was up
};

/// Throws BadLine unless the position lies in the text. (0, 0) lies in an empty text.
void requirePosition(ReplaySession& session, int line, int col);
/// Throws BadLine unless the text has the line.
void requireLine(ReplaySession& session, int line);

} // namespace tavrin::replay
