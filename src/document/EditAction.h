#pragma once

#include "platform/core/Undoable.h"

#include <string>
#include <utility>

namespace tavrin {

enum class EditActionKind : int {
    Insert = 0,    ///< `text` was inserted at the start and ends at the end position
    Erase = 1,     ///< `text` was removed from between the start and end positions
    Split = 2,     ///< the line was split at the start position; the end is (startLine + 1, 0)
    CaretMove = 3, ///< no change of the text: the caret went from the start position to (caretLine, caretCol)
};

/// One change of the text, with the caret and the pivot at the moment of recording. Positions count from 0,
/// the end is exclusive, lines of `text` are divided by line feeds. Only merging changes a record that has
/// been made.
class EditAction : public UndoableAction {
  public:
    EditAction(EditActionKind kind_, int startLine_, int startCol_, int endLine_, int endCol_,
               std::u16string text_, int caretLine_, int caretCol_, int pivotLine_, int pivotCol_)
        : kind(kind_),
          startLine(startLine_),
          startCol(startCol_),
          endLine(endLine_),
          endCol(endCol_),
          caretLine(caretLine_),
          caretCol(caretCol_),
          pivotLine(pivotLine_),
          pivotCol(pivotCol_),
          text(std::move(text_)) {}

    [[nodiscard]] std::size_t memory() const override {
        return sizeof(EditAction) + text.size() * sizeof(char16_t);
    }

    EditActionKind kind;
    int startLine;
    int startCol;
    int endLine;
    int endCol;
    int caretLine;
    int caretCol;
    int pivotLine;
    int pivotCol;
    std::u16string text; ///< empty for Split and CaretMove
};

} // namespace tavrin
