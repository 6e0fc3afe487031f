#include "QtFixture.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/QtFindDialog.h"
#include "platform/qt/QtProgress.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>

namespace tavrin::qt {
namespace {

class FindDialogTest : public QtFixture {
  protected:
    FindDialogTest() {
        QObject::connect(editor_, &XmlEditorWidget::statusMessage,
                         [this](const QString& text) { status_ = text; });
        QObject::connect(editor_, &XmlEditorWidget::textChanged, [this] { ++changes_; });
        editor_->resize(500, 300);
        editor_->show();
        editor_->activateWindow();
        editor_->setFocus();
        EXPECT_TRUE(waitFor([this] { return view().hasFocus(); }));
    }
    ~FindDialogTest() override { delete editor_; }

    [[nodiscard]] QWidget& view() const { return QtWindowPeer::of(editor_->control())->widget(); }
    /// The dialog opened last.
    [[nodiscard]] QtFindDialog* dialog() const {
        const auto dialogs = view().findChildren<QtFindDialog*>(Qt::FindDirectChildrenOnly);
        return dialogs.isEmpty() ? nullptr : dialogs.back();
    }
    template <class Button>
    [[nodiscard]] Button& button(const QString& text) const {
        for (Button* button : dialog()->findChildren<Button*>())
            if (QString(button->text()).remove('&') == text)
                return *button;
        throw std::runtime_error("no button " + text.toStdString());
    }
    void click(const QString& text) const { button<QPushButton>(text).click(); }
    [[nodiscard]] QComboBox& box(int index) const { return *dialog()->findChildren<QComboBox*>().at(index); }
    [[nodiscard]] std::u16string selected() const { return editor_->control().getSelectedText(); }

    QPointer<XmlEditorWidget> editor_ = new XmlEditorWidget(platform_);
    QString status_;
    int changes_ = 0;
};

TEST_F(FindDialogTest, findsAndReplacesWithItsOptions) {
    editor_->setText("one two\nTwo twos");
    changes_ = 0;
    editor_->replace();
    ASSERT_TRUE(dialog());
    EXPECT_FALSE(button<QPushButton>("Find Next").isEnabled()) << "nothing to look for";
    box(0).setEditText("two");
    box(1).setEditText("2");
    click("Find Next");
    EXPECT_EQ(selected(), u"two");
    click("Replace");
    EXPECT_EQ(editor_->text(), "one 2\nTwo twos");
    EXPECT_EQ(changes_, 1) << "the widget's signals follow a request";
    EXPECT_EQ(selected(), u"Two");
    button<QCheckBox>("Match case").setChecked(true);
    button<QRadioButton>("Up").setChecked(true);
    box(0).setEditText("TWO");
    click("Find Next");
    EXPECT_EQ(status_, "Searched to the top of page, text not found");
    button<QCheckBox>("Match case").setChecked(false);
    button<QCheckBox>("Match whole word only").setChecked(true);
    click("Replace All");
    EXPECT_EQ(editor_->text(), "one 2\n2 twos");
    EXPECT_EQ(status_, "Replaced 1 occurences");
    editor_->undo();
    EXPECT_EQ(editor_->text(), "one 2\nTwo twos");
    click("Close");
    EXPECT_EQ(status_, "Ready");
}

TEST_F(FindDialogTest, closesByEscapeAndGivesTheFocusBack) {
    editor_->setText("one two");
    editor_->control().setCaret(0, 3, true);
    editor_->find();
    const QPointer<QtFindDialog> opened(dialog());
    ASSERT_TRUE(opened);
    EXPECT_EQ(box(0).currentText(), "one");
    EXPECT_EQ(dialog()->findChildren<QComboBox*>().size(), 1);
    ASSERT_TRUE(waitFor([&] { return opened->isActiveWindow() && !view().hasFocus(); }));
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(opened, &escape);
    EXPECT_EQ(status_, "Ready");
    EXPECT_TRUE(waitFor([&] { return !opened && view().hasFocus(); }));
}

TEST_F(FindDialogTest, remembersWhatWasEntered) {
    editor_->setText("text");
    editor_->replace();
    for (const char* text : {"a", "b", "a"}) {
        box(0).setEditText(text);
        click("Find Next");
    }
    box(1).setEditText("c");
    click("Replace All");
    click("Close");
    QtPlatform later(folder_.filePath("settings.ini"));
    EXPECT_EQ(platform_.findHistory().findTexts(), QStringList({"a", "b"}));
    EXPECT_EQ(later.findHistory().findTexts(), QStringList({"a", "b"}));
    EXPECT_EQ(later.findHistory().replacements(), QStringList({"c"}));
    for (int i = 0; i < 2 * FindHistory::kept; ++i)
        platform_.findHistory().addFindText(QString::number(i));
    EXPECT_EQ(platform_.findHistory().findTexts().size(), FindHistory::kept);
}

TEST_F(FindDialogTest, goesWithTheEditor) {
    editor_->setText("text");
    editor_->find();
    const QPointer<QtFindDialog> opened(dialog());
    delete editor_;
    EXPECT_FALSE(opened);
}

TEST_F(FindDialogTest, longTasksShowThatTheyGoOnAndCanBeStopped) {
    int running = 0;
    {
        QtProgress soonDone(editor_, LongTask::Search, running);
        EXPECT_EQ(running, 1);
        EXPECT_TRUE(soonDone.report(1, 2));
        EXPECT_FALSE(editor_->findChild<QProgressDialog*>()) << "not at once";
    }
    EXPECT_EQ(running, 0);
    QtProgress progress(editor_, LongTask::ReplaceAll, running, 0);
    EXPECT_TRUE(progress.report(1, 4));
    auto* shown = editor_->findChild<QProgressDialog*>();
    ASSERT_TRUE(shown);
    EXPECT_TRUE(shown->isVisible());
    EXPECT_EQ(shown->value(), shown->maximum() / 4);
    shown->findChild<QPushButton*>()->click();
    EXPECT_FALSE(progress.report(2, 4));
}

} // namespace
} // namespace tavrin::qt
