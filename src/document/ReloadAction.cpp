#include "document/ReloadAction.h"

#include <utility>

namespace tavrin {

ReloadAction::ReloadAction(SmartPtr<ByteBuffer> bytes, DecodeReport* report)
    : bytes_(std::move(bytes)), memory_(sizeof(ReloadAction) + bytes_->size()) {
    hidden_.loadBytes(bytes_, report);
}

void ReloadAction::exchange(Buffer& shown) const {
    if (!encoding_)
        memory_ += static_cast<std::size_t>(shown.getLength());
    const int before = shown.getEncoding();
    shown.exchangeText(hidden_);
    if (encoding_) // what it was then counts, not what its declaration says
        shown.setEncoding(*encoding_);
    encoding_ = before;
}

} // namespace tavrin
