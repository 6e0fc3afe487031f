#include "platform/core/CodeUnitRuns.h"
#include "platform/core/DecodedText.h"
#include "platform/core/Encoding.h"
#include "platform/core/EncodingDetection.h"
#include "platform/core/Utf8.h"

#include <bit>
#include <cstring>
#include <span>

namespace tavrin {

namespace {

using Form = DetectedEncoding::Form;
using Bytes = std::span<const std::uint8_t>;

static_assert(std::endian::native == std::endian::little, "code units in memory are UTF-16 little-endian");

constexpr char16_t byteOrderMark = 0xFEFF;

/// Counts the surrogates that have no partner. They stay in the text: UTF-16 holds them, and writes them
/// again.
void reportUnpairedSurrogates(const char16_t* text, std::size_t length, DecodeReport& report) {
    for (std::size_t i = 0; i < length; ++i) {
        if ((text[i] & 0xF800) != 0xD800)
            continue;
        if (isHighSurrogate(text[i]) && i + 1 < length && isLowSurrogate(text[i + 1]))
            ++i;
        else
            addInvalid(report, i * sizeof(char16_t));
    }
}

/// A line ends before the last of the units.
bool endsLine(std::u16string_view text, std::size_t at) {
    return at > 0 && (text[at - 1] == u'\n' || (text[at - 1] == u'\r' && text[at] != u'\n'));
}

void decodeUtf16(Bytes bytes, const ByteShifts& shifts, DecodedText& out, DecodeReport& report,
                 Anchors anchors) {
    char16_t* const text = out.end();
    const std::size_t length = bytes.size() / 2;
    if (shifts[0] == 0) {
        if (length > 0)
            std::memcpy(text, bytes.data(), length * sizeof(char16_t));
    } else {
        for (std::size_t i = 0; i < length; ++i)
            text[i] = static_cast<char16_t>(bytes[2 * i] << 8 | bytes[2 * i + 1]);
    }
    out.advance(length);
    reportUnpairedSurrogates(text, length, report);
    for (std::size_t i = 1; anchors && i < length; ++i)
        if (endsLine({text, length}, i))
            anchors->push_back({i, 2 * i});
    if (bytes.size() % 2 != 0) {
        out.put(replacementCharacter);
        addInvalid(report, bytes.size() - 1);
    }
}

void decodeUtf32(Bytes bytes, const ByteShifts& shifts, DecodedText& out, DecodeReport& report,
                 Anchors anchors) {
    std::size_t i = 0;
    for (; i + 4 <= bytes.size(); i += 4) {
        char32_t c = 0;
        for (std::size_t k = 0; k < 4; ++k)
            c |= static_cast<char32_t>(bytes[i + k]) << shifts[k];
        if (c > 0x10FFFF || (c & 0xFFFFF800) == 0xD800) {
            addInvalid(report, i);
            out.put(replacementCharacter);
        } else if (c < 0x10000) {
            out.put(static_cast<char16_t>(c));
        } else {
            out.put(highSurrogate(c));
            out.put(lowSurrogate(c));
        }
        if (anchors && out.size() > 1 && endsLine(out.view(), out.size() - 1))
            anchors->push_back({out.size() - 1, i});
    }
    if (i < bytes.size()) {
        addInvalid(report, i);
        out.put(replacementCharacter);
    }
}

void decodeLatin1(Bytes bytes, DecodedText& out) {
    widenLatin1(bytes.data(), bytes.size(), out.end());
    out.advance(bytes.size());
}

/// UTF-8, or ISO-8859-1 when the bytes are not valid UTF-8. Returns the encoding's code.
int decodeUndeclared(Bytes bytes, DecodedText& out) {
    DecodeReport report;
    const std::size_t units = decodeUtf8(bytes, out.end(), OnInvalid::Stop, report);
    if (report.invalidCount > 0) {
        decodeLatin1(bytes, out);
        return ENCODING_LATIN1;
    }
    out.advance(units);
    return ENCODING_UTF8;
}

/// Decodes what follows the mark and returns the encoding's code.
int decode(Bytes bytes, const DetectedEncoding& encoding, DecodedText& out, DecodeReport& report,
           Anchors anchors) {
    switch (encoding.form) {
    case Form::Utf8:
        out.advance(decodeUtf8(bytes, out.end(), OnInvalid::Replace, report));
        return ENCODING_UTF8;
    case Form::Utf16:
        decodeUtf16(bytes, encoding.shifts, out, report, anchors);
        return ENCODING_UTF16;
    case Form::Utf32:
        decodeUtf32(bytes, encoding.shifts, out, report, anchors);
        return ENCODING_UTF16;
    case Form::CodePage:
        if (encoding.codePage == ENCODING_LATIN1)
            decodeLatin1(bytes, out);
        else
            decodeCodePage(bytes, encoding.codePage, out, report, anchors);
        return encoding.codePage;
    case Form::Undeclared:
        break;
    }
    return decodeUndeclared(bytes, out);
}

} // namespace

ReadForm examineXmlText(Bytes bytes) {
    const DetectedEncoding encoding = detectEncoding(bytes);
    const Bytes text = bytes.subspan(encoding.markLength);
    ReadForm result{ReadForm::Kind::Other, 0, encoding.markLength, {}};
    const auto is = [&](ReadForm::Kind kind, int code) {
        result.kind = kind;
        result.encoding = code;
    };
    switch (encoding.form) {
    case Form::Utf8:
        is(ReadForm::Kind::Utf8, ENCODING_UTF8);
        checkUtf8(text, OnInvalid::Replace, result.report);
        break;
    case Form::Undeclared:
        is(ReadForm::Kind::Utf8, ENCODING_UTF8);
        checkUtf8(text, OnInvalid::Stop, result.report);
        if (result.report.invalidCount > 0) {
            is(ReadForm::Kind::Latin1, ENCODING_LATIN1);
            result.report = {};
        }
        break;
    case Form::Utf16:
        if (encoding.shifts[0] == 0 && text.size() % sizeof(char16_t) == 0) {
            is(ReadForm::Kind::Utf16, ENCODING_UTF16);
            reportUnpairedSurrogates(reinterpret_cast<const char16_t*>(text.data()),
                                     text.size() / sizeof(char16_t), result.report);
        }
        break;
    case Form::CodePage:
        if (encoding.codePage == ENCODING_LATIN1)
            is(ReadForm::Kind::Latin1, ENCODING_LATIN1);
        break;
    case Form::Utf32:
        break;
    }
    if (result.report.invalidCount > 0)
        result.report.firstInvalid += encoding.markLength;
    result.report.byteOrderMark = encoding.markLength > 0;
    return result;
}

int multibyteXmlToUnicode(ByteBuffer* buffer, bool keepMark, DecodeReport* report) {
    const Bytes bytes(buffer->data(), buffer->size());
    const DetectedEncoding encoding = detectEncoding(bytes);
    DecodeReport met;
    met.byteOrderMark = encoding.markLength > 0;

    // No encoding but few code pages gives more code units than it has bytes; one more for the mark.
    DecodedText out(bytes.size() + 1);
    if (met.byteOrderMark && keepMark)
        out.put(byteOrderMark);
    const int code = decode(bytes.subspan(encoding.markLength), encoding, out, met, nullptr);
    if (met.invalidCount > 0)
        met.firstInvalid += encoding.markLength;
    buffer->swap(*out.take());
    if (report)
        *report = met;
    return code;
}

ConvertedText convertXmlText(Bytes bytes) {
    const DetectedEncoding detected = detectEncoding(bytes);
    ConvertedText result;
    DecodedText out(bytes.size() + 1);
    result.anchors.push_back({});
    result.encoding =
        decode(bytes.subspan(detected.markLength), detected, out, result.report, &result.anchors);
    result.layout =
        result.encoding == ENCODING_UTF16 ? wideEncoding(detected.form, detected.shifts) : result.encoding;
    if (result.anchors.back().unit < out.size())
        result.anchors.push_back({out.size(), bytes.size() - detected.markLength});
    if (out.size() > 0) // what decodes to nothing at the end belongs to the last line
        result.anchors.back().byte = bytes.size() - detected.markLength;
    for (TextAnchor& anchor : result.anchors)
        anchor.byte += detected.markLength;
    result.report.byteOrderMark = detected.markLength > 0;
    if (result.report.invalidCount > 0)
        result.report.firstInvalid += detected.markLength;
    result.text = out.take();
    return result;
}

DecodeReport countReplaced(Bytes bytes, int encoding) {
    DecodeReport report;
    if (encoding == ENCODING_UTF8) {
        checkUtf8(bytes, OnInvalid::Replace, report);
    } else if (encoding == ENCODING_UTF16 || encoding == ENCODING_UTF16_BE) {
        if (bytes.size() % sizeof(char16_t) != 0)
            addInvalid(report, bytes.size() - 1);
    } else if (encoding != ENCODING_LATIN1) {
        DecodedText out(bytes.size() + 1);
        if (isWideEncoding(encoding))
            decodeUtf32(bytes, byteShifts(encoding), out, report, nullptr);
        else
            decodeCodePage(bytes, encoding, out, report, nullptr);
    }
    return report;
}

} // namespace tavrin
