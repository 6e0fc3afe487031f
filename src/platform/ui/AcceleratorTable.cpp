#include "platform/ui/AcceleratorTable.h"

#include <algorithm>

namespace tavrin {

const ACCEL* AcceleratorTable::find(const Platform& platform, const MSG& message) const {
    if (message.message != WM_KEYDOWN)
        return nullptr;
    if (platform.GetKeyState(VK_SHIFT) || platform.GetKeyState(VK_ALT))
        return nullptr;
    const bool ctrl = platform.GetKeyState(VK_CONTROL);
    const auto entry = std::ranges::find_if(
        entries_, [&](const ACCEL& each) { return each.key == message.key && each.ctrl == ctrl; });
    return entry == entries_.end() ? nullptr : &*entry;
}

bool AcceleratorTable::translate(CWnd& window, const MSG& message) const {
    const ACCEL* entry = find(window.platform(), message);
    if (entry)
        window.SendCommand(entry->command);
    return entry != nullptr;
}

} // namespace tavrin
