#pragma once

#include <QPoint>
#include <QString>

class QAccessibleInterface;

namespace tavrin::qt {

class ViewWidget;

/// A stretch of the document around the caret, for input methods.
struct SurroundingText {
    QString text;
    int cursor = 0; ///< code units from the start of text
    int anchor = 0; ///< the other end of the selection, as far as it lies in the text
};

/// What a view's widget asks of whoever knows the text behind it. A view without a client works; it then has
/// no context menu, no primary selection, and neither input methods nor assistive technology
/// see its text.
class ViewClient {
  public:
    virtual ~ViewClient() = default;

    /// The view has handled an event of the user's.
    virtual void inputHandled() = 0;
    /// `mouseSelection` is done: the selection was made with the mouse and the button is up.
    virtual void mouseSelectionDone() = 0;
    virtual void contextMenuRequested(QPoint globalPosition) = 0;
    /// The middle button was pressed; the caret is at the place by now.
    virtual void primaryPasteRequested() = 0;
    [[nodiscard]] virtual bool hasSelection() const = 0;
    [[nodiscard]] virtual QString selectedText() const = 0;
    [[nodiscard]] virtual SurroundingText surroundingText() const = 0;
    /// Removes text of the caret's line, from `start` code units after the caret (negative: before) on.
    virtual void removeAroundCaret(int start, int length) = 0;
    /// The text for assistive technology; the caller owns it.
    [[nodiscard]] virtual QAccessibleInterface* makeAccessible(ViewWidget& view) = 0;
};

} // namespace tavrin::qt
