#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace tavrin::bench {

/// Milliseconds that an action takes.
template <class Action>
double milliseconds(Action&& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// REQUIRES: not empty.
inline double median(std::vector<double> values) {
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace tavrin::bench
