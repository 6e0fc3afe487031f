#pragma once

#include <cstdint>

namespace tavrin {

/// Equal format codes of neighbouring characters: up to `end` (exclusive), from the end of the run before.
struct FormatRun {
    std::int32_t end;
    std::int32_t format;
};

} // namespace tavrin
