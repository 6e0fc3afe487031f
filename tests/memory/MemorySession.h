#pragma once

#include "files/TextFileContents.h"
#include "memory/FailingMemory.h"
#include "support.h"
#include "view/EditorFixture.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace tavrin::test {

/// An editor as an object of its own.
class MemorySession : public Editor {
  public:
    void TestBody() override {}

    struct State {
        std::u16string text;
        std::pair<int, int> caret;
        std::pair<int, int> pivot;
        bool isModified;
        bool canUndo;
        bool canRedo;
        friend bool operator==(const State&, const State&) = default;
    };
    [[nodiscard]] State state() const {
        return {ctrl_->getText(),    caret(),          {ctrl_->getPivotLine(), ctrl_->getPivotCol()},
                ctrl_->isModified(), ctrl_->CanUndo(), ctrl_->CanRedo()};
    }
    /// The texts that undoing and redoing everything pass, and the way back.
    [[nodiscard]] std::vector<std::u16string> history() {
        std::vector<std::u16string> texts;
        int undone = 0;
        int redone = 0;
        for (; ctrl_->CanRedo(); ++redone)
            step(ID_EDIT_REDO, texts);
        for (; ctrl_->CanUndo(); ++undone)
            step(ID_EDIT_UNDO, texts);
        for (; undone > redone; --undone)
            step(ID_EDIT_REDO, texts);
        return texts;
    }
    /// The format codes of lines around the caret.
    [[nodiscard]] std::vector<std::vector<int>> colours() {
        std::vector<std::vector<int>> codes;
        Buffer& buffer = ctrl_->getBuffer();
        const int line = ctrl_->getCurrentLine();
        for (int i = std::max(0, line - 20); i < std::min(buffer.getLineCount(), line + 20); ++i) {
            std::vector<int>& of = codes.emplace_back();
            for (int col = 0; col < buffer.getLineLength(i); ++col)
                of.push_back(buffer.getCharFormat(i, col));
        }
        return codes;
    }
    /// What a save writes.
    [[nodiscard]] std::string written() const {
        std::string bytes;
        textFileContents(ctrl_->getBuffer())([&](std::string_view piece) {
            bytes += piece;
            return true;
        });
        return bytes;
    }
    void checkInvariants() const {
        ctrl_->getBuffer().checkInvariants();
        ctrl_->checkInvariants();
    }

    using Editor::ctrl_;
    using Editor::key;
    using Editor::paint;
    using Editor::platform_;
    using Editor::select;
    using Editor::type;
    using Editor::window;

  private:
    void step(UINT command, std::vector<std::u16string>& texts) {
        ctrl_->SendCommand(command);
        texts.push_back(ctrl_->getText());
    }
};

/// What a document is when the command comes. Lines hold tags, comments over lines and one word to find.
struct Shape {
    const char* name;
    int lines;
    bool isLoadedFromBytes; ///< pages are cold
    bool isEdited;          ///< pages are changed, and there is a history with steps undone
};

inline constexpr Shape shapes[] = {
    {"small", 6, false, true},
    {"pages", 900, true, false},
    {"levels", LineStore::pageLines* LineStore::treeFanOut + 700, true, true},
};

inline void open(MemorySession& session, const Shape& shape) {
    std::string text;
    for (int i = 0; i < shape.lines; ++i)
        text += i % 5 == 0 ? "\t<a b='c'>word</a>\n" : i % 5 == 3 ? "<!-- open\n" : "text --> &amp; word\n";
    auto& ctrl = *session.ctrl_;
    if (shape.isLoadedFromBytes) {
        ctrl.getBuffer().loadBytes(blockOf(text));
    } else {
        ctrl.setText(std::u16string(text.begin(), text.end()));
    }
    ctrl.OnOpenDocument(u"");
    ctrl.updateScrollbars();
    static_cast<void>(session.paint());
    if (!shape.isEdited)
        return;
    session.select(shape.lines / 2, 0, shape.lines / 2 + 2, 3);
    session.type(u"ab");
    session.key(VK_RETURN);
    session.type(u"c");
    ctrl.SendCommand(ID_EDIT_UNDO);
}

/// The next allocation to fail. Beyond the first `dense` only some do, unless TAVRIN_MEMORY_POINTS is set.
inline long nextPoint(long point, long dense = 6) {
    static const bool all = std::getenv("TAVRIN_MEMORY_POINTS") != nullptr;
    return point + 1 + (all ? 0 : point / dense);
}

/// Runs `what()` with the allocation of that number failing; whether it came to that.
template <class What>
bool failing(long point, bool stays, What what) {
    const FailingMemory memory(point, stays);
    try {
        what();
    } catch (const std::bad_alloc&) { // to who called it by itself and not by a message
    }
    return memory.hasFailed();
}

} // namespace tavrin::test
