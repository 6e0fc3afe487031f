#include "platform/core/CharacterClass.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <cstdint>
#include <memory>
#include <stdexcept>

namespace tavrin {

namespace {

constexpr std::size_t codeUnits = 0x10000;

enum ClassBit : std::uint8_t { spaceBit = 1, letterBit = 2, digitBit = 4, punctBit = 8 };

using ClassTable = std::array<std::uint8_t, codeUnits>;
using FoldTable = std::array<char16_t, codeUnits>;

std::unique_ptr<const ClassTable> makeClassTable() {
    auto table = std::make_unique<ClassTable>();
    for (std::size_t i = 0; i < codeUnits; ++i) {
        const auto c = static_cast<UChar32>(i);
        unsigned bits = 0;
        if (u_isUWhiteSpace(c))
            bits |= spaceBit;
        if (u_isalpha(c))
            bits |= letterBit;
        if (u_isdigit(c))
            bits |= digitBit;
        if (u_ispunct(c))
            bits |= punctBit;
        (*table)[i] = static_cast<std::uint8_t>(bits);
    }
    return table;
}

std::unique_ptr<const FoldTable> makeFoldTable() {
    auto table = std::make_unique<FoldTable>();
    for (std::size_t i = 0; i < codeUnits; ++i)
        (*table)[i] = static_cast<char16_t>(u_foldCase(static_cast<UChar32>(i), U_FOLD_CASE_DEFAULT));
    return table;
}

bool hasClass(char16_t c, unsigned bits) {
    static const std::unique_ptr<const ClassTable> table = makeClassTable();
    return ((*table)[c] & bits) != 0;
}

using CaseMapper = std::int32_t (*)(UChar*, std::int32_t, const UChar*, std::int32_t, const char*,
                                    UErrorCode*);

constexpr const char* noLanguage = "";

std::u16string mapCase(std::u16string_view text, CaseMapper map) {
    const auto length = static_cast<std::int32_t>(text.size());
    std::u16string mapped(text.size(), u'\0');
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t needed = map(mapped.data(), length, text.data(), length, noLanguage, &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        mapped.resize(static_cast<std::size_t>(needed));
        status = U_ZERO_ERROR;
        needed = map(mapped.data(), needed, text.data(), length, noLanguage, &status);
    }
    if (U_FAILURE(status))
        throw std::runtime_error(u_errorName(status));
    mapped.resize(static_cast<std::size_t>(needed));
    return mapped;
}

} // namespace

bool beyond_ascii::isSpace(char16_t c) {
    return hasClass(c, spaceBit);
}

bool beyond_ascii::isLetter(char16_t c) {
    return hasClass(c, letterBit);
}

bool beyond_ascii::isPunct(char16_t c) {
    return hasClass(c, punctBit);
}

bool beyond_ascii::isLetterOrDigit(char16_t c) {
    return hasClass(c, letterBit | digitBit);
}

const std::array<char16_t, 0x10000>& caseFoldTable() {
    static const std::unique_ptr<const FoldTable> table = makeFoldTable();
    return *table;
}

char16_t foldCase(char16_t c) {
    return caseFoldTable()[c];
}

std::u16string toUpperCase(std::u16string_view text) {
    return mapCase(text, u_strToUpper);
}

std::u16string toLowerCase(std::u16string_view text) {
    return mapCase(text, u_strToLower);
}

} // namespace tavrin
