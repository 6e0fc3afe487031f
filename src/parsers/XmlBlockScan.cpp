// What a load finds out about XML from its bytes: block state of many lines at once, and tags.

#include "buffer/LineScan.h"
#include "parsers/StoredTags.h"
#include "parsers/XmlBlocks.h"
#include "parsers/XmlLangParser.h"
#include "platform/core/TextScan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace tavrin {

using namespace xml;

namespace {

/// Goes over the bytes that can change the state, 64 at a time: as a whole where all of them mean what they
/// seem to, else one by one.
///
/// Two notions of quotes go side by side: whether a ">" ends the tag follows from quotes of both kinds,
/// counted anew on each line (XmlLangParser::findBlockEnd); whether a double-quoted value is open follows
/// from double quotes alone, counted from the last "<" (XmlLangParser::openBlockState).
class BlockScan {
  public:
    BlockScan(const LineStore::StoredLines& lines, LineEndState entry, std::span<std::uint8_t> flags,
              std::span<std::uint8_t> details)
        : bytes_(lines.bytes),
          longest_(lines.hasCuts ? TextSource::maxLineLength : lines.bytes.size()),
          ends_(lines.patchedEnds),
          cut_(cutBehind(0)),
          flags_(flags),
          details_(details),
          block_(entry.openBlock),
          inValue_(entry.openBlock == tagBlock && (entry.detail & quoteOpen)) {}

    /// The state at the end of the last line; nothing when the lines are not as many as expected.
    std::optional<LineEndState> run() {
        std::ranges::fill(flags_, std::uint8_t{0});
        std::ranges::fill(details_, std::uint8_t{0});
        std::array<scan::MarkupMasks, 64> masks;
        std::size_t at = 0;
        while (at + scan::maskStep <= bytes_.size()) {
            const std::size_t steps = std::min(masks.size(), (bytes_.size() - at) / scan::maskStep);
            scan::markupMasks(bytes_.data() + at, std::span(masks).first(steps));
            for (std::size_t i = 0; i < steps; ++i, at += scan::maskStep)
                visit(masks[i], at);
        }
        if (at < bytes_.size()) {
            std::array<char, scan::maskStep> rest{};
            std::memcpy(rest.data(), bytes_.data() + at, bytes_.size() - at);
            scan::markupMasks(rest.data(), std::span(masks).first(1));
            visit(masks.front(), at);
        }
        while (lineStart_ < bytes_.size() || line_ < ends_.size())
            endLine(std::min(bytes_.size(), cut_));
        if (line_ != flags_.size() || flags_.empty())
            return {};
        return LineEndState{flags_.back() & ~PF_OPEN_AT_END, details_.back()};
    }

  private:
    [[nodiscard]] bool hasByte(std::size_t at, char c) const { return at < bytes_.size() && bytes_[at] == c; }

    void visit(const scan::MarkupMasks& masks, std::size_t base) {
        const std::uint64_t opensOther = masks.less & (masks.marks >> 1 | std::uint64_t{1} << 63);
        const std::uint64_t emptyLine = masks.feeds & (base == lineStart_ ? 1 : 0); // if it is one
        const bool isPlain = (opensOther | masks.returns | emptyLine) == 0 && cut_ >= base + scan::maskStep &&
                             (block_ == 0 || block_ == tagBlock);
        if (!isPlain || !passTags(masks, ~std::uint64_t{0}, base))
            visitInParts(masks, base);
    }

    void visitInParts(const scan::MarkupMasks& masks, std::size_t base) {
        const std::uint64_t delimiters = masks.less | masks.greater | masks.quotes | masks.apostrophes;
        if (cut_ < base + scan::maskStep || !endsLinesByFeeds(masks, base)) {
            walk(delimiters | masks.feeds | masks.returns, base);
            return;
        }
        const std::uint64_t markBehind = std::uint64_t{hasByte(base + scan::maskStep, '!')} << 63;
        const std::uint64_t declarations = masks.less & (masks.marks >> 1 | markBehind);
        for (std::uint64_t left = ~std::uint64_t{0}; left;) {
            if (block_ == commentBlock || block_ == sectionBlock) {
                left &= findEnd(masks, left, base);
                continue;
            }
            const std::uint64_t next = lowest(declarations & left);
            const std::uint64_t tags = left & (next - 1); // all, when nothing is declared
            if (!passTags(masks, tags, base))
                walk((delimiters | masks.feeds) & tags, base);
            if (next)
                open(base + index(next));
            left &= behind(next);
        }
    }

    /// Whether line ends are the line feeds: with a carriage return before each or some.
    [[nodiscard]] bool endsLinesByFeeds(const scan::MarkupMasks& masks, std::size_t base) const {
        if ((masks.feeds & 1) && base > 0 && base == lineStart_ && bytes_[base - 1] == '\r')
            return false; // that ended the line
        const std::uint64_t feedBehind = std::uint64_t{hasByte(base + scan::maskStep, '\n')} << 63;
        return (masks.returns & ~(masks.feeds >> 1 | feedBehind)) == 0;
    }

    static std::uint64_t lowest(std::uint64_t bits) { return bits & (0 - bits); }
    static std::size_t index(std::uint64_t bit) { return static_cast<std::size_t>(std::countr_zero(bit)); }
    /// The bits above one; none above no bit.
    static std::uint64_t behind(std::uint64_t bit) { return bit ? ~(bit | (bit - 1)) : 0; }

    /// The bits behind the end of the comment or section; none when it does not end.
    std::uint64_t findEnd(const scan::MarkupMasks& masks, std::uint64_t left, std::size_t base) {
        for (std::uint64_t bits = (masks.greater | masks.feeds) & left; bits; bits &= bits - 1) {
            const std::uint64_t bit = lowest(bits);
            if (bit & masks.feeds)
                endLine(base + index(bit) + 1);
            else
                close(base + index(bit));
            if (block_ == 0)
                return behind(bit);
        }
        return 0;
    }

    /// Passes over tags and the text between them. Does nothing, with a result of false, unless "<" and ">"
    /// alternate outside of values, and values end on their line and hold no quotes of the other kind.
    /// REQUIRES: no "<!" in `within`, and lines end by line feeds.
    [[gnu::always_inline]] bool passTags(const scan::MarkupMasks& masks, std::uint64_t within,
                                         std::size_t base) {
        const bool inTag = block_ == tagBlock;
        if (inTag && inValue_ != (quote_ == '"'))
            return false;
        const auto allWhen = [](bool is) { return is ? ~std::uint64_t{0} : 0; };
        const std::uint64_t less = masks.less & within;
        const std::uint64_t greater = masks.greater & within;
        const std::uint64_t feeds = masks.feeds & within;
        const bool isAll = ~within == 0;
        const std::uint64_t tags =
            (isAll ? masks.edgesPassed : scan::parityUpTo(less | greater)) ^ allWhen(inTag);
        const auto passed = [&](std::uint64_t some, std::uint64_t all, std::uint64_t allPassed) {
            return some == all ? allPassed : scan::parityUpTo(some);
        };
        const std::uint64_t quotes = masks.quotes & within & tags;
        const std::uint64_t quoted =
            passed(quotes, masks.quotes, masks.quotesPassed) ^ allWhen(inTag && quote_ == '"');
        const std::uint64_t apostrophes = masks.apostrophes & within & tags;
        const std::uint64_t single = passed(apostrophes, masks.apostrophes, masks.apostrophesPassed) ^
                                     allWhen(inTag && quote_ == '\'');
        if ((less & ~tags) | (greater & tags) | ((less | greater | feeds) & (quoted | single)) |
            (quotes & single) | (apostrophes & quoted))
            return false;
        if (feeds & tags) {
            for (std::uint64_t bits = feeds; bits; bits &= bits - 1)
                setLine(tags & lowest(bits) ? tagBlock : 0, 0);
        } else {
            line_ += isAll ? masks.feedCount : static_cast<std::size_t>(std::popcount(feeds));
        }
        if (feeds)
            startLine(base + scan::maskStep - static_cast<std::size_t>(std::countl_zero(feeds)));
        const auto isLast = [](std::uint64_t bits) {
            return bits >> 63 != 0;
        }; // as it is from the last one on
        block_ = isLast(tags) ? tagBlock : 0;
        quote_ = isLast(quoted) ? '"' : isLast(single) ? '\'' : char{0};
        inValue_ = isLast(quoted);
        return true;
    }

    /// Each delimiter and line end by itself.
    void walk(std::uint64_t bits, std::size_t base) {
        for (; bits; bits &= bits - 1) {
            const std::size_t at = base + index(bits);
            while (at >= cut_)
                endLine(cut_);
            switch (bytes_[at]) {
            case '<':
                open(at);
                break;
            case '>':
                close(at);
                break;
            case '"':
                // One in column 0 does not close a value from the line above.
                if (at != lineStart_ || !inValue_)
                    inValue_ = !inValue_;
                quote('"');
                break;
            case '\'':
                quote('\'');
                break;
            case '\n':
                if (at == lineStart_ && at > 0 && bytes_[at - 1] == '\r')
                    cut_ = cutBehind(++lineStart_); // the second half of a break
                else
                    endLine(at + 1);
                break;
            default:
                endLine(at + 1);
                break;
            }
        }
    }

    void open(std::size_t at) {
        inValue_ = false;
        if (block_ != 0)
            return;
        const std::string_view rest = bytes_.substr(at, cut_ - at);
        block_ = rest.starts_with("<!--") ? commentBlock : rest.starts_with("<![") ? sectionBlock : tagBlock;
        searchStart_ = at + 1;
        quote_ = 0;
    }

    void close(std::size_t at) {
        const auto endsWith = [&](char c) {
            return at >= searchStart_ + 2 && bytes_[at - 1] == c && bytes_[at - 2] == c;
        };
        if (block_ == tagBlock ? quote_ == 0 : block_ == commentBlock ? endsWith('-') : endsWith(']'))
            block_ = 0;
    }

    void quote(char kind) {
        if (quote_ == 0)
            quote_ = kind;
        else if (quote_ == kind)
            quote_ = 0;
    }

    void endLine(std::size_t next) {
        setLine(block_, block_ == tagBlock && inValue_ ? quoteOpen : 0);
        inValue_ = inValue_ && block_ == tagBlock;
        quote_ = 0;
        startLine(next);
    }

    void setLine(int openBlock, std::uint8_t detail) {
        if (openBlock != 0 && line_ < flags_.size()) {
            flags_[line_] = static_cast<std::uint8_t>(PF_OPEN_AT_END | openBlock);
            details_[line_] = detail;
        }
        ++line_;
    }

    void startLine(std::size_t at) {
        lineStart_ = searchStart_ = at;
        cut_ = cutBehind(at);
    }

    /// Where the line that begins at `at` ends, unless a break comes before.
    [[nodiscard]] std::size_t cutBehind(std::size_t at) const {
        return line_ < ends_.size() ? ends_[line_] : at + longest_;
    }

    std::string_view bytes_;
    std::size_t line_ = 0;
    std::size_t longest_;                 ///< a line is cut after so many bytes
    std::span<const std::uint32_t> ends_; ///< of lines that are cut elsewhere
    std::size_t cut_;                     ///< where the current line will be, unless a break comes before
    std::span<std::uint8_t> flags_;
    std::span<std::uint8_t> details_;
    std::size_t lineStart_ = 0;
    std::size_t searchStart_ = 0; ///< an end delimiter begins here at the earliest
    int block_;
    char quote_ = 0; ///< the one that is open in the tag; means nothing elsewhere
    bool inValue_;
};

class XmlLineScan final : public LineScan {
  public:
    [[nodiscard]] std::optional<LineEndState> scan(const LineStore::StoredLines& lines, LineEndState entry,
                                                   std::span<std::uint8_t> flags,
                                                   std::span<std::uint8_t> states) const override {
        return BlockScan(lines, entry, flags, states).run();
    }

    [[nodiscard]] std::unique_ptr<ChunkNote>
    note(std::span<const LineStore::StoredLines> pages) const override {
        return noteOnStoredPages(pages);
    }
};

} // namespace

const LineScan* XmlLangParser::lineScan() const {
    static const XmlLineScan scan;
    return &scan;
}

} // namespace tavrin
