#include "platform/ui/AcceleratorTable.h"

#include <algorithm>

namespace tavrin {

bool AcceleratorTable::translate(CWnd& window, const MSG& message) const {
    if (message.message != WM_KEYDOWN)
        return false;
    const Platform& platform = window.platform();
    if (!platform.GetKeyState(VK_CONTROL) || platform.GetKeyState(VK_SHIFT) || platform.GetKeyState(VK_ALT))
        return false;
    const auto entry = std::ranges::find(entries_, message.key, &ACCEL::key);
    if (entry == entries_.end())
        return false;
    window.SendCommand(entry->command);
    return true;
}

} // namespace tavrin
