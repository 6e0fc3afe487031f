#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrin {

class Buffer;

namespace app {

/// Replace `length` code units from (line, column) on, all on that line, by `text`; lines in it end with line
/// feeds.
struct TextEdit {
    int line = 0;
    int column = 0;
    int length = 0;
    std::u16string text;
};

/// The encoding's name in the XML declaration that a text begins with, as written there; empty when there is
/// no declaration or none in it.
[[nodiscard]] std::u16string declaredEncoding(const Buffer& buffer);

/// The encoding that such a name means in a text that is in `present` now (codes, see EncodingCode): a name
/// that does not tell the layout of UTF-16 or UTF-32 means the present one. Nothing when it is not known.
[[nodiscard]] std::optional<int> encodingNamed(std::u16string_view name, int present);

/// The edit that makes the declaration name an encoding (a code, see EncodingCode): it changes the name, or
/// adds it, or adds the whole declaration. Nothing when readers of the file would find that encoding as the
/// text stands.
[[nodiscard]] std::optional<TextEdit> declareEncoding(const Buffer& buffer, int encoding);

} // namespace app
} // namespace tavrin
