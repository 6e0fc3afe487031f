#include "replay/Arguments.h"

#include <algorithm>

namespace tavrin::replay {

namespace {

constexpr std::string_view blanks = " \t";

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

} // namespace

void Arguments::skipBlanks() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
}

std::string_view Arguments::word() {
    const std::string_view result = rest_.substr(0, rest_.find_first_of(blanks));
    rest_.remove_prefix(result.size());
    skipBlanks();
    return result;
}

std::string_view Arguments::word(std::string_view what) {
    if (atEnd())
        throw BadArguments(std::string(what) + " is missing");
    return word();
}

int Arguments::integer(std::string_view what) {
    const std::string_view text = word(what);
    const auto number = json::toInteger(text);
    if (!number)
        throw BadArguments(std::string(what) + " must be an integer, not " + quoted(text));
    return *number;
}

int Arguments::integer(std::string_view what, int low, int high) {
    const int number = integer(what);
    if (number < low || number > high)
        throw BadArguments(std::string(what) + " must lie between " + std::to_string(low) + " and " +
                           std::to_string(high));
    return number;
}

bool Arguments::truth(std::string_view what) {
    const std::string_view text = word(what);
    if (text != "true" && text != "false")
        throw BadArguments(std::string(what) + " must be true or false, not " + quoted(text));
    return text == "true";
}

template <class Read>
auto Arguments::readJson(std::string_view what, Read read) {
    if (atEnd())
        throw BadArguments(std::string(what) + " is missing");
    try {
        return read();
    } catch (const json::Error& error) {
        throw BadArguments(std::string(what) + ": " + error.what());
    }
}

template <class Take>
auto Arguments::takeValue(std::string_view what, Take take) {
    auto value = readJson(what, [&] { return take(rest_); });
    if (!rest_.empty() && blanks.find(rest_.front()) == std::string_view::npos)
        throw BadArguments("a blank is missing before " + quoted(rest_));
    skipBlanks();
    return value;
}

std::u16string Arguments::string(std::string_view what) {
    return takeValue(what, json::takeString);
}

std::u16string Arguments::bareWord(std::string_view what) {
    return readJson(what, [&] { return json::fromUtf8(word()); });
}

std::u16string Arguments::stringOrWord(std::string_view what) {
    return rest_.starts_with('"') ? string(what) : bareWord(what);
}

std::u16string Arguments::keyName(std::string_view what) {
    const bool mark = rest_.substr(0, rest_.find_first_of(blanks)) == "\"";
    return mark ? bareWord(what) : stringOrWord(what);
}

std::u16string Arguments::rest(std::string_view what) {
    if (rest_.starts_with('"')) {
        std::u16string text = string(what);
        finish();
        return text;
    }
    return readJson(what, [&] {
        const std::string_view text = rest_.substr(0, rest_.find_last_not_of(blanks) + 1);
        rest_ = {};
        return json::fromUtf8(text);
    });
}

bool Arguments::onOrOff() {
    const std::string_view text = word("on or off");
    if (text != "on" && text != "off")
        throw BadArguments("on or off is needed, not " + quoted(text));
    return text == "on";
}

json::Scalar Arguments::scalar(std::string_view what) {
    return takeValue(what, json::takeScalar);
}

void Arguments::finish() const {
    if (!rest_.empty())
        throw BadArguments("nothing expected at " + quoted(rest_));
}

} // namespace tavrin::replay
