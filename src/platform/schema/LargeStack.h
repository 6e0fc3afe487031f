#pragma once

#include <cstddef>
#include <functional>

namespace tavrin {

/// Runs `work` to its end on a thread of its own whose stack has `size` bytes, of which only those that are
/// used take memory. Exceptions come out of it. Where no thread can be made it throws std::system_error.
void runOnLargeStack(std::size_t size, const std::function<void()>& work);

} // namespace tavrin
