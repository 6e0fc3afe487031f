#pragma once

#include "buffer/TextForm.h"
#include "platform/core/Undoable.h"

namespace tavrin {

/// One change of the form in which the text is written to a file; the text stays.
class TextFormAction : public UndoableAction {
  public:
    TextFormAction(const TextForm& before_, const TextForm& after_) : before(before_), after(after_) {}

    [[nodiscard]] std::size_t memory() const override { return sizeof(TextFormAction); }

    const TextForm before;
    const TextForm after;
};

} // namespace tavrin
