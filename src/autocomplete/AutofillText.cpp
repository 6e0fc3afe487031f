#include "autocomplete/AutofillText.h"

#include "platform/core/CharacterClass.h"
#include "view/CTextEditorView.h"
#include "view/EditCommand.h"

#include <optional>
#include <utility>

namespace tavrin {

namespace {

bool isAsciiLetter(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

} // namespace

AutofillText::AutofillText(CTextEditorView& view)
    : view_(view),
      indent_(view.getIndentText(view.getCurrentLine())),
      line_(view.getCurrentLine()),
      col_(view.getCurrentColoumn()) {}

void AutofillText::insert(std::u16string_view text) {
    EditCommand command(view_);
    std::optional<std::pair<int, int>> mark;
    bool atLineStart = true;
    for (const char16_t c : text) {
        if (atLineStart && isSpace(c))
            continue;
        atLineStart = c == u'\n';
        switch (c) {
        case u'*':
            flush();
            if (!first_)
                beginLine();
            mark = {line_, col_};
            break;
        case u'\n':
            flush();
            newLinePending_ = true;
            break;
        default:
            pending_ += c == u'_' ? u'\t' : c;
            break;
        }
    }
    flush();
    if (mark) {
        view_.setCaret(mark->first, mark->second, true);
        view_.updatePivot();
    }
    command.finish([&] {
        view_.updateScrollbars();
        view_.redraw();
    });
}

void AutofillText::flush() {
    if (pending_.empty())
        return;
    if (first_) {
        if (isAsciiLetter(pending_.front()))
            add(u" ");
        first_ = newLinePending_ = false;
    } else {
        beginLine();
    }
    add(std::exchange(pending_, {}));
}

void AutofillText::beginLine() {
    if (!std::exchange(newLinePending_, false))
        return;
    view_.split(line_, col_);
    ++line_;
    col_ = 0;
    if (!indent_.empty())
        add(indent_);
}

void AutofillText::add(std::u16string_view text) {
    view_.insert(line_, col_, text, line_, col_);
}

} // namespace tavrin
