#pragma once

#include "buffer/LineStore.h"
#include "platform/core/Encoding.h"

#include <memory>

namespace tavrin {

/// A text that was read, checked and divided into lines, ready to become that of a Buffer (Buffer::adopt). It
/// belongs to one thread at a time, but not to the buffer's: whoever made it may hand it over.
class LoadedText {
  public:
    LoadedText(LoadedText&&) noexcept = default;
    LoadedText& operator=(LoadedText&&) noexcept = default;

    [[nodiscard]] const DecodeReport& report() const { return report_; }
    /// The encoding in which the bytes were read.
    [[nodiscard]] int encoding() const { return encoding_; }

  private:
    friend class Buffer;
    friend class TextLoader;
    LoadedText() : lines_(std::make_unique<LineStore>()) {}

    std::unique_ptr<LineStore> lines_;
    DecodeReport report_;
    int encoding_ = 0;
    bool keepsBytes_ = false; ///< the lines' source is the bytes as they were read
};

} // namespace tavrin
