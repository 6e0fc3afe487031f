#include "document/ReloadAction.h"

#include <utility>

namespace tavrin {

ReloadAction::ReloadAction(SmartPtr<ByteBuffer> bytes, DecodeReport* report)
    : bytes_(std::move(bytes)), memory_(sizeof(ReloadAction) + bytes_->size()) {
    hidden_.loadBytes(bytes_, report);
}

void ReloadAction::exchange(Buffer& shown) const {
    if (!form_)
        memory_ += static_cast<std::size_t>(shown.getLength());
    const TextForm before = shown.getForm();
    shown.exchangeText(hidden_);
    // What it was then counts, or what the file has, not what a declaration says.
    shown.setForm(form_.value_or(shown.getLoadedForm()));
    form_ = before;
}

} // namespace tavrin
