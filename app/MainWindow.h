#pragma once

#include "FileDocument.h"
#include "RecentFiles.h"
#include "files/FileClaim.h"

#include <QMainWindow>
#include <QPointer>

#include <filesystem>
#include <memory>

class QAction;
class QLabel;
class QMenu;
class QSessionManager;
class QStackedWidget;
class QToolButton;

namespace tavrin {

class AbandonedJournal;
class DocumentSchemas;
class EditJournal;
class Platform;
namespace qt {
class XmlEditorWidget;
}

namespace app {

class FileLoad;
class FileWatch;
class FirstPage;
class LoadProgress;
class Prompts;
struct RecoveryOffer;
struct TextEdit;
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
    /// Where running programs tell each other which files are open; empty: nobody is told.
    std::filesystem::path openFiles = {};
    DeviceForPath device = {}; ///< what files are read from; empty: themselves
};

/// One document in one window, with menus and a status line. Deletes itself when it is closed.
class MainWindow : public QMainWindow {
    Q_OBJECT

  public:
    explicit MainWindow(const Services& services);
    ~MainWindow() override;

    /// All windows that there are.
    [[nodiscard]] static QList<MainWindow*> all();

    [[nodiscard]] qt::XmlEditorWidget& editor() { return *editor_; }
    [[nodiscard]] const FileDocument& document() const { return *document_; }

    /// Shows the file instead of the present document, after asking about unsaved changes, or brings the
    /// window to the front that shows it already. False when it did not come to that.
    ///
    /// A large or slow file goes on loading when this returns true. Until it is there the window shows its
    /// first page, which can't be changed; whatever ends the load (Escape, closing, opening another file, an
    /// error) brings back the document as it was.
    bool openFile(const QString& path);
    [[nodiscard]] bool isLoading() const { return load_ != nullptr; }
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
    /// Shows what the file holds now, as one step that undo takes back. A large or slow file is read as
    /// openFile does it; until it is there the text stays in sight and can't be changed.
    void reloadFile();
    /// Compares the file with what was read, and asks what to do when another program has changed it.
    void checkDisk();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void createFileMenu();
    void createEditMenu();
    void createViewMenu();
    void createToolsMenu();
    void createHelpMenu();
    void createSchemas();
    void createDocumentMenu();
    void createStatusLine();
    void createFormButtons();
    void fillEncodingMenu();
    void fillLineEndMenu();
    void fillRecentMenu(QMenu* menu);
    /// The editor's settings were changed from this window: the other windows follow.
    void refreshOtherWindows();
    void restorePlace();

    /// True when the text may be given up: it is unchanged, was saved, or the user says so.
    bool mayDiscard();
    /// Shows what was read, or says why it was not. False: the document is still the one before.
    bool showRead(const QString& path, FileDocument::ReadResult read);
    /// Tells of bytes that are not valid. False: the user would rather not see the file so.
    bool acceptsDamage(const QString& path, const LoadedText& text);

    bool showReread(FileDocument::ReadResult read);

    /// The file, if it can be read while the user waits; else it goes on loading.
    std::optional<FileDocument::ReadResult> readOrBeginLoading(const QString& path, bool isReload);
    void beginLoading();
    void followLoading();
    void finishLoading();
    /// Gives up what is being loaded, if anything is.
    void stopLoading();
    /// While a file is loaded nothing is done to the document that will go: enables what does so.
    void enableDocument(bool enabled);
    void showFirstPage();
    /// Shows the document again, which still is the one before.
    void endLoading();
    /// True, and says so, when a file is being loaded.
    bool refusesWhileLoading();
    /// The editor that the user sees.
    [[nodiscard]] qt::XmlEditorWidget& shownEditor();

    /// Asks until the user has decided. True: the text may replace the file.
    bool settleDiskChange(bool isSaving);
    /// False when another program has changed the file, and the user would rather not save over that.
    bool mayReplaceOnDisk();
    void compareWithDisk();
    /// Watches the document's file, and tells other programs that it is open here.
    void followFile();
    /// The window of this program that shows a file; null: none.
    [[nodiscard]] static MainWindow* windowOf(const QString& path);
    /// Brings the window to the front that shows the file. False when none does.
    static bool showsOpenFile(const QString& path);
    /// Says when another program of ours has the file open; false when the user then does without it.
    bool mayOpen(const QString& path);
    /// The same for saving under another name, which no other window of ours may show.
    bool mayWriteTo(const QString& path);

    /// The encoding of a save, and whether the user chose it: then it wins over the XML declaration.
    struct SaveEncoding {
        int code;
        bool isChosen = false;
    };
    /// The encoding that the XML declaration names, or else the present one.
    [[nodiscard]] int namedEncoding() const;
    /// The same for a plain Save, which asks when the name is not known. Nothing: the user cancelled.
    std::optional<int> encodingToSave();
    /// Asks about everything that writing in the encoding would lose; references are written, or another
    /// encoding is chosen. False: the user cancelled.
    bool settleLoss(SaveEncoding& encoding);
    bool acceptsLostBytes(int encoding);
    /// Makes the encoding the text's, and the XML declaration's if the user likes, as one undo step. False
    /// when nothing has changed.
    bool changeEncoding(int encoding);
    void declare(const TextEdit& edit);
    bool saveIn(const QString& path, SaveEncoding encoding);
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
    void showForm();
    void endSession(QSessionManager& manager);
    void about();

    Services services_;
    RecentFiles recent_;
    QStackedWidget* pages_; ///< the editor, and the first page of what is being loaded
    qt::XmlEditorWidget* editor_;
    std::unique_ptr<FileLoad> load_; ///< null: no file is being loaded
    bool isReload_ = false;          ///< what is loaded is the document's own file
    FirstPage* firstPage_ = nullptr; ///< null: not shown
    QList<QMenu*> documentMenus_;    ///< all their commands are about the document
    std::unique_ptr<FileDocument> document_;
    FileWatch* watch_;
    FileClaim claim_;
    std::unique_ptr<EditJournal> journal_; ///< null: none is kept
    std::unique_ptr<DocumentSchemas> schemas_;
    QPointer<SchemasDialog> schemasDialog_;
    bool busy_ = false; ///< a file is being read or printed, or a question about a change on disk is open

    std::u16string overruledDeclaration_; ///< the encoding's name that the user left there, choosing another
    std::size_t acceptedLostBytes_ = 0;   ///< places that saves may replace, see findLostBytes

    LoadProgress* progress_ = nullptr;
    QLabel* message_ = nullptr;
    QLabel* schemaState_ = nullptr;
    QLabel* position_ = nullptr;
    QToolButton* encoding_ = nullptr;
    QToolButton* lineEnd_ = nullptr;
    QMenu* encodingMenu_ = nullptr;
    QMenu* lineEndMenu_ = nullptr;
    QLabel* size_ = nullptr;
};

} // namespace app
} // namespace tavrin
