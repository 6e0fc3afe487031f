#pragma once

#include "platform/ui/Geometry.h"

#include <QBasicTimer>
#include <QObject>
#include <QRect>

#include <functional>

class QPainter;

namespace tavrin::qt {

/// The caret of a view: a bar over the text that inverts what lies below it, blinking at the desktop's rate.
class BlinkingCaret final : public QObject {
  public:
    /// `update` is called with the client area that changes its look.
    explicit BlinkingCaret(std::function<void(const QRect&)> update) : update_(std::move(update)) {}

    /// Hidden until shown.
    void create(CSize size);
    void destroy();
    void show();
    /// Starts a blink again with the caret visible.
    void moveTo(CPoint position);
    /// The pixels of `rect` moved by (dx, dy), the caret's among them.
    void contentScrolled(int dx, int dy, const QRect& rect);

    [[nodiscard]] bool isShown() const { return shown_; }
    /// Where the caret is, or last was: where text is typed.
    [[nodiscard]] QRect rect() const { return rect_; }
    void paint(QPainter& painter) const;

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    void restartBlinking();

    std::function<void(const QRect&)> update_;
    QBasicTimer timer_;
    QRect rect_{0, 0, 0, 0};
    bool shown_ = false;
    bool lit_ = false;
};

} // namespace tavrin::qt
