#include "FakeSchema.h"
#include "autocomplete/AutoCompleteList.h"
#include "control/TextEditorCtrl.h"
#include "platform/headless/HeadlessPlatform.h"
#include "view/EditorSettings.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>

namespace tavrin::test {
namespace {

/// An editor over a small schema, driven at the keyboard. What the user does while a list is up is given
/// beforehand, step by step.
class Completion : public testing::Test {
  protected:
    Completion() {
        schema_.children[{u"n", u"r"}] = {{u"para", u"", u"n", u"A paragraph."},
                                          {u"part", u"", u"n"},
                                          {u"p", u"", u"n"},
                                          {.name = u"late", .namespaceName = u"n", .allowedHere = false}};
        schema_.roots = {{u"root", u"x", u"n"}};
        schema_.templates[{u"n", u"part"}] = u" id=\"*\">\n_\n\n</part>";
        schema_.attributes[{u"n", u"r"}] = {{u"id"}, {u"href"}, {u"hreflang"}};
        schema_.values[{u"n", u"href"}] = {{u"here"}, {u"there"}};
        platform_.setPopupUser([this] { return playStep(); });
        host_.CreateWindowIn(nullptr, {.rect = {0, 0, 400, 160}});
        ctrl_ = std::make_unique<TextEditorCtrl>(platform_);
        ctrl_->setSchemaSource(&schema_);
        ctrl_->Create(&host_, host_.GetClientRect());
        ctrl_->SetFocus();
    }

    bool playStep() {
        if (steps_.empty())
            return false;
        const auto step = std::move(steps_.front());
        steps_.pop_front();
        step();
        return true;
    }

    void setText(std::u16string_view text, int line, int col) {
        ctrl_->setText(text);
        ctrl_->OnNewDocument();
        ctrl_->setCaret(line, col, true);
        ctrl_->updatePivot();
    }
    void key(UINT virtualKey, bool ctrl = false) {
        platform_.pressKey(*ctrl_, {.key = virtualKey, .ctrl = ctrl});
    }
    void type(std::u16string_view text) {
        for (const char16_t c : text)
            platform_.typeCharacter(*ctrl_, c);
    }
    void thenType(std::u16string text) {
        for (const char16_t c : text)
            steps_.push_back([this, c] { platform_.typeCharacter(*ctrl_, c); });
    }
    void thenPress(UINT virtualKey) {
        steps_.push_back([this, virtualKey] { key(virtualKey); });
    }
    void then(std::function<void()> step) { steps_.push_back(std::move(step)); }

    [[nodiscard]] AutoCompleteList& list() {
        return dynamic_cast<AutoCompleteList&>(platform_.popup()->window());
    }
    [[nodiscard]] std::u16string focusedText() {
        const int item = list().GetFocusedItem();
        return item < 0 ? u"" : list().GetItemText(item);
    }
    [[nodiscard]] std::pair<int, int> caret() const {
        return {ctrl_->getCurrentLine(), ctrl_->getCurrentColoumn()};
    }

    FakeSchema schema_;
    HeadlessPlatform platform_;
    CWnd host_{platform_};
    std::unique_ptr<TextEditorCtrl> ctrl_;
    std::deque<std::function<void()>> steps_;
};

constexpr std::u16string_view inRoot = u"<r xmlns=\"n\">\r\n  ";

TEST_F(Completion, anElementIsFilledInAsOneStep) {
    setText(std::u16string(inRoot) + u"\r\n</r>", 1, 2);
    type(u"x");
    key(VK_BACK);
    then([this] { EXPECT_EQ(list().GetItemCount(), 4); });
    thenType(u"PART");
    then([this] { EXPECT_EQ(focusedText(), u"part"); });
    thenPress(VK_RETURN);
    type(u"<");
    EXPECT_EQ(ctrl_->getText(), u"<r xmlns=\"n\">\r\n  <part id=\"\">\r\n  \t\r\n  </part>\r\n</r>");
    EXPECT_EQ(caret(), std::pair(1, 12));
    key('Z', true);
    EXPECT_EQ(ctrl_->getText(), u"<r xmlns=\"n\">\r\n  <PART\r\n</r>") << "what was typed is its own step";
}

TEST_F(Completion, whatClosesTheListDecidesWhatIsWritten) {
    struct Case {
        std::u16string typed;
        UINT key;
        std::u16string line;
        int col;
    };
    for (const Case& c : {
             Case{u"para>", 0, u"  <para", 7}, // the template of "para" is empty
             Case{u"part>", 0, u"  <part id=\"\">", 12},
             Case{u"part ", 0, u"  <part", 7}, // the name alone, without the blank
             Case{u"part\"", 0, u"  <part", 7},
             Case{u"zz ", 0, u"  <zz ", 6}, // nothing in focus: what was typed stays
             Case{u"pa", VK_ESCAPE, u"  <pa", 5}, Case{u"!", 0, u"  <!", 4}, Case{u"pa[", 0, u"  <pa[", 6},
             Case{u"", VK_BACK, u"  ", 2}, Case{u"", VK_LEFT, u"  <", 2}, Case{u"pa", VK_RIGHT, u"  <pa", 5},
             Case{u"\u00E9p", VK_RETURN, u"  <p", 4}, // dropped by list and text
             Case{u"", VK_RETURN, u"  <", 3},         // nothing in focus
         }) {
        setText(std::u16string(inRoot), 1, 2);
        thenType(c.typed);
        if (c.key)
            thenPress(c.key);
        type(u"<");
        EXPECT_TRUE(steps_.empty());
        EXPECT_EQ(ctrl_->getBuffer().getLineText(1), c.line);
        EXPECT_EQ(caret(), std::pair(1, c.col)) << testing::PrintToString(c.line);
        steps_.clear();
    }
}

TEST_F(Completion, prefixAndTextStayInStep) {
    setText(std::u16string(inRoot), 1, 2);
    thenType(u"pt");
    then([this] { EXPECT_EQ(focusedText(), u""); });
    thenPress(VK_LEFT);
    thenType(u"ar");
    then([this] {
        EXPECT_EQ(list().getPrefix(), u"part");
        EXPECT_EQ(focusedText(), u"part");
    });
    thenPress(VK_DELETE);
    then([this] {
        EXPECT_EQ(list().getPrefix(), u"par");
        EXPECT_EQ(focusedText(), u"para");
        EXPECT_EQ(ctrl_->getBuffer().getLineText(1), u"  <par");
    });
    thenPress(VK_BACK);
    thenPress(VK_END);
    then([this] { EXPECT_EQ(focusedText(), u"part"); });
    thenPress(VK_UP);
    thenPress(VK_RETURN);
    type(u"<");
    EXPECT_EQ(ctrl_->getBuffer().getLineText(1), u"  <para");
}

TEST_F(Completion, aNameOfOneLetterIsAStepOfItsOwn) {
    setText(std::u16string(inRoot), 1, 2);
    thenPress(VK_DOWN);
    thenPress(VK_HOME);
    thenPress(VK_DOWN);
    then([this] { EXPECT_EQ(focusedText(), u"p"); });
    thenPress(VK_RETURN);
    type(u"<");
    EXPECT_EQ(ctrl_->getBuffer().getLineText(1), u"  <p");
    key('Z', true);
    EXPECT_EQ(ctrl_->getBuffer().getLineText(1), u"  <");
}

TEST_F(Completion, attributeNamesReplaceWhatStandsThere) {
    setText(u"<r xmlns=\"n\" hre", 0, 15);
    then([this] { EXPECT_EQ(focusedText(), u"href"); });
    thenPress(VK_DOWN);
    thenType(u"=");
    ctrl_->SendCommand(ID_AUTOCOMPLETE_LISTMEMBERS);
    EXPECT_EQ(ctrl_->getText(), u"<r xmlns=\"n\" hreflang=");
    key('Z', true);
    EXPECT_EQ(ctrl_->getText(), u"<r xmlns=\"n\" hre");

    // Shortened while the list is up, in front of more text.
    setText(u"<r xmlns=\"n\" href=\"x\"", 0, 17);
    thenPress(VK_BACK);
    thenPress(VK_BACK);
    then([this] { EXPECT_EQ(ctrl_->getText(), u"<r xmlns=\"n\" hr=\"x\""); });
    thenPress(VK_END);
    thenPress(VK_RETURN);
    ctrl_->SendCommand(ID_AUTOCOMPLETE_LISTMEMBERS);
    EXPECT_EQ(ctrl_->getText(), u"<r xmlns=\"n\" id=\"x\"");
}

TEST_F(Completion, valuesAreQuotedAsNeeded) {
    struct Case {
        std::u16string text;
        int col;
        std::u16string typed;
        std::u16string result;
        int resultCol;
    };
    for (const Case& c : {
             Case{u"<r xmlns=\"n\" href", 17, u"=", u"<r xmlns=\"n\" href=\"here\"", 24},
             Case{u"<r xmlns=\"n\" href=", 18, u"\"", u"<r xmlns=\"n\" href=\"here\"", 24},
             Case{u"<r xmlns=\"n\" href=\"h\"", 20, u"", u"<r xmlns=\"n\" href=\"here\"", 24},
         }) {
        setText(c.text, 0, c.col);
        thenPress(VK_HOME);
        thenPress(VK_RETURN);
        if (c.typed.empty())
            ctrl_->SendCommand(ID_AUTOCOMPLETE_LISTMEMBERS);
        else
            type(c.typed);
        EXPECT_EQ(ctrl_->getText(), c.result);
        EXPECT_EQ(caret(), std::pair(0, c.resultCol));
    }
}

TEST_F(Completion, aSpaceInATagOffersAttributesOnce) {
    setText(u"<r xmlns=\"n\"", 0, 12);
    int lists = 0;
    then([&] { ++lists; });
    thenPress(VK_ESCAPE);
    then([&] { ++lists; });
    platform_.pressKey(*ctrl_, {.key = VK_SPACE, .character = u' '});
    EXPECT_EQ(lists, 1);
    steps_.clear();
    then([&] { ++lists; });
    thenPress(VK_ESCAPE);
    then([&] { ++lists; });
    platform_.pressKey(*ctrl_, {.key = VK_SPACE, .character = u' ', .ctrl = true});
    EXPECT_EQ(lists, 2) << "asked for once, shown once";
}

TEST_F(Completion, endTagsNeedNoSchema) {
    ctrl_->setSchemaSource(nullptr);
    struct Case {
        std::u16string text;
        std::u16string result;
    };
    for (const Case& c :
         {Case{u"<a b=\"1\"", u"<a b=\"1\"></a>"}, Case{u"<br/", u"<br/>"}, Case{u"</a", u"</a>"},
          Case{u"<x:y", u"<x:y></x:y>"}, Case{u"<a title=\"x", u"<a title=\"x></a>"},
          Case{u"<!-- <a", u"<!-- <a>"}, Case{u"", u">"}}) {
        setText(c.text, 0, static_cast<int>(c.text.size()));
        type(u"<");
        key(VK_BACK);
        type(u">");
        EXPECT_EQ(ctrl_->getText(), c.result);
        EXPECT_EQ(ctrl_->getCurrentColoumn(), static_cast<int>(c.text.size()) + 1);
    }
}

TEST_F(Completion, theContextTellsBindingsAndSiblings) {
    setText(u"<d:r xmlns:d=\"u\" xmlns=\"n\">\r\n<a/><d:b c='>'>\r\n<i></i></d:b>\r\n\r\n<!-- <x/> "
            u"--><e xmlns=\"m\"><f/></e><g/>\r\n</d:r>",
            3, 0);
    type(u"<");
    const SchemaContext& context = schema_.lastContext;
    EXPECT_EQ(context.namespaceOf(u"d"), u"u");
    EXPECT_EQ(context.namespaceOf(u""), u"n");
    EXPECT_EQ(context.siblingsBefore, (std::vector<ExpandedName>{{u"n", u"a"}, {u"u", u"b"}}));
    EXPECT_EQ(context.siblingsAfter, (std::vector<ExpandedName>{{u"m", u"e"}, {u"n", u"g"}}));
    EXPECT_TRUE(context.isBeforeComplete && context.isAfterComplete);
}

TEST_F(Completion, theContextStaysBounded) {
    std::u16string text = u"<r xmlns=\"n\">\r\n";
    for (int i = 0; i < 500; ++i)
        text += u"<a/>\r\n";
    setText(text + u"\r\n" + text.substr(16) + u"</r>", 501, 0);
    type(u"<");
    EXPECT_EQ(schema_.lastContext.siblingsBefore.size(), 200U);
    EXPECT_EQ(schema_.lastContext.siblingsAfter.size(), 200U);
    EXPECT_FALSE(schema_.lastContext.isBeforeComplete || schema_.lastContext.isAfterComplete);
}

TEST_F(Completion, whatIsSearchedForCompletesNothing) {
    setText(std::u16string(inRoot), 1, 2);
    ctrl_->startIncrementalSearch();
    then([] { FAIL() << "a list is up"; });
    type(u"<");
    EXPECT_EQ(ctrl_->getText(), inRoot);
}

// The list

TEST_F(Completion, theListIsAsLargeAsItsItemsAndShowsWholeRows) {
    setText(std::u16string(inRoot), 1, 2);
    then([this] {
        const CRect rect = platform_.popup()->windowRect();
        EXPECT_EQ(rect.Height(), 4 * 16);
        EXPECT_EQ(rect.Width(), 3 + 16 + 3 + 4 * 8 + 3 + 16) << "icon, text and scroll bar";
        EXPECT_EQ(rect.top, 2 * 16) << "below the line";
        EXPECT_EQ(rect.left, ctrl_->getCaretPoint().x + 3);
    });
    type(u"<");

    schema_.children[{u"n", u"r"}] = {};
    for (char16_t c = u'A'; c < u'A' + 30; ++c)
        schema_.children[{u"n", u"r"}].push_back({std::u16string(100, c), u"", u"n"});
    platform_.setWorkArea({0, 0, 1920, 220});
    setText(std::u16string(inRoot) + std::u16string(20, u'\n'), 13, 0);
    then([this] {
        const CRect rect = platform_.popup()->windowRect();
        EXPECT_EQ(rect.Height(), 192);
        EXPECT_EQ(rect.Width(), 750 + 16);
        const CPoint caret = platform_.windowOf(*ctrl_).clientToScreen(ctrl_->getCaretPoint());
        EXPECT_EQ(rect.bottom, caret.y) << "above the line, where there is room";
    });
    thenPress(VK_DOWN);
    thenPress(VK_NEXT);
    then([this] {
        EXPECT_EQ(list().GetFocusedItem(), 11);
        RecordingDC dc;
        platform_.popup()->paint(dc);
        ASSERT_EQ(dc.texts().size(), 12U);
        EXPECT_EQ(dc.images().size(), 12U);
        EXPECT_TRUE(dc.texts()[0].text.ends_with(u'\u2026'));
    });
    thenPress(VK_NEXT);
    then([this] { EXPECT_EQ(list().GetFocusedItem(), 22); });
    thenPress(VK_PRIOR);
    then([this] { EXPECT_EQ(list().GetFocusedItem(), 11); });
    then([this] {
        platform_.sendMouse(list(), WM_MOUSEMOVE, {5, 5});
        EXPECT_EQ(list().GetFocusedItem(), 11) << "a pointer at rest takes nothing";
        platform_.sendMouse(list(), WM_MOUSEMOVE, {5, 20});
        EXPECT_EQ(list().GetFocusedItem(), 12);
        EXPECT_EQ(platform_.popup()->tip(), list().GetItemText(12)) << "cut off";
    });
    then([this] { platform_.sendMouse(list(), WM_LBUTTONDBLCLK, {5, 36}); });
    type(u"<");
    EXPECT_TRUE(ctrl_->getBuffer().getLineText(13).starts_with(u"<NNN"));
}

TEST_F(Completion, stylesGreyAndDocumentationAreShown) {
    setText(std::u16string(inRoot), 1, 2);
    thenType(u"pa");
    then([this] {
        EXPECT_EQ(list().getDocumentation().text(), u"A paragraph.");
        RecordingDC dc;
        platform_.popup()->paint(dc);
        ASSERT_EQ(dc.texts().size(), 4U);
        EXPECT_EQ(dc.texts()[0].text, u"late");
        EXPECT_EQ(dc.texts()[0].fore, platform_.GetSysColor(COLOR_GRAYTEXT));
        EXPECT_EQ(dc.texts()[1].fore, platform_.GetSysColor(COLOR_WINDOWTEXT));
    });
    thenPress(VK_DOWN);
    then([this] { EXPECT_EQ(list().getDocumentation().text(), u""); });
    type(u"<");

    platform_.settings().setBoolValue(settings::section, settings::hideNotAllowedHere, true);
    schema_.attributes[{u"n", u"r"}] = {{.name = u"b", .second = true}};
    then([this] { EXPECT_EQ(list().GetItemCount(), 3); });
    type(u"<");
    setText(u"<r xmlns=\"n\"", 0, 12);
    then([this] {
        RecordingDC dc;
        platform_.popup()->paint(dc);
        EXPECT_TRUE(dc.texts().at(0).style.bold);
    });
    type(u" ");
    EXPECT_TRUE(steps_.empty());
}

// Around the list

class MainWnd : public CWnd {
  public:
    using CWnd::CWnd;
    bool PreTranslateMessage(const MSG& message) override {
        return message.message == WM_KEYDOWN && message.key == VK_F1 && ++commands > 0;
    }
    int commands = 0;
};

TEST_F(Completion, shortcutsOfTheMainWindowRunAndCancel) {
    MainWnd main(platform_);
    main.CreateWindowIn(nullptr, {.rect = {0, 0, 400, 160}});
    platform_.setMainWindow(&main);
    TextEditorCtrl inside(platform_);
    inside.setSchemaSource(&schema_);
    inside.Create(&main, main.GetClientRect());
    inside.setText(inRoot);
    inside.setCaret(1, 2, false);
    inside.updatePivot();
    then([&] { platform_.pressKey(inside, {.key = VK_F1}); });
    then([] { FAIL() << "the list is closed"; });
    platform_.typeCharacter(inside, u'<');
    EXPECT_EQ(main.commands, 1);
    EXPECT_EQ(platform_.popup(), nullptr);

    steps_.clear();
    setText(std::u16string(inRoot), 1, 2);
    then([&] { platform_.pressKey(*ctrl_, {.key = VK_F1}); });
    then([this] { EXPECT_NE(platform_.popup(), nullptr) << "another window's shortcuts do not count"; });
    type(u"<");
    EXPECT_EQ(main.commands, 1);
    inside.DestroyWindow();
}

TEST_F(Completion, theHostMayDestroyTheEditorOrItsTextMeanwhile) {
    setText(std::u16string(inRoot), 1, 2);
    thenType(u"pa");
    then([this] { ctrl_->setText(u"other"); });
    thenPress(VK_RETURN);
    type(u"<");
    EXPECT_EQ(ctrl_->getText(), u"other");

    setText(std::u16string(inRoot), 1, 2);
    thenType(u"pa");
    then([this] { ctrl_.reset(); });
    then([] { FAIL() << "there is no list any more"; });
    type(u"<");
    EXPECT_EQ(ctrl_, nullptr);
    EXPECT_EQ(platform_.popup(), nullptr);
}

} // namespace
} // namespace tavrin::test
