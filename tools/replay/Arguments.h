#pragma once

#include "replay/Json.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace tavrin::replay {

/// A line that can't be carried out; what() is the reason, without the line's number.
class BadLine : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Arguments that are missing, malformed or too many.
class BadArguments : public BadLine {
  public:
    using BadLine::BadLine;
};

/// The words of one line, read from left to right. What is missing or malformed throws BadArguments.
class Arguments {
  public:
    explicit Arguments(std::string_view line) : rest_(line) { skipBlanks(); }

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }
    /// Up to the next blank.
    std::string_view word();
    /// Up to the next blank; `what` names it in the message when there is none.
    std::string_view word(std::string_view what);
    int integer(std::string_view what);
    /// An integer from `low` to `high`, both included.
    int integer(std::string_view what, int low, int high);
    /// `true` or `false`.
    bool truth(std::string_view what);
    /// A JSON string.
    std::u16string string(std::string_view what);
    /// A JSON string or a bare word.
    std::u16string stringOrWord(std::string_view what);
    /// The same, but a quotation mark alone is itself a word: the key of that character.
    std::u16string keyName(std::string_view what);
    /// A JSON string, or all that is left of the line, blanks at its end apart.
    std::u16string rest(std::string_view what);
    /// `on` or `off`.
    bool onOrOff();
    /// A JSON string, integer or boolean.
    json::Scalar scalar(std::string_view what);
    /// Throws when something is left.
    void finish() const;

  private:
    void skipBlanks();
    std::u16string bareWord(std::string_view what);
    /// Runs `read` on an argument that must be there; names it in what goes wrong.
    template <class Read>
    auto readJson(std::string_view what, Read read);
    /// Takes a JSON value, which a blank or the end of the line must follow.
    template <class Take>
    auto takeValue(std::string_view what, Take take);

    std::string_view rest_;
};

} // namespace tavrin::replay
