#pragma once

#include "platform/core/Undoable.h"
#include "platform/ui/ScrollView.h"
#include "view/ColourScheme.h"
#include "view/LineMarks.h"
#include "view/PrintLayout.h"
#include "view/TextMeasure.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace tavrin {

class Buffer;
struct TextForm;
class EditAction;
enum class EditActionKind : int;
struct FINDREPLACE;
class ReloadAction;
class ReplaceAction;
class TextDocument;

/// The editor's window: shows a document's text in colours beside a gutter of line numbers, and turns keys,
/// mouse and commands into moves of the caret and edits that can be undone.
///
/// Positions are (line, column), counted from 0; a column counts UTF-16 code units. Pixels are those of the
/// client area. The selection is the text between the caret and the pivot, whichever comes first; it is empty
/// when they are equal. Loading a text leaves both where they are: every command first limits them to the
/// text.
///
/// The operations stand in one source a concern: Settings, Drawing, Invalidation, Scrolling, Caret,
/// Navigation, Mouse, Keyboard, Commands, Clipboard, Editing, Find,
/// IncrementalSearch, Replace, Printing.
class CTextEditorView : public ScrollView, public Undoable {
  public:
    static constexpr int topMargin = 0;
    static constexpr int bottomMargin = 0;
    static constexpr int rightMargin = 0;
    static constexpr int lineNumbersMargin = 5; ///< on each side of the gutter's numbers
    static constexpr int minimumGutterWidth = 25;
    static constexpr int caretWidth = 2;
    static constexpr int tabSize = 4; ///< characters between tab stops

    explicit CTextEditorView(Platform& platform);
    ~CTextEditorView() override;

    [[nodiscard]] virtual TextDocument& getDocument() = 0;

    // What a completion popup does to the text while it has the keyboard; nothing without a provider.

    virtual void insertChar(char16_t ch);
    virtual void deleteChar(bool backspace);
    virtual void moveCaretLeft();
    virtual void moveCaretRight();

    // Caret and selection

    [[nodiscard]] int getCurrentLine() const { return caretLine_; }
    [[nodiscard]] int getCurrentColoumn() const { return caretCol_; }
    [[nodiscard]] int getPivotLine() const { return pivotLine_; }
    [[nodiscard]] int getPivotCol() const { return pivotCol_; }
    [[nodiscard]] bool hasSelection() const { return caretLine_ != pivotLine_ || caretCol_ != pivotCol_; }
    /// The selection in text order, lines joined by a line feed.
    [[nodiscard]] std::u16string getSelectedText();
    /// Places the caret, limited to the text, and leaves the pivot; `ensureVisible` scrolls it into view.
    void setCaret(int line, int col, bool ensureVisible);
    /// Scrolls so that the position is on screen; col -1: the line only. Another line than one of the text is
    /// ignored.
    void ensureVisible(int line, int col);
    /// Empties the selection at the caret.
    void updatePivot();
    /// Moves the caret to a position of the text, with no selection; another position is ignored.
    void gotoLineCol(int line, int col);
    /// Top left corner of the caret, also while it is not shown.
    [[nodiscard]] CPoint getCaretPoint();
    /// Top left corner of a position of the text, in client pixels.
    [[nodiscard]] CPoint getPoint(int line, int col) { return {columnX(line, col), lineTop(line)}; }
    struct Position {
        int line;
        int col;
        friend auto operator<=>(const Position&, const Position&) = default;
    };
    /// The position nearest to a point in client pixels; (0, 0) in an empty buffer.
    [[nodiscard]] Position getPositionAt(CPoint point);
    /// True from the press of the left button until its release, Escape, a right press or the loss of the
    /// capture.
    [[nodiscard]] bool isDragging() const { return dragging_ && peer(); }

    // Edits: each changes the buffer and records one action, or throws std::bad_alloc and does neither. None
    // moves the caret, repaints or opens an undo group.

    void insert(int line, int col, char16_t ch);
    /// Reports the position after the inserted text, which line feeds divide into lines.
    void insert(int line, int col, std::u16string_view text, int& endLine, int& endCol);
    void insert(int line, int col, std::u16string_view text);
    void split(int line, int col);
    /// Removes the text between two positions in any order; nothing for equal ones.
    void erase(int line1, int col1, int line2, int col2);
    /// Erases the selected text; caret and pivot stay where they are.
    void eraseSelection();
    /// Replaces the selection as one undo step and leaves the caret after the new text, which is selected on
    /// request.
    void replaceSelection(std::u16string_view text, bool select);
    /// Shows the text of the action, which was not recorded yet, as one undo step. What was on screen stays
    /// there, caret included, as far as it is found in the new text; nothing is selected.
    void reload(ReloadAction& action);
    /// Records the whole text as erased (before) or inserted (after) for a host that replaces it, inside one
    /// undo group. REQUIRES: the buffer has a line.
    void addBufferReplaceUndoAction(bool before);

    /// Changes how the text is written to a file; nothing when it is written so already.
    void changeForm(const TextForm& form);

    void undo(const UndoableAction& action) override;
    void redo(const UndoableAction& action) override;
    bool canMerge(const UndoableAction& previous, const UndoableAction& next) override;
    void merge(UndoableAction& previous, const UndoableAction& next) override;

    // Commands

    void OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags);
    /// One code unit; the repeat count and the flags do not matter.
    void OnChar(UINT nChar, UINT nRepCnt, UINT nFlags);
    void OnEditCopy();
    void OnEditCut();
    void OnEditPaste();
    void OnEditSelectAll();
    void OnEditUndo();
    void OnEditRedo();
    /// Opens a find dialog, with the selected text or the last search text in it.
    void OnEditFind();
    void OnEditReplace();
    /// Select the next or previous match of the last search text, around the end of the text. Without such a
    /// text they open a find dialog.
    void OnEditFindNext();
    void OnEditFindPrevious();
    /// The same for the selected text, which must lie on one line and becomes the search text.
    void OnEditFindSelectedNext();
    void OnEditFindSelectedPrev();
    /// From now on what is typed is searched for, from the caret on; the selection is emptied. Another search
    /// that goes on is ended.
    void startIncrementalSearch();
    /// From another position of the text. It begins at the pivot when that comes later.
    void startIncrementalSearch(int line, int col);
    /// Ends it, if one goes on; what was found stays selected.
    void endIncrementalSearch();
    [[nodiscard]] bool isIncSearchActive() const { return incSearchActive_; }
    void setStartIncSrcLineCol(int line, int col);
    void OnIndentSelection();
    void OnUnindentSelection();
    void OnMakeSelectionLowercase();
    void OnMakeSelectionUppercase();
    void OnAutocompleteListmembers();
    void OnUpdateOnEditPaste(CCmdUI* state);
    void OnUpdateOnEditUndo(CCmdUI* state);
    void OnUpdateOnEditRedo(CCmdUI* state);
    /// The spaces and tabs that the line begins with.
    [[nodiscard]] std::u16string getIndentText(int line);

    // Look

    void OnInitialUpdate() override;
    /// Reads the settings again, measures the font and repaints. The scroll ranges stay as they are.
    void OnUpdate() override;
    void OnDraw(CDC* dc) override;
    [[nodiscard]] const CFont* getEditorNormalFont();
    [[nodiscard]] bool displayLineNumbers();
    /// The colours of a format code; 1 is the selection, 2 the gutter.
    [[nodiscard]] COLORREF getTextColor(int code);
    [[nodiscard]] COLORREF getBackgroundColor(int code);
    [[nodiscard]] int getLineHeight() const { return lineHeight_; }
    [[nodiscard]] CRect getLineNumbersArea();
    [[nodiscard]] CRect getEditArea();
    [[nodiscard]] long getWidth() const { return GetClientRect().Width(); }
    [[nodiscard]] long getHeight() const { return GetClientRect().Height(); }
    /// Width of the first `count` characters with tabs expanded. `count` may exceed the text.
    [[nodiscard]] int getTabbedStringWidth(std::u16string_view text, int count, int tabColumns);
    /// While a completion popup has the focus, the caret stays and moves as if the view had it.
    void setAutoCompleteShown(bool shown);

    // Invalidation: areas for the next paint

    void redraw();
    void redraw(int x, int y, int width, int height);
    /// From the line down, full width.
    void redrawToEOP(int line);
    /// The lines first to last, both included, full width.
    void redrawRange(int firstLine, int lastLine);
    /// The pixels of the selection. Of a selection over very many lines only those in the client area.
    void invalidateSelection();

    // Scrolling

    /// Recomputes the ranges from the line count and the widest line.
    void updateScrollbars();
    bool OnScrollBy(CSize displacement, bool doScroll) override;
    [[nodiscard]] int getFirstCompletellyVisibleLineIdx();
    /// The last line drawn; -1 for an empty buffer.
    [[nodiscard]] int getLastVisibleLineIdx();
    /// The line before the last one drawn, also when that one is wholly visible.
    [[nodiscard]] int getLastCompletellyVisibleLineIdx();
    /// The line's row in the client area: 0 for the first on screen, negative above it.
    [[nodiscard]] int getLineIndexInPage(int line);

    // Printing: the lines in their colours, in a font of its own whatever the editor's; what the settings add
    // to them is in PrintLayout

    bool OnPreparePrinting(CPrintInfo* info) override;
    void OnBeginPrinting(CDC* dc, CPrintInfo* info) override;
    /// Draws the page m_nCurPage (from 1); nothing beyond the last.
    void OnPrint(CDC* dc, CPrintInfo* info) override;
    void OnEndPrinting(CDC* dc, CPrintInfo* info) override;

    bool PreTranslateMessage(const MSG& message) override;
    /// Throws std::logic_error when the state contradicts itself. For tests; REQUIRES: since the last load a
    /// command has run.
    void checkInvariants();

  protected:
    [[nodiscard]] const MessageMap& GetMessageMap() const override;
    bool PreCreateWindow(CREATESTRUCT& how) override;

    void OnSetFocus(CWnd* previous);
    void OnKillFocus(CWnd* next);
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    void OnRButtonDown(UINT flags, CPoint point);
    void OnMouseMove(UINT flags, CPoint point);
    void OnLButtonUp(UINT flags, CPoint point);
    void OnCaptureChanged(CWnd* next);
    bool OnMouseWheel(UINT flags, short delta, CPoint point);
    void OnSize(UINT kind, int width, int height);
    bool OnEraseBkgnd(CDC* dc);
    void OnContextMenu(CWnd* window, CPoint point);
    bool OnSetCursor(CWnd* window, UINT hitTest, UINT mouseMessage);
    void OnVScroll(UINT code, int position);
    LRESULT OnFindReplace(const MSG& message);

    void loadSettings();

    /// Fills the rectangle that begins at (x, y).
    void fillRectangle(CDC& dc, int x, int y, int width, int height, COLORREF colour);
    void setClipRect(CDC& dc, const CRect& rect);
    /// Draws text with its tab stops counted from tabOrigin; returns the x after it.
    int drawTabbedText(CDC& dc, int x, int y, std::u16string_view text, int tabOrigin, int tabColumns);
    void drawLine(CDC& dc, int line, int x, int y);
    /// In the printer's logical units: the paper less its margins, as far as page counts go. May be inverted.
    [[nodiscard]] CRect getContentPrintRect(CDC& dc) const;

    /// The scroll ranges and the caret too.
    void UpdateAgain() override;
    /// Tells the user.
    void OnMemoryExhausted() override;

    void updateNav();
    [[nodiscard]] int getClosestToNavColumn(int line);
    void setCaretAtPoint(CPoint point, bool movePivot);
    void handleLeft(bool ctrl, bool shift);
    void handleRight(bool ctrl, bool shift);
    void handleUp(bool ctrl, bool shift);
    void handleDown(bool ctrl, bool shift);
    void handleHome(bool ctrl, bool shift);
    void handleEnd(bool ctrl, bool shift);
    void handlePageUp(bool ctrl, bool shift);
    void handlePageDown(bool ctrl, bool shift);
    void handleReturn();
    void handleBackspace();
    void handleDelete();

    bool setClipboardText(std::u16string_view text);
    [[nodiscard]] bool hasClipboardText();
    /// Appends the clipboard's text with its line breaks as line feeds.
    bool getClipboardText(std::u16string& text);

    /// Selects the next match in the direction of the flags (FindFlags), from an end of the selection. False,
    /// and nothing changes, when there is none or the user stops the search. Text with a line feed is never
    /// found, a match over the cut of a long line is.
    bool find(std::u16string text, int flags);
    /// When the selected text is exactly `text`: replaces it and selects the replacement. Then finds the next
    /// match.
    void replace(std::u16string_view text, std::u16string_view with, int flags);
    /// Replaces every match in the text, as one undo step, and returns their number. Replacements are not
    /// searched. When the user stops it, what was done stays.
    int replaceAll(std::u16string_view text, std::u16string_view replacement, int flags);
    /// The selected text, else the last search text.
    [[nodiscard]] std::u16string getfindString();

    /// Looks for the text typed so far, with one more character typed `nRepCnt` times.
    void incrementalSearch(UINT nChar, UINT nRepCnt);
    void onEndIncSearch();
    void OnDeleteEndIncSearch();
    /// Shows the text of the incremental search, or that there is none.
    void setstatusbar(std::u16string_view text);
    [[nodiscard]] std::u16string getfindStringFromKey();
    void setFindStringKey(std::u16string_view text);

    /// The last search text, shared by every view of the process.
    static std::u16string findStr;
    /// Number of the find dialog's message; 0 until the first view is made.
    static UINT findMsgId;

  private:
    friend class EditCommand;
    struct SelectedColumns {
        bool any;
        int start;
        int end;
    };
    /// Columns of a line that hold all of it that is on the screen.
    struct SeenColumns {
        int start;
        int end;
        int x; ///< of the first, from where the line begins
    };
    using Move = void (CTextEditorView::*)(bool ctrl, bool shift);

    [[nodiscard]] Buffer& getBuffer();
    [[nodiscard]] int lastLine();
    /// The nearest position of the text; (0, 0) in an empty buffer.
    [[nodiscard]] Position limited(Position position);
    [[nodiscard]] Position selectionStart() const;
    [[nodiscard]] Position selectionEnd() const;
    /// Limits caret and pivot to the text: the first step of every command.
    void normalizePositions();
    void moveCaretToSelectionStart();
    /// Shows the caret where it belongs, while there is one.
    void placeCaret();
    void createCaret();
    template <class Step>
    void navigate(bool shift, Step step);
    void placeEmptySelection(Position caret);
    void showCaretMoved();
    void eraseAndShow(Position start, Position end);
    void showEdit();
    void typeCharacter(char16_t ch);
    [[nodiscard]] static Move navigationOf(UINT key);
    [[nodiscard]] bool takeIncSearchKey(UINT key, UINT repeat);
    void changeCase(std::u16string (*convert)(std::u16string_view));
    template <class Edit>
    void forSelectedLines(Edit edit);
    void record(EditActionKind kind, Position start, Position end, std::u16string text);
    void recordCaretMove(Position from, Position to);
    void placeFromRecord(Position caret, Position pivot);
    void endDrag();

    void showFindDialog(bool findOnly, std::u16string_view findWhat, UINT flags);
    void takeRequest(const FINDREPLACE& request);
    void findAgain(int direction);
    [[nodiscard]] bool takeSelectedText();
    [[nodiscard]] bool isSelected(std::u16string_view what);
    int replaceMatches(std::u16string_view what, std::u16string_view with, int options);
    int replaceBatch(ReplaceAction& batch, std::u16string_view with);
    void replaceFromRecord(const ReplaceAction& record, bool forward);
    [[nodiscard]] CFrameWnd* statusFrame() const;
    void showStatus(std::u16string_view text);
    void report(std::u16string_view text); // with a beep

    /// Of the text on a printer in which the printer font is selected.
    [[nodiscard]] std::shared_ptr<const PrintLayout> printLayout(CDC& dc, int rowHeight);
    /// Returns where the rows below begin.
    int printHeader(CDC& dc, const PrintLayout& layout, int page, int rowHeight);
    void printRow(CDC& dc, const PrintLayout& layout, const PrintLayout::Row& row, int y);

    [[nodiscard]] TextMeasure& measure();
    [[nodiscard]] int gutterWidth();
    [[nodiscard]] int lineTop(int line) const;
    [[nodiscard]] int columnX(int line, int col);
    [[nodiscard]] SelectedColumns selectedColumns(int line, int length) const;
    [[nodiscard]] LineMarks& marks(int line);
    /// Where a column of a line stands, in pixels from the line's start.
    [[nodiscard]] int xInLine(int line, int col);
    /// Of a line that begins at x.
    [[nodiscard]] SeenColumns seenColumns(int line, int x);
    /// What the pixels of a line's row follow from, but for its place: equal looks, equal pixels. Without a
    /// line (-1): of the area below the text.
    [[nodiscard]] RowLook rowLook(int line);
    /// An x that nothing of a line lies beyond.
    [[nodiscard]] int rowEnd(int line, const SeenColumns& seen);
    void drawLineNumbers(CDC& dc, std::span<const int> lines);
    /// Draws the columns [start, end) of a line, the first of them at x; tab stops count from tabOrigin.
    void drawColumns(CDC& dc, int line, int start, int end, int x, int y, int tabOrigin);

    bool incSearchActive_ = false;
    bool autoCompleteShown_ = false;
    int lineHeight_ = 9; // never below 1
    int caretLine_ = 0;
    int caretCol_ = 0;
    int pivotLine_ = 0;
    int pivotCol_ = 0;
    int navColumn_ = 0;
    int charWidth_ = 0; // 0 until the first update
    int incSearchStartLine_ = 0;
    int incSearchStartCol_ = 0;
    std::u16string incSearchText_;
    std::u16string replaceStr_; // of this view's dialogs
    int searchFlags_;           // FindFlags of the last request
    bool searchStopped_ = false;
    bool settingsChanged_ = true;
    std::uint64_t settingsRead_ = 0; // how often
    TextMeasure measure_;            // holds the font
    LineMarks marks_;
    ColourScheme colours_;
    bool showLineNumbers_ = false;
    int gutterLineCount_ = -1; // the line count that gutterWidth_ was measured for
    int gutterWidth_ = 0;
    bool dragging_ = false;
};

} // namespace tavrin
