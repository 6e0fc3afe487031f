#pragma once

#include "platform/headless/HeadlessPlatform.h"

#include <optional>
#include <string_view>

namespace tavrin::replay {

/// The key press that a name such as "Ctrl+Shift+End", "F3", "a" or "<" stands for, on a US keyboard; nothing
/// for an unknown name. Prefixes Ctrl+, Shift+ and Alt+ stand in any order, each at most once.
///
/// Without Ctrl and Alt a character is pressed as it is typed: "A" and "<" hold Shift. Ctrl with a letter
/// gives the letter's control code, with another printable key no character; Alt gives no character.
[[nodiscard]] std::optional<KeyStroke> parseKey(std::string_view name);

} // namespace tavrin::replay
