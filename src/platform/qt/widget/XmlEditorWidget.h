#pragma once

#include <QWidget>

#include <memory>

class QMenu;

namespace tavrin {

class Platform;
class TextEditorCtrl;

namespace qt {

/// The editor as a Qt widget: a TextEditorCtrl on the Qt platform, with the names that Qt programs
/// expect. Lines and columns count from 0; a column counts UTF-16 code units.
///
/// While it has the focus it takes every key that edits or moves, Tab, Return and Escape among them; focus
/// leaves it by the mouse or by the host's shortcuts. Signals are sent once what the user did is done, and
/// after the slots below.
class XmlEditorWidget : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(bool modified READ isModified WRITE setModified NOTIFY modificationChanged)

  public:
    /// `platform` is a QtPlatform and outlives the widget.
    explicit XmlEditorWidget(Platform& platform, QWidget* parent = nullptr);
    ~XmlEditorWidget() override;

    /// The control itself, for everything that has no name here.
    [[nodiscard]] TextEditorCtrl& control();

    /// The whole text, lines joined by "\n".
    [[nodiscard]] QString text() const;
    /// Replaces the text and starts a new undo history; the caret goes to the top.
    void setText(const QString& text);
    /// To be called after the control's buffer was loaded by other means: starts a new undo history, puts the
    /// caret at the top, measures and repaints.
    void documentLoaded();

    [[nodiscard]] bool isModified() const;
    /// With false: the present state is the saved one. With true: no state is, until the next call with
    /// false.
    void setModified(bool modified);
    /// True while a long search shows its progress and handles events: the text must not be changed from
    /// outside then, nor the widget deleted.
    [[nodiscard]] bool isBusy() const;
    [[nodiscard]] bool canUndo() const;
    [[nodiscard]] bool canRedo() const;
    [[nodiscard]] bool hasSelection() const;
    [[nodiscard]] int currentLine() const;
    [[nodiscard]] int currentColumn() const;
    /// A position outside the text is ignored.
    void gotoLineCol(int line, int column);

    /// The document's name, for print jobs and the headers of printed pages.
    [[nodiscard]] QString documentTitle() const;
    void setDocumentTitle(const QString& title);

    [[nodiscard]] QSize sizeHint() const override;

  public slots:
    void undo();
    void redo();
    void cut();
    void copy();
    void paste();
    void selectAll();
    /// Open the find dialog, or the one that replaces too.
    void find();
    void replace();
    /// The next or previous match of the last search text; without one the find dialog opens.
    void findNext();
    void findPrevious();
    /// The selected text is searched for, if it lies on one line.
    void findSelectedNext();
    void findSelectedPrevious();
    /// What is typed from now on is searched for, until Escape, a key that moves, or the mouse.
    void startIncrementalSearch();
    void indent();
    void unindent();
    void makeUpperCase();
    void makeLowerCase();
    /// Asks for a printer; a PDF file can be chosen as well.
    void print();
    /// On the default printer, without asking.
    void printDirectly();
    void printPreview();
    /// Changes the font size of the user's settings, within 1 to 100 points, and shows it.
    void zoomIn(int points = 1);
    void zoomOut(int points = 1);
    void resetZoom();
    /// Settings were changed elsewhere: read them again and repaint.
    void settingsChanged();

  signals:
    void textChanged();
    void modificationChanged(bool modified);
    void undoAvailable(bool available);
    void redoAvailable(bool available);
    void copyAvailable(bool available);
    void selectionChanged();
    void cursorPositionChanged(int line, int column);
    /// What the editor says in its frame's status line; empty clears it.
    void statusMessage(const QString& text);
    /// The standard menu is ready; the receiver may add to it.
    void contextMenuAboutToShow(QMenu* menu);

  protected:
    void resizeEvent(QResizeEvent* event) override;
    /// Zooms while Ctrl is held.
    void wheelEvent(QWheelEvent* event) override;

  private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace qt
} // namespace tavrin
