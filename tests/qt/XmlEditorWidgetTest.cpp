#include "platform/qt/widget/XmlEditorWidget.h"

#include "QtFixture.h"
#include "control/TextEditorCtrl.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDialog>
#include <QEventLoop>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>
#include <QWheelEvent>

namespace tavrin::qt {
namespace {

class XmlEditorWidgetTest : public QtFixture {
  protected:
    XmlEditorWidgetTest() {
        editor_->resize(500, 300);
        editor_->show();
        editor_->activateWindow();
        editor_->setFocus();
        EXPECT_TRUE(waitFor([this] { return view().hasFocus(); }));
    }
    ~XmlEditorWidgetTest() override { delete editor_; }

    [[nodiscard]] QWidget& view() const { return QtWindowPeer::of(editor_->control())->widget(); }
    [[nodiscard]] QWidget& client() const { return QtWindowPeer::of(editor_->control())->clientWidget(); }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
        QApplication::sendEvent(&view(), &event);
    }
    void type(const QString& text) {
        for (const QChar c : text)
            press(0, Qt::NoModifier, c);
    }
    /// Records the signals as words.
    void listen() {
        using Editor = XmlEditorWidget;
        const auto flag = [](bool on) { return on ? "+ " : "- "; };
        QObject::connect(editor_, &Editor::textChanged, [this] { log_ += "text "; });
        QObject::connect(editor_, &Editor::modificationChanged,
                         [=, this](bool on) { log_ += QString("modified") + flag(on); });
        QObject::connect(editor_, &Editor::undoAvailable,
                         [=, this](bool on) { log_ += QString("undo") + flag(on); });
        QObject::connect(editor_, &Editor::redoAvailable,
                         [=, this](bool on) { log_ += QString("redo") + flag(on); });
        QObject::connect(editor_, &Editor::copyAvailable,
                         [=, this](bool on) { log_ += QString("copy") + flag(on); });
        QObject::connect(editor_, &Editor::selectionChanged, [this] { log_ += "selection "; });
        QObject::connect(editor_, &Editor::cursorPositionChanged,
                         [this](int line, int column) { log_ += QString("%1:%2 ").arg(line).arg(column); });
    }
    QString takeLog() { return std::exchange(log_, {}).trimmed(); }

    QPointer<XmlEditorWidget> editor_ = new XmlEditorWidget(platform_);
    QString log_;
};

TEST_F(XmlEditorWidgetTest, typedTextIsTheText) {
    type("<a");
    press(Qt::Key_Return, Qt::NoModifier, "\r");
    press(Qt::Key_Tab, Qt::NoModifier, "\t");
    type("b");
    EXPECT_EQ(editor_->text(), "<a\n\tb");
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    press(Qt::Key_Backspace, Qt::NoModifier, "\b");
    press(Qt::Key_Backspace, Qt::NoModifier, "\b");
    EXPECT_EQ(editor_->text(), "<a\n\t");
    EXPECT_EQ(editor_->currentLine(), 1);
    EXPECT_EQ(editor_->currentColumn(), 1);
}

TEST_F(XmlEditorWidgetTest, endOfTheWidestLineStaysInSightWhileTyping) {
    for (int typed = 0; typed < 150; ++typed) {
        type("x");
        ASSERT_LE(editor_->control().getCaretPoint().x, client().width()) << typed;
    }
    EXPECT_GT(editor_->control().GetScrollPos(SB_HORZ), 0);
}

TEST_F(XmlEditorWidgetTest, signalsTellWhatChangedOnce) {
    editor_->setText("<a/>\nend");
    listen();
    press(Qt::Key_Right);
    EXPECT_EQ(takeLog(), "0:1");
    type("x");
    EXPECT_EQ(takeLog(), "text modified+ undo+ 0:2");
    type("y");
    EXPECT_EQ(takeLog(), "text 0:3");
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(takeLog(), "copy+ selection 0:2");
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(takeLog(), "selection 0:1");
    press(Qt::Key_Z, Qt::ControlModifier, "\x1A");
    EXPECT_EQ(takeLog(), "text modified- undo- redo+ copy- selection");
    editor_->redo();
    EXPECT_TRUE(takeLog().startsWith("text modified+ undo+ redo-"));
    editor_->setModified(false);
    EXPECT_EQ(takeLog(), "modified-");
    editor_->setModified(true);
    EXPECT_EQ(takeLog(), "modified+");
    editor_->gotoLineCol(1, 2);
    EXPECT_EQ(takeLog(), "1:2");
    editor_->gotoLineCol(9, 0);
    EXPECT_EQ(takeLog(), "");
    press(Qt::Key_F5);
    EXPECT_EQ(takeLog(), "");
}

TEST_F(XmlEditorWidgetTest, newTextStartsANewHistoryAtTheTop) {
    type("abc");
    editor_->setText("<r>\n<s/>\n</r>");
    EXPECT_EQ(editor_->text(), "<r>\n<s/>\n</r>");
    EXPECT_FALSE(editor_->canUndo());
    EXPECT_FALSE(editor_->isModified());
    EXPECT_EQ(editor_->currentLine(), 0);
    EXPECT_FALSE(editor_->hasSelection());
}

TEST_F(XmlEditorWidgetTest, readsAheadWhileNothingElseIsDone) {
    editor_->setText(QStringLiteral("<a>text</a>\n").repeated(20000));
    const Buffer& buffer = editor_->control().getBuffer();
    const auto isRead = [&] { return (buffer.getLineFlags(buffer.getLineCount() - 1) & PF_BLOCKS) != 0; };
    EXPECT_FALSE(isRead());
    {
        QEventLoop list;
        QTimer::singleShot(300, &list, &QEventLoop::quit);
        QEventLoop outer;
        QTimer::singleShot(0, &outer, [&] {
            list.exec();
            EXPECT_FALSE(isRead()) << "not inside of another operation";
            outer.quit();
        });
        outer.exec();
    }
    EXPECT_TRUE(waitFor(isRead));
}

TEST_F(XmlEditorWidgetTest, receiverMayDeleteTheEditor) {
    QObject::connect(editor_, &XmlEditorWidget::textChanged, [this] { delete editor_; });
    type("x");
    EXPECT_FALSE(editor_);
}

TEST_F(XmlEditorWidgetTest, editorGoesWithItsHost) {
    auto* dialog = new QDialog;
    editor_->setParent(dialog);
    dialog->show();
    delete dialog;
    EXPECT_FALSE(editor_);
}

TEST_F(XmlEditorWidgetTest, inputMethodEntersTextInPlaceOfWhatItNames) {
    editor_->setText("abc");
    editor_->gotoLineCol(0, 3);
    EXPECT_EQ(view().inputMethodQuery(Qt::ImSurroundingText).toString(), "abc");
    EXPECT_EQ(view().inputMethodQuery(Qt::ImCursorPosition).toInt(), 3);
    QInputMethodEvent event;
    event.setCommitString(QString::fromUtf8("\u00E9"), -2, 2);
    QApplication::sendEvent(&view(), &event);
    EXPECT_EQ(editor_->text(), QString::fromUtf8("a\u00E9"));
    editor_->undo();
    editor_->undo();
    EXPECT_EQ(editor_->text(), "abc");
}

TEST_F(XmlEditorWidgetTest, clipboardCarriesLinesToAndFro) {
    editor_->setText("one\ntwo");
    press(Qt::Key_A, Qt::ControlModifier, "\x01");
    press(Qt::Key_C, Qt::ControlModifier, "\x03");
    EXPECT_EQ(QApplication::clipboard()->text(), "one\r\ntwo");
    QApplication::clipboard()->setText("x\ny\r\nz");
    press(Qt::Key_Insert, Qt::ShiftModifier);
    EXPECT_EQ(editor_->text(), "x\ny\nz");
    editor_->selectAll();
    press(Qt::Key_Delete, Qt::ShiftModifier);
    EXPECT_EQ(editor_->text(), "");
    EXPECT_EQ(QApplication::clipboard()->text(), "x\r\ny\r\nz");
}

TEST_F(XmlEditorWidgetTest, menuShowsWhatIsPossibleAndRunsIt) {
    editor_->setText("abc");
    QApplication::clipboard()->clear();
    QPointer<QMenu> menu;
    QObject::connect(editor_, &XmlEditorWidget::contextMenuAboutToShow, [&](QMenu* shown) { menu = shown; });
    const auto open = [&] {
        QContextMenuEvent event(QContextMenuEvent::Mouse, {50, 50}, client().mapToGlobal(QPoint(50, 50)));
        QApplication::sendEvent(&client(), &event);
    };
    const auto entry = [&](const QString& text) {
        for (QAction* action : menu->actions())
            if (action->text().remove(u'&').section(u'\t', 0, 0) == text)
                return action;
        return static_cast<QAction*>(nullptr);
    };
    open();
    ASSERT_TRUE(menu);
    EXPECT_FALSE(entry("Undo")->isEnabled());
    EXPECT_FALSE(entry("Redo")->isEnabled());
    EXPECT_FALSE(entry("Paste")->isEnabled());
    entry("Select All")->trigger();
    EXPECT_TRUE(editor_->hasSelection());
    menu->close();
    type("new");
    QApplication::clipboard()->setText("text");
    open();
    EXPECT_TRUE(entry("Undo")->isEnabled());
    EXPECT_TRUE(entry("Paste")->isEnabled());
    entry("Undo")->trigger();
    menu->close();
    EXPECT_NE(editor_->text(), "new");
}

TEST_F(XmlEditorWidgetTest, zoomChangesTheSettingWithinItsBounds) {
    editor_->setText("a\nb\nc");
    const int height = editor_->control().getLineHeight();
    editor_->zoomIn(3);
    EXPECT_EQ(platform_.settings().getIntValue("Xml Editor", "Font Size", 0), 12);
    EXPECT_GT(editor_->control().getLineHeight(), height);
    editor_->zoomOut(50);
    EXPECT_EQ(platform_.settings().getIntValue("Xml Editor", "Font Size", 0), 1);
    editor_->zoomIn(500);
    EXPECT_EQ(platform_.settings().getIntValue("Xml Editor", "Font Size", 0), 100);
    editor_->resetZoom();
    EXPECT_EQ(editor_->control().getLineHeight(), height);
    const auto turn = [&](int angle) {
        QWheelEvent event(QPointF(20, 20), client().mapToGlobal(QPointF(20, 20)), {}, {0, angle},
                          Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(editor_, &event); // where it arrives when the view has ignored it
    };
    turn(60);
    EXPECT_EQ(editor_->control().getLineHeight(), height);
    turn(60);
    EXPECT_EQ(platform_.settings().getIntValue("Xml Editor", "Font Size", 0), 10);
}

TEST_F(XmlEditorWidgetTest, clickPlacesTheCaretAndDragSelects) {
    editor_->setText("0123456789\nsecond line");
    TextEditorCtrl& control = editor_->control();
    const int cell = control.getTabbedStringWidth(u"x", 1, 4);
    const QPoint text(control.getEditArea().left, control.getLineHeight() + 3);
    const auto mouse = [&](QEvent::Type type, QPoint at, Qt::MouseButtons held) {
        QMouseEvent event(type, at, client().mapToGlobal(at),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held, Qt::NoModifier);
        QApplication::sendEvent(&client(), &event);
    };
    mouse(QEvent::MouseButtonPress, text + QPoint(3 * cell, 0), Qt::LeftButton);
    mouse(QEvent::MouseMove, text + QPoint(6 * cell, 0), Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, text + QPoint(6 * cell, 0), Qt::NoButton);
    EXPECT_EQ(control.getSelectedText(), u"ond");
    EXPECT_EQ(editor_->currentColumn(), 6);
}

TEST_F(XmlEditorWidgetTest, darkPaletteGivesADarkEditor) {
    const QPalette light = QApplication::palette();
    QPalette dark = light;
    dark.setColor(QPalette::Base, QColor(0x10, 0x20, 0x30));
    dark.setColor(QPalette::Text, Qt::white);
    editor_->setText("<a/>");
    QApplication::setPalette(dark);
    EXPECT_TRUE(waitFor([&] {
        return client().grab().toImage().pixelColor(client().width() / 2, client().height() / 2) ==
               QColor(0x10, 0x20, 0x30);
    }));
    QApplication::setPalette(light);
}

TEST_F(XmlEditorWidgetTest, editorsShareThePlatformAndNothingElse) {
    XmlEditorWidget other(platform_);
    other.setText("other");
    type("own");
    EXPECT_EQ(editor_->text(), "own");
    EXPECT_EQ(other.text(), "other");
    EXPECT_FALSE(other.isModified());
}

} // namespace
} // namespace tavrin::qt
