// The codes of a line in one walk.

#include "buffer/Buffer.h"
#include "parsers/MarkupMap.h"
#include "parsers/PlainTag.h"
#include "parsers/XmlBlocks.h"
#include "parsers/XmlLangParser.h"
#include "platform/core/CharacterClass.h"
#include "platform/core/TextScan.h"

#include <array>
#include <typeinfo>

namespace tavrin {

using namespace xml;

namespace {

constexpr std::size_t npos = std::u16string_view::npos;

/// What a character is outside double quotes in a tag. The first two are those of names; a dot may stand in
/// the name of an attribute.
enum class Kind : std::uint8_t {
    Letter,
    NamePart,
    Dot,
    Other,
    Punctuation,
    Greater,
    Less,
    Quote,
    Apostrophe
};

constexpr std::array<Kind, 0x80> asciiKinds = [] {
    std::array<Kind, 0x80> kinds;
    kinds.fill(Kind::Other);
    for (std::size_t c = 0; c < kinds.size(); ++c)
        if ((c | 0x20) >= 'a' && (c | 0x20) <= 'z')
            kinds[c] = Kind::Letter;
        else if (c >= '0' && c <= '9')
            kinds[c] = Kind::NamePart;
    for (const char c : {':', '-', '_'})
        kinds[static_cast<std::size_t>(c)] = Kind::NamePart;
    for (const char c : {'/', '=', '?'})
        kinds[static_cast<std::size_t>(c)] = Kind::Punctuation;
    kinds['.'] = Kind::Dot;
    kinds['>'] = Kind::Greater;
    kinds['<'] = Kind::Less;
    kinds['"'] = Kind::Quote;
    kinds['\''] = Kind::Apostrophe;
    return kinds;
}();

/// The codes of characters in a plain tag that end by the last of them.
constexpr std::array<std::uint8_t, 0x80> codesOfLast = [] {
    std::array<std::uint8_t, 0x80> codes{}; // FORMAT_NORMAL
    for (std::size_t c = 0; c < codes.size(); ++c)
        if (asciiKinds[c] <= Kind::NamePart)
            codes[c] = FORMAT_XML_ATTRIBUTE;
    for (const char c : {'<', '>', '/', '=', '?'})
        codes[static_cast<std::size_t>(c)] = FORMAT_PUNCTUATION;
    codes['"'] = FORMAT_STRING;
    return codes;
}();

Kind kindBeyondAscii(char16_t c) {
    return isLetter(c) ? Kind::Letter : isLetterOrDigit(c) ? Kind::NamePart : Kind::Other;
}

inline Kind kindOf(char16_t c) {
    return c < asciiKinds.size() ? asciiKinds[c] : kindBeyondAscii(c);
}

/// Writes runs from left to right.
struct RunWriter {
    FormatRun* next;
    std::size_t end = 0;        ///< of the last run
    int format = FORMAT_NORMAL; ///< and its code

    /// From the end of the last run on, whose code is another.
    void add(std::size_t to, int code) {
        *next++ = {static_cast<std::int32_t>(to), code};
        end = to;
        format = code;
    }

    void set(std::size_t from, std::size_t to, int code) {
        if (from > end) {
            *next++ = {static_cast<std::int32_t>(from), FORMAT_NORMAL};
        } else if (code == format) {
            next[-1].end = static_cast<std::int32_t>(to);
            end = to;
            return;
        }
        add(to, code);
    }
};

/// Gives up, with `isPlain()` false, where the two ways in which quotes pair (see BlockScan) part.
class LineWalk {
  public:
    /// REQUIRES: `map` covers the text; `out` has room for a run a character.
    LineWalk(std::u16string_view text, const MarkupMap& map, FormatRun* out)
        : text_(text),
          map_(map),
          index_(map.indexOf(text)),
          less_(map.nextLess(index_, index_ + text.size()) - index_),
          runs_{out} {}

    void run(int openBlock) {
        std::size_t at = 0;
        if (openBlock != 0)
            at = walkBlock(openBlock, 0, 0);
        while (isPlain_) {
            at = nextLess(at);
            if (at == text_.size())
                return;
            at = walkBlock(blockAt(at), at, at + 1);
        }
    }

    [[nodiscard]] bool isPlain() const { return isPlain_; }
    [[nodiscard]] int openBlock() const { return openBlock_; }
    [[nodiscard]] bool isQuoteOpen() const { return isQuoteOpen_; }
    [[nodiscard]] FormatRun* end() const { return runs_.next; }

  private:
    /// The block that begins with the "<" at `at`.
    [[nodiscard]] int blockAt(std::size_t at) const {
        const std::u16string_view rest = text_.substr(at + 1);
        if (!rest.starts_with(u'!'))
            return tagBlock;
        return rest.starts_with(u"!--") ? commentBlock : rest.starts_with(u"![") ? sectionBlock : tagBlock;
    }

    /// Colours a block from `start` on, whose end is searched from `from` on; returns the place behind it.
    std::size_t walkBlock(int block, std::size_t start, std::size_t from) {
        if (block == tagBlock)
            return walkTag(start);
        const bool isComment = block == commentBlock;
        const std::size_t close = scan::findText(text_, isComment ? u"-->" : u"]]>", from);
        const std::size_t after = close == npos ? text_.size() : close + 3;
        if (after > start)
            runs_.set(start, after, isComment ? FORMAT_COMMENT : FORMAT_CDATA);
        if (close == npos)
            openBlock_ = block;
        return after;
    }

    std::size_t walkTag(std::size_t start) {
        if (const std::size_t after = walkPlainTag(start))
            return after;
        return walkAnyTag(start);
    }

    /// The tag from its masks; returns the place behind it. 0, and nothing is done, when it is not plain.
    [[gnu::always_inline]] std::size_t walkPlainTag(const std::size_t start) {
        const std::size_t name = start < text_.size() ? nameOfPlainTag(start) : npos;
        if (name == npos)
            return 0;
        const bool beginsHere = name > start;
        const std::size_t limit = nextLess(beginsHere ? start + 1 : start);
        std::size_t at = start;
        PlainTag tag(beginsHere);
        if (!readPart(tag, at, limit))
            return 0;
        RunWriter runs = runs_;
        std::uint64_t changes = tag.changes() & ~std::uint64_t{1} << (name - start);
        if (beginsHere) {
            if (!changes)
                return 0;
            runs.set(start, name, FORMAT_PUNCTUATION);
            runs.add(at + static_cast<std::size_t>(std::countr_zero(changes)), FORMAT_XML_TAG);
            changes &= changes - 1;
        }
        addRuns(runs, at, changes);
        for (at += tag.size(); !tag.hasEnded() && at < limit; at += tag.size()) {
            if (!readPart(tag, at, limit))
                return 0;
            addRuns(runs, at, tag.changes());
        }
        if (tag.hasEnded())
            runs.add(at, FORMAT_PUNCTUATION);
        else if (!endOpen(tag, at, runs))
            return 0;
        runs_ = runs;
        return at;
    }

    [[gnu::always_inline]] bool readPart(PlainTag& tag, std::size_t at, std::size_t limit) const {
        return tag.read(map_.from(index_ + at), std::min(limit - at, scan::markupBlockSize));
    }

    /// Runs that end at the changes, counted from `at`.
    void addRuns(RunWriter& runs, std::size_t at, std::uint64_t changes) const {
        for (; changes; changes &= changes - 1) {
            const std::size_t end = at + static_cast<std::size_t>(std::countr_zero(changes));
            runs.add(end, codesOfLast[text_[end - 1]]);
        }
    }

    /// The tag goes on below. False when it is not plain.
    bool endOpen(const PlainTag& tag, std::size_t at, RunWriter& runs) {
        const bool isUnclear = kindOf(text_.back()) == Kind::NamePart; // it may be part of no name
        if (at < text_.size() || tag.isInQuotes() || isUnclear)
            return false;
        if (const int code = codesOfLast[text_.back()])
            runs.add(at, code);
        isQuoteOpen_ = false;
        openBlock_ = tagBlock;
        return true;
    }

    /// Where the name in a plain tag begins; `start` where a tag goes on from above, npos when it is not
    /// plain.
    [[nodiscard]] std::size_t nameOfPlainTag(std::size_t start) const {
        const auto kindAt = [&](std::size_t at) {
            return at < text_.size() ? kindOf(text_[at]) : Kind::Other;
        };
        if (kindAt(start) != Kind::Less)
            return kindAt(start) == Kind::NamePart ? npos : start;
        const bool hasSign = kindAt(start + 1) == Kind::Punctuation && text_[start + 1] != u'=';
        const std::size_t name = start + (hasSign ? 2 : 1);
        return kindAt(name) == Kind::Letter ? name : npos;
    }

    /// REQUIRES: not called for a later place before.
    [[nodiscard]] std::size_t nextLess(std::size_t at) {
        if (less_ < at)
            less_ = map_.nextLess(index_ + at, index_ + text_.size()) - index_;
        return less_;
    }

    std::size_t walkAnyTag(const std::size_t start) {
        RunWriter runs = runs_;      // in registers
        std::size_t quotedUntil = 0; // a ">" before this stands in single quotes
        for (std::size_t at = start; at < text_.size();) {
            const std::size_t here = at++;
            switch (kindOf(text_[here])) {
            case Kind::Letter:
                while (at < text_.size() && kindOf(text_[at]) <= Kind::Dot)
                    ++at;
                runs.set(here, at, FORMAT_XML_ATTRIBUTE);
                break;
            case Kind::Less:
                at = walkName(here, runs);
                break;
            case Kind::Greater:
                runs.set(here, at, FORMAT_PUNCTUATION);
                if (here >= quotedUntil) {
                    runs_ = runs;
                    return at;
                }
                break;
            case Kind::Punctuation:
                runs.set(here, at, FORMAT_PUNCTUATION);
                break;
            case Kind::Quote: {
                const std::size_t close = scan::findUnit(text_, u'"', at);
                isQuoteOpen_ = close == npos;
                at = isQuoteOpen_ ? text_.size() : close + 1;
                runs.set(here, at, FORMAT_STRING);
                break;
            }
            case Kind::Apostrophe:
                if (here >= quotedUntil) {
                    const std::size_t close = scan::findUnit(text_, u'\'', at);
                    quotedUntil = close == npos ? npos : close + 1;
                    if (text_.substr(at, quotedUntil - at).find(u'"') != npos) {
                        isPlain_ = false;
                        return at;
                    }
                }
                break;
            default:
                break;
            }
        }
        runs_ = runs;
        openBlock_ = tagBlock;
        const std::size_t lastStart = text_.rfind(u'<');
        isPlain_ = lastStart == npos || lastStart == start;
        return text_.size();
    }

    /// "<", "</" or "<?" at `at`, and the name behind it; returns where the attributes begin.
    std::size_t walkName(std::size_t at, RunWriter& runs) const {
        const auto skipSpace = [&] {
            while (at < text_.size() && isSpace(text_[at]))
                ++at;
            return at < text_.size();
        };
        runs.set(at, at + 1, FORMAT_PUNCTUATION);
        ++at;
        if (!skipSpace())
            return at;
        if (text_[at] == u'/' || text_[at] == u'?') {
            runs.set(at, at + 1, FORMAT_PUNCTUATION);
            ++at;
            if (!skipSpace())
                return at;
        }
        const std::size_t name = at;
        if (kindOf(text_[at]) == Kind::Letter) {
            while (at < text_.size() && kindOf(text_[at]) <= Kind::NamePart)
                ++at;
            runs.set(name, at, FORMAT_XML_TAG);
        }
        const bool isLessBehind = at < text_.size() && text_[at] == u'<'; // that begins no name
        return isLessBehind ? at + 1 : at;
    }

    std::u16string_view text_;
    const MarkupMap& map_;
    std::size_t index_; ///< of the line in the map
    std::size_t less_;  ///< the first "<" behind what was looked at
    RunWriter runs_;
    int openBlock_ = 0; ///< at the end of the line
    bool isQuoteOpen_ = false;
    bool isPlain_ = true;
};

} // namespace

/// A class derived from this one may colour parts in its own way.
bool XmlLangParser::colourBlocksAlone() const {
    return typeid(*this) == typeid(XmlLangParser);
}

std::optional<Parser::ColouredLine> XmlLangParser::colourLine(std::u16string_view text, EndState entry,
                                                              std::span<FormatRun> room) const {
    static_assert(longestAtOnce <= MarkupMap::longest);
    if (!colourBlocksAlone() || !canColour(text, entry))
        return {};
    MarkupMap map;
    map.read(text);
    ColouredLine line{entry, 0};
    if (!walkLine(text, map, line.end, room.data(), line.runs))
        return {};
    return line;
}

std::size_t XmlLangParser::colourLines(LineStore::LinesAhead& lines, EndState entry,
                                       std::span<EndState> ends) const {
    if (!colourBlocksAlone())
        return 0;
    MarkupMap map;
    EndState state = entry;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::u16string_view text = lines.text(i);
        if (!canColour(text, state))
            return i;
        if (!map.covers(text))
            map.read(MarkupMap::encloses(lines.block(), text)
                         ? lines.block().substr(static_cast<std::size_t>(text.data() - lines.block().data()))
                         : text);
        FormatRun* const room = lines.room(i);
        std::size_t runs = 0;
        if (!walkLine(text, map, state, room, runs))
            return i;
        lines.setFormats(i, room + runs);
        ends[i] = state;
    }
    return lines.size();
}

/// Colours a line, with the number of runs, and goes on to the state at its end. False, and nothing is done,
/// when it can't.
bool XmlLangParser::walkLine(std::u16string_view text, const MarkupMap& map, EndState& state, FormatRun* room,
                             std::size_t& runs) {
    LineWalk walk(text, map, room);
    walk.run(state.openBlock);
    if (!walk.isPlain())
        return false;
    const bool isInValue = walk.openBlock() == tagBlock && walk.isQuoteOpen();
    state = {walk.openBlock(), isInValue ? quoteOpen : std::uint8_t{0}};
    runs = static_cast<std::size_t>(walk.end() - room);
    return true;
}

bool XmlLangParser::canColour(std::u16string_view text, EndState entry) {
    return text.size() <= longestAtOnce && !(entry.detail & quoteOpen);
}

} // namespace tavrin
