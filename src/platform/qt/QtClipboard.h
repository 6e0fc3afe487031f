#pragma once

#include "platform/ui/Platform.h"

namespace tavrin::qt {

/// The desktop's clipboard. Text is put and taken as it is, code unit for code unit.
class QtClipboard final : public Clipboard {
  public:
    bool setText(std::u16string_view text) override;
    [[nodiscard]] std::optional<std::u16string> text() override;
    [[nodiscard]] bool hasText() override;
};

} // namespace tavrin::qt
