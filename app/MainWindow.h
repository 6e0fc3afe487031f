#pragma once

#include "FileDocument.h"
#include "RecentFiles.h"

#include <QMainWindow>
#include <QPointer>

#include <filesystem>
#include <memory>

class QAction;
class QLabel;
class QMenu;
class QSessionManager;

namespace tavrin {

class AbandonedJournal;
class DocumentSchemas;
class EditJournal;
class Platform;
namespace qt {
class XmlEditorWidget;
}

namespace app {

class FileWatch;
class Prompts;
struct RecoveryOffer;
enum class RecoveryAction;
class SchemaService;
class SchemasDialog;

/// What all windows of the program share; outlives them.
struct Services {
    Platform& platform;
    QSettings& settings; ///< window place and recent files
    Prompts& prompts;
    SchemaService* schemas = nullptr;    ///< null: no schemas but the built-in ones
    std::filesystem::path journals = {}; ///< where unsaved changes are kept; empty: nowhere
    std::filesystem::path backups = {};  ///< of files that are written in place
};

/// One document in one window, with menus and a status line. Deletes itself when it is closed.
class MainWindow : public QMainWindow {
    Q_OBJECT

  public:
    explicit MainWindow(const Services& services);
    ~MainWindow() override;

    [[nodiscard]] qt::XmlEditorWidget& editor() { return *editor_; }
    [[nodiscard]] const FileDocument& document() const { return *document_; }

    /// Shows the file instead of the present document, after asking about unsaved changes. False when it did
    /// not come to that.
    bool openFile(const QString& path);
    /// Opens the first file here and each other in a window of its own.
    void openFiles(const QStringList& paths);
    /// Offers what sessions that did not end properly have left.
    void offerRecovery();
    /// Offers to put back what files held whose saving was cut off.
    void offerBackups();
    /// There was no memory for something in this window: says so.
    void memoryExhausted();

  public slots:
    void newFile();
    void open();
    bool save();
    bool saveAs();
    void gotoLine();
    void pageSetup();
    /// Opens the program's options; what is saved there shows in all windows at once.
    void showOptions();
    /// Compares the file with what was read, and asks what to do when another program has changed it.
    void checkDisk();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void createFileMenu();
    void createEditMenu();
    void createViewMenu();
    void createToolsMenu();
    void createHelpMenu();
    void createSchemas();
    void createStatusLine();
    void fillRecentMenu(QMenu* menu);
    /// The editor's settings were changed from this window: the other windows follow.
    void refreshOtherWindows();
    void restorePlace();

    /// True when the text may be given up: it is unchanged, was saved, or the user says so.
    bool mayDiscard();
    bool loadFile(const QString& path);
    void reloadFile();
    /// What a decoder replaced must not be saved unnoticed. False: the user would rather not see the file so.
    bool acceptsDamage(const QString& path, const DecodeReport& decoded);
    bool acceptsLoss(int encoding);
    /// The encoding in which a plain Save writes: the one that the XML declaration names. Nothing: the user
    /// cancelled.
    std::optional<int> encodingToSave();
    /// Makes the XML declaration name the encoding, as an edit. False when there was nothing to change.
    bool declare(int encoding);
    bool writeFile(const QString& path);
    void documentReplaced();
    void showDocument();

    void createJournal();
    void startJournal();
    [[nodiscard]] RecoveryOffer offerOf(const AbandonedJournal& journal);
    /// False when the journal is to be offered again.
    bool carryOut(RecoveryAction action, AbandonedJournal& journal);
    void recoverHere(AbandonedJournal journal);
    bool saveElsewhere(const AbandonedJournal& journal);

    /// Runs one of the editor's print slots; meanwhile the text stays as it is.
    void print(void (qt::XmlEditorWidget::*slot)());

    void recallBindings();
    void rememberBindings();
    void showSchemas();
    void showSchemasDialog();

    void showTitle();
    void showPosition();
    void showSize();
    void endSession(QSessionManager& manager);
    void about();

    Services services_;
    RecentFiles recent_;
    qt::XmlEditorWidget* editor_;
    std::unique_ptr<FileDocument> document_;
    FileWatch* watch_;
    std::unique_ptr<EditJournal> journal_; ///< null: none is kept
    std::unique_ptr<DocumentSchemas> schemas_;
    QPointer<SchemasDialog> schemasDialog_;
    bool busy_ = false; ///< a file is being read or printed, or a question about a change on disk is open

    QLabel* message_ = nullptr;
    QLabel* schemaState_ = nullptr;
    QLabel* position_ = nullptr;
    QLabel* encoding_ = nullptr;
    QLabel* size_ = nullptr;
};

} // namespace app
} // namespace tavrin
