#pragma once

#include <QFont>
#include <QInputMethodEvent>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QTextLayout>

#include <memory>

class QPainter;
class QPalette;

namespace tavrin::qt {

/// Text that an input method is still composing: shown over the document's text at the caret, not part of it.
class Preedit {
  public:
    [[nodiscard]] bool isEmpty() const { return !layout_; }
    void clear() { layout_.reset(); }
    /// Takes text, looks and cursor from the event.
    void set(const QInputMethodEvent& event, const QFont& font, const QPalette& palette);

    /// Where the text is shown for a caret at `caret` in a client area of `width` pixels: moved to the left
    /// as far as needed to show its end.
    [[nodiscard]] QRect area(const QRect& caret, int width) const;
    /// The input method's own cursor, for its candidate window.
    [[nodiscard]] QRect cursor(const QRect& caret, int width) const;
    void paint(QPainter& painter, const QRect& caret, int width, const QPalette& palette) const;

  private:
    std::unique_ptr<QTextLayout> layout_;
    int cursor_ = 0;
    bool cursorVisible_ = true;
};

} // namespace tavrin::qt
