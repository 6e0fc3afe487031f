#pragma once

#include "buffer/LineStore.h"
#include "parsers/TextPos.h"
#include "platform/core/CharacterClass.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavrin {

/// What TagWalk has found out about a chunk of lines. Each part is found out when it is first asked for.
struct TagNote : ChunkNote {
    struct StartTag {
        TextPos tag; ///< the "<"; lines count from the chunk's first
        TextPos end; ///< the ">"
        std::u16string name;
    };
    /// What walking backwards over every ">" of the chunk comes to.
    struct Walk {
        /// Start tags without an end tag in the chunk, from the bottom up: each closes the end tag left open
        /// by the lines below if the names are equal, is the parent if there is none left, and else counts
        /// for nothing.
        std::vector<StartTag> starts;
        std::vector<std::u16string> ends; ///< then, names of end tags without a start tag, the lowest first
        bool stops = false;               ///< then, the walk is over
        TextPos rest{}; ///< else: ">" before this have to be walked one by one; the chunk's start: none
    };
    std::optional<Walk> walk;
    /// Folded text between "xmlns" and "=" of each declaration, sorted.
    std::optional<std::vector<std::u16string>> declared;
    bool hasLess = false;
    bool hasGreater = false;
};

/// Whether a name ends before the character: as it is typed, with "/" and prefix.
[[nodiscard]] constexpr bool endsRawName(char16_t c) {
    const bool inName = c == u':' || c == u'-' || c == u'/' || c == u'_';
    return !inName && (isSpace(c) || isPunct(c));
}

/// The end tags that wait for their start tags, on a walk backwards; `Name` keeps the name of one.
template <class Name>
class TagMatcher {
  public:
    template <class View>
    void push(View endTag) {
        names_.emplace_back(endTag);
    }
    /// True when the start tag is the parent: no end tag waits.
    template <class View>
    bool meets(View startTag) {
        if (names_.empty())
            return true;
        if (names_.back() == startTag)
            names_.pop_back();
        return false;
    }
    [[nodiscard]] bool isEmpty() const { return names_.empty(); }
    [[nodiscard]] std::vector<Name> takeNames() { return std::move(names_); }

  private:
    std::vector<Name> names_;
};

} // namespace tavrin
