#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace tavrin {

/// Base of the errors that the component raises itself: a message and the place it speaks of.
class Exception : public std::runtime_error {
  public:
    Exception(const std::string& message, std::string source, int line)
        : std::runtime_error(message), source_(std::move(source)), line_(line) {}

    [[nodiscard]] const std::string& source() const noexcept { return source_; }
    [[nodiscard]] int line() const noexcept { return line_; }

  private:
    std::string source_;
    int line_;
};

/// Raised by an empty SmartPtr that is dereferenced.
class NullPointerException : public Exception {
  public:
    NullPointerException() : Exception("null pointer", "SmartPtr", 91) {}
};

/// The error of an impossible state, worded "Unreachable code: SOURCE LINE".
[[noreturn]] inline void throwUnreachable(std::string_view source, int line) {
    throw Exception("Unreachable code: " + std::string(source) + " " + std::to_string(line),
                    std::string(source), line);
}

} // namespace tavrin
