#pragma once

#include "platform/schema/XSchema.h"

#include <optional>

namespace tavrin {

class CTextEditorView;

/// Puts the schema service of a view's document in force for one completion at the caret.
class CompletionService {
  public:
    /// An element's siblings count for what may stand there.
    enum class Place { Element, Attribute };

    CompletionService(CTextEditorView& view, Place place);

    /// False when nobody knows any schema; nothing can be completed then.
    [[nodiscard]] bool isThere() const { return static_cast<bool>(XSchema::get()); }

  private:
    std::optional<XSchema::Scope> scope_;
};

} // namespace tavrin
