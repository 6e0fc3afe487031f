#include "EditorFixture.h"
#include "platform/core/Exception.h"

namespace tavrin::test {
namespace {

TEST(Control, standsWithoutAWindow) {
    HeadlessPlatform platform;
    TextEditorCtrl ctrl(platform);
    EXPECT_EQ(ctrl.getText(), u"");
    EXPECT_EQ(ctrl.getFrame(), nullptr);
    ctrl.setText(u"a\nb");
    ctrl.gotoLineCol(1, 1);
    ctrl.insert(1, 1, u"c");
    ctrl.OnEditSelectAll();
    ctrl.OnUpdate();
    ctrl.OnEditUndo();
    EXPECT_EQ(ctrl.getText(), u"a\r\nb");
    ctrl.checkInvariants();
}

TEST(Control, refusesUnknownLanguages) {
    HeadlessPlatform platform;
    try {
        const TextEditorCtrl ctrl(platform, static_cast<TextEditorCtrl::ParserType>(1));
        FAIL();
    } catch (const Exception& e) {
        EXPECT_TRUE(std::string_view(e.what()).starts_with("Unreachable code: TextEditorCtrl ")) << e.what();
        EXPECT_EQ(e.source(), "TextEditorCtrl");
    }
}

TEST(Control, textComesBackWithTheLineBreaksOfFiles) {
    HeadlessPlatform platform;
    TextEditorCtrl ctrl(platform);
    const std::pair<std::u16string_view, std::u16string_view> cases[] = {
        {u"", u""}, {u"a\r\nb", u"a\r\nb"}, {u"a\nb", u"a\r\nb"}, {u"a\n", u"a"}, {u"\n\nx", u"\r\n\r\nx"},
    };
    for (const auto& [text, expected] : cases) {
        ctrl.setText(text);
        EXPECT_EQ(ctrl.getText(), expected);
    }
}

TEST(Control, readsAheadToTheEndOfEachText) {
    HeadlessPlatform platform;
    TextEditorCtrl ctrl(platform);
    const Buffer& buffer = ctrl.getBuffer();
    EXPECT_FALSE(ctrl.readAhead()) << "nothing to read";
    const auto load = [&](int lines) {
        std::u16string text = u"<r>";
        for (int i = 0; i < lines; ++i)
            text += u"<a>\n<!-- -->";
        ctrl.setText(text);
    };
    const auto isKnown = [&](int line) {
        return (buffer.getLineFlags(line) & PF_BLOCKS) && buffer.getChunkNote(buffer.chunkAt(line));
    };
    for (const int lines : {5000, 3000}) {
        load(lines);
        ASSERT_TRUE(ctrl.readAhead());
        EXPECT_TRUE(isKnown(0));
        EXPECT_FALSE(isKnown(lines - 1)) << "only a part at once";
        int parts = 1;
        for (; ctrl.readAhead(); ++parts)
            ASSERT_LT(parts, lines);
        EXPECT_TRUE(isKnown(lines - 1));
        ctrl.insert(0, 0, u"x");
        EXPECT_FALSE(ctrl.readAhead()) << "an edit costs what is read, when it is read";
    }
    ctrl.setAutoCompleteProvider(nullptr);
    load(1);
    EXPECT_FALSE(ctrl.readAhead());
    EXPECT_TRUE(buffer.getLineFlags(1) & PF_BLOCKS);
    EXPECT_FALSE(buffer.getChunkNote(buffer.chunkAt(0))) << "for nobody";
}

TEST(Control, createdHiddenThenShownInsideItsFrame) {
    HeadlessPlatform platform;
    HostWnd host(platform);
    host.CreateWindowIn(nullptr, {.rect = {0, 0, 500, 300}});
    TextEditorCtrl ctrl(platform);
    ctrl.Create(&host, {10, 20, 310, 220});
    ASSERT_NE(ctrl.getFrame(), nullptr);
    EXPECT_EQ(ctrl.GetParent(), ctrl.getFrame());
    EXPECT_EQ(ctrl.getFrame()->GetParent(), &host);
    EXPECT_EQ(ctrl.getFrame()->GetActiveView(), &ctrl);
    EXPECT_EQ(ctrl.GetClientRect(), (CRect{0, 0, 300, 200}));
    EXPECT_TRUE(ctrl.IsWindowVisible());
    EXPECT_EQ(ctrl.GetTotalSize(), (CSize{10, 10})) << "provisional";
    ctrl.getFrame()->MoveWindow({0, 0, 100, 50});
    EXPECT_EQ(ctrl.GetClientRect(), (CRect{0, 0, 100, 50}));
}

TEST(Control, viewIsCreatedInvisibleEvenWhenAskedOtherwise) {
    class ViewAlone : public TextEditorCtrl {
      public:
        using TextEditorCtrl::PreCreateWindow;
        using TextEditorCtrl::TextEditorCtrl;
    };
    HeadlessPlatform platform;
    ViewAlone ctrl(platform);
    CREATESTRUCT how{.visible = true};
    EXPECT_TRUE(ctrl.PreCreateWindow(how));
    EXPECT_FALSE(how.visible);
}

TEST(Control, anyOrderOfDestructionIsFine) {
    HeadlessPlatform platform;
    const auto build = [&platform](HostWnd& host) {
        host.CreateWindowIn(nullptr, {.rect = {0, 0, 100, 100}});
        auto ctrl = std::make_unique<TextEditorCtrl>(platform);
        ctrl->Create(&host, {0, 0, 100, 100});
        ctrl->SetFocus();
        return ctrl;
    };
    { // the control first; its frame goes with the host
        HostWnd host(platform);
        std::unique_ptr<TextEditorCtrl> ctrl = build(host);
        ctrl.reset();
        EXPECT_EQ(platform.focus(), nullptr);
    }
    { // the host's window first, then the control
        HostWnd host(platform);
        const std::unique_ptr<TextEditorCtrl> ctrl = build(host);
        host.DestroyWindow();
        EXPECT_EQ(ctrl->getFrame(), nullptr);
        EXPECT_EQ(ctrl->peer(), nullptr);
        ctrl->setText(u"still a document");
        ctrl->OnEditSelectAll();
        EXPECT_EQ(ctrl->getSelectedText(), u"still a document");
    }
    { // the host object first
        auto host = std::make_unique<HostWnd>(platform);
        const std::unique_ptr<TextEditorCtrl> ctrl = build(*host);
        host.reset();
        EXPECT_EQ(ctrl->getFrame(), nullptr);
    }
    { // the frame by the host
        HostWnd host(platform);
        const std::unique_ptr<TextEditorCtrl> ctrl = build(host);
        ctrl->getFrame()->DestroyWindow();
        EXPECT_EQ(ctrl->getFrame(), nullptr);
        EXPECT_EQ(ctrl->peer(), nullptr);
    }
}

TEST(Control, helpRequestsGoUpUntilSomeoneAnswers) {
    class HelpfulWnd : public CWnd {
      public:
        using CWnd::CWnd;
        bool helps = false;
        int asked = 0;

      protected:
        LRESULT DefWindowProc(const MSG& message) override {
            if (message.message != WM_COMMANDHELP)
                return CWnd::DefWindowProc(message);
            ++asked;
            return helps ? 7 : 0;
        }
    };
    HeadlessPlatform platform;
    HelpfulWnd outer(platform);
    HelpfulWnd inner(platform);
    outer.CreateWindowIn(nullptr, {.rect = {0, 0, 100, 100}});
    inner.CreateWindowIn(&outer, {.rect = {0, 0, 100, 100}});
    TextEditorCtrl ctrl(platform);
    ctrl.Create(&inner, {0, 0, 100, 100});
    const MSG help{.message = WM_COMMANDHELP};
    EXPECT_EQ(ctrl.getFrame()->SendMessage(help), 0);
    EXPECT_EQ(std::pair(inner.asked, outer.asked), std::pair(1, 1));
    outer.helps = true;
    EXPECT_EQ(ctrl.getFrame()->SendMessage(help), 1);
    inner.helps = true;
    EXPECT_EQ(ctrl.getFrame()->SendMessage(help), 1);
    EXPECT_EQ(std::pair(inner.asked, outer.asked), std::pair(3, 2)) << "the innermost answer counts";
}

using EditorControl = Editor;

TEST_F(EditorControl, shortcutsAreTakenBeforeAnyHandlerSeesTheKey) {
    setText(u"ab");
    key('A', true);
    EXPECT_EQ(ctrl_->getSelectedText(), u"ab");
    key('X', true);
    EXPECT_EQ(ctrl_->getText(), u"");
    EXPECT_EQ(platform_.headlessClipboard().content(), u"ab");
    key('Z', true);
    EXPECT_EQ(ctrl_->getText(), u"ab");
    key('Y', true);
    EXPECT_EQ(ctrl_->getText(), u"");
    key('V', true);
    key('V', true);
    EXPECT_EQ(ctrl_->getText(), u"abab");
    key('A', true, true);
    EXPECT_FALSE(ctrl_->hasSelection()) << "with Shift it is no shortcut";
}

TEST_F(EditorControl, setTextLeavesHistoryCaretAndScreen) {
    type(u"abc");
    window().clearRecord();
    ctrl_->setText(u"x");
    EXPECT_TRUE(ctrl_->CanUndo());
    EXPECT_EQ(caret(), std::pair(0, 3));
    EXPECT_TRUE(window().invalidated().empty());
}

TEST_F(EditorControl, busyClipboardLosesNothing) {
    setText(u"abc");
    select(0, 0, 0, 2);
    platform_.headlessClipboard().setContent(u"other");
    platform_.headlessClipboard().setBusy(true);
    ctrl_->OnEditCopy();
    ctrl_->OnEditCut();
    ctrl_->OnEditPaste();
    EXPECT_EQ(ctrl_->getText(), u"abc");
    EXPECT_EQ(ctrl_->getSelectedText(), u"ab");
    EXPECT_FALSE(ctrl_->CanUndo());
    platform_.headlessClipboard().setBusy(false);
    EXPECT_EQ(platform_.headlessClipboard().content(), u"other");
    platform_.headlessClipboard().setContent(std::nullopt);
    ctrl_->OnEditPaste();
    EXPECT_EQ(ctrl_->getText(), u"abc") << "nothing to paste";
}

TEST_F(EditorControl, wholeTextReplacementIsOneStep) {
    setText(u"one\ntwo");
    select(1, 1, 1, 2);
    {
        const TextUndoScope scope(ctrl_->getDocument());
        ctrl_->addBufferReplaceUndoAction(true);
        ctrl_->setText(u"<a>\n<b/>\n</a>");
        ctrl_->addBufferReplaceUndoAction(false);
    }
    ctrl_->OnEditUndo();
    EXPECT_EQ(ctrl_->getText(), u"one\r\ntwo");
    EXPECT_EQ(ctrl_->getSelectedText(), u"w");
    ctrl_->OnEditRedo();
    EXPECT_EQ(ctrl_->getText(), u"<a>\r\n<b/>\r\n</a>");
    EXPECT_EQ(caret(), std::pair(0, 0));
    EXPECT_FALSE(ctrl_->CanRedo());
}

TEST_F(EditorControl, caretIsShownWithTheFocusAndKeptForThePopup) {
    setText(u"abc\ndef");
    ctrl_->gotoLineCol(1, 2);
    ASSERT_TRUE(window().caret());
    EXPECT_EQ(window().caret()->size, (CSize{2, 16}));
    EXPECT_EQ(window().caretPosition(), (CPoint{25 + 16, 16}));
    platform_.setFocus(nullptr);
    EXPECT_FALSE(window().caret());
    ctrl_->SetFocus();
    ctrl_->setAutoCompleteShown(true);
    platform_.setFocus(nullptr);
    ASSERT_TRUE(window().caret());
    ctrl_->gotoLineCol(0, 1);
    EXPECT_EQ(window().caretPosition(), (CPoint{25 + 8, 0})) << "it moves while the popup has the focus";
}

TEST_F(EditorControl, updateFitsTheCaretToTheFont) {
    setText(u"abc\ndef");
    ctrl_->gotoLineCol(1, 2);
    platform_.setCellSize({10, 20});
    ctrl_->OnUpdate();
    ASSERT_TRUE(window().caret());
    EXPECT_EQ(window().caret()->size, (CSize{2, 20}));
    EXPECT_TRUE(window().caret()->shown);
    EXPECT_EQ(window().caretPosition(), (CPoint{25 + 20, 20}));
}

TEST_F(EditorControl, pointerShowsWhatItIsOver) {
    setText(u"abc");
    mouse(WM_MOUSEMOVE, {24, 5});
    EXPECT_EQ(window().cursor(), CursorShape::Gutter);
    mouse(WM_MOUSEMOVE, {25, 5});
    EXPECT_EQ(window().cursor(), CursorShape::IBeam);
    platform_.settings().setBoolValue("Xml Editor", "Display Line Numbers", false);
    ctrl_->OnUpdate();
    mouse(WM_MOUSEMOVE, {1, 5});
    EXPECT_EQ(window().cursor(), CursorShape::IBeam) << "no gutter, no gutter cursor";
}

TEST_F(EditorControl, focusBringsStalePositionsBackIntoTheText) {
    setText(u"abc\ndef");
    select(1, 3, 0, 1);
    platform_.setFocus(nullptr);
    ctrl_->setText(u"x");
    ctrl_->SetFocus();
    EXPECT_EQ(caret(), std::pair(0, 1));
    EXPECT_EQ(std::pair(ctrl_->getPivotLine(), ctrl_->getPivotCol()), std::pair(0, 1));
    ctrl_->checkInvariants();
}

} // namespace
} // namespace tavrin::test
