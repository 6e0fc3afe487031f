#pragma once

#include <cstdint>

namespace tavrin {

/// What takes its time.
enum class LongTask { Search, ReplaceAll };

/// Work that may take long, as the user sees it. Made by Platform::beginProgress; its end is the end of the
/// work. The platform shows nothing of work that is done soon.
///
/// A report may handle paints and a Cancel button, but no other input for the window that works: its text
/// must not change meanwhile.
class Progress {
  public:
    Progress() = default;
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    virtual ~Progress() = default;

    /// How much is done. False: the user wants the work to stop. To be called every few milliseconds.
    virtual bool report(std::int64_t done, std::int64_t total) = 0;
};

} // namespace tavrin
