#include "platform/qt/widget/IdleReading.h"

#include "control/TextEditorCtrl.h"
#include "platform/qt/QtPlatform.h"

#include <QElapsedTimer>
#include <QThread>

#include <new>

namespace tavrin::qt {

namespace {

constexpr int quietTime = 100;   // ms without input before it goes on
constexpr int readingTime = 2;   // ms at once: less than anybody notices who presses a key meanwhile
constexpr int breathingTime = 1; // ms between two readings, for other work

} // namespace

void IdleReading::begin() {
    timer_.start(quietTime, this);
}

void IdleReading::pause() {
    if (timer_.isActive())
        timer_.start(quietTime, this);
}

/// Not inside of what runs an event loop of its own: a search that shows its progress, a list, a dialog.
bool IdleReading::mayRead() const {
    return !static_cast<const QtPlatform&>(control_.platform()).isBusy() && thread()->loopLevel() <= 1;
}

void IdleReading::timerEvent(QTimerEvent*) {
    if (!mayRead()) {
        pause();
        return;
    }
    QElapsedTimer clock;
    clock.start();
    try {
        while (clock.elapsed() < readingTime)
            if (!control_.readAhead()) {
                timer_.stop();
                return;
            }
        timer_.start(breathingTime, this);
    } catch (const std::bad_alloc&) {
        timer_.stop(); // what was to be found out is found out when it is asked
    }
}

} // namespace tavrin::qt
