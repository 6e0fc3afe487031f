#pragma once

#include "parsers/Parser.h"

#include <string>
#include <vector>

namespace tavrin {

/// The base of parsers for languages of the C family with classes: block and line comments, double-quoted
/// strings with backslash escapes, keywords and punctuation. Comments and strings are coloured here; how the
/// text between them is, formatContentRange of the language says, for which formatRange is at hand.
class OOLangParser : public Parser {
  protected:
    OOLangParser();

    void formatBlockRange(int line, int start, int count, const Block& block) override;

    /// Colours the keywords from `start` to the end of the line, then the punctuation of the whole line, also
    /// where comments and strings were coloured before. `count` 0 colours nothing and bounds nothing
    /// otherwise.
    virtual void formatRange(int line, int start, int count);

    std::vector<std::u16string> keywords; ///< in the order in which they are searched

  private:
    void formatKeywords(int line, int start);
    void formatPunctuation(int line);
};

} // namespace tavrin
