#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::test {

struct Place {
    int line = 0;
    int col = 0;
    friend auto operator<=>(const Place&, const Place&) = default;
};

/// What the editor's commands do to a text, written down as plainly as possible: a vector of lines that is
/// copied whole for every undo step. Never holds fewer than one line.
class TextModel {
  public:
    Place caret;
    Place pivot;

    /// Starts over with this text and no history.
    void reset(std::u16string_view text);
    /// The lines, joined by line feeds.
    [[nodiscard]] std::u16string text() const { return join(lines_); }
    [[nodiscard]] std::u16string selectedText() const;
    [[nodiscard]] int lineCount() const { return static_cast<int>(lines_.size()); }
    [[nodiscard]] const std::u16string& line(int index) const {
        return lines_[static_cast<std::size_t>(index)];
    }
    [[nodiscard]] bool hasSelection() const { return caret != pivot; }
    [[nodiscard]] bool canUndo() const { return !done_.empty(); }
    [[nodiscard]] bool canRedo() const { return !undone_.empty(); }

    void type(char16_t ch);
    void pressReturn();
    void backspace();
    void deleteForward();
    void indent();
    void unindent();
    void cut();
    void replaceSelection(std::u16string_view text, bool select);
    /// Caret and pivot are not the model's: the caller takes them over.
    void undo();
    void redo();

  private:
    using Lines = std::vector<std::u16string>;
    struct Step {
        Lines before;
        Lines after;
        std::optional<Place> insertionEnd; ///< when its last record is an insertion
    };

    static Lines split(std::u16string_view text);
    static std::u16string join(const Lines& lines);
    [[nodiscard]] std::u16string& lineAt(int index) { return lines_[static_cast<std::size_t>(index)]; }
    [[nodiscard]] Place start() const { return std::min(caret, pivot); }
    [[nodiscard]] Place end() const { return std::max(caret, pivot); }

    Place insertAt(Place at, std::u16string_view text);
    void eraseBetween(Place from, Place to);
    void eraseSelection();
    void collapse(Place to) { caret = pivot = to; }
    /// Everything recorded from here on is one step, unless it continues the insertion before.
    void openGroup() { open_.reset(); }
    void closeGroup();
    void record(std::optional<Place> insertionEnd, bool mayMerge, Place at);
    [[nodiscard]] std::u16string indentOf(int line) const;

    Lines lines_{u""};
    Lines recorded_{u""}; ///< the lines after the last record
    std::vector<Step> done_;
    std::vector<Step> undone_;
    std::optional<Step> open_;
};

} // namespace tavrin::test
