#pragma once

#include <string>
#include <string_view>

namespace tavrin {

class CTextEditorView;

/// Inserts an element's template at a view's caret. The template language: "*" marks the caret's place; a
/// line feed begins a line with the indentation of the caret's line, and the blanks after it in the template
/// do not count; "_" is a tab. Several line feeds are one, those at either end none. When the first text
/// begins with a letter, a blank goes before it.
class AutofillText {
  public:
    explicit AutofillText(CTextEditorView& view);

    /// Leaves the caret at the mark, or where it is when there is none.
    void insert(std::u16string_view text);

  private:
    void flush();
    void beginLine();
    void add(std::u16string_view text);

    CTextEditorView& view_;
    std::u16string indent_;
    std::u16string pending_;
    int line_;
    int col_;
    bool first_ = true;
    bool newLinePending_ = false;
};

} // namespace tavrin
