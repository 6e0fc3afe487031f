#include "platform/ui/DialogControls.h"

#include "platform/core/CharacterClass.h"

#include <algorithm>

namespace tavrin {

int ListBox::AddString(std::u16string_view text) {
    const auto place = std::ranges::upper_bound(
        entries_, text,
        [](std::u16string_view a, std::u16string_view b) {
            return std::ranges::lexicographical_compare(a, b, {}, foldCase, foldCase);
        },
        &Entry::text);
    const int index = static_cast<int>(place - entries_.begin());
    entries_.insert(place, {std::u16string(text), 0});
    showEntry(index, text);
    return index;
}

std::u16string FontComboBox::text() const {
    const int chosen = GetCurSel();
    return chosen < 0 ? std::u16string() : faces().at(static_cast<std::size_t>(chosen));
}

int FontComboBox::SelectString(int startAfter, std::u16string_view begin) {
    const std::vector<std::u16string> all = faces();
    const int count = static_cast<int>(all.size());
    for (int step = 1; step <= count; ++step) {
        const int index = (startAfter + step) % count;
        const std::u16string_view face = all[static_cast<std::size_t>(index)];
        if (!std::ranges::equal(face.substr(0, begin.size()), begin, {}, foldCase, foldCase))
            continue;
        SetCurSel(index);
        return index;
    }
    return -1;
}

} // namespace tavrin
