#pragma once

#include "parsers/TagWalk.h"

#include <optional>

namespace tavrin {

/// What a character of an XML document is part of.
enum class XmlPlace {
    Text,
    AttributeValue,
    Name, ///< or another part of a tag outside values
    Comment,
    Section, ///< "<![CDATA[" or conditional
    Instruction,
    Declaration, ///< the document type, its subset included
};

/// Tells what characters are part of, by their colours and the delimiters above. Cheap when it is asked from
/// the top to the bottom of a text that does not change meanwhile.
class XmlPlaces {
  public:
    /// The buffer has an XML parser.
    explicit XmlPlaces(Buffer& buffer) : buffer_(buffer), walk_(buffer) {}

    /// REQUIRES: a character of the text stands there, not before the one asked for last.
    XmlPlace at(int line, int col);

  private:
    /// A stretch from a delimiter to its end.
    struct Stretch {
        TextPos begin;
        TextPos end;
        [[nodiscard]] bool contains(TextPos place) const { return begin <= place && place < end; }
    };

    [[nodiscard]] bool isMarkup(TextPos place) const;
    [[nodiscard]] TextPos find(std::u16string_view what, TextPos from) const;
    [[nodiscard]] Stretch nextInstruction(TextPos from) const;
    [[nodiscard]] Stretch findDocumentType() const;
    void moveTo(TextPos place);

    Buffer& buffer_;
    TagWalk walk_;
    std::optional<Stretch> instruction_;  ///< the one around or behind the place asked for last
    std::optional<Stretch> documentType_; ///< empty when there is none
    // At the place asked for last:
    TextPos at_;
    XmlPlace tag_ = XmlPlace::Text; ///< of a tag that is open; Text outside
    char16_t quote_ = 0;            ///< of a value that is open
};

} // namespace tavrin
