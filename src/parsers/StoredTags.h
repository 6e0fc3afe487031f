#pragma once

#include "buffer/Buffer.h"
#include "parsers/TagNote.h"

#include <memory>
#include <span>

namespace tavrin {

// Parts of a TagNote from the text of lines that nobody has edited as it was loaded, without decoding it.
// Nothing where that is not to be had, or does not tell: of names that are not ASCII in bytes.

/// Whether a mark stands there; a line may be cut within it.
[[nodiscard]] std::optional<bool> storedTextMayHold(const Buffer& buffer, int line, TagMark mark);
/// `opening`: of a comment or a section that ends below.
[[nodiscard]] std::optional<TagNote::Walk> walkStoredTags(const Buffer& buffer, int line,
                                                          std::optional<TagMark> opening);
/// As TagNote::declared, in order of appearance.
[[nodiscard]] std::optional<std::vector<std::u16string>> storedDeclarations(const Buffer& buffer, int line);
/// Of a chunk of pages that have just been loaded, what TagWalk::note would note. Their bytes lie one after
/// the other.
[[nodiscard]] std::unique_ptr<TagNote> noteOnStoredPages(std::span<const LineStore::StoredLines> pages);

} // namespace tavrin
