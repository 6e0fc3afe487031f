#pragma once

#include "buffer/LineStore.h"
#include "buffer/OriginalBytes.h"
#include "buffer/TextForm.h"
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
    /// The encoding in which the bytes were read, see multibyteXmlToUnicode.
    [[nodiscard]] int encoding() const { return encoding_; }
    /// The form of the bytes, UTF-16 and UTF-32 with the codes of their layouts.
    [[nodiscard]] const TextForm& form() const { return form_; }
    /// The line in which a byte of the file lies.
    [[nodiscard]] int lineAt(std::size_t byte) const;

  private:
    friend class Buffer;
    friend class TextLoader;
    LoadedText() : lines_(std::make_unique<LineStore>()) {}
    void forgetScanned();

    std::unique_ptr<LineStore> lines_;
    DecodeReport report_;
    int encoding_ = 0;
    TextForm form_;
    const LineScan* scan_ = nullptr;          ///< what wrote into the flags and states of
    int scannedLines_ = 0;                    ///< so many lines, from the first on
    std::unique_ptr<OriginalBytes> original_; ///< what was converted to the lines' source; null: nothing was
};

} // namespace tavrin
