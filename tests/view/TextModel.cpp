#include "TextModel.h"

#include <algorithm>

namespace tavrin::test {

namespace {

bool isBlank(char16_t c) {
    return c == u' ' || c == u'\t';
}

} // namespace

void TextModel::reset(std::u16string_view text) {
    lines_ = recorded_ = split(text);
    done_.clear();
    undone_.clear();
    open_.reset();
    collapse({});
}

TextModel::Lines TextModel::split(std::u16string_view text) {
    Lines lines{u""};
    for (const char16_t c : text)
        if (c == u'\n')
            lines.emplace_back();
        else
            lines.back() += c;
    return lines;
}

std::u16string TextModel::join(const Lines& lines) {
    std::u16string text = lines.front();
    for (std::size_t i = 1; i < lines.size(); ++i)
        text += u'\n' + lines[i];
    return text;
}

std::u16string TextModel::selectedText() const {
    const Place from = start();
    const Place to = end();
    if (from.line == to.line)
        return line(from.line).substr(static_cast<std::size_t>(from.col),
                                      static_cast<std::size_t>(to.col - from.col));
    std::u16string text = line(from.line).substr(static_cast<std::size_t>(from.col)) + u'\n';
    for (int i = from.line + 1; i < to.line; ++i)
        text += line(i) + u'\n';
    return text + line(to.line).substr(0, static_cast<std::size_t>(to.col));
}

// Records

void TextModel::record(std::optional<Place> insertionEnd, bool mayMerge, Place at) {
    undone_.clear();
    Step* last = open_ ? &*open_ : done_.empty() ? nullptr : &done_.back();
    if (mayMerge && last && last->insertionEnd == at) {
        last->after = lines_;
        last->insertionEnd = insertionEnd;
    } else {
        if (!open_)
            open_ = Step{recorded_, {}, {}};
        open_->after = lines_;
        open_->insertionEnd = insertionEnd;
    }
    recorded_ = lines_;
}

void TextModel::closeGroup() {
    if (open_)
        done_.push_back(std::move(*open_));
    open_.reset();
}

Place TextModel::insertAt(Place at, std::u16string_view text) {
    std::u16string& first = lineAt(at.line);
    const std::u16string tail = first.substr(static_cast<std::size_t>(at.col));
    first.resize(static_cast<std::size_t>(at.col));
    Lines inserted = split(text);
    first += inserted.front();
    lines_.insert(lines_.begin() + at.line + 1, inserted.begin() + 1, inserted.end());
    const int endLine = at.line + static_cast<int>(inserted.size()) - 1;
    const Place end{endLine, static_cast<int>(line(endLine).size())};
    lineAt(endLine) += tail;
    record(end, text.size() == 1 && text[0] != u'\n', at);
    return end;
}

void TextModel::eraseBetween(Place from, Place to) {
    if (from == to)
        return;
    lineAt(from.line) = line(from.line).substr(0, static_cast<std::size_t>(from.col)) +
                        line(to.line).substr(static_cast<std::size_t>(to.col));
    lines_.erase(lines_.begin() + from.line + 1, lines_.begin() + to.line + 1);
    record(std::nullopt, false, from);
}

void TextModel::eraseSelection() {
    const Place from = start();
    eraseBetween(from, end());
    collapse(from);
}

// Commands

void TextModel::type(char16_t ch) {
    openGroup();
    eraseSelection();
    collapse(insertAt(caret, std::u16string_view(&ch, 1)));
    closeGroup();
}

std::u16string TextModel::indentOf(int index) const {
    const std::u16string& text = line(index);
    return {text.begin(), std::find_if_not(text.begin(), text.end(), isBlank)};
}

void TextModel::pressReturn() {
    openGroup();
    eraseSelection();
    const std::u16string indent = caret.col == 0 ? u"" : indentOf(caret.line);
    std::u16string tail = line(caret.line).substr(static_cast<std::size_t>(caret.col));
    lineAt(caret.line).resize(static_cast<std::size_t>(caret.col));
    lines_.insert(lines_.begin() + caret.line + 1, std::move(tail));
    record(std::nullopt, false, caret);
    collapse({caret.line + 1, 0});
    closeGroup();
    if (indent.empty())
        return;
    if (const std::u16string own = indentOf(caret.line); !own.empty()) {
        collapse({caret.line, static_cast<int>(own.size())});
        return;
    }
    openGroup();
    collapse(insertAt(caret, indent));
    open_->insertionEnd.reset(); // the move of the caret follows it
    closeGroup();
}

void TextModel::backspace() {
    openGroup();
    if (hasSelection()) {
        eraseSelection();
    } else if (caret != Place{0, 0}) {
        const Place before = caret.col > 0
                                 ? Place{caret.line, caret.col - 1}
                                 : Place{caret.line - 1, static_cast<int>(line(caret.line - 1).size())};
        eraseBetween(before, caret);
        collapse(before);
    }
    closeGroup();
}

void TextModel::deleteForward() {
    openGroup();
    if (hasSelection())
        eraseSelection();
    else if (caret.col < static_cast<int>(line(caret.line).size()))
        eraseBetween(caret, {caret.line, caret.col + 1});
    else if (caret.line + 1 < lineCount())
        eraseBetween(caret, {caret.line + 1, 0});
    closeGroup();
}

void TextModel::indent() {
    openGroup();
    const Place from = start();
    const Place to = end();
    for (int index = from.line; index <= to.line; ++index) {
        const bool untouched = index == to.line && to.col == 0;
        if (untouched && from.line != to.line)
            continue;
        insertAt({index, 0}, u"\t");
        for (Place* place : {&caret, &pivot})
            if (place->line == index && !untouched)
                ++place->col;
    }
    closeGroup();
}

void TextModel::unindent() {
    openGroup();
    const Place from = start();
    const Place to = end();
    for (int index = from.line; index <= to.line; ++index) {
        if ((index == to.line && to.col == 0 && from.line != to.line) || indentOf(index).empty())
            continue;
        eraseBetween({index, 0}, {index, 1});
        for (Place* place : {&caret, &pivot})
            if (place->line == index && place->col > 0)
                --place->col;
    }
    closeGroup();
}

void TextModel::cut() {
    openGroup();
    eraseSelection();
    closeGroup();
}

void TextModel::replaceSelection(std::u16string_view text, bool select) {
    openGroup();
    eraseSelection();
    const Place from = caret;
    collapse(insertAt(from, text));
    if (select)
        pivot = from;
    closeGroup();
}

void TextModel::undo() {
    lines_ = recorded_ = done_.back().before;
    undone_.push_back(std::move(done_.back()));
    done_.pop_back();
}

void TextModel::redo() {
    lines_ = recorded_ = undone_.back().after;
    done_.push_back(std::move(undone_.back()));
    undone_.pop_back();
}

} // namespace tavrin::test
