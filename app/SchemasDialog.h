#pragma once

#include <QDialog>

#include <functional>

class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;
class QTreeWidget;

namespace tavrin {

class DocumentSchemas;
struct SchemaPreferences;
struct SchemaRule;

namespace app {

class Prompts;
class SchemaService;

/// Shows which schemas a document has and why, binds others, and keeps the user's map and catalogs. Every
/// change is in force at once.
class SchemasDialog : public QDialog {
    Q_OBJECT

  public:
    /// `document` outlives the dialog.
    SchemasDialog(DocumentSchemas& document, SchemaService& service, Prompts& prompts,
                  const QString& documentName, QWidget* parent);

    /// The document's decisions are other than before.
    void refresh();

  signals:
    /// The user bound or unbound a schema.
    void bindingsChanged();

  private:
    QWidget* documentPage(const QString& documentName);
    QWidget* mapPage();
    QWidget* catalogPage();
    void showDecisions();
    void showRules();
    void showCatalogs();
    void enableButtons();
    void showDetails();

    void bindFile();
    void unbindSelected();
    void mapSelected();
    void addRule();
    void changeRule();
    void removeRule();
    void moveRule(int by);
    void addCatalog();
    void removeCatalog();
    /// Lets the user fill in a rule; false when it was cancelled.
    bool editRule(SchemaRule& rule, const QString& title);
    void changePreferences(const std::function<void(SchemaPreferences&)>& change);

    DocumentSchemas& document_;
    SchemaService& service_;
    Prompts& prompts_;
    QLabel* reading_;
    QLabel* details_; ///< of the selected row, in full
    QTreeWidget* decisions_;
    QPushButton* unbind_;
    QPushButton* map_;
    QTableWidget* rules_;
    QPushButton* edit_;
    QPushButton* remove_;
    QPushButton* up_;
    QPushButton* down_;
    QListWidget* catalogs_;
    QPushButton* removeCatalog_;
};

} // namespace app
} // namespace tavrin
