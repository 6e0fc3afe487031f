#pragma once

#include <unicode/ucnv.h>

#include <memory>

namespace tavrin {

struct CloseConverter {
    void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

enum CodePage : int {
    CODEPAGE_EBCDIC = 37,
    CODEPAGE_ASCII = 20127,
};

/// ICU's converter for a code-page number; null when it has none. The Unicode encodings have none here.
[[nodiscard]] Converter openConverter(int codePage);

} // namespace tavrin
