#pragma once

#include "platform/ui/CImageList.h"

namespace tavrin {

/// Pictures of candidates, 16 by 16 pixels: 0 for elements, 1 for attributes and values. They read on a light
/// and on a dark background.
[[nodiscard]] CImageList makeCompletionIcons();

} // namespace tavrin
