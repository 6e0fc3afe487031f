#include "platform/core/UndoStack.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace tavrin {
namespace {

int liveActions = 0;

/// A record of text that was appended.
class Append : public UndoableAction {
  public:
    explicit Append(std::string text_) : text(std::move(text_)) { ++liveActions; }
    ~Append() override { --liveActions; }
    [[nodiscard]] std::size_t memory() const override { return text.size(); }

    std::string text;
};

/// A text that only grows at its end; single letters merge into any record that does not end with a full
/// stop.
class Log : public Undoable {
  public:
    void undo(const UndoableAction& action) override {
        const std::string& tail = static_cast<const Append&>(action).text;
        ASSERT_TRUE(text.ends_with(tail)) << "undo of '" << tail << "' in '" << text << "'";
        text.resize(text.size() - tail.size());
    }
    void redo(const UndoableAction& action) override { text += static_cast<const Append&>(action).text; }
    bool canMerge(const UndoableAction& previous, const UndoableAction& next) override {
        return static_cast<const Append&>(next).text.size() == 1 &&
               !static_cast<const Append&>(previous).text.ends_with('.');
    }
    void merge(UndoableAction& previous, const UndoableAction& next) override {
        static_cast<Append&>(previous).text += static_cast<const Append&>(next).text;
    }

    std::string text;
};

class ModifiedReports : public UndoableDocument {
  public:
    void setModified(bool value) override {
        modified = value;
        ++count;
    }

    bool modified = false;
    int count = 0;
};

/// The protected group operations, for tests.
class GroupingStack : public UndoStack {
  public:
    using UndoStack::endUndoGroup;
    using UndoStack::startUndoGroup;
    using UndoStack::UndoStack;
};

class UndoStackTest : public testing::Test {
  protected:
    ~UndoStackTest() override {
        stack.clear(&log);
        EXPECT_EQ(liveActions, 0) << "the history keeps or leaks records";
    }

    void append(std::string text) {
        log.text += text;
        stack.add(&log, new Append(std::move(text)));
    }
    void undo() { stack.undo(&log); }
    void redo() { stack.redo(&log); }

    Log log;
    ModifiedReports document;
    GroupingStack stack{document};
};

TEST_F(UndoStackTest, aNewHistoryIsEmptyAndReportsNothing) {
    EXPECT_FALSE(stack.canUndo());
    EXPECT_FALSE(stack.canRedo());
    undo();
    redo();
    EXPECT_EQ(document.count, 0);
}

TEST_F(UndoStackTest, everyChangeIsReportedEvenWhenTheStateStays) {
    append("one.");
    append("two.");
    EXPECT_EQ(document.count, 2);
    undo();
    EXPECT_EQ(document.count, 3);
    EXPECT_TRUE(document.modified);
    undo();
    EXPECT_EQ(document.count, 4);
    EXPECT_FALSE(document.modified);
    redo();
    EXPECT_TRUE(document.modified);
    EXPECT_EQ(log.text, "one.");
}

TEST_F(UndoStackTest, aGroupIsOneStepUndoneLastRecordFirst) {
    append("a.");
    stack.startUndoGroup();
    append("b.");
    stack.startUndoGroup();
    append("c.");
    stack.endUndoGroup();
    append("d.");
    stack.endUndoGroup();
    undo(); // the log itself checks the order
    EXPECT_EQ(log.text, "a.");
    redo();
    EXPECT_EQ(log.text, "a.b.c.d.");
    EXPECT_FALSE(stack.canRedo());
}

TEST_F(UndoStackTest, aGroupThatKeptNothingLeavesNoStep) {
    stack.startUndoGroup();
    stack.startUndoGroup();
    stack.endUndoGroup();
    stack.endUndoGroup();
    EXPECT_FALSE(stack.canUndo());

    append("word");
    for (const char* letter : {"x", "y", "z"}) {
        stack.startUndoGroup();
        append(letter);
        stack.endUndoGroup();
    }
    undo();
    EXPECT_EQ(log.text, "");
    EXPECT_FALSE(stack.canUndo()) << "the merged letters belong to the first step";
    redo();
    EXPECT_EQ(log.text, "wordxyz");
}

TEST_F(UndoStackTest, undoAndRedoWaitForTheOpenGroup) {
    append("a.");
    stack.startUndoGroup();
    append("b.");
    EXPECT_FALSE(stack.canUndo());
    undo();
    EXPECT_EQ(log.text, "a.b.");
    stack.endUndoGroup();
    undo();
    stack.startUndoGroup();
    EXPECT_FALSE(stack.canRedo());
    redo();
    stack.endUndoGroup();
    EXPECT_EQ(log.text, "a.");
    EXPECT_TRUE(stack.canRedo());
}

TEST_F(UndoStackTest, recordingDiscardsWhatWasUndone) {
    append("a.");
    append("b.");
    append("c.");
    undo();
    undo();
    append("d.");
    EXPECT_EQ(liveActions, 2) << "the undone records are released";
    EXPECT_FALSE(stack.canRedo());
    undo();
    undo();
    EXPECT_FALSE(stack.canUndo());
    redo();
    redo();
    EXPECT_EQ(log.text, "a.d.");
}

TEST_F(UndoStackTest, mergingAlsoDiscardsWhatWasUndone) {
    append("word");
    append("more.");
    undo();
    append("s");
    EXPECT_FALSE(stack.canRedo());
    undo();
    EXPECT_EQ(log.text, "");
}

TEST_F(UndoStackTest, onlyRecordsThatAreNotUndoneTakeOthersIn) {
    append("word");
    undo();
    append("s");
    undo();
    redo();
    EXPECT_EQ(log.text, "s");
}

TEST_F(UndoStackTest, theSavedStateIsFoundAgainFromBothSides) {
    append("a.");
    append("b.");
    stack.setSavePoint();
    EXPECT_FALSE(document.modified);
    append("c.");
    undo();
    EXPECT_FALSE(document.modified);
    undo();
    EXPECT_TRUE(document.modified);
    redo();
    EXPECT_FALSE(document.modified);
    redo();
    EXPECT_TRUE(document.modified);
}

TEST_F(UndoStackTest, theSavedStateIsLostWithTheStepsThatLedToIt) {
    append("a.");
    append("b.");
    stack.setSavePoint();
    undo();
    append("c.");
    EXPECT_TRUE(document.modified) << "as many steps as were saved, but others";
    undo();
    undo();
    EXPECT_TRUE(document.modified);
}

TEST_F(UndoStackTest, mergingIntoTheSavedRecordLosesTheSavedState) {
    append("word");
    stack.setSavePoint();
    append("s");
    EXPECT_TRUE(document.modified);
    undo();
    EXPECT_TRUE(document.modified);
    redo();
    EXPECT_TRUE(document.modified);
    stack.setSavePoint();
    EXPECT_FALSE(document.modified);
}

TEST_F(UndoStackTest, mergingLeavesEarlierSavedStatesReachable) {
    append("a.");
    stack.setSavePoint();
    append("word");
    append("s");
    undo();
    EXPECT_FALSE(document.modified);
}

TEST_F(UndoStackTest, clearForgetsTheStepsAndKeepsTheModifiedState) {
    append("a.");
    stack.setSavePoint();
    const int reports = document.count;
    stack.clear(&log);
    EXPECT_EQ(document.count, reports);
    EXPECT_FALSE(stack.canUndo());
    append("b.");
    undo();
    EXPECT_FALSE(document.modified) << "the saved state was the present one when the steps went";

    append("c.");
    stack.clear(&log);
    append("d.");
    undo();
    EXPECT_TRUE(document.modified) << "the saved state went with the steps";
}

TEST_F(UndoStackTest, resetStartsAFreshUnmodifiedHistory) {
    append("a.");
    append("b.");
    undo();
    stack.reset();
    EXPECT_FALSE(document.modified);
    EXPECT_FALSE(stack.canUndo());
    EXPECT_FALSE(stack.canRedo());
    append("x");
    undo();
    EXPECT_FALSE(document.modified);
}

TEST_F(UndoStackTest, aStateSavedInsideAStepIsNotAPlaceToComeBackTo) {
    stack.startUndoGroup();
    append("a.");
    stack.setSavePoint();
    append("b.");
    stack.endUndoGroup();
    EXPECT_TRUE(document.modified);
    undo();
    EXPECT_TRUE(document.modified);

    stack.reset();
    stack.startUndoGroup();
    append("c.");
    stack.setSavePoint();
    stack.endUndoGroup();
    undo();
    redo();
    EXPECT_FALSE(document.modified) << "the step ended where it was saved";
}

TEST_F(UndoStackTest, theOldestStepsGoWhenTheLimitIsReached) {
    stack.setLimit(10);
    append("abcd.");
    stack.setSavePoint();
    stack.startUndoGroup();
    append("1.");
    append("2.");
    stack.endUndoGroup();
    EXPECT_EQ(liveActions, 3) << "nine bytes";
    append("xy.");
    EXPECT_EQ(liveActions, 3);
    EXPECT_EQ(stack.memory(), 7U);
    undo();
    undo();
    EXPECT_FALSE(stack.canUndo());
    EXPECT_EQ(log.text, "abcd.");
    EXPECT_FALSE(document.modified) << "the saved state lies just before the oldest step";
    redo();
    redo();
    append("longer than all of it.");
    EXPECT_EQ(liveActions, 1) << "the step made last stays";
    undo();
    EXPECT_EQ(log.text, "abcd.1.2.xy.");
    EXPECT_TRUE(document.modified);
}

TEST_F(UndoStackTest, aLowerLimitTakesOldStepsThenThoseUndoneLongestAgo) {
    for (const char* text : {"a.", "b.", "c.", "d."})
        append(text);
    undo();
    undo();
    stack.setLimit(4);
    EXPECT_EQ(log.text, "a.b.");
    undo();
    EXPECT_FALSE(stack.canUndo());
    redo();
    redo();
    EXPECT_FALSE(stack.canRedo());
    EXPECT_EQ(log.text, "a.b.c.");
}

TEST_F(UndoStackTest, openGroupsCanOutgrowTheLimit) {
    stack.setLimit(4);
    append("a.");
    stack.startUndoGroup();
    append("b.");
    append("c.");
    append("d.");
    stack.endUndoGroup();
    EXPECT_EQ(liveActions, 3);
    undo();
    EXPECT_EQ(log.text, "a.");
    EXPECT_FALSE(stack.canUndo());
}

/// Writes down what it hears.
class Told : public HistoryObserver {
  public:
    void actionAdded(const UndoableAction& action, bool isMerged) override {
        text += (isMerged ? "+" : "") + static_cast<const Append&>(action).text;
    }
    void stepUndone() override { text += '<'; }
    void stepRedone() override { text += '>'; }
    void groupStarted() override { text += '('; }
    void groupEnded() override { text += ')'; }
    void savePointSet() override { text += '!'; }
    void savePointForgotten() override { text += '?'; }
    void historyCleared() override { text += '#'; }
    void historyReset() override { text += '0'; }

    std::string text;
};

TEST_F(UndoStackTest, anObserverHearsWhatWasDoneAndNothingElse) {
    Told told;
    stack.addObserver(told);
    undo();
    append("word");
    append("s");
    stack.startUndoGroup();
    stack.startUndoGroup();
    append("t.");
    undo();
    stack.endUndoGroup();
    stack.endUndoGroup();
    undo();
    redo();
    redo();
    stack.setSavePoint();
    EXPECT_FALSE(document.modified);
    stack.forgetSavePoint();
    EXPECT_TRUE(document.modified);
    stack.clear(&log);
    stack.reset();
    stack.removeObserver(told);
    append("unheard");
    EXPECT_EQ(told.text, "word+s(t.)<>!?#0");
}

/// The history as a plain list of texts, one for each step boundary. A number names each text that ever was.
class Model {
  public:
    void add(const std::string& text) {
        states_.resize(position_ + 1);
        const bool merges = text.size() == 1 && (position_ > 0 || keptInGroup_);
        current_ = {current_.text + text, ++lastId_};
        if (merges && !keptInGroup_)
            states_[position_] = current_;
        else if (depth_ > 0)
            keptInGroup_ = true;
        else
            push();
    }
    void startGroup() { ++depth_; }
    void endGroup() {
        if (--depth_ == 0 && keptInGroup_)
            push();
    }
    void move(int by) {
        if (depth_ > 0 || position_ + by < 0 || position_ + by >= static_cast<int>(states_.size()))
            return;
        position_ += by;
        current_ = states_[position_];
    }
    void save() { saved_ = current_.id; }
    void clear() {
        // Inside a group its own records go too.
        states_ = {current_};
        position_ = 0;
        keptInGroup_ = false;
    }
    /// Forgets the oldest states until the texts that lie between the others are within the limit.
    void limit(std::size_t bytes) {
        const auto size = [&] {
            const std::string& newest = keptInGroup_ ? current_.text : states_.back().text;
            return newest.size() - states_.front().text.size();
        };
        while (size() > bytes && states_.size() > 2) {
            if (position_ > 1) {
                states_.erase(states_.begin());
                --position_;
            } else {
                states_.pop_back();
            }
        }
    }

    [[nodiscard]] const std::string& text() const { return current_.text; }
    [[nodiscard]] bool modified() const { return current_.id != saved_; }
    [[nodiscard]] bool canUndo() const { return depth_ == 0 && position_ > 0; }
    [[nodiscard]] bool canRedo() const {
        return depth_ == 0 && position_ + 1 < static_cast<int>(states_.size());
    }

  private:
    struct State {
        std::string text;
        int id = 0;
    };

    void push() {
        states_.push_back(current_);
        ++position_;
        keptInGroup_ = false;
    }

    std::vector<State> states_{State{}};
    State current_;
    int position_ = 0;
    int depth_ = 0;
    bool keptInGroup_ = false;
    int lastId_ = 0;
    int saved_ = 0;
};

TEST_F(UndoStackTest, randomHistoriesAgreeWithAListOfTexts) {
    const char* wanted = std::getenv("TAVRIN_RANDOM_HISTORIES"); // of 400 commands each
    const unsigned seeds = wanted ? static_cast<unsigned>(std::stoul(wanted)) : 200;
    for (unsigned seed = 1; seed <= seeds; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Model model;
        log.text.clear();
        stack.reset();
        // Every other history is limited; one of a few bytes forgets something at each command.
        std::size_t limit = seed % 2 == 0 ? UndoStack::defaultLimit : 1 + random() % 60;
        stack.setLimit(limit);
        int depth = 0;
        for (int step = 0; step < 400; ++step) {
            switch (random() % 12) {
            case 0:
            case 1:
            case 2:
            case 3: {
                const std::string text(1 + random() % 2, static_cast<char>('a' + random() % 26));
                append(text);
                model.add(text);
                break;
            }
            case 4:
            case 5:
                undo();
                model.move(-1);
                break;
            case 6:
            case 7:
                redo();
                model.move(1);
                break;
            case 8:
                stack.startUndoGroup();
                model.startGroup();
                ++depth;
                break;
            case 9:
                if (depth > 0) {
                    stack.endUndoGroup();
                    model.endGroup();
                    --depth;
                }
                break;
            case 10:
                stack.setSavePoint();
                model.save();
                break;
            default:
                if (random() % 20 == 0) {
                    stack.clear(&log);
                    model.clear();
                } else if (limit < 100 && random() % 10 == 0) {
                    limit = 1 + random() % 60;
                    stack.setLimit(limit);
                }
            }
            model.limit(limit);
            ASSERT_EQ(log.text, model.text()) << "step " << step;
            ASSERT_EQ(document.modified, model.modified()) << "step " << step;
            ASSERT_EQ(stack.canUndo(), model.canUndo()) << "step " << step;
            ASSERT_EQ(stack.canRedo(), model.canRedo()) << "step " << step;
        }
        while (depth-- > 0)
            stack.endUndoGroup();
    }
}

} // namespace
} // namespace tavrin
