#pragma once

#include "buffer/Buffer.h"
#include "parsers/TagNote.h"
#include "parsers/TextPos.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// Walks tags backwards through a buffer, by their delimiters alone: every ">" counts, wherever it stands.
///
/// What a walk over many lines finds out is noted for each chunk of lines that the buffer keeps together,
/// until the chunk's text changes: which end tags it leaves open above, which start tags could close one from
/// below, whether it holds the characters that are searched. A later walk passes an unchanged chunk in one
/// step. Chunks lie in larger chunks, and what is known of those comes from theirs, so that a walk passes
/// O(log n) of them, and after an edit as many are to be looked at anew. A larger one is looked at as a whole
/// only when as many lines were passed already: an answer that is near costs no more than to walk there.
/// The answers are those of the walk over every tag.
class TagWalk {
  public:
    explicit TagWalk(const Buffer& buffer) : buffer_(buffer) {}

    /// The nearest place before `from` at which the mark stands and ends by then.
    [[nodiscard]] std::optional<TextPos> findBefore(TagMark mark, TextPos from) const {
        return findBefore(mark, from, 0);
    }
    /// The same for "xmlns" + `suffix` + "=", ignoring case.
    [[nodiscard]] std::optional<TextPos> findDeclarationBefore(std::u16string_view suffix,
                                                               TextPos from) const;

    /// The name behind the "<" at `tag` as it is typed, "/" included, scanned no further than `until`; empty
    /// when none follows.
    [[nodiscard]] std::u16string_view rawName(TextPos tag, TextPos until) const;

    /// A start tag that is open at a place, and the ">" that ends it.
    struct OpenTag {
        TextPos tag;
        TextPos end;
    };
    /// The innermost one at `from`; nothing at the top level, and where a "<" without a name or an unclosed
    /// comment keeps the walk from looking further.
    [[nodiscard]] std::optional<OpenTag> findParent(TextPos from) const;

    /// Appends the start tags of the elements before `from` that have the same parent, the nearest first: at
    /// most `most` of them, none that begins before `firstLine`. False when there are or may be more.
    bool findSiblingsBefore(TextPos from, int firstLine, std::size_t most, std::vector<TextPos>& tags) const;

    /// Notes now what findParent and findDeclarationBefore would, of the page around the line and of the
    /// larger chunks that end with it. When done for every page from the top, these two find all noted.
    void note(int line) const;

  private:
    struct Step;
    struct Course;
    /// OutOfReach: what belongs to a ">" stands above the lines that may be read.
    enum class Outcome { Through, Taken, Stopped, OutOfReach };

    [[nodiscard]] std::optional<TextPos> findInPage(std::u16string_view what, TextPos from,
                                                    int firstLine) const;
    [[nodiscard]] std::optional<TextPos> findBefore(TagMark mark, TextPos from, int firstLine) const;
    [[nodiscard]] Step step(TextPos end, int firstLine) const;
    template <class Take>
    Outcome walkBack(Course& course, Take&& take) const;
    [[nodiscard]] LineChunk chunkToPass(int line, const Course& course) const;
    template <class Lacks>
    [[nodiscard]] int lineBefore(int line, int firstLine, int start, Lacks&& lacks) const;
    template <class Visit>
    void forEachChild(const LineChunk& chunk, Visit&& visit) const;

    [[nodiscard]] TagNote* knownNote(const LineChunk& chunk) const;
    [[nodiscard]] TagNote& noteOn(const LineChunk& chunk) const;
    [[nodiscard]] const TagNote::Walk& walkOf(const LineChunk& chunk, std::optional<TagMark> opening) const;
    [[nodiscard]] TagNote::Walk walkChunk(const LineChunk& chunk, std::optional<TagMark> opening) const;
    [[nodiscard]] bool mayHold(const LineChunk& chunk, TagMark mark) const;
    [[nodiscard]] const std::vector<std::u16string>& declaredIn(const LineChunk& page) const;
    [[nodiscard]] const NameFilter& declaredBelow(const LineChunk& chunk) const;
    [[nodiscard]] std::vector<std::u16string> readDeclarations(const LineChunk& page) const;
    [[nodiscard]] TextPos endOfLine(int line) const { return {line, buffer_.getLineLength(line)}; }

    const Buffer& buffer_;
};

} // namespace tavrin
