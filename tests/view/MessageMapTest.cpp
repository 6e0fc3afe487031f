#include "EditorFixture.h"

namespace tavrin::test {
namespace {

using MessageRouting = Editor;

TEST_F(MessageRouting, viewAnswersItsMessagesAndCommandsInOneTable) {
    struct Row {
        RouteKind kind;
        UINT id;
        std::string_view handler;
    };
    constexpr auto message = RouteKind::Message;
    constexpr auto command = RouteKind::Command;
    constexpr auto update = RouteKind::UpdateCommand;
    const std::vector<Row> expected = {
        {message, WM_KEYDOWN, "OnKeyDown"},
        {message, WM_CHAR, "OnChar"},
        {message, WM_SETFOCUS, "OnSetFocus"},
        {message, WM_KILLFOCUS, "OnKillFocus"},
        {message, WM_LBUTTONDOWN, "OnLButtonDown"},
        {message, WM_MOUSEWHEEL, "OnMouseWheel"},
        {message, WM_SIZE, "OnSize"},
        {message, WM_ERASEBKGND, "OnEraseBkgnd"},
        {message, WM_CONTEXTMENU, "OnContextMenu"},
        {message, WM_SETCURSOR, "OnSetCursor"},
        {message, WM_VSCROLL, "OnVScroll"},
        {command, 57634, "OnEditCopy"},
        {command, 57635, "OnEditCut"},
        {command, 57637, "OnEditPaste"},
        {command, 57642, "OnEditSelectAll"},
        {command, 57643, "OnEditUndo"},
        {command, 57644, "OnEditRedo"},
        {update, 57637, "OnUpdateOnEditPaste"},
        {update, 57643, "OnUpdateOnEditUndo"},
        {update, 57644, "OnUpdateOnEditRedo"},
        {command, 57636, "OnEditFind"},
        {command, 57641, "OnEditReplace"},
        {RouteKind::Registered, TestedCtrl::findMessage(), "OnFindReplace"},
        {command, 57607, "OnFilePrint"},
        {command, 57608, "OnFilePrint"},
        {command, 57609, "OnFilePrintPreview"},
        {message, WM_LBUTTONDBLCLK, "OnLButtonDblClk"},
        {message, WM_RBUTTONDOWN, "OnRButtonDown"},
        {message, WM_RBUTTONDBLCLK, "OnRButtonDown"},
        {command, 3032, "OnAutocompleteListmembers"},
    };
    const auto entries = ctrl_->viewMessageMap().entries;
    ASSERT_GE(entries.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(expected[i].handler);
        EXPECT_EQ(entries[i].kind, expected[i].kind);
        EXPECT_EQ(entries[i].id, expected[i].id);
        EXPECT_EQ(entries[i].handler, expected[i].handler);
    }
    EXPECT_EQ(TestedCtrl::findMessage(), platform_.RegisterWindowMessage("commdlg_FindReplace"));
}

TEST_F(MessageRouting, controlTakesKeysAndCharactersFirstAndLeavesTheRestToTheView) {
    const MessageMap& map = ctrl_->GetMessageMap();
    for (const UINT id : {WM_CHAR, WM_KEYDOWN, WM_GETDLGCODE}) {
        const MessageMapEntry* row = map.find(RouteKind::Message, id);
        ASSERT_NE(row, nullptr);
        EXPECT_TRUE(row >= map.entries.data() && row < map.entries.data() + map.entries.size()) << id;
    }
    EXPECT_EQ(map.find(RouteKind::Message, WM_SIZE),
              ctrl_->viewMessageMap().find(RouteKind::Message, WM_SIZE));
    EXPECT_EQ(map.find(RouteKind::Message, WM_HSCROLL)->handler, "OnHScroll") << "the scroll view's own";
    EXPECT_EQ(ctrl_->SendMessage({.message = WM_GETDLGCODE}), 0x84);
}

TEST_F(MessageRouting, undoAndRedoAreEnabledByTheHistoryAndPasteByTheClipboard) {
    const auto enabled = [this](UINT command) {
        CCmdUI state(command);
        EXPECT_TRUE(ctrl_->UpdateCommand(state));
        return state.isEnabled();
    };
    EXPECT_FALSE(enabled(ID_EDIT_UNDO));
    EXPECT_FALSE(enabled(ID_EDIT_REDO));
    EXPECT_FALSE(enabled(ID_EDIT_PASTE));
    EXPECT_TRUE(enabled(ID_EDIT_COPY));
    type(u"a");
    EXPECT_TRUE(enabled(ID_EDIT_UNDO));
    ctrl_->SendCommand(ID_EDIT_UNDO);
    EXPECT_TRUE(enabled(ID_EDIT_REDO));
    type(u"b");
    EXPECT_FALSE(enabled(ID_EDIT_REDO)) << "an edit discards what was undone";
    platform_.headlessClipboard().setContent(u"");
    EXPECT_TRUE(enabled(ID_EDIT_PASTE));
    platform_.headlessClipboard().setBusy(true);
    EXPECT_FALSE(enabled(ID_EDIT_PASTE));
}

TEST_F(MessageRouting, controlCharactersAndUnknownKeysChangeNothing) {
    setText(u"ab");
    for (char16_t c = 0; c < 0x20; ++c)
        if (c != u'\t')
            platform_.typeCharacter(*ctrl_, c);
    for (const UINT ignored : {UINT{VK_TAB}, UINT{VK_ESCAPE}, UINT{VK_INSERT}, UINT{VK_F1}, UINT{'Q'}})
        key(ignored);
    EXPECT_EQ(ctrl_->getText(), u"ab");
    EXPECT_FALSE(ctrl_->CanUndo());
}

/// Notes what it hears and what the text was at that moment.
class RecordingProvider : public IAutoCompleteProvider {
  public:
    explicit RecordingProvider(TextEditorCtrl& ctrl) : ctrl_(ctrl) {}

    void autoCompleteAtCrtPosition(CTextEditorView* view) override {
        EXPECT_EQ(view, &ctrl_);
        log += "complete ";
    }
    void onKeyDown(CTextEditorView*, unsigned key) override { log += "key" + std::to_string(key) + " "; }
    void onChar(CTextEditorView*, unsigned character) override {
        log += "char" + std::to_string(character) + "@" + std::to_string(ctrl_.getText().size()) + " ";
    }

    std::string log;

  private:
    TextEditorCtrl& ctrl_;
};

TEST_F(MessageRouting, completionHearsOfKeysAndCharactersAfterTheViewHandledThem) {
    RecordingProvider provider(*ctrl_);
    ctrl_->setAutoCompleteProvider(&provider);
    platform_.pressKey(*ctrl_, {.key = 'A', .character = u'a'});
    EXPECT_EQ(provider.log, "key65 char97@1 ");

    provider.log.clear();
    platform_.pressKey(*ctrl_, {.key = VK_SPACE, .character = u' ', .ctrl = true});
    EXPECT_EQ(provider.log, "key32 complete char32@1 ") << "nothing is inserted";

    provider.log.clear();
    ctrl_->SendCommand(ID_AUTOCOMPLETE_LISTMEMBERS);
    EXPECT_EQ(provider.log, "complete ");

    provider.log.clear();
    platform_.pressKey(*ctrl_, {.key = 'Z', .character = 26, .ctrl = true});
    EXPECT_EQ(provider.log, "") << "a shortcut is taken out before";
    EXPECT_EQ(ctrl_->getText(), u"");
}

TEST_F(MessageRouting, completionPopupTypesDeletesAndMovesOnlyWithAProvider) {
    setText(u"abc");
    ctrl_->insertChar(u'x');
    ctrl_->deleteChar(false);
    ctrl_->moveCaretRight();
    EXPECT_EQ(ctrl_->getText(), u"abc");
    EXPECT_EQ(caret(), std::pair(0, 0));

    RecordingProvider provider(*ctrl_);
    ctrl_->setAutoCompleteProvider(&provider);
    ctrl_->insertChar(u'x');
    EXPECT_EQ(ctrl_->getText(), u"xabc");
    ctrl_->moveCaretRight();
    ctrl_->deleteChar(true);
    EXPECT_EQ(ctrl_->getText(), u"xbc");
    ctrl_->moveCaretLeft();
    ctrl_->deleteChar(false);
    EXPECT_EQ(ctrl_->getText(), u"bc");
    EXPECT_EQ(caret(), std::pair(0, 0));
}

} // namespace
} // namespace tavrin::test
