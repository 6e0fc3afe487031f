#pragma once

#include "buffer/LoadedText.h"
#include "buffer/UnparsedBuffer.h"
#include "platform/core/Undoable.h"

#include <span>

namespace tavrin {

/// The whole text was replaced by the bytes of a file. Holds the one of the two texts that the document does
/// not show, with all that is known of its loading, so that going back and forth costs the same for any size
/// and gives back every byte.
class ReloadAction : public UndoableAction {
  public:
    struct Place {
        int line = 0;
        int col = 0;
    };

    /// To be recorded after it was exchanged for the first time.
    explicit ReloadAction(LoadedText text);
    /// Reads the bytes as Buffer::loadBytes does; nobody may change them any more.
    explicit ReloadAction(SmartPtr<ByteBuffer> bytes);

    /// The bytes of the new text.
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return {bytes_->data(), bytes_->size()}; }
    /// The text that is not shown.
    [[nodiscard]] const Buffer& hidden() const { return hidden_; }
    /// Shows the hidden text instead of the buffer's.
    void exchange(Buffer& shown) const;

    [[nodiscard]] std::size_t memory() const override { return memory_; }

    Place caretBefore;
    Place pivotBefore;
    Place caretAfter;

  private:
    SmartPtr<ByteBuffer> bytes_;
    mutable UnparsedBuffer hidden_;
    mutable bool holdsTheOther_ = false; ///< the text that was replaced has been here
    mutable std::size_t memory_;         ///< of both texts, about
};

} // namespace tavrin
