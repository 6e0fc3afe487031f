#pragma once

#include "buffer/LineStore.h"
#include "parsers/TextPos.h"
#include "platform/core/CharacterClass.h"

#include <array>
#include <bitset>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavrin {

/// What a search backwards looks for, apart from names.
enum class TagMark { Less, Greater, Comment, Section };

[[nodiscard]] constexpr std::u16string_view textOf(TagMark mark) {
    constexpr std::array<std::u16string_view, 4> texts = {u"<", u">", u"<!--", u"<!["};
    return texts[static_cast<std::size_t>(mark)];
}

/// Names of which some may be taken for others, so that a set of any number of them has the same size.
class NameFilter {
  public:
    void add(std::u16string_view name) { bits_.set(bitOf(name)); }
    void add(const NameFilter& names) { bits_ |= names.bits_; }
    [[nodiscard]] bool mayHold(std::u16string_view name) const { return bits_.test(bitOf(name)); }
    friend bool operator==(const NameFilter&, const NameFilter&) = default;

  private:
    static constexpr std::size_t size = 256;
    static std::size_t bitOf(std::u16string_view name) {
        return std::hash<std::u16string_view>()(name) % size;
    }
    std::bitset<size> bits_;
};

/// Start and end tags that are kept of a chunk of many pages. Where elements lie deeper, its pages are passed
/// one by one.
inline constexpr std::size_t mostTagsKept = 512;

/// What TagWalk has found out about a chunk of lines. Each part is found out when it is first asked for.
struct TagNote : ChunkNote {
    struct StartTag {
        TextPos tag; ///< the "<"; lines count from the chunk's first
        TextPos end; ///< the ">"
        std::u16string name;
    };
    /// What walking backwards over every ">" of the chunk comes to. A walk comes from below, or from a ">"
    /// down there whose comment or section it has not seen begin.
    struct Walk {
        /// Start tags without an end tag in the chunk, from the bottom up: each closes the end tag left open
        /// by the lines below if the names are equal, is the parent if there is none left, and else counts
        /// for nothing.
        std::vector<StartTag> starts;
        std::vector<std::u16string> ends; ///< then, names of end tags without a start tag, the lowest first
        bool stops = false;               ///< then, the walk is over
        std::optional<TagMark> opening;   ///< else: what is searched above before the walk goes on
        TextPos rest{}; ///< else: ">" before this have to be walked one by one; the chunk's start: none
        bool isTooLong = false; ///< more than is kept of a chunk of many pages; nothing else counts
    };
    /// From below, and from the inside of a comment and of a section.
    std::array<std::unique_ptr<Walk>, 3> walks;
    /// Folded text between "xmlns" and "=" of each declaration; of a page sorted, of a larger chunk a filter.
    std::optional<std::vector<std::u16string>> declared;
    std::optional<NameFilter> declaredBelow;
    std::array<std::optional<bool>, 4> marks; ///< whether they may stand there, indexed by TagMark
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
