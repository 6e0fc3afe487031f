// Block state of many lines at once, from their bytes.

#include "buffer/LineStore.h"
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

/// Goes over the bytes that can change the state, in order; all others are skipped.
///
/// Two notions of quotes go side by side: whether a ">" ends the tag follows from quotes of both kinds,
/// counted anew on each line (XmlLangParser::findBlockEnd); whether a double-quoted value is open follows
/// from double quotes alone, counted from the last "<" (XmlLangParser::openBlockState).
class BlockScan {
  public:
    BlockScan(const LineStore::StoredLines& lines, int openBlock, bool inValue, std::span<std::uint8_t> flags,
              std::span<std::uint8_t> details)
        : bytes_(lines.bytes),
          longest_(lines.hasCuts ? TextSource::maxLineLength : lines.bytes.size()),
          cut_(longest_),
          flags_(flags),
          details_(details),
          block_(openBlock),
          inValue_(inValue) {}

    /// False when the lines are not as many as expected.
    bool run() {
        std::size_t at = 0;
        for (; at + scan::maskStep <= bytes_.size(); at += scan::maskStep)
            visit(scan::markupMask(bytes_.data() + at), at);
        if (at < bytes_.size()) {
            std::array<char, scan::maskStep> rest{};
            std::memcpy(rest.data(), bytes_.data() + at, bytes_.size() - at);
            visit(scan::markupMask(rest.data()), at);
        }
        while (lineStart_ < bytes_.size())
            endLine(std::min(bytes_.size(), cut_));
        return line_ == flags_.size();
    }

  private:
    void visit(std::uint64_t mask, std::size_t base) {
        for (; mask; mask &= mask - 1) {
            const std::size_t at = base + static_cast<std::size_t>(std::countr_zero(mask));
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
                    cut_ = ++lineStart_ + longest_; // the second half of a break
                else
                    endLine(at + 1);
                break;
            case '\r':
                endLine(at + 1);
                break;
            default:
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
        if (line_ < flags_.size()) {
            flags_[line_] =
                static_cast<std::uint8_t>(block_ != 0 ? PF_BLOCKS | PF_OPEN_AT_END | block_ : PF_BLOCKS);
            details_[line_] = block_ == tagBlock && inValue_ ? quoteOpen : 0;
        }
        ++line_;
        inValue_ = inValue_ && block_ == tagBlock;
        quote_ = 0;
        lineStart_ = searchStart_ = next;
        cut_ = next + longest_;
    }

    std::string_view bytes_;
    std::size_t longest_; ///< a line is cut after so many bytes
    std::size_t cut_;     ///< where the current line will be, unless a break comes before
    std::span<std::uint8_t> flags_;
    std::span<std::uint8_t> details_;
    std::size_t line_ = 0;
    std::size_t lineStart_ = 0;
    std::size_t searchStart_ = 0; ///< an end delimiter begins here at the earliest
    int block_;
    char quote_ = 0; ///< the one that is open in the tag; means nothing elsewhere
    bool inValue_;
};

} // namespace

bool XmlLangParser::scanLines(const LineStore::StoredLines& lines, EndState entry,
                              std::span<std::uint8_t> flags, std::span<std::uint8_t> details) const {
    const bool inValue = entry.openBlock == tagBlock && (entry.detail & quoteOpen);
    return BlockScan(lines, entry.openBlock, inValue, flags, details).run();
}

} // namespace tavrin
