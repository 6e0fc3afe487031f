#include "EditorFixture.h"
#include "document/ReloadAction.h"
#include "files/TextFileContents.h"
#include "support.h"

#include <algorithm>

namespace tavrin::test {
namespace {

class Reload : public Editor {
  protected:
    void open(const std::string& bytes) {
        ctrl_->getBuffer().loadBytes(blockOf(bytes));
        ctrl_->OnOpenDocument(u"");
        ctrl_->setCaret(0, 0, true);
        ctrl_->updatePivot();
        ctrl_->updateScrollbars();
    }
    void reload(const std::string& bytes) {
        const SmartPtr<ReloadAction> action(new ReloadAction(blockOf(bytes)));
        ctrl_->reload(*action);
        ctrl_->checkInvariants();
        ctrl_->getBuffer().checkInvariants();
    }
    [[nodiscard]] std::string saved() const {
        std::string bytes;
        const Buffer& buffer = ctrl_->getBuffer();
        textFileContents(buffer)([&](std::string_view piece) {
            bytes += piece;
            return true;
        });
        return bytes;
    }
    /// Format codes of every character, line after line.
    [[nodiscard]] std::vector<int> codes() const {
        std::vector<int> all;
        Buffer& buffer = ctrl_->getBuffer();
        for (int line = 0; line < buffer.getLineCount(); ++line)
            for (int col = 0; col < buffer.getLineLength(line); ++col)
                all.push_back(buffer.getCharFormat(line, col));
        return all;
    }
};

TEST_F(Reload, isOneStepThatGivesBackEveryByteAndColour) {
    const std::string before = "<?xml version='1.0' encoding='utf-8'?><!-- a\r\n<b>-->\n\xFF<c>" +
                               std::string(1100, 'x') + "</c>\r\n";
    const std::string after = "<?xml version='1.0' encoding='iso-8859-1'?>\r<!-- \xE9 -->";
    open(before);
    const auto coloursBefore = codes();
    type(u"ab");
    key(VK_BACK);
    reload(after);
    ctrl_->OnSaveDocument(u"");
    const auto coloursAfter = codes();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(saved(), after);
        EXPECT_EQ(ctrl_->getBuffer().getEncoding(), ENCODING_LATIN1);
        EXPECT_FALSE(ctrl_->isModified());
        EXPECT_EQ(codes(), coloursAfter);
        key('Z', true);
        EXPECT_EQ(saved(), "a" + before);
        EXPECT_EQ(ctrl_->getBuffer().getEncoding(), ENCODING_UTF8);
        EXPECT_TRUE(ctrl_->isModified());
        key('Z', true);
        key('Z', true);
        EXPECT_EQ(saved(), before);
        EXPECT_EQ(codes(), coloursBefore);
        EXPECT_FALSE(ctrl_->CanUndo());
        while (ctrl_->CanRedo())
            key('Y', true);
    }
    type(u"z");
    key('Z', true);
    EXPECT_EQ(saved(), after) << "typing went on in a step of its own";
}

TEST_F(Reload, keepsTheCaretWithItsTextAndItsRowOnScreen) {
    const auto lines = [](int first, int last) {
        std::string text;
        for (int i = first; i < last; ++i)
            text += "<line n='" + std::to_string(i) + "'/>\n";
        return text;
    };
    struct Case {
        std::string after;
        int caretLine;
        int caretCol;
    };
    const Case cases[] = {
        {lines(0, 100) + "<end/>\n", 50, 4},
        {lines(90, 100) + lines(0, 100), 60, 4},
        {lines(40, 100), 10, 4},
        {lines(0, 48) + "<x/>\n" + lines(48, 100), 51, 4},
        {lines(0, 20), 19, 4},
        {"<a>", 0, 3},
        {"", 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.after.substr(0, 40));
        open(lines(0, 100));
        select(49, 0, 50, 4);
        ctrl_->ScrollToPosition({0, 47 * ctrl_->getLineHeight()});
        const int row = ctrl_->getLineIndexInPage(50);
        reload(c.after);
        EXPECT_EQ(caret(), std::pair(c.caretLine, c.caretCol));
        EXPECT_FALSE(ctrl_->hasSelection());
        if (c.caretLine >= 10 && c.caretLine + 10 < ctrl_->getBuffer().getLineCount()) {
            EXPECT_EQ(ctrl_->getLineIndexInPage(c.caretLine), row);
        }
        key('Z', true);
        EXPECT_EQ(caret(), std::pair(50, 4));
        EXPECT_EQ(ctrl_->getPivotLine(), 49);
        key('Y', true);
        EXPECT_EQ(caret(), std::pair(c.caretLine, c.caretCol));
    }
}

} // namespace
} // namespace tavrin::test
