#pragma once

#include "platform/ui/CWnd.h"

#include <QAccessibleWidget>

namespace tavrin {

class TextEditorCtrl;
class UndoableAction;

namespace qt {

class ViewWidget;

/// The editor's text for assistive technology: a sequence of UTF-16 code units in which every line but the
/// last ends with a line feed, also where a long line was cut. No question costs more than the lines that it
/// is about.
class AccessibleText final : public QAccessibleWidget,
                             public QAccessibleTextInterface,
                             public QAccessibleEditableTextInterface {
  public:
    /// Once the control is gone the object is not valid any more.
    AccessibleText(ViewWidget& view, TextEditorCtrl& control);

    // QAccessibleInterface
    [[nodiscard]] bool isValid() const override;
    [[nodiscard]] QAccessible::State state() const override;
    [[nodiscard]] QString text(QAccessible::Text kind) const override;
    [[nodiscard]] void* interface_cast(QAccessible::InterfaceType type) override;

    // QAccessibleTextInterface
    void selection(int index, int* start, int* end) const override;
    [[nodiscard]] int selectionCount() const override;
    void addSelection(int start, int end) override;
    void removeSelection(int index) override;
    void setSelection(int index, int start, int end) override;
    [[nodiscard]] int cursorPosition() const override;
    void setCursorPosition(int position) override;
    [[nodiscard]] QString text(int start, int end) const override;
    [[nodiscard]] int characterCount() const override;
    [[nodiscard]] QRect characterRect(int offset) const override;
    [[nodiscard]] int offsetAtPoint(const QPoint& point) const override;
    void scrollToSubstring(int start, int end) override;
    /// Colours, in the notation of CSS, of the characters around `offset` that share them.
    [[nodiscard]] QString attributes(int offset, int* start, int* end) const override;
    /// Sentences and paragraphs are lines.
    [[nodiscard]] QString textBeforeOffset(int offset, QAccessible::TextBoundaryType kind, int* start,
                                           int* end) const override;
    [[nodiscard]] QString textAfterOffset(int offset, QAccessible::TextBoundaryType kind, int* start,
                                          int* end) const override;
    [[nodiscard]] QString textAtOffset(int offset, QAccessible::TextBoundaryType kind, int* start,
                                       int* end) const override;

    // QAccessibleEditableTextInterface: one undo step each
    void deleteText(int start, int end) override;
    void insertText(int offset, const QString& text) override;
    void replaceText(int start, int end, const QString& text) override;

  private:
    struct Place {
        int line;
        int col;
    };
    struct Stretch {
        int start;
        int end;
    };

    void select(int start, int end);
    void tellHost() const;
    [[nodiscard]] Place placeAt(int offset) const;
    [[nodiscard]] int offsetOf(int line, int col) const;
    [[nodiscard]] Stretch stretchAt(int offset, QAccessible::TextBoundaryType kind) const;
    QString tell(Stretch stretch, int* start, int* end) const;

    ViewWidget& view_;
    TextEditorCtrl& control_;
    CWnd::Watch watch_;
};

/// Tells assistive technology what a record changed in the text. `forward`: it was done,
/// else taken back. A change of many places, or one of very much text, is not told piece by piece: what
/// follows the caret reads the text there anyway.
void tellAccessibleChange(ViewWidget& view, TextEditorCtrl& control, const UndoableAction& action,
                          bool forward);
/// Tells it where caret and selection are now.
void tellAccessibleCaret(ViewWidget& view, TextEditorCtrl& control, bool selectionChanged);

} // namespace qt
} // namespace tavrin
