#pragma once

#include <QBasicTimer>
#include <QObject>

namespace tavrin {

class TextEditorCtrl;

namespace qt {

/// Lets a control read ahead (TextEditorCtrl::readAhead) while the user does nothing.
class IdleReading final : private QObject {
  public:
    explicit IdleReading(TextEditorCtrl& control) : control_(control) {}

    /// There is a new text.
    void begin();
    /// The user is doing something: goes on after a moment of quiet.
    void pause();

  private:
    void timerEvent(QTimerEvent* event) override;
    [[nodiscard]] bool mayRead() const;

    TextEditorCtrl& control_;
    QBasicTimer timer_; ///< active while there is something left to read
};

} // namespace qt
} // namespace tavrin
