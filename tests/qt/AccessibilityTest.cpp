// The editor as assistive technology sees it.

#include "QtFixture.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/AccessibleEvents.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QAccessible>
#include <QAccessibleTextInterface>
#include <QKeyEvent>

namespace tavrin::qt {
namespace {

QStringList heard;

void hear(QAccessibleEvent* event) {
    if (event->type() == QAccessible::TextInserted) {
        auto* e = static_cast<QAccessibleTextInsertEvent*>(event);
        heard << QString("+%1 %2").arg(e->changePosition()).arg(e->textInserted());
    } else if (event->type() == QAccessible::TextRemoved) {
        auto* e = static_cast<QAccessibleTextRemoveEvent*>(event);
        heard << QString("-%1 %2").arg(e->changePosition()).arg(e->textRemoved());
    } else if (event->type() == QAccessible::TextCaretMoved) {
        heard << QString("@%1").arg(static_cast<QAccessibleTextCursorEvent*>(event)->cursorPosition());
    } else if (event->type() == QAccessible::TextSelectionChanged) {
        auto* e = static_cast<QAccessibleTextSelectionEvent*>(event);
        heard << QString("[%1 %2]").arg(e->selectionStart()).arg(e->selectionEnd());
    }
}

class AccessibilityTest : public QtFixture {
  protected:
    AccessibilityTest() {
        editor_->resize(500, 300);
        editor_->show();
        EXPECT_TRUE(waitFor([this] { return view().isVisible(); }));
        QAccessible::setActive(true);
        setAccessibleEventHandler(hear);
        heard.clear();
    }
    ~AccessibilityTest() override {
        setAccessibleEventHandler(nullptr);
        QAccessible::setActive(false);
        delete editor_;
    }

    [[nodiscard]] QWidget& view() const { return QtWindowPeer::of(editor_->control())->widget(); }
    [[nodiscard]] QAccessibleInterface& accessible() const {
        return *QAccessible::queryAccessibleInterface(&view());
    }
    [[nodiscard]] QAccessibleTextInterface& text() const { return *accessible().textInterface(); }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& typed = {}) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, typed);
        QApplication::sendEvent(&view(), &event);
    }
    /// What a call that answers a stretch says, as "start-end text".
    template <class Ask>
    static QString stretch(Ask ask) {
        int start = -1;
        int end = -1;
        const QString found = ask(&start, &end);
        return QString("%1-%2 %3").arg(start).arg(end).arg(found).replace('\n', '/');
    }

    XmlEditorWidget* editor_ = new XmlEditorWidget(platform_);
};

TEST_F(AccessibilityTest, theTextIsOneSequenceOfCharacters) {
    editor_->setText("<a b=\"1\">\n\n  text \U0001F600</a>");
    EXPECT_EQ(accessible().role(), QAccessible::EditableText);
    EXPECT_TRUE(accessible().state().multiLine && accessible().state().editable);
    EXPECT_EQ(accessible().text(QAccessible::Name), "XML text");
    editor_->setAccessibleName("Source");
    EXPECT_EQ(accessible().text(QAccessible::Name), "Source");

    EXPECT_EQ(text().characterCount(), 24);
    EXPECT_EQ(text().text(0, 24), editor_->text());
    EXPECT_EQ(text().text(8, 13), ">\n\n  ");
    EXPECT_EQ(text().text(20, 1000), "</a>");
    EXPECT_EQ(text().text(13, 13), "");

    struct {
        int offset;
        QAccessible::TextBoundaryType kind;
        QString before, at, after;
    } const rows[] = {
        {0, QAccessible::LineBoundary, "0-0 ", "0-10 <a b=\"1\">/", "10-11 /"},
        {10, QAccessible::LineBoundary, "0-10 <a b=\"1\">/", "10-11 /", "11-24   text \U0001F600</a>"},
        {24, QAccessible::ParagraphBoundary, "10-11 /", "11-24   text \U0001F600</a>", "24-24 "},
        {15, QAccessible::WordBoundary, "11-13   ", "13-17 text", "17-18  "},
        {18, QAccessible::CharBoundary, "17-18  ", "18-20 \U0001F600", "20-21 <"},
        {9, QAccessible::CharBoundary, "8-9 >", "9-10 /", "10-11 /"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.offset);
        const auto& t = text();
        EXPECT_EQ(stretch([&](int* s, int* e) { return t.textBeforeOffset(row.offset, row.kind, s, e); }),
                  row.before);
        EXPECT_EQ(stretch([&](int* s, int* e) { return t.textAtOffset(row.offset, row.kind, s, e); }),
                  row.at);
        EXPECT_EQ(stretch([&](int* s, int* e) { return t.textAfterOffset(row.offset, row.kind, s, e); }),
                  row.after);
    }
    // Each character is where a click finds it.
    for (int offset = 0; offset < 24; ++offset) {
        if (offset == 19) // inside the pair
            continue;
        EXPECT_EQ(text().offsetAtPoint(text().characterRect(offset).topLeft()), offset);
    }
    int start = 0;
    int end = 0;
    const QString tag = text().attributes(1, &start, &end);
    EXPECT_TRUE(tag.startsWith("color:rgb("));
    EXPECT_LE(start, 1);
    EXPECT_GT(end, 1);
    EXPECT_NE(text().attributes(14, &start, &end), tag);
}

TEST_F(AccessibilityTest, selectsAndEditsInOneStepEach) {
    editor_->setText("one\ntwo");
    text().setSelection(0, 2, 5);
    EXPECT_EQ(editor_->control().getSelectedText(), u"e\nt");
    int start = 0;
    int end = 0;
    text().selection(0, &start, &end);
    EXPECT_EQ(std::pair(start, end), std::pair(2, 5));
    EXPECT_EQ(text().cursorPosition(), 5);
    text().removeSelection(0);
    EXPECT_EQ(text().selectionCount(), 0);

    auto* editing = accessible().editableTextInterface();
    ASSERT_TRUE(editing);
    editing->replaceText(1, 6, "N\r\nW");
    EXPECT_EQ(editor_->text(), "oN\nWo");
    editing->deleteText(0, 3);
    editing->insertText(100, "!");
    EXPECT_EQ(editor_->text(), "Wo!");
    for (int step = 0; step < 3; ++step)
        editor_->undo();
    EXPECT_EQ(editor_->text(), "one\ntwo");
}

TEST_F(AccessibilityTest, tellsWhatComesAndGoes) {
    editor_->setText("ab\ncd");
    heard.clear();
    const auto expect = [](const QStringList& what) {
        EXPECT_EQ(heard.join(' ').toStdString(), what.join(' ').toStdString());
        heard.clear();
    };
    press(Qt::Key_End);
    expect({"@2"});
    press(0, Qt::NoModifier, "x");
    expect({"+2 x", "@3"});
    press(Qt::Key_Return);
    expect({"+3 \n", "@4"});
    editor_->undo();
    expect({"-3 \n", "@3"});
    editor_->redo();
    expect({"+3 \n", "@4"});
    press(Qt::Key_Backspace);
    expect({"-3 \n", "@3"});
    press(Qt::Key_Left, Qt::ShiftModifier);
    expect({"[2 3]", "@2"});
    press(0, Qt::NoModifier, "y");
    expect({"-2 x", "+2 y", "[0 0]", "@3"});
}

TEST_F(AccessibilityTest, outlivesTheEditor) {
    QAccessibleInterface& view = accessible();
    const QAccessible::Id id = QAccessible::uniqueId(&view);
    EXPECT_TRUE(view.isValid());
    delete std::exchange(editor_, nullptr);
    QAccessibleInterface* const left = QAccessible::accessibleInterface(id);
    EXPECT_TRUE(!left || !left->isValid());
}

} // namespace
} // namespace tavrin::qt
