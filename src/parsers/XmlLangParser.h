#pragma once

#include "parsers/FormatCode.h"
#include "parsers/Parser.h"
#include "parsers/TagWalk.h"
#include "parsers/XmlAttrEditInfo.h"

#include <string>
#include <string_view>

namespace tavrin {

class MarkupMap;

/// Colours XML: comments, "<![" sections, and tags (everything else that begins with "<") with their names,
/// attribute names, punctuation and double-quoted values. Reads the encoding declaration after a load.
class XmlLangParser : public Parser {
  public:
    XmlLangParser();

    /// Sets the buffer's encoding to the one in the XML declaration when it is one of the four that have
    /// names.
    void onBufferLoaded() override;
    [[nodiscard]] const LineScan* lineScan() const override;

    /// The first processing instruction that holds `name` as a whole word, ignoring case: its "<?" and the
    /// position just after its "?>". When there is none, false, and the results mean nothing.
    bool findProcessingInstruction(std::u16string_view name, int& startLine, int& startCol, int& endLine,
                                   int& endCol) const;
    /// The value of `field` in that instruction, empty when there is none.
    [[nodiscard]] std::u16string getProcessingInstructionField(std::u16string_view name,
                                                               std::u16string_view field) const;

    // What is being written at a position. All answer false in a comment or a "<![" section.

    /// The names of the tag that the position lies in. `rawName` keeps the "/" of an end tag; the namespace
    /// is that of the nearest declaration of the prefix above, wherever it stands, or the well-known one of
    /// "xsl" and "fo".
    bool findOpenTag(int line, int col, std::u16string& localName, std::u16string& qualifiedName,
                     std::u16string& rawName, std::u16string& namespaceUri);
    /// The innermost element around the position. False only where no tag may begin; `topLevel` tells that
    /// there is no such element, and the other results then mean nothing.
    bool findParentTag(int line, int col, std::u16string& localName, std::u16string& qualifiedName,
                       std::u16string& namespaceUri, bool& topLevel, int& tagLine, int& tagCol);
    /// The attribute being typed. `info` is freshly constructed.
    bool findAttribute(int line, int col, XmlAttrEditInfo& info);
    /// The character before the position is "<".
    [[nodiscard]] bool isTagStart(int line, int col);
    /// The position lies inside a start or end tag, not just behind a character of a value.
    [[nodiscard]] bool isTag(int line, int col);
    /// The position lies on an attribute's name.
    [[nodiscard]] bool isAttribute(int line, int col);
    /// The position lies in an attribute's value.
    [[nodiscard]] bool isAttributeValue(int line, int col);

    /// Finds out now what is asked of the lines that the buffer keeps together with this one when somebody
    /// reads far below them: their block state and, `withTags`, what findParentTag notes. The lines above
    /// were given to it before. Returns the line behind them.
    int readAhead(int line, bool withTags);

  protected:
    void formatContentRange(int line, int start, int count) override;
    void formatBlockRange(int line, int start, int count, const Block& block) override;
    [[nodiscard]] int findBlockEnd(const Block& block, int line, int start) const override;
    [[nodiscard]] std::uint8_t openBlockState(const Block& open, int line,
                                              std::uint8_t before) const override;
    [[nodiscard]] std::optional<ColouredLine> colourLine(std::u16string_view text, EndState entry,
                                                         std::span<FormatRun> room) const override;
    std::size_t colourLines(LineStore::LinesAhead& lines, EndState entry,
                            std::span<EndState> ends) const override;

    [[nodiscard]] bool colourBlocksAlone() const override;

    /// Colours the part of a tag outside double-quoted values.
    void formatBlockContentRange(int line, int start, int count);
    /// Whether no tag may begin at the position, since the character there (the last one, at the end of a
    /// line; that of a line above, at column 0) belongs to a comment or a "<![" section, or since there is
    /// none.
    [[nodiscard]] bool inNonTagableBlock(int line, int col);
    /// The tag that the position lies in, with its place.
    bool findOpenTag(int line, int col, std::u16string& localName, std::u16string& qualifiedName,
                     std::u16string& rawName, std::u16string& namespaceUri, int& tagLine, int& tagCol);
    /// The names of the tag whose "<" is at (tagLine, tagCol), read no further than (line, col). False when
    /// no name follows.
    bool getTagName(int tagLine, int tagCol, int line, int col, std::u16string& localName,
                    std::u16string& qualifiedName, std::u16string& rawName,
                    std::u16string& namespaceUri) const;
    /// The quoted value of the pseudo-attribute whose name begins at `pos`, up to the text's end when the
    /// quote is not closed.
    [[nodiscard]] static std::u16string getFieldValue(std::u16string_view text, std::size_t pos);

  private:
    [[nodiscard]] static bool canColour(std::u16string_view text, EndState entry);
    static bool walkLine(std::u16string_view text, const MarkupMap& map, EndState& state, FormatRun* room,
                         std::size_t& runs);
    void formatTag(int line, int start, int end, bool inQuote);
    int formatTagName(int line, std::u16string_view text, int at, int end);
};

} // namespace tavrin
