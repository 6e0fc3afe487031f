#include "document/ReloadAction.h"

#include "buffer/TextLoader.h"

#include <utility>

namespace tavrin {

ReloadAction::ReloadAction(LoadedText text) {
    hidden_.adopt(std::move(text));
    hidden_.setForm(hidden_.getLoadedForm()); // the file's own, whatever the text declares
    bytes_ = hidden_.getLoadedFile();
    memory_ = sizeof(ReloadAction) + bytes_->size();
}

ReloadAction::ReloadAction(SmartPtr<ByteBuffer> bytes)
    : ReloadAction(*TextLoader(std::move(bytes)).finish()) {}

void ReloadAction::exchange(Buffer& shown) const {
    if (!std::exchange(holdsTheOther_, true))
        memory_ += static_cast<std::size_t>(shown.getLength());
    const TextForm form = hidden_.getForm();
    shown.exchangeText(hidden_);
    shown.setForm(form); // what it was then counts, not what its declaration says
}

} // namespace tavrin
