#pragma once

#include <concepts>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

/// The little of JSON (RFC 8259) that scripts need, for UTF-16 strings that may hold unpaired surrogates:
/// general libraries refuse those or replace them.
namespace tavrin::json {

/// Text that is not what was asked for; what() says why, without a place.
class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Strict: overlong forms, surrogates and values above U+10FFFF are errors.
[[nodiscard]] std::u16string fromUtf8(std::string_view bytes);
/// Unpaired surrogates become U+FFFD.
[[nodiscard]] std::string toUtf8(std::u16string_view text);

/// Reads the string that `text` begins with and takes it off the front. All of JSON's escapes; \uD800 to
/// \uDFFF need no partner.
[[nodiscard]] std::u16string takeString(std::string_view& text);

using Scalar = std::variant<std::u16string, int, bool>;

/// Reads a string, a number without fraction or exponent that fits an int, `true` or `false` from the front
/// of `text` and takes it off.
[[nodiscard]] Scalar takeScalar(std::string_view& text);

/// Reads a whole word as an integer: digits, with a minus sign before them if need be, no leading zeros.
[[nodiscard]] std::optional<int> toInteger(std::string_view word);

/// Writes compact JSON: no spaces, keys in the order given, non-ASCII as UTF-8, unpaired surrogates and
/// control characters escaped (\b \f \n \r \t, else \u and four lower-case digits).
class Writer {
  public:
    Writer& beginArray() { return open('['); }
    Writer& endArray() { return close(']'); }
    Writer& beginObject() { return open('{'); }
    Writer& endObject() { return close('}'); }
    Writer& key(std::string_view name);
    Writer& value(int number);
    /// Only a bool itself: pointers would convert to one.
    template <std::same_as<bool> Bool>
    Writer& value(Bool truth) {
        return literal(truth ? "true" : "false");
    }
    Writer& value(std::u16string_view text);
    Writer& null() { return literal("null"); }
    /// An array of numbers.
    Writer& value(std::span<const int> numbers);

    [[nodiscard]] const std::string& text() const { return text_; }

  private:
    Writer& open(char bracket);
    Writer& close(char bracket);
    Writer& literal(std::string_view word);
    void separate();

    std::string text_;
    bool afterValue_ = false;
};

} // namespace tavrin::json
