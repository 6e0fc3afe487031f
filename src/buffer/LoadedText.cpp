#include "buffer/LoadedText.h"

#include <algorithm>

namespace tavrin {

int LoadedText::lineAt(std::size_t byte) const {
    const std::size_t place =
        original_ ? original_->unitBefore(byte) * sizeof(char16_t) : byte - std::min(byte, form_.markSize());
    int first = 0; // begins at or before the place
    for (int end = lines_->lineCount(); first + 1 < end;) {
        const int middle = first + (end - first) / 2;
        (lines_->loadedRun(middle).begin <= place ? first : end) = middle;
    }
    return first;
}

} // namespace tavrin
