// The codes of a line in one walk.

#include "buffer/Buffer.h"
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

    void set(std::size_t from, std::size_t to, int code) {
        if (from > end) {
            *next++ = {static_cast<std::int32_t>(from), FORMAT_NORMAL};
        } else if (code == format) {
            next[-1].end = static_cast<std::int32_t>(to);
            end = to;
            return;
        }
        *next++ = {static_cast<std::int32_t>(to), code};
        end = to;
        format = code;
    }
};

/// Gives up, with `isPlain()` false, where the two ways in which quotes pair (see BlockScan) part.
class LineWalk {
  public:
    /// REQUIRES: `out` has room for a run a character.
    LineWalk(std::u16string_view text, FormatRun* out) : text_(text), runs_{out} {}

    void run(int openBlock) {
        std::size_t at = 0;
        if (openBlock != 0)
            at = walkBlock(openBlock, 0, 0);
        while (isPlain_ && at < text_.size()) {
            at = scan::findUnit(text_, u'<', at);
            if (at == npos)
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

    std::size_t walkTag(const std::size_t start) {
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
    RunWriter runs_;
    int openBlock_ = 0; ///< at the end of the line
    bool isQuoteOpen_ = false;
    bool isPlain_ = true;
};

} // namespace

bool XmlLangParser::colourBlocksAlone() const {
    return typeid(*this) == typeid(XmlLangParser);
}

std::optional<Parser::ColouredLine> XmlLangParser::colourLine(std::u16string_view text, EndState entry,
                                                              std::span<FormatRun> room) const {
    // A class derived from this one may colour parts in its own way.
    if ((entry.detail & quoteOpen) || !colourBlocksAlone())
        return {};
    LineWalk walk(text, room.data());
    walk.run(entry.openBlock);
    if (!walk.isPlain())
        return {};
    const bool quote = walk.openBlock() == tagBlock && walk.isQuoteOpen();
    return ColouredLine{{walk.openBlock(), quote ? quoteOpen : std::uint8_t{0}},
                        static_cast<std::size_t>(walk.end() - room.data())};
}

} // namespace tavrin
