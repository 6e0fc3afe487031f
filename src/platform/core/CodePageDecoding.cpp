#include "platform/core/DecodedText.h"
#include "platform/core/EncodingTable.h"
#include "platform/core/Utf8.h"

#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tavrin {

namespace {

using Bytes = std::span<const std::uint8_t>;

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

/// A converter from a code page that goes on from call to call.
class CodePageDecoder {
  public:
    CodePageDecoder(Converter converter, const InvalidBytes& invalid) : converter_(std::move(converter)) {
        UErrorCode status = U_ZERO_ERROR;
        ucnv_setToUCallBack(converter_.get(), onInvalidBytes, &invalid, nullptr, nullptr, &status);
    }

    void decode(Bytes bytes, bool last, DecodedText& out) {
        const char* source = reinterpret_cast<const char*>(bytes.data());
        const char* const sourceEnd = source + bytes.size();
        for (;;) {
            UErrorCode status = U_ZERO_ERROR;
            char16_t* target = out.end();
            ucnv_toUnicode(converter_.get(), &target, out.limit(), &source, sourceEnd, nullptr, last,
                           &status);
            out.advanceTo(target);
            if (status != U_BUFFER_OVERFLOW_ERROR)
                return;
            out.grow();
        }
    }
    /// Nothing that was read waits for more bytes.
    [[nodiscard]] bool isBetweenCharacters() const {
        UErrorCode status = U_ZERO_ERROR;
        return ucnv_toUCountPending(converter_.get(), &status) == 0 && U_SUCCESS(status);
    }
    /// How bytes read never depends on those before.
    [[nodiscard]] bool isStateless() const {
        const UConverterType type = ucnv_getType(converter_.get());
        return type == UCNV_SBCS || type == UCNV_DBCS || type == UCNV_MBCS || type == UCNV_US_ASCII ||
               type == UCNV_LATIN_1;
    }
    /// How `probe` would read now.
    [[nodiscard]] std::u16string reading(std::string_view probe) const {
        UErrorCode status = U_ZERO_ERROR;
        const Converter copy(ucnv_clone(converter_.get(), &status));
        ucnv_setToUCallBack(copy.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        std::array<char16_t, 16> units{};
        char16_t* target = units.data();
        const char* source = probe.data();
        ucnv_toUnicode(copy.get(), &target, units.data() + units.size(), &source, source + probe.size(),
                       nullptr, false, &status);
        return {units.data(), target};
    }
    void reset() { ucnv_resetToUnicode(converter_.get()); }

  private:
    Converter converter_;
};

/// The bytes of a few characters at the start of a text.
std::string encoded(int codePage, std::u16string_view text) {
    std::string bytes;
    TextEncoder encoder(codePage);
    encoder.encode(text, bytes);
    return bytes;
}

/// Follows a decoder that has a state. Tells where it is as at the start of a text, and whether what it read
/// since the last such place reads the same without all that stood before.
class StateCheck {
  public:
    StateCheck(Bytes bytes, int codePage)
        : invalid_{bytes, &ignored_},
          again_(openConverter(codePage), invalid_),
          probe_(encoded(codePage, letters)) {}

    /// `line` has just been read by the decoder as `text`.
    void follow(Bytes line, std::u16string_view text) {
        if (!holds_)
            return;
        read_.clear();
        again_.decode(line, false, read_);
        holds_ = read_.view() == text;
    }
    [[nodiscard]] bool isAtStart(const CodePageDecoder& decoder) const {
        return holds_ && decoder.reading(probe_) == letters && again_.reading(probe_) == letters;
    }
    void startAgain() { again_.reset(); }

  private:
    /// What other character sets of these encodings have elsewhere.
    static constexpr std::u16string_view letters = u"AB\\~";

    DecodeReport ignored_;
    InvalidBytes invalid_;
    CodePageDecoder again_;
    DecodedText read_{256};
    std::string probe_;
    bool holds_ = true;
};

/// Up to and including the first line break: LF, CR or both, as the code page writes them.
class LineBreaks {
  public:
    explicit LineBreaks(int codePage)
        : feed_(byteOf(codePage, u'\n')), carriageReturn_(byteOf(codePage, u'\r')) {}

    /// Everything when there is none.
    [[nodiscard]] Bytes firstLine(Bytes bytes) const {
        const auto found = std::ranges::find_if(
            bytes, [this](std::uint8_t byte) { return byte == feed_ || byte == carriageReturn_; });
        if (found == bytes.end())
            return bytes;
        const bool isPair = *found == carriageReturn_ && found + 1 != bytes.end() && found[1] == feed_;
        return bytes.first(static_cast<std::size_t>(found - bytes.begin()) + (isPair ? 2 : 1));
    }

  private:
    static std::uint8_t byteOf(int codePage, char16_t c) {
        return static_cast<std::uint8_t>(encoded(codePage, {&c, 1}).back());
    }

    std::uint8_t feed_;
    std::uint8_t carriageReturn_;
};

} // namespace

void decodeCodePage(Bytes bytes, int codePage, DecodedText& out, DecodeReport& report, Anchors anchors) {
    const InvalidBytes invalid{bytes, &report};
    CodePageDecoder decoder(openConverter(codePage), invalid);
    if (!anchors) {
        decoder.decode(bytes, true, out);
        return;
    }
    const LineBreaks breaks(codePage);
    std::optional<StateCheck> state;
    if (!decoder.isStateless())
        state.emplace(bytes, codePage);
    for (std::size_t at = 0; at < bytes.size();) {
        const Bytes line = breaks.firstLine(bytes.subspan(at));
        const std::size_t before = out.size();
        at += line.size();
        decoder.decode(line, at == bytes.size(), out);
        const std::u16string_view text = out.view().substr(before);
        if (state)
            state->follow(line, text);
        const bool isLine = text.ends_with(u'\n') || text.ends_with(u'\r');
        if (!isLine || !decoder.isBetweenCharacters() || (state && !state->isAtStart(decoder)))
            continue;
        anchors->push_back({out.size(), at});
        if (state)
            state->startAgain();
    }
}

} // namespace tavrin
