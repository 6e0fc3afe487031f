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
    CODEPAGE_KOREAN = 50225, ///< ISO-2022-KR
};

/// ICU's converter for a code-page number; null when it has none. The Unicode encodings have none here.
[[nodiscard]] Converter openConverter(int codePage);

} // namespace tavrin
