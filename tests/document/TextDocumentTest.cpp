#include "document/TextDocument.h"

#include "document/EditAction.h"
#include "document/TextUndoScope.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace tavrin {
namespace {

/// Notes which records come back, by their start line.
class Recorder : public Undoable {
  public:
    void undo(const UndoableAction& action) override {
        lines.push_back(-static_cast<const EditAction&>(action).startLine);
    }
    void redo(const UndoableAction& action) override {
        lines.push_back(static_cast<const EditAction&>(action).startLine);
    }
    bool canMerge(const UndoableAction& /*previous*/, const UndoableAction& next) override {
        return static_cast<const EditAction&>(next).text == u"m";
    }
    void merge(UndoableAction& previous, const UndoableAction& next) override {
        static_cast<EditAction&>(previous).text += static_cast<const EditAction&>(next).text;
    }

    std::vector<int> lines;
};

class Document : public TextDocument {
  public:
    Buffer& getBuffer() override { throw std::logic_error("a history needs no buffer"); }
    IAutoCompleteProvider* getAutoCompleteProvider() override { return nullptr; }
    void OnTextDocumentChanged() override { reports.push_back(isModified()); }

    std::vector<bool> reports;
};

class TextDocumentTest : public testing::Test {
  protected:
    void record(int line, const char16_t* text = u"text") {
        document.AddUndoAction(
            &view, new EditAction(EditActionKind::Insert, line, 0, line, 4, text, line, 0, line, 0));
    }

    Recorder view;
    Document document;
};

TEST_F(TextDocumentTest, aNewDocumentIsUnmodifiedWithoutHistory) {
    EXPECT_FALSE(document.isModified());
    EXPECT_FALSE(document.CanUndo());
    EXPECT_FALSE(document.CanRedo());
    EXPECT_TRUE(document.reports.empty());
}

TEST_F(TextDocumentTest, everyReportReachesTheHookAfterTheStateIsStored) {
    record(1);
    record(2, u"m");
    document.OnSaveDocument(u"/nowhere/a.xml");
    document.OnSaveDocument(nullptr);
    document.Undo(&view);
    EXPECT_EQ(document.reports, (std::vector<bool>{true, true, false, false, true}));
}

TEST_F(TextDocumentTest, savingMakesThePresentStateTheOneToComeBackTo) {
    record(1);
    EXPECT_TRUE(document.OnSaveDocument(u"a.xml"));
    EXPECT_FALSE(document.isModified());
    document.Undo(&view);
    EXPECT_TRUE(document.isModified());
    document.Redo(&view);
    EXPECT_FALSE(document.isModified());
}

TEST_F(TextDocumentTest, aScopeIsOneStepAndTakesInnerScopesIn) {
    {
        const TextUndoScope outer(document);
        record(1);
        {
            const TextUndoScope inner(document);
            record(2);
        }
        record(3);
    }
    document.Undo(&view);
    EXPECT_EQ(view.lines, (std::vector<int>{-3, -2, -1}));
    EXPECT_FALSE(document.CanUndo());
    document.Redo(&view);
    EXPECT_EQ(view.lines, (std::vector<int>{-3, -2, -1, 1, 2, 3}));
}

TEST_F(TextDocumentTest, openingOrRenewingStartsAFreshHistory) {
    for (const bool opened : {true, false}) {
        record(1);
        record(2);
        document.Undo(&view);
        EXPECT_TRUE(opened ? document.OnOpenDocument(u"/no/such/file") : document.OnNewDocument());
        EXPECT_FALSE(document.isModified());
        EXPECT_FALSE(document.CanUndo());
        EXPECT_FALSE(document.CanRedo());
    }
}

TEST_F(TextDocumentTest, clearingTheHistoryKeepsTheModifiedState) {
    record(1);
    document.ClearUndo(&view);
    EXPECT_FALSE(document.CanUndo());
    EXPECT_TRUE(document.isModified());
}

} // namespace
} // namespace tavrin
