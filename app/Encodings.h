#pragma once

#include <QString>

#include <vector>

namespace tavrin::app {

/// The encodings offered when saving, as codes (see EncodingCode), most usual first. `present`, the
/// document's own, is among them whatever it is.
[[nodiscard]] std::vector<int> offeredEncodings(int present);

/// An encoding's name as users know it: "UTF-8", "Windows-1252".
[[nodiscard]] QString encodingLabel(int encoding);

} // namespace tavrin::app
