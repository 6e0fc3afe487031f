#pragma once

#include "document/TextDocument.h"

namespace tavrin {

/// Makes one undo step of everything recorded while it lives. Scopes nest: the outermost one decides.
class TextUndoScope {
  public:
    explicit TextUndoScope(TextDocument& document) : document_(&document) {
        document_->undoStack_.startUndoGroup();
    }
    TextUndoScope(const TextUndoScope&) = delete;
    TextUndoScope& operator=(const TextUndoScope&) = delete;
    ~TextUndoScope() {
        if (document_)
            document_->undoStack_.endUndoGroup();
    }
    /// The document is gone: there is nothing to end.
    void abandon() { document_ = nullptr; }

  private:
    TextDocument* document_;
};

} // namespace tavrin
