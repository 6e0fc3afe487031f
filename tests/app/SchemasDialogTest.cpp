#include "app/SchemasDialog.h"

#include "ScriptedPrompts.h"
#include "app/MainWindow.h"
#include "app/SchemaRuleDialog.h"
#include "app/SchemaService.h"
#include "control/TextEditorCtrl.h"
#include "platform/qt/QtPlatform.h"
#include "platform/qt/widget/XmlEditorWidget.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace tavrin;
using namespace tavrin::app;

namespace {

class SchemasDialogTest : public testing::Test {
  protected:
    ~SchemasDialogTest() override { delete window; }

    QString write(const QString& name, const QByteArray& bytes) const {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return file.fileName();
    }
    static bool waitUntil(const std::function<bool()>& condition) {
        const QDeadlineTimer deadline(20000);
        while (!condition()) {
            if (deadline.hasExpired())
                return false;
            QApplication::processEvents(QEventLoop::AllEvents, 50);
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        return true;
    }
    SchemasDialog* openDialog() {
        for (QAction* menu : window->menuBar()->actions())
            for (QAction* action : menu->menu()->actions())
                if (action->text().remove('&').startsWith("Schemas"))
                    action->trigger();
        return window->findChild<SchemasDialog*>();
    }
    static void press(QWidget* dialog, const QString& text) {
        for (auto* button : dialog->findChildren<QPushButton*>())
            if (button->text().remove('&').startsWith(text) && button->isEnabled())
                return button->click();
        ADD_FAILURE() << "no button " << text.toStdString();
    }
    /// The rows of the document's page: namespace, why, state; and messages.
    static QStringList rows(SchemasDialog* dialog) {
        QStringList result;
        const auto* tree = dialog->findChild<QTreeWidget*>("decisions");
        for (int i = 0; i < tree->topLevelItemCount(); ++i) {
            const QTreeWidgetItem* item = tree->topLevelItem(i);
            result += item->text(0) + " | " + item->text(2) + " | " + item->text(3);
            for (int j = 0; j < item->childCount(); ++j)
                result += "  " + item->child(j)->text(0);
        }
        return result;
    }
    static bool shows(SchemasDialog* dialog, const QString& row) {
        return waitUntil([&] { return rows(dialog).contains(row); });
    }

    QTemporaryDir folder;
    qt::QtPlatform platform{folder.filePath("settings.ini")};
    QSettings settings{folder.filePath("window.ini"), QSettings::IniFormat};
    ScriptedPrompts prompts;
    SchemaService schemas{platform.settings()};
    QPointer<MainWindow> window = new MainWindow({platform, settings, prompts, &schemas});

    static constexpr const char* schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
                                          "targetNamespace='urn:n'><xs:element name='n'/></xs:schema>";
};

TEST_F(SchemasDialogTest, bindsAndUnbindsAndRemembers) {
    const QString document = write("doc.xml", "<n xmlns='urn:n'/>");
    ASSERT_TRUE(window->openFile(document));
    QPointer<SchemasDialog> dialog = openDialog();
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(shows(dialog, "http://www.w3.org/1999/XSL/Transform | built in | In use"));
    prompts.schema = write("n.xsd", schema);
    press(dialog, "Bind File");
    EXPECT_TRUE(shows(dialog, "urn:n | bound to this document by the user | In use"));
    dialog->close();
    EXPECT_TRUE(waitUntil([&] { return !dialog; }));

    // Another document has nothing of it; the first one has it again.
    ASSERT_TRUE(window->openFile(write("other.xml", "<n xmlns='urn:n'/>")));
    EXPECT_EQ(rows(openDialog()).filter("by the user").size(), 0);
    window->findChild<SchemasDialog*>()->close();
    EXPECT_TRUE(waitUntil([&] { return !window->findChild<SchemasDialog*>(); }));
    ASSERT_TRUE(window->openFile(document));
    dialog = openDialog();
    EXPECT_TRUE(shows(dialog, "urn:n | bound to this document by the user | In use"));
    EXPECT_EQ(loadSchemaPreferences(platform.settings()).bound.size(), 1u);

    // A schema that breaks on disk keeps its last good state and says what is wrong.
    write("n.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>\n<oops");
    EXPECT_TRUE(shows(dialog, "urn:n | bound to this document by the user | In use, with messages"));
    EXPECT_FALSE(rows(dialog).filter("  n.xsd:2").isEmpty()) << rows(dialog).join('\n').toStdString();

    auto* tree = dialog->findChild<QTreeWidget*>("decisions");
    tree->setCurrentItem(tree->topLevelItem(0));
    press(dialog, "Unbind");
    EXPECT_EQ(rows(dialog).filter("by the user").size(), 0);
    EXPECT_TRUE(loadSchemaPreferences(platform.settings()).bound.empty());
}

TEST_F(SchemasDialogTest, keepsTheUsersMapAndCatalogs) {
    ASSERT_TRUE(window->openFile(write("doc.xml", "<n xmlns='urn:n'/>")));
    SchemasDialog* dialog = openDialog();
    prompts.schema = write("catalog.xml", "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>"
                                          "<uri name='urn:n' uri='n.xsd'/></catalog>");
    write("n.xsd", schema);
    auto* catalogs = dialog->findChild<QListWidget*>("catalogs");
    const auto addIn = [&](QWidget* page) { press(page, "Add"); };
    addIn(catalogs->parentWidget());
    EXPECT_EQ(catalogs->item(0)->text(), prompts.schema);
    EXPECT_TRUE(shows(dialog, "urn:n | a catalog knows the namespace name | In use"));

    // The map is asked first.
    prompts.schema = write("mine.xsd", schema);
    QTimer::singleShot(0, dialog, [&] {
        auto* rule = dialog->findChild<SchemaRuleDialog*>();
        rule->findChild<QComboBox*>()->setCurrentIndex(1);
        rule->findChildren<QLineEdit*>().front()->setText("n");
        press(rule, "Browse");
        press(rule, "OK");
    });
    addIn(dialog->findChild<QTableWidget*>("rules")->parentWidget());
    EXPECT_TRUE(shows(dialog, "urn:n | the user's map, for the root element \"n\" | In use"));
    EXPECT_TRUE(shows(dialog, "urn:n | a catalog knows the namespace name | Not needed"));
    const SchemaPreferences kept = loadSchemaPreferences(platform.settings());
    EXPECT_EQ(kept.rules,
              (std::vector<SchemaRule>{{SchemaRule::Kind::rootElement, "n", prompts.schema.toStdString()}}));
    EXPECT_EQ(kept.catalogs.size(), 1u);

    auto* rules = dialog->findChild<QTableWidget*>("rules");
    rules->setCurrentCell(0, 0);
    press(rules->parentWidget(), "Remove");
    catalogs->setCurrentRow(0);
    press(catalogs->parentWidget(), "Remove");
    EXPECT_TRUE(waitUntil([&] { return rows(dialog).filter("urn:n").isEmpty(); }));
}

} // namespace
