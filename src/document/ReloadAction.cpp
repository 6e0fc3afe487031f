#include "document/ReloadAction.h"

#include <utility>

namespace tavrin {

ReloadAction::ReloadAction(SmartPtr<ByteBuffer> bytes, DecodeReport* report)
    : bytes_(std::move(bytes)), memory_(sizeof(ReloadAction) + bytes_->size()) {
    hidden_.loadBytes(bytes_, report);
    hidden_.setForm(hidden_.getLoadedForm()); // the file's own, whatever the text declares
}

void ReloadAction::exchange(Buffer& shown) const {
    if (!std::exchange(holdsTheOther_, true))
        memory_ += static_cast<std::size_t>(shown.getLength());
    const TextForm form = hidden_.getForm();
    shown.exchangeText(hidden_);
    shown.setForm(form); // what it was then counts, not what its declaration says
}

} // namespace tavrin
