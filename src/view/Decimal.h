#pragma once

#include <string>

namespace tavrin {

[[nodiscard]] inline std::u16string decimal(int number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

} // namespace tavrin
