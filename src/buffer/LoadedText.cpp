#include "buffer/LoadedText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

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

/// For a parser that has not asked for it.
void LoadedText::forgetScanned() {
    static constexpr std::array<std::uint8_t, LineStore::pageLines> none{};
    for (int line = 0; line < scannedLines_;) {
        const LineChunk page = lines_->chunkAt(line);
        lines_->setStates(line, std::span(none).first(static_cast<std::size_t>(page.end - line)));
        line = page.end;
    }
    if (scannedLines_ > 0)
        lines_->setFlags(0, lines_->lineCount(), 0, ~0);
    scannedLines_ = 0;
    if (scan_)
        lines_->forgetChunkNotes();
}

} // namespace tavrin
