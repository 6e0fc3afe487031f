#include "autocomplete/PopupEdits.h"

#include "buffer/Buffer.h"
#include "document/TextDocument.h"
#include "view/EditCommand.h"

#include <algorithm>

namespace tavrin {

PopupEdits::PopupEdits(CTextEditorView& view, bool hasPrefix)
    : view_(view),
      watch_(view),
      hasPrefix_(hasPrefix),
      generation_(view.getDocument().getBuffer().getGeneration()),
      lineCount_(view.getDocument().getBuffer().getLineCount()),
      line_(view.getCurrentLine()),
      col_(view.getCurrentColoumn()),
      text_(view.getDocument().getBuffer().getLineText(line_)) {}

bool PopupEdits::takeBack() {
    const Buffer& buffer = view_.getDocument().getBuffer();
    const int col = view_.getCurrentColoumn();
    if (buffer.getGeneration() != generation_ || buffer.getLineCount() != lineCount_ ||
        view_.getCurrentLine() != line_ || buffer.getLineLength(line_) < std::min(col, col_))
        return false;
    const std::u16string_view now = buffer.getLineText(line_);
    const auto from = static_cast<std::size_t>(col_);
    const bool onlyTyped = col >= col_ && now.substr(0, from) == std::u16string_view(text_).substr(0, from) &&
                           now.substr(static_cast<std::size_t>(col)) == text_.substr(from);
    const bool restores = hasPrefix_ && !onlyTyped;
    if (!restores && col == col_)
        return true;
    EditCommand command(view_);
    if (restores)
        restoreLine();
    else
        view_.erase(line_, col_, line_, col);
    view_.setCaret(line_, col_, true);
    view_.updatePivot();
    command.commit();
    return true;
}

/// Replaces the part of the line that differs from what it was.
void PopupEdits::restoreLine() {
    const std::u16string now(view_.getDocument().getBuffer().getLineText(line_));
    const auto same = std::ranges::mismatch(now, text_);
    const auto start = static_cast<std::size_t>(same.in1 - now.begin());
    std::size_t tail = 0;
    const std::size_t longest = std::min(now.size(), text_.size()) - start;
    while (tail < longest && now[now.size() - 1 - tail] == text_[text_.size() - 1 - tail])
        ++tail;
    const int at = static_cast<int>(start);
    view_.erase(line_, at, line_, static_cast<int>(now.size() - tail));
    if (const std::u16string before = text_.substr(start, text_.size() - tail - start); !before.empty())
        view_.insert(line_, at, before);
}

} // namespace tavrin
