// Random commands against the plain model. The seed of a failing run is in its message;
// TAVRIN_RANDOM_COMMANDS sets the number of commands a seed, TAVRIN_RANDOM_SEED adds a seed.

#include "EditorFixture.h"
#include "TextModel.h"
#include "platform/core/CharacterClass.h"

#include <cstdlib>
#include <random>

namespace tavrin::test {
namespace {

int commandsPerSeed() {
    const char* number = std::getenv("TAVRIN_RANDOM_COMMANDS");
    return number ? std::atoi(number) : 1500;
}

std::vector<unsigned> seeds() {
    std::vector<unsigned> all{1, 2, 3, 4};
    if (const char* extra = std::getenv("TAVRIN_RANDOM_SEED"))
        all.push_back(static_cast<unsigned>(std::strtoul(extra, nullptr, 10)));
    return all;
}

std::string ascii(std::u16string_view text) {
    std::string result;
    for (const char16_t c : text)
        result += c == u'\n' ? '|' : c < 0x80 ? static_cast<char>(c) : '?';
    return result;
}

class RandomCommands : public Editor {
  protected:
    int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
    bool oneIn(int n) { return below(n) == 0; }

    char16_t anyCharacter() {
        static constexpr std::u16string_view alphabet = u"aabbcc  \t<<>>//==\"\"'!-&;.é漢ß\xD83D\xDE00\xFFFD";
        return alphabet[static_cast<std::size_t>(below(static_cast<int>(alphabet.size())))];
    }

    std::u16string anyText() {
        static constexpr std::u16string_view parts[] = {
            u"<a b=\"c\">", u"<!-- ", u" -->", u"<![CDATA[", u"]]>", u"\n", u"\t", u"\n  <b/>\n", u"\"", u""};
        std::u16string text;
        for (int n = below(6); n > 0; --n) {
            text += parts[static_cast<std::size_t>(below(10))];
            text += anyCharacter();
        }
        return text;
    }

    Place anyPlace() {
        const int line = below(model_.lineCount());
        return {line, below(static_cast<int>(model_.line(line).size()) + 1)};
    }

    /// The whole text, lines joined by line feeds.
    std::u16string bufferText() {
        const Buffer& buffer = ctrl_->getBuffer();
        std::u16string text;
        if (const int last = buffer.getLineCount() - 1; last >= 0)
            buffer.getText(0, 0, last, buffer.getLineLength(last), text);
        return text;
    }

    void takeOverPlaces() {
        model_.caret = {ctrl_->getCurrentLine(), ctrl_->getCurrentColoumn()};
        model_.pivot = {ctrl_->getPivotLine(), ctrl_->getPivotCol()};
    }

    void load() {
        const std::u16string text = anyText() + anyText();
        setText(text);
        // A final line break makes no line of its own in a loaded text.
        model_.reset(bufferText());
        takeOverPlaces();
    }

    /// Moves that the text stays out of: whatever they do to the caret, it stays in the text.
    void move() {
        static constexpr UINT keys[] = {VK_LEFT, VK_RIGHT, VK_UP,    VK_DOWN,
                                        VK_HOME, VK_END,   VK_PRIOR, VK_NEXT};
        switch (below(8)) {
        case 0: {
            const Place place = anyPlace();
            ctrl_->gotoLineCol(place.line, place.col);
            break;
        }
        case 1: {
            const Place pivot = anyPlace();
            const Place caret = anyPlace();
            select(pivot.line, pivot.col, caret.line, caret.col);
            break;
        }
        case 2:
            mouse(WM_LBUTTONDOWN, anyPoint(), oneIn(2) ? MK_SHIFT : 0);
            mouse(WM_MOUSEMOVE, anyPoint());
            mouse(WM_LBUTTONUP, anyPoint());
            break;
        case 3:
            mouse(WM_LBUTTONDBLCLK, anyPoint());
            break;
        case 4:
            platform_.turnWheel(*ctrl_, (below(9) - 4) * WHEEL_DELTA);
            break;
        default:
            key(keys[below(8)], oneIn(3), oneIn(2));
        }
        takeOverPlaces();
    }

    CPoint anyPoint() { return {below(460) - 30, below(240) - 40}; }

    void edit() {
        switch (below(12)) {
        case 0:
        case 1: {
            const char16_t ch = anyCharacter();
            platform_.typeCharacter(*ctrl_, ch);
            if (ch != u'\t' || model_.caret.line == model_.pivot.line)
                model_.type(ch);
            else
                model_.indent();
            break;
        }
        case 2:
            for (const char16_t ch : {u'x', u'y', u'z'}) {
                platform_.typeCharacter(*ctrl_, ch);
                model_.type(ch);
            }
            break;
        case 3:
            key(VK_RETURN);
            model_.pressReturn();
            break;
        case 4:
            key(VK_BACK);
            model_.backspace();
            break;
        case 5:
            key(VK_DELETE);
            model_.deleteForward();
            break;
        case 6:
            ctrl_->OnIndentSelection();
            model_.indent();
            break;
        case 7:
            ctrl_->OnUnindentSelection();
            model_.unindent();
            break;
        case 8:
            if (model_.hasSelection()) {
                key('X', true);
                model_.cut();
            }
            break;
        case 9:
            key('C', true);
            paste();
            break;
        case 10:
            platform_.headlessClipboard().setContent(anyText());
            paste();
            break;
        default:
            changeCase();
        }
    }

    void paste() {
        std::u16string text;
        for (const char16_t c : platform_.headlessClipboard().content().value_or(u""))
            if (c != u'\r')
                text += c;
        key('V', true);
        model_.replaceSelection(text, false);
    }

    void changeCase() {
        const std::u16string selected = model_.selectedText();
        if (oneIn(2)) {
            ctrl_->OnMakeSelectionUppercase();
            model_.replaceSelection(toUpperCase(selected), true);
        } else {
            ctrl_->OnMakeSelectionLowercase();
            model_.replaceSelection(toLowerCase(selected), true);
        }
    }

    void undoOrRedo() {
        const bool back = oneIn(2);
        if (back ? !model_.canUndo() : !model_.canRedo())
            return;
        for (int n = below(4); n >= 0 && (back ? model_.canUndo() : model_.canRedo()); --n) {
            key(back ? 'Z' : 'Y', true);
            if (back)
                model_.undo();
            else
                model_.redo();
        }
        takeOverPlaces();
    }

    void checkInvariants() {
        EXPECT_NO_THROW(ctrl_->checkInvariants());
        EXPECT_NO_THROW(ctrl_->getBuffer().checkInvariants());
    }

    void check() {
        checkInvariants();
        ASSERT_EQ(ascii(bufferText()), ascii(model_.text()));
        ASSERT_EQ(bufferText(), model_.text());
        ASSERT_EQ(model_.caret, (Place{ctrl_->getCurrentLine(), ctrl_->getCurrentColoumn()}));
        ASSERT_EQ(model_.pivot, (Place{ctrl_->getPivotLine(), ctrl_->getPivotCol()}));
        ASSERT_EQ(ctrl_->CanUndo(), model_.canUndo());
        ASSERT_EQ(ctrl_->CanRedo(), model_.canRedo());
    }

    void step() {
        const int kind = below(20);
        if (model_.lineCount() > 60 || oneIn(300))
            load();
        else if (kind < 7)
            move();
        else if (kind < 16)
            edit();
        else if (kind < 19)
            undoOrRedo();
        else
            (void)paint();
    }

    std::mt19937 random_;
    TextModel model_;
};

TEST_F(RandomCommands, agreeWithThePlainModelAndUndoCompletely) {
    for (const unsigned seed : seeds()) {
        random_.seed(seed);
        load();
        for (int i = 0; i < commandsPerSeed(); ++i) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", command " + std::to_string(i));
            step();
            check();
            if (HasFailure())
                return;
        }
        for (; ctrl_->CanRedo(); takeOverPlaces()) { // what the last commands undid
            ctrl_->OnEditRedo();
            model_.redo();
        }
        const std::u16string text = model_.text();
        std::vector<std::u16string> texts{text};
        while (ctrl_->CanUndo()) {
            ctrl_->OnEditUndo();
            model_.undo();
            takeOverPlaces();
            check();
            texts.push_back(bufferText());
        }
        for (; ctrl_->CanRedo(); texts.pop_back()) {
            ASSERT_EQ(bufferText(), texts.back());
            ctrl_->OnEditRedo();
            ctrl_->checkInvariants();
        }
        EXPECT_EQ(bufferText(), text) << "seed " << seed;
    }
}

/// Loading keeps caret, pivot and history, so that every command may meet positions that no longer exist, and
/// records of another text. Whatever comes, the next command leaves a caret in the text.
TEST_F(RandomCommands, surviveTextsThatChangeUnderThem) {
    for (const unsigned seed : seeds()) {
        random_.seed(seed);
        for (int i = 0; i < commandsPerSeed(); ++i) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", command " + std::to_string(i));
            model_.reset(bufferText());
            takeOverPlaces();
            if (oneIn(3)) {
                ctrl_->setText(oneIn(3) ? std::u16string() : anyText());
                (void)paint();
                (void)ctrl_->getSelectedText();
            }
            switch (below(10)) {
            case 0:
                host_->MoveWindow({0, 0, below(500), below(300)});
                ctrl_->getFrame()->MoveWindow(host_->GetClientRect());
                break;
            case 1:
                mouse(WM_LBUTTONDOWN, anyPoint(), oneIn(2) ? MK_SHIFT : 0);
                break;
            case 2:
                mouse(oneIn(2) ? WM_LBUTTONUP : WM_RBUTTONDOWN, anyPoint());
                break;
            case 3:
                ctrl_->OnEditRedo();
                break;
            case 4:
            case 5:
                ctrl_->OnEditUndo();
                break;
            case 6:
                platform_.setFocus(nullptr);
                ctrl_->SetFocus();
                break;
            default:
                oneIn(2) ? edit() : move();
            }
            ctrl_->OnEditCopy(); // a command, so that positions are in the text again
            checkInvariants();
            if (HasFailure())
                return;
        }
    }
}

} // namespace
} // namespace tavrin::test
