#include "QtFixture.h"
#include "autocomplete/FakeSchema.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/AccessibleEvents.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QTimer>

#include <functional>

namespace tavrin::qt {
namespace {

/// An editor widget over a small schema. A list runs a loop of its own, so what happens while it is up is
/// told beforehand.
class CompletionPopupTest : public QtFixture {
  protected:
    CompletionPopupTest() {
        schema_.children[{u"n", u"r"}] = {{u"para", u"", u"n", u"A paragraph of text."},
                                          {u"part", u"", u"n", u"Chapters, with a title."},
                                          {.name = u"late", .namespaceName = u"n", .allowedHere = false}};
        schema_.templates[{u"n", u"part"}] = u">*</part>";
        editor_ = new XmlEditorWidget(platform_);
        editor_->control().setSchemaSource(&schema_);
        editor_->resize(500, 300);
        editor_->show();
        editor_->activateWindow();
        editor_->control().SetFocus();
        EXPECT_TRUE(waitFor([this] { return editor_->control().HasFocus(); }));
        editor_->setText("<r xmlns=\"n\">\n  ");
        editor_->gotoLineCol(1, 2);
    }
    ~CompletionPopupTest() override { delete editor_; }

    [[nodiscard]] QWidget& view() const { return QtWindowPeer::of(editor_->control())->widget(); }
    static void press(QWidget& widget, int key, const QString& text) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(&widget, &event);
    }
    /// The list that is up; null when there is none.
    [[nodiscard]] QWidget* popup() const {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->windowType() == Qt::ToolTip && window->isVisible() && editor_ &&
                window->parentWidget()->window() == editor_)
                return window;
        return nullptr;
    }
    /// Types "<" and, when the list is up, does the rest.
    void complete(const std::function<void()>& whileUp) {
        bool ran = false;
        QTimer::singleShot(0, editor_, [&] {
            ran = popup() != nullptr;
            whileUp();
        });
        press(view(), Qt::Key_Less, "<");
        EXPECT_TRUE(ran) << "a list was up";
        EXPECT_EQ(popup(), nullptr);
    }

    test::FakeSchema schema_;
    QPointer<XmlEditorWidget> editor_;
};

TEST_F(CompletionPopupTest, keysChooseACandidateWhileTheEditorKeepsTheFocus) {
    complete([this] {
        EXPECT_TRUE(view().hasFocus());
        press(view(), Qt::Key_P, "p");
        press(view(), Qt::Key_Down, "");
        EXPECT_EQ(editor_->text(), "<r xmlns=\"n\">\n  <p");
        if (const QByteArray folder = qgetenv("TAVRIN_TEST_PICTURES"); !folder.isEmpty()) {
            editor_->grab().save(folder + "/editor.png");
            popup()->grab().save(folder + "/popup.png");
        }
        press(view(), Qt::Key_Return, "\r");
    });
    EXPECT_EQ(editor_->text(), "<r xmlns=\"n\">\n  <part></part>");
    editor_->undo();
    EXPECT_EQ(editor_->text(), "<r xmlns=\"n\">\n  <p");
}

// A busy editor gets several keys at once: those behind the one that closes the list come before its loop
// ends.
TEST_F(CompletionPopupTest, keysThatComeWhileItClosesStayInOrder) {
    const auto typeAll = [this](const QString& text) {
        for (const QChar c : text)
            press(view(), 0, c);
    };
    for (const char* typed : {"x y=z>", "x <qq"}) {
        SCOPED_TRACE(typed);
        editor_->setText("<r xmlns=\"n\">\n  ");
        editor_->gotoLineCol(1, 2);
        complete([&] {
            typeAll(typed);
            if (QString(typed).contains('<')) // opens another list, which takes what is left
                QTimer::singleShot(0, editor_, [this] { press(view(), Qt::Key_Escape, "\x1b"); });
        });
        EXPECT_TRUE(editor_->text().startsWith(QStringLiteral("<r xmlns=\"n\">\n  <") + typed))
            << editor_->text().toStdString();
    }
}

TEST_F(CompletionPopupTest, turningToSomethingElseCloses) {
    const std::function<void()> ways[] = {
        [this] { press(view(), Qt::Key_Escape, "\x1b"); },
        [this] {
            QFocusEvent lost(QEvent::FocusOut, Qt::OtherFocusReason);
            QApplication::sendEvent(&view(), &lost);
        },
        [this] { editor_->resize(510, 300); },
        [this] { editor_->hide(); },
        [this] { delete editor_.data(); }, // the last: there is no editor any more
    };
    for (const auto& way : ways) {
        ASSERT_TRUE(editor_);
        editor_->show();
        complete(way);
    }
    EXPECT_FALSE(editor_);
}

QStringList focused;

TEST_F(CompletionPopupTest, assistiveTechnologyFollowsTheList) {
    QAccessible::setActive(true);
    setAccessibleEventHandler([](QAccessibleEvent* event) {
        if (event->type() == QAccessible::Focus)
            focused << event->accessibleInterface()->text(QAccessible::Name);
    });
    focused.clear();
    QAccessible::Id left = 0;
    complete([&] {
        const QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(popup());
        ASSERT_EQ(list->role(), QAccessible::List);
        ASSERT_EQ(list->childCount(), 3);
        press(view(), Qt::Key_P, "p");
        press(view(), Qt::Key_Down, "");
        press(view(), Qt::Key_End, "");
        press(view(), Qt::Key_Up, "");
        const int at = list->indexOfChild(list->focusChild());
        for (int i = 0; i < 3; ++i) {
            QAccessibleInterface* const item = list->child(i);
            EXPECT_EQ(item, list->child(i));
            EXPECT_EQ(list->indexOfChild(item), i);
            EXPECT_EQ(item->role(), QAccessible::ListItem);
            EXPECT_EQ(item->parent(), list);
            EXPECT_EQ(item->state().focused != 0, i == at);
            EXPECT_TRUE(list->rect().contains(item->rect().center()));
            const QPoint middle = item->rect().center();
            EXPECT_EQ(list->childAt(middle.x(), middle.y()), item);
        }
        EXPECT_EQ(list->child(3), nullptr);
        EXPECT_EQ(list->child(-1), nullptr);
        left = QAccessible::uniqueId(list->child(1));
        press(view(), Qt::Key_Escape, "\x1b");
    });
    EXPECT_EQ(focused.join(' ').toStdString(), "para part para XML text");
    const QAccessibleInterface* const item = QAccessible::accessibleInterface(left);
    EXPECT_TRUE(!item || !item->isValid());
    setAccessibleEventHandler(nullptr);
    QAccessible::setActive(false);
}

} // namespace
} // namespace tavrin::qt
