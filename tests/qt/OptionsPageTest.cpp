#include "QtFixture.h"
#include "control/TextEditorCtrl.h"
#include "options/XmlEditorOptionsDlgPage.h"
#include "platform/qt/QtControls.h"
#include "platform/qt/widget/XmlEditorOptionsPage.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>

namespace tavrin::qt {
namespace {

using Page = XmlEditorOptionsDlgPage;

/// A host's dialog with the page in it.
class OptionsPageTest : public QtFixture {
  protected:
    void open() {
        dialog_ = std::make_unique<QDialog>();
        page_ = new XmlEditorOptionsPage(platform_);
        (new QVBoxLayout(dialog_.get()))->addWidget(page_);
        dialog_->show();
        dialog_->activateWindow();
        EXPECT_TRUE(waitFor([this] { return dialog_->isActiveWindow(); }));
    }

    template <class Widget>
    Widget& control(Page::ControlId id) {
        QWidget& widget = dynamic_cast<QtControls&>(*page_->page().controls()).widget(id);
        if (auto* itself = qobject_cast<Widget*>(&widget))
            return *itself;
        return *widget.findChild<Widget*>();
    }
    QLineEdit& size() { return control<QLineEdit>(Page::fontSizeBox); }
    QComboBox& fonts() { return control<QComboBox>(Page::fontListBox); }
    QComboBox& fore() { return control<QComboBox>(Page::foreColourBox); }
    QListWidget& items() { return control<QListWidget>(Page::displayItemList); }
    /// The colour in the corner of the sample: its background.
    QColor previewBack() {
        QWidget& panel = control<QWidget>(Page::previewPanel);
        return panel.grab().toImage().pixelColor(4, 4);
    }

    static void press(QWidget& widget, int key, const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(&widget, &event);
    }
    /// Selects all of the size box and types over it.
    void typeSize(const QString& text) {
        size().setFocus();
        size().selectAll();
        press(size(), Qt::Key_Delete);
        for (const QChar c : text)
            press(size(), 0, c);
    }
    /// Chooses from the open list of a combo box, as a user does.
    static void choose(QComboBox& box, const QString& text) {
        box.showPopup();
        box.setCurrentIndex(box.findText(text));
        emit box.activated(box.currentIndex());
        box.hidePopup();
    }
    int stored(const char* key) { return platform_.settings().getIntValue("Xml Editor", key, -1); }
    QString storedFamily() {
        return QString::fromStdU16String(
            platform_.settings().getStringValue("Xml Editor", "Font Family", u""));
    }

    std::unique_ptr<QDialog> dialog_;
    XmlEditorOptionsPage* page_ = nullptr; ///< the dialog's
};

TEST_F(OptionsPageTest, showsTheDefaultsAndLeadsToEachControlByItsMnemonic) {
    open();
    EXPECT_EQ(size().text(), "9");
    QStringList entries;
    for (int i = 0; i < items().count(); ++i)
        entries += items().item(i)->text();
    EXPECT_EQ(entries.join(' '), "CDATA Comments Line Numbers Normal Punctuation Selected Text String XML "
                                 "Attribute XML Tag");
    EXPECT_EQ(items().currentRow(), 0);
    EXPECT_EQ(fore().currentText(), "Magenta");
    EXPECT_TRUE(control<QCheckBox>(Page::lineNumbersBox).isChecked());
    QMap<QString, QWidget*> buddies;
    for (const QLabel* label : page_->findChildren<QLabel*>())
        buddies[label->text()] = label->buddy();
    const auto leadsTo = [&](const char* text, QWidget& widget) {
        return buddies.value(text) == &widget && widget.focusPolicy() != Qt::NoFocus;
    };
    EXPECT_TRUE(leadsTo("&Font:", fonts()));
    EXPECT_TRUE(leadsTo("&Size:", size()));
    EXPECT_TRUE(leadsTo("&Display Item:", items()));
    EXPECT_TRUE(leadsTo("Item Fore&ground:", fore()));
    EXPECT_TRUE(leadsTo("Item &Background:", control<QComboBox>(Page::backColourBox)));
}

TEST_F(OptionsPageTest, aSizeOutOfRangeIsRefusedAtOnceAndKeepsTheDialogOpen) {
    open();
    typeSize("12");
    EXPECT_TRUE(waitFor([] { return !QToolTip::isVisible(); })) << "there was a moment without a number";
    typeSize("101");
    EXPECT_TRUE(QToolTip::isVisible());
    EXPECT_EQ(QToolTip::text(), "Enter a whole number from 1 to 100.");
    EXPECT_TRUE(size().hasFocus());

    items().setFocus();
    QString said; // what is refused on OK needs a dialog
    QTimer::singleShot(0, [&] {
        auto* message = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(message, nullptr);
        said = message->text();
        message->accept();
    });
    EXPECT_FALSE(page_->save());
    EXPECT_EQ(said, "Enter a whole number from 1 to 100.");
    EXPECT_EQ(dialog_->focusWidget(), &size());
    EXPECT_EQ(stored("Font Size"), -1);
    typeSize("100");
    EXPECT_TRUE(page_->save());
    EXPECT_EQ(stored("Font Size"), 100);
}

TEST_F(OptionsPageTest, coloursComeFromTheListOrFromADialog) {
    open();
    items().setCurrentRow(3); // Normal
    choose(control<QComboBox>(Page::backColourBox), "Olive");
    EXPECT_EQ(previewBack(), QColor(0x80, 0x80, 0x00));
    items().setCurrentRow(1); // Comments, whose own is automatic
    EXPECT_EQ(previewBack(), QColor(0x80, 0x80, 0x00)) << "the normal background";

    const auto other = [&](bool accept) {
        QTimer::singleShot(0, [=] {
            auto* colours = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(colours, nullptr);
            colours->setCurrentColor(QColor(0x12, 0x34, 0x56));
            accept ? colours->accept() : colours->reject();
        });
        choose(fore(), "Other…");
    };
    other(false);
    EXPECT_EQ(fore().currentText(), "Green") << "as before";
    other(true);
    EXPECT_EQ(fore().currentText(), "#123456");
    // A key on the closed list passes over the last entry without opening the dialog.
    fore().setFocus();
    press(fore(), Qt::Key_End);
    EXPECT_EQ(fore().currentText(), "#123456");
    press(fore(), Qt::Key_Home);
    EXPECT_EQ(fore().currentText(), "Automatic");
    choose(fore(), "#123456");
    EXPECT_TRUE(page_->save());
    EXPECT_EQ(stored("Fore Color Comments"), 0x563412);
    EXPECT_EQ(stored("Back Color Normal"), 0x008080);
    EXPECT_EQ(stored("Back Color Comments"), 0x2000000);
}

TEST_F(OptionsPageTest, theFontListLeavesOutProportionalFontsUnlessAsked) {
    platform_.settings().setStringValue("Xml Editor", "Font Family", u"No Such Face");
    open();
    EXPECT_EQ(fonts().currentIndex(), -1);
    EXPECT_TRUE(fonts().placeholderText().startsWith("No Such Face ("));
    auto& all = control<QToolButton>(Page::fontListBox);
    const int fixed = fonts().count();
    ASSERT_GE(fonts().findText("Liberation Mono"), 0) << "a font that the program needs";
    EXPECT_LT(fonts().findText("Liberation Sans"), 0);
    all.click();
    EXPECT_GT(fonts().count(), fixed);
    EXPECT_EQ(fonts().currentIndex(), -1) << "nothing was chosen";
    EXPECT_TRUE(page_->save());
    EXPECT_EQ(storedFamily(), "No Such Face");

    choose(fonts(), "Liberation Sans");
    EXPECT_TRUE(page_->save());
    EXPECT_EQ(storedFamily(), "Liberation Sans");
    all.click();
    EXPECT_EQ(fonts().count(), fixed);
    EXPECT_TRUE(page_->save());
    EXPECT_EQ(storedFamily(), "Liberation Sans") << "still what was chosen";
    EXPECT_EQ(fonts().placeholderText(), "Liberation Sans");

    open(); // a stored proportional face shows
    EXPECT_EQ(fonts().currentText(), "Liberation Sans");
    EXPECT_TRUE(control<QToolButton>(Page::fontListBox).isChecked());
}

TEST_F(OptionsPageTest, whatIsSavedShowsInEveryEditorThatListens) {
    XmlEditorWidget first(platform_);
    XmlEditorWidget second(platform_);
    open();
    for (XmlEditorWidget* editor : {&first, &second})
        QObject::connect(page_, &XmlEditorOptionsPage::saved, editor, &XmlEditorWidget::settingsChanged);
    auto& schemes = *page_->findChild<QComboBox*>(QString(), Qt::FindDirectChildrenOnly);
    EXPECT_EQ(schemes.currentText(), "Default");
    page_->applyScheme("Dark");
    EXPECT_EQ(schemes.currentText(), "Dark");
    choose(fore(), "Red");
    EXPECT_EQ(schemes.currentIndex(), -1);
    control<QCheckBox>(Page::lineNumbersBox).click();
    EXPECT_EQ(first.control().getTextColor(9), 0xFF00FFU) << "not before OK";
    EXPECT_TRUE(page_->save());
    for (XmlEditorWidget* editor : {&first, &second}) {
        EXPECT_EQ(editor->control().getTextColor(9), 0x0000FFU);
        EXPECT_EQ(editor->control().getBackgroundColor(0), 0x1E1E1EU);
        EXPECT_FALSE(editor->control().displayLineNumbers());
    }
}

TEST_F(OptionsPageTest, pageAndDialogMayGoInAnyOrder) {
    open();
    dialog_.reset();
    EXPECT_EQ(stored("Font Size"), -1) << "nothing is written";
    open();
    delete page_;
    dialog_.reset();
    // The window system takes the controls first.
    open();
    delete &QtWindowPeer::of(page_->page())->widget();
    EXPECT_EQ(page_->page().controls(), nullptr);
    EXPECT_FALSE(page_->save());
    // The user's choice ends the dialog.
    open();
    const QPointer<QDialog> dialog(dialog_.release());
    QObject::connect(&size(), &QLineEdit::textEdited, dialog, &QDialog::deleteLater);
    typeSize("5");
    EXPECT_TRUE(waitFor([&] {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return dialog.isNull();
    }));
}

} // namespace
} // namespace tavrin::qt
