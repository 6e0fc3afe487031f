#include "platform/core/Utf8.h"

#include "platform/core/CodeUnitRuns.h"

#include <algorithm>
#include <array>

namespace tavrin {

namespace {

constexpr std::uint8_t firstNonAscii = 0x80;

bool isContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

/// Code units of the character that a byte of valid text begins, if it begins one.
std::uint8_t unitsBegunBy(std::uint8_t byte) {
    return static_cast<std::uint8_t>(static_cast<int>(!isContinuation(byte)) +
                                     static_cast<int>(byte >= 0xF0));
}

/// What the bytes at one place are.
struct Sequence {
    char32_t character; ///< or invalidSequence
    std::size_t length; ///< bytes of the character, or of the maximal subpart of an ill-formed sequence
};
constexpr char32_t invalidSequence = 0xFFFFFFFF;

/// The second byte's range depends on the first one where longer forms than needed, surrogates and
/// characters beyond U+10FFFF are to be kept out (The Unicode Standard, table 3-7).
bool isSecondByte(std::uint8_t lead, std::uint8_t second) {
    switch (lead) {
    case 0xE0:
        return second >= 0xA0 && second <= 0xBF;
    case 0xED:
        return second >= 0x80 && second <= 0x9F;
    case 0xF0:
        return second >= 0x90 && second <= 0xBF;
    case 0xF4:
        return second >= 0x80 && second <= 0x8F;
    default:
        return isContinuation(second);
    }
}

/// REQUIRES: `bytes` is not empty and starts with a byte that is not ASCII.
Sequence readSequence(std::span<const std::uint8_t> bytes) {
    const std::uint8_t lead = bytes[0];
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < 2 || !isSecondByte(lead, bytes[1]))
        return {invalidSequence, 1};
    const auto lowBits = [&](std::size_t i) { return static_cast<char32_t>(bytes[i] & 0x3F); };
    const auto continuesAt = [&](std::size_t i) { return i < bytes.size() && isContinuation(bytes[i]); };
    if (lead < 0xE0)
        return {(lead & 0x1Fu) << 6 | lowBits(1), 2};
    if (!continuesAt(2))
        return {invalidSequence, 2};
    if (lead < 0xF0)
        return {(lead & 0x0Fu) << 12 | lowBits(1) << 6 | lowBits(2), 3};
    if (!continuesAt(3))
        return {invalidSequence, 3};
    return {(lead & 0x07u) << 18 | lowBits(1) << 12 | lowBits(2) << 6 | lowBits(3), 4};
}

void addInvalid(DecodeReport& report, std::size_t offset) {
    if (report.invalidCount++ == 0)
        report.firstInvalid = offset;
}

char* writeCharacter(char32_t c, char* out) {
    const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
    return out;
}

} // namespace

std::size_t decodeUtf8(std::span<const std::uint8_t> bytes, char16_t* out, OnInvalid onInvalid,
                       DecodeReport& report) {
    char16_t* const begin = out;
    std::size_t i = 0;
    while (i < bytes.size()) {
        if (bytes[i] < firstNonAscii) {
            const std::size_t run = widenAsciiPrefix(&bytes[i], bytes.size() - i, out);
            i += run;
            out += run;
            continue;
        }
        const Sequence sequence = readSequence(bytes.subspan(i));
        if (sequence.character == invalidSequence) {
            addInvalid(report, i);
            if (onInvalid == OnInvalid::Stop)
                break;
            *out++ = replacementCharacter;
        } else if (sequence.character < 0x10000) {
            *out++ = static_cast<char16_t>(sequence.character);
        } else {
            *out++ = highSurrogate(sequence.character);
            *out++ = lowSurrogate(sequence.character);
        }
        i += sequence.length;
    }
    return static_cast<std::size_t>(out - begin);
}

void checkUtf8(std::span<const std::uint8_t> bytes, OnInvalid onInvalid, DecodeReport& report) {
    std::size_t i = 0;
    while (i < bytes.size()) {
        const std::uint8_t lead = bytes[i];
        if (lead < firstNonAscii) {
            i += asciiPrefix(&bytes[i], bytes.size() - i);
            continue;
        }
        if (lead >= 0xC2 && lead < 0xE0 && i + 1 < bytes.size() && isContinuation(bytes[i + 1])) {
            i += 2;
            continue;
        }
        const Sequence sequence = readSequence(bytes.subspan(i));
        if (sequence.character == invalidSequence) {
            addInvalid(report, i);
            if (onInvalid == OnInvalid::Stop)
                return;
        }
        i += sequence.length;
    }
}

Utf8Character utf8CharacterAt(std::span<const std::uint8_t> bytes) {
    if (bytes[0] < firstNonAscii)
        return {1, 1};
    const Sequence sequence = readSequence(bytes);
    return {sequence.length, sequence.character != invalidSequence && sequence.character >= 0x10000 ? 2 : 1};
}

std::size_t utf16Length(std::span<const std::uint8_t> bytes, bool isValid) {
    std::size_t units = 0;
    if (isValid) {
        // A compiler makes vector instructions of blocks of one size whose sums are bytes.
        constexpr std::size_t block = 64;
        for (; bytes.size() >= block; bytes = bytes.subspan(block)) {
            std::uint8_t sum = 0;
            for (std::size_t i = 0; i < block; ++i)
                sum = static_cast<std::uint8_t>(sum + unitsBegunBy(bytes[i]));
            units += sum;
        }
        for (const std::uint8_t byte : bytes)
            units += unitsBegunBy(byte);
        return units;
    }
    for (std::size_t i = 0; i < bytes.size();) {
        const Utf8Character c = utf8CharacterAt(bytes.subspan(i));
        units += static_cast<std::size_t>(c.units);
        i += c.bytes;
    }
    return units;
}

void encodeUtf8(std::u16string_view text, std::string& out, std::size_t index, EncodeReport& report) {
    constexpr std::size_t chunk = 1024;
    constexpr std::size_t bytesPerUnit = 3; // a pair takes four bytes for its two units
    std::array<char, chunk * bytesPerUnit> bytes;
    std::size_t i = 0;
    while (i < text.size()) {
        // A pair that the chunk's end would cut goes over it by one unit; four bytes of room remain for it.
        const std::size_t end = std::min(text.size(), i + chunk - 1);
        char* next = bytes.data();
        while (i < end) {
            const char16_t c = text[i];
            if (c < firstNonAscii) {
                const std::size_t run = narrowAsciiPrefix(&text[i], end - i, next);
                i += run;
                next += run;
                continue;
            }
            char32_t character = c;
            if (isHighSurrogate(c) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
                character = joinSurrogates(c, text[++i]);
            } else if (isHighSurrogate(c) || isLowSurrogate(c)) {
                if (report.lostCount++ == 0)
                    report.firstLost = index + i;
                character = replacementCharacter;
            }
            next = writeCharacter(character, next);
            ++i;
        }
        out.append(bytes.data(), static_cast<std::size_t>(next - bytes.data()));
    }
}

} // namespace tavrin
