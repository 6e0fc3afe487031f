#pragma once

#include "buffer/Buffer.h"
#include "document/TextDocument.h"

namespace tavrin {

/// Makes one of all changes of a document's text and their records while it lives: either both are done, or,
/// when it goes without a commit, neither. They nest: what an inner one has committed is taken back with the
/// outer.
class TextTransaction {
  public:
    explicit TextTransaction(TextDocument& document)
        : text_(document.getBuffer()), records_(document.undoStack_) {}

    /// Throws std::bad_alloc when there is no memory for a record; nothing is committed then.
    void commit() {
        records_.commit();
        text_.commit();
    }

  private:
    Buffer::Transaction text_;
    UndoStack::Transaction records_;
};

} // namespace tavrin
