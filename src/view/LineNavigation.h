#pragma once

#include <string_view>

/// Where the caret goes inside one line: words, indentation, visual columns. Pure functions of the line's
/// text; columns count code units, 0 to the text's length.
namespace tavrin {

/// Half open, in columns.
struct ColumnRange {
    int start;
    int end;
};

/// White space below U+00FF. Everything that is neither this nor ASCII punctuation belongs to words.
[[nodiscard]] bool isWordSpace(char16_t c);
/// The 32 printable ASCII characters that are neither letters, digits nor the space.
[[nodiscard]] bool isPunctuation(char16_t c);

/// The start of the run of spaces, punctuation or word characters that ends before `col`. An equals sign and
/// quotation marks are passed one at a time: they delimit the values of attributes. REQUIRES: col > 0.
[[nodiscard]] int wordLeft(std::u16string_view text, int col);
/// The column after the run that begins at `col`: a word with the spaces behind it, spaces, or punctuation
/// with all spaces and punctuation behind it (an equals sign or a quotation mark alone). REQUIRES: col <
/// length.
[[nodiscard]] int wordRight(std::u16string_view text, int col);
/// What a double-click at `col` selects: the word or the single punctuation character there, looking through
/// spaces to the left first. Empty, at the end of the text, when nothing stands there.
[[nodiscard]] ColumnRange wordAround(std::u16string_view text, int col);

/// Alternates between the first character that is not blank and column 0.
[[nodiscard]] int smartHome(std::u16string_view text, int col);
/// Alternates between the end of what is not blank and the end of the line.
[[nodiscard]] int smartEnd(std::u16string_view text, int col);
/// The spaces that the text begins with.
[[nodiscard]] std::u16string_view indentation(std::u16string_view text);

/// Screen columns in front of `col`, with tab stops every `tabSize` columns, of a text that begins at `from`.
[[nodiscard]] int visualColumn(std::u16string_view text, int col, int tabSize, int from = 0);
/// The column nearest to a visual column, of two equally near the left one; the text's length when it ends
/// before.
[[nodiscard]] int columnNearVisual(std::u16string_view text, int visual, int tabSize, int from = 0);

} // namespace tavrin
