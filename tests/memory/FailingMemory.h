#pragma once

namespace tavrin::test {

/// Whose allocations fail.
enum class Threads { This, Others, All };

/// While it lives, the allocation of these threads with number `at`, counted from 0, fails, and with `stays`
/// all later ones too. One at a time.
class FailingMemory {
  public:
    FailingMemory(long at, bool stays, Threads threads = Threads::This);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    ~FailingMemory();
    [[nodiscard]] bool hasFailed() const;
};

} // namespace tavrin::test
