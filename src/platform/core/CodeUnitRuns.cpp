#include "platform/core/CodeUnitRuns.h"

#include <bit>

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)
#include <emmintrin.h>
#endif

namespace tavrin {

namespace portable {

namespace {

/// Code units below `limit`.
template <unsigned limit>
std::size_t narrowPrefix(const char16_t* in, std::size_t size, char* out) {
    std::size_t i = 0;
    for (; i < size && in[i] < limit; ++i)
        out[i] = static_cast<char>(in[i]);
    return i;
}

} // namespace

std::size_t asciiPrefix(const std::uint8_t* in, std::size_t size) {
    std::size_t i = 0;
    while (i < size && in[i] < 0x80)
        ++i;
    return i;
}

std::size_t widenAsciiPrefix(const std::uint8_t* in, std::size_t size, char16_t* out) {
    std::size_t i = 0;
    for (; i < size && in[i] < 0x80; ++i)
        out[i] = in[i];
    return i;
}

void widenLatin1(const std::uint8_t* in, std::size_t size, char16_t* out) {
    for (std::size_t i = 0; i < size; ++i)
        out[i] = in[i];
}

std::size_t narrowAsciiPrefix(const char16_t* in, std::size_t size, char* out) {
    return narrowPrefix<0x80>(in, size, out);
}

std::size_t narrowLatin1Prefix(const char16_t* in, std::size_t size, char* out) {
    return narrowPrefix<0x100>(in, size, out);
}

} // namespace portable

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)

namespace {

constexpr std::size_t block = 16;

void storeWidened(__m128i bytes, char16_t* out) {
    const __m128i zero = _mm_setzero_si128();
    auto* target = reinterpret_cast<__m128i*>(out);
    _mm_storeu_si128(target, _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(target + 1, _mm_unpackhi_epi8(bytes, zero));
}

__m128i loadBytes(const void* in) {
    return _mm_loadu_si128(static_cast<const __m128i*>(in));
}

/// A unit is in range when none of the bits of `excess` is set.
template <unsigned excess>
std::size_t narrowPrefix(const char16_t* in, std::size_t size, char* out) {
    const __m128i excessBits = _mm_set1_epi16(static_cast<short>(excess));
    const __m128i zero = _mm_setzero_si128();
    std::size_t i = 0;
    for (; i + block <= size; i += block) {
        const __m128i low = loadBytes(in + i);
        const __m128i high = loadBytes(in + i + block / 2);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(low, high));
        const __m128i inRange = _mm_packs_epi16(_mm_cmpeq_epi16(_mm_and_si128(low, excessBits), zero),
                                                _mm_cmpeq_epi16(_mm_and_si128(high, excessBits), zero));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(inRange));
        if (mask != 0xFFFF)
            return i + static_cast<std::size_t>(std::countr_one(mask));
    }
    return i + portable::narrowPrefix<(~excess & 0xFFFF) + 1>(in + i, size - i, out + i);
}

} // namespace

std::size_t asciiPrefix(const std::uint8_t* in, std::size_t size) {
    std::size_t i = 0;
    for (; i + 4 * block <= size; i += 4 * block) {
        const __m128i first = _mm_or_si128(loadBytes(in + i), loadBytes(in + i + block));
        const __m128i second = _mm_or_si128(loadBytes(in + i + 2 * block), loadBytes(in + i + 3 * block));
        if (_mm_movemask_epi8(_mm_or_si128(first, second)) != 0)
            break;
    }
    return i + portable::asciiPrefix(in + i, size - i);
}

std::size_t widenAsciiPrefix(const std::uint8_t* in, std::size_t size, char16_t* out) {
    std::size_t i = 0;
    for (; i + block <= size; i += block) {
        const __m128i bytes = loadBytes(in + i);
        storeWidened(bytes, out + i);
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        if (mask != 0)
            return i + static_cast<std::size_t>(std::countr_zero(mask));
    }
    return i + portable::widenAsciiPrefix(in + i, size - i, out + i);
}

void widenLatin1(const std::uint8_t* in, std::size_t size, char16_t* out) {
    std::size_t i = 0;
    for (; i + block <= size; i += block)
        storeWidened(loadBytes(in + i), out + i);
    portable::widenLatin1(in + i, size - i, out + i);
}

std::size_t narrowAsciiPrefix(const char16_t* in, std::size_t size, char* out) {
    return narrowPrefix<0xFF80>(in, size, out);
}

std::size_t narrowLatin1Prefix(const char16_t* in, std::size_t size, char* out) {
    return narrowPrefix<0xFF00>(in, size, out);
}

#else

std::size_t asciiPrefix(const std::uint8_t* in, std::size_t size) {
    return portable::asciiPrefix(in, size);
}

std::size_t widenAsciiPrefix(const std::uint8_t* in, std::size_t size, char16_t* out) {
    return portable::widenAsciiPrefix(in, size, out);
}

void widenLatin1(const std::uint8_t* in, std::size_t size, char16_t* out) {
    portable::widenLatin1(in, size, out);
}

std::size_t narrowAsciiPrefix(const char16_t* in, std::size_t size, char* out) {
    return portable::narrowAsciiPrefix(in, size, out);
}

std::size_t narrowLatin1Prefix(const char16_t* in, std::size_t size, char* out) {
    return portable::narrowLatin1Prefix(in, size, out);
}

#endif

} // namespace tavrin
