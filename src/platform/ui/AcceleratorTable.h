#pragma once

#include "platform/ui/CWnd.h"

#include <vector>

namespace tavrin {

/// One keyboard shortcut: a virtual key with Ctrl, or without, and neither Shift nor Alt held.
struct ACCEL {
    UINT key;
    UINT command;
    bool ctrl = true;
};

/// Turns key-down messages into commands.
class AcceleratorTable {
  public:
    explicit AcceleratorTable(std::vector<ACCEL> entries) : entries_(std::move(entries)) {}

    /// When `message` is a key-down of an entry's key, with Ctrl held as the entry says: sends the command to
    /// `window` and returns true.
    bool translate(CWnd& window, const MSG& message) const;
    /// The entry that translate would take for the message; null when there is none.
    [[nodiscard]] const ACCEL* find(const Platform& platform, const MSG& message) const;

    [[nodiscard]] const std::vector<ACCEL>& entries() const { return entries_; }

  private:
    std::vector<ACCEL> entries_;
};

} // namespace tavrin
