#include "platform/core/CodeUnitRuns.h"
#include "platform/core/Encoding.h"
#include "platform/core/EncodingDetection.h"
#include "platform/core/EncodingTable.h"
#include "platform/core/Utf8.h"

#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>

namespace tavrin {

namespace {

using Form = DetectedEncoding::Form;
using Bytes = std::span<const std::uint8_t>;
using Shifts = std::array<std::uint8_t, 4>;

static_assert(std::endian::native == std::endian::little, "code units in memory are UTF-16 little-endian");

constexpr char16_t byteOrderMark = 0xFEFF;

/// The block that the decoded text is written to: code units one after the other, its mark first.
class Output {
  public:
    /// Room for `capacity` code units. Pages that are never written cost nothing, so it may be generous.
    explicit Output(std::size_t capacity) : block_(allocateUnits(capacity)), capacity_(capacity) {}

    [[nodiscard]] char16_t* end() { return units() + length_; }
    [[nodiscard]] char16_t* limit() { return units() + capacity_; }
    void advance(std::size_t count) { length_ += count; }
    void advanceTo(const char16_t* end) { length_ = static_cast<std::size_t>(end - units()); }
    void put(char16_t c) { units()[length_++] = c; }

    /// Makes room for half as much again.
    void grow() {
        const std::size_t capacity = capacity_ + capacity_ / 2 + 16;
        SmartPtr<ByteBuffer> larger = allocateUnits(capacity);
        std::memcpy(larger->data(), block_->data(), length_ * sizeof(char16_t));
        block_ = std::move(larger);
        capacity_ = capacity;
    }

    /// Hands the text over to `buffer`.
    void moveTo(ByteBuffer& buffer) {
        block_->shrink(length_ * sizeof(char16_t));
        buffer.swap(*block_);
    }

  private:
    static SmartPtr<ByteBuffer> allocateUnits(std::size_t count) {
        return ByteBuffer::allocate(count * sizeof(char16_t));
    }
    [[nodiscard]] char16_t* units() { return reinterpret_cast<char16_t*>(block_->data()); }

    SmartPtr<ByteBuffer> block_;
    std::size_t capacity_;
    std::size_t length_ = 0;
};

void addInvalid(DecodeReport& report, std::size_t offset) {
    if (report.invalidCount++ == 0)
        report.firstInvalid = offset;
}

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

void decodeUtf16(Bytes bytes, const Shifts& shifts, Output& out, DecodeReport& report) {
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
    if (bytes.size() % 2 != 0) {
        out.put(replacementCharacter);
        addInvalid(report, bytes.size() - 1);
    }
}

void decodeUtf32(Bytes bytes, const Shifts& shifts, Output& out, DecodeReport& report) {
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
    }
    if (i < bytes.size()) {
        addInvalid(report, i);
        out.put(replacementCharacter);
    }
}

void decodeLatin1(Bytes bytes, Output& out) {
    widenLatin1(bytes.data(), bytes.size(), out.end());
    out.advance(bytes.size());
}

/// UTF-8, or ISO-8859-1 when the bytes are not valid UTF-8. Returns the encoding's code.
int decodeUndeclared(Bytes bytes, Output& out) {
    DecodeReport report;
    const std::size_t units = decodeUtf8(bytes, out.end(), OnInvalid::Stop, report);
    if (report.invalidCount > 0) {
        decodeLatin1(bytes, out);
        return ENCODING_LATIN1;
    }
    out.advance(units);
    return ENCODING_UTF8;
}

/// What ICU's callback needs to know, and notes.
struct InvalidBytes {
    Bytes bytes;
    DecodeReport* report;
};

/// Writes U+FFFD for bytes that the converter can't read.
void U_CALLCONV onInvalidBytes(const void* context, UConverterToUnicodeArgs* args, const char* /*bytes*/,
                               std::int32_t length, UConverterCallbackReason reason, UErrorCode* status) {
    if (reason > UCNV_IRREGULAR)
        return; // the converter is reset or closed
    const auto& invalid = *static_cast<const InvalidBytes*>(context);
    // The source stands behind the invalid bytes.
    const auto* source = reinterpret_cast<const std::uint8_t*>(args->source);
    const auto end = std::clamp<std::ptrdiff_t>(source - invalid.bytes.data(), length,
                                                static_cast<std::ptrdiff_t>(invalid.bytes.size()));
    addInvalid(*invalid.report, static_cast<std::size_t>(end - length));
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(args, &replacementCharacter, 1, 0, status);
}

void decodeCodePage(Bytes bytes, int codePage, Output& out, DecodeReport& report) {
    const Converter converter = openConverter(codePage);
    InvalidBytes invalid{bytes, &report};
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter.get(), onInvalidBytes, &invalid, nullptr, nullptr, &status);

    const char* source = reinterpret_cast<const char*>(bytes.data());
    const char* const sourceEnd = source + bytes.size();
    for (;;) {
        status = U_ZERO_ERROR;
        char16_t* target = out.end();
        ucnv_toUnicode(converter.get(), &target, out.limit(), &source, sourceEnd, nullptr, true, &status);
        out.advanceTo(target);
        if (status != U_BUFFER_OVERFLOW_ERROR)
            return;
        out.grow();
    }
}

/// Decodes what follows the mark and returns the encoding's code.
int decode(Bytes bytes, const DetectedEncoding& encoding, Output& out, DecodeReport& report) {
    switch (encoding.form) {
    case Form::Utf8:
        out.advance(decodeUtf8(bytes, out.end(), OnInvalid::Replace, report));
        return ENCODING_UTF8;
    case Form::Utf16:
        decodeUtf16(bytes, encoding.shifts, out, report);
        return ENCODING_UTF16;
    case Form::Utf32:
        decodeUtf32(bytes, encoding.shifts, out, report);
        return ENCODING_UTF16;
    case Form::CodePage:
        if (encoding.codePage == ENCODING_LATIN1)
            decodeLatin1(bytes, out);
        else
            decodeCodePage(bytes, encoding.codePage, out, report);
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
    Output out(bytes.size() + 1);
    if (met.byteOrderMark && keepMark)
        out.put(byteOrderMark);
    const int code = decode(bytes.subspan(encoding.markLength), encoding, out, met);
    if (met.invalidCount > 0)
        met.firstInvalid += encoding.markLength;
    out.moveTo(*buffer);
    if (report)
        *report = met;
    return code;
}

} // namespace tavrin
