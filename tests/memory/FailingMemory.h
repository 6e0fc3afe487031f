#pragma once

namespace tavrin::test {

/// While it lives, the allocation of this thread with number `at`, counted from 0, fails, and with `stays`
/// all later ones too. One at a time.
class FailingMemory {
  public:
    FailingMemory(long at, bool stays);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    ~FailingMemory();
    [[nodiscard]] bool hasFailed() const;
};

} // namespace tavrin::test
