#pragma once

#include <functional>

namespace tavrin::test {

/// What happens to a call of the system instead of the call.
enum class Fault {
    noSpace,      ///< fails: the disk is full
    ioError,      ///< fails: the device is broken
    shortWrite,   ///< a write takes only half of its bytes; other calls work
    interrupted,  ///< fails once as if a signal had come
    killedBefore, ///< the process ends without the call
    killedAfter,  ///< the process ends just after the call
};

/// Lets call number `at`, counted from 0 over all kinds of calls while it lives, meet a fault; the later ones
/// work, or fail as well when `stays` is true (not after a kill). Counts the calls.
class FaultInjection {
  public:
    FaultInjection(Fault fault, int at, bool stays = false);
    ~FaultInjection();
    [[nodiscard]] int calls() const;
};

/// Runs something in a process of its own; true when it came to its end, false when it was killed.
[[nodiscard]] bool survives(const std::function<void()>& work);

} // namespace tavrin::test
