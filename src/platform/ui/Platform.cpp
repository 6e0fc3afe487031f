#include "platform/ui/Platform.h"

#include <map>
#include <mutex>

namespace tavrin {

// Process-wide on purpose: a registered number is an agreement between windows that need not share a
// platform.
UINT Platform::RegisterWindowMessage(std::string_view name) {
    static std::mutex mutex;
    static std::map<std::string, UINT, std::less<>> numbers;

    const std::lock_guard lock(mutex);
    if (const auto known = numbers.find(name); known != numbers.end())
        return known->second;
    const UINT number = WM_REGISTERED_FIRST + static_cast<UINT>(numbers.size());
    numbers.emplace(name, number);
    return number;
}

} // namespace tavrin
