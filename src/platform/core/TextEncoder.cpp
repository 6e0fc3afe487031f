#include "platform/core/CodeUnitRuns.h"
#include "platform/core/Encoding.h"
#include "platform/core/EncodingDetection.h"
#include "platform/core/EncodingTable.h"
#include "platform/core/Utf8.h"

#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <array>
#include <bit>

namespace tavrin {

namespace {

static_assert(std::endian::native == std::endian::little, "code units in memory are UTF-16 little-endian");

constexpr char16_t unrepresentable = u'?';

void addLost(EncodeReport& report, std::size_t index) {
    if (report.lostCount++ == 0)
        report.firstLost = index;
}

/// Code units of the character at the start of `text`: two for a surrogate pair.
std::size_t characterLength(std::u16string_view text) {
    return text.size() > 1 && isHighSurrogate(text[0]) && isLowSurrogate(text[1]) ? 2 : 1;
}

void encodeUtf16(std::u16string_view text, const ByteShifts& shifts, std::string& out) {
    if (shifts[0] == 0) {
        out.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
        return;
    }
    const std::size_t begin = out.size();
    out.resize(begin + text.size() * sizeof(char16_t));
    char* byte = out.data() + begin;
    for (const char16_t unit : text) {
        *byte++ = static_cast<char>(unit >> 8);
        *byte++ = static_cast<char>(unit);
    }
}

void encodeUtf32(std::u16string_view text, const ByteShifts& shifts, std::string& out, std::size_t index,
                 EncodeReport& report) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (characterLength(text.substr(i)) == 2) {
            c = joinSurrogates(text[i], text[i + 1]);
            ++i;
        } else if (isSurrogate(text[i])) {
            c = replacementCharacter;
            addLost(report, index + i);
        }
        for (const std::uint8_t shift : shifts)
            out += static_cast<char>(c >> shift);
    }
}

void encodeLatin1(std::u16string_view text, std::string& out, std::size_t index, EncodeReport& report) {
    constexpr std::size_t chunk = 4096;
    std::array<char, chunk> bytes;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t room = std::min(chunk, text.size() - i);
        const std::size_t run = narrowLatin1Prefix(&text[i], room, bytes.data());
        out.append(bytes.data(), run);
        i += run;
        if (run == room)
            continue;
        addLost(report, index + i);
        out += static_cast<char>(unrepresentable);
        i += characterLength(text.substr(i));
    }
}

/// Writes "?" in the converter's encoding for what it can't represent.
void U_CALLCONV writeUnrepresentable(const void* /*context*/, UConverterFromUnicodeArgs* args,
                                     const UChar* /*units*/, std::int32_t /*length*/, UChar32 /*character*/,
                                     UConverterCallbackReason reason, UErrorCode* status) {
    if (reason > UCNV_IRREGULAR)
        return; // the converter is reset or closed
    *status = U_ZERO_ERROR;
    const UChar* source = &unrepresentable;
    ucnv_cbFromUWriteUChars(args, &source, source + 1, 0, status);
}

/// Encoding by a converter of ICU. What is lost is counted by the set of the characters that the converter
/// has: its callback does not tell where in the text it stands.
class CodePageEncoder {
  public:
    CodePageEncoder(Converter converter, int encoding)
        : converter_(std::move(converter)), known_(encoding), hasHeader_(encoding == CODEPAGE_KOREAN) {
        UErrorCode status = U_ZERO_ERROR;
        ucnv_setFromUCallBack(converter_.get(), writeUnrepresentable, nullptr, nullptr, nullptr, &status);
    }

    void encode(std::u16string_view text, std::string& out, std::size_t index, EncodeReport& report) {
        for (std::size_t i = known_.findLost(text); i < text.size(); i = known_.findLost(text, i)) {
            addLost(report, index + i);
            i += characterLength(text.substr(i));
        }
        convert(text, false, out);
    }
    void finish(std::string& out) { convert({}, true, out); }

  private:
    /// What names the second character set of ISO-2022-KR. The converter writes it whenever it starts anew;
    /// it belongs to the start of a text that does not begin with bytes of somebody else's.
    static constexpr std::string_view header = "\x1B$)C";

    void convert(std::u16string_view text, bool last, std::string& out) {
        const std::size_t begin = out.size();
        write(text, last, out);
        const bool dropsHeader = hasHeader_ && isFresh_ && (hasBegun_ || text.empty());
        if (dropsHeader && std::string_view(out).substr(begin).starts_with(header))
            out.erase(begin, header.size());
        isFresh_ = last;
        hasBegun_ = true;
    }
    void write(std::u16string_view text, bool last, std::string& out) {
        std::array<char, 4096> bytes;
        const UChar* source = text.data();
        const UChar* const sourceEnd = source + text.size();
        UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
        while (status == U_BUFFER_OVERFLOW_ERROR) {
            status = U_ZERO_ERROR;
            char* target = bytes.data();
            ucnv_fromUnicode(converter_.get(), &target, bytes.data() + bytes.size(), &source, sourceEnd,
                             nullptr, last, &status);
            out.append(bytes.data(), static_cast<std::size_t>(target - bytes.data()));
        }
    }

    Converter converter_;
    Repertoire known_;
    bool hasHeader_;
    bool isFresh_ = true; ///< the converter starts anew
    bool hasBegun_ = false;
};

} // namespace

struct TextEncoder::State {
    /// `text` is whole: a surrogate at its end has no partner in the next piece.
    void encode(std::u16string_view text, std::string& out) {
        if (text.empty())
            return;
        if (codePage)
            codePage->encode(text, out, index, report);
        else if (encoding == ENCODING_UTF16 || encoding == ENCODING_UTF16_BE)
            encodeUtf16(text, shifts, out);
        else if (isWideEncoding(encoding))
            encodeUtf32(text, shifts, out, index, report);
        else if (encoding == ENCODING_LATIN1)
            encodeLatin1(text, out, index, report);
        else
            encodeUtf8(text, out, index, report);
        index += text.size();
    }

    int encoding = ENCODING_UTF8;
    ByteShifts shifts{}; ///< of UTF-16 and UTF-32
    std::unique_ptr<CodePageEncoder> codePage;
    char16_t pending = 0;  ///< a high surrogate at the end of the last piece, or 0
    std::size_t index = 0; ///< code units encoded
    EncodeReport report;
};

TextEncoder::TextEncoder(int encoding) : state_(std::make_unique<State>()) {
    state_->encoding = encoding;
    if (isWideEncoding(encoding))
        state_->shifts = byteShifts(encoding);
    else if (encoding != ENCODING_UTF8 && encoding != ENCODING_LATIN1)
        if (Converter converter = openConverter(encoding))
            state_->codePage = std::make_unique<CodePageEncoder>(std::move(converter), encoding);
}

TextEncoder::~TextEncoder() = default;

void TextEncoder::encode(std::u16string_view text, std::string& out) {
    if (text.empty())
        return;
    if (state_->pending != 0) {
        const char16_t pair[] = {state_->pending, text.front()};
        const std::size_t length = characterLength({pair, 2});
        state_->pending = 0;
        state_->encode({pair, length}, out);
        text.remove_prefix(length - 1);
    }
    if (!text.empty() && isHighSurrogate(text.back())) {
        state_->pending = text.back();
        text.remove_suffix(1);
    }
    state_->encode(text, out);
}

void TextEncoder::finish(std::string& out) {
    if (state_->pending != 0)
        state_->encode({&state_->pending, 1}, out);
    state_->pending = 0;
    if (state_->codePage)
        state_->codePage->finish(out);
}

const EncodeReport& TextEncoder::report() const noexcept {
    return state_->report;
}

} // namespace tavrin
