// Any bytes load, keep the store whole, and come back: what was saved loads as the same text.

#include "FuzzTarget.h"
#include "buffer/Buffer.h"
#include "files/EncodingLoss.h"
#include "files/TextFileContents.h"
#include "parsers/XmlLangParser.h"

#include <string>
#include <string_view>

using namespace tavrin;
using fuzz::require;

namespace {

/// A buffer as documents have it.
struct Text {
    Text() {
        buffer.setParser(&parser);
        parser.setBuffer(&buffer);
    }
    Buffer buffer;
    XmlLangParser parser;
};

SmartPtr<ByteBuffer> bytesOf(std::string_view bytes) {
    auto buffer = ByteBuffer::allocate(bytes.size());
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(buffer->data()));
    return buffer;
}

std::u16string textOf(const Buffer& buffer) {
    std::u16string text;
    const int last = buffer.getLineCount() - 1;
    if (last >= 0)
        buffer.getText(0, 0, last, buffer.getLineLength(last), text);
    return text;
}

std::string saved(const Buffer& buffer) {
    std::string out;
    buffer.writeBytes([&](std::string_view piece) {
        out += piece;
        return true;
    });
    return out;
}

bool losesCharacters(const Buffer& buffer, int encoding) {
    bool loses = false;
    forEachLostCharacter(buffer, encoding, [&](const LostCharacter&) {
        loses = true;
        return false;
    });
    return loses;
}

/// The same bytes as a file: the same text, and unedited they come back as they were.
void checkAsFile(std::string_view bytes, const std::u16string& text, int encoding) {
    Text file;
    DecodeReport report;
    file.buffer.loadBytes(bytesOf(bytes), &report);
    file.buffer.checkInvariants();
    require(textOf(file.buffer) == text, "the text is the same however it is loaded");
    require(file.buffer.getEncoding() == encoding, "so is its encoding");
    file.buffer.setForm(file.buffer.getLoadedForm());
    std::string written;
    textFileContents(file.buffer)([&](std::string_view piece) {
        written += piece;
        return true;
    });
    require(written == bytes, "what nobody edited is written as it was");
}

/// Whether encoding the text in one piece and unit by unit gives the same bytes.
void checkPieces(int encoding, const std::u16string& text) {
    std::string whole;
    std::string pieces;
    TextEncoder one(encoding);
    one.encode(text, whole);
    one.finish(whole);
    TextEncoder many(encoding);
    for (const char16_t unit : text)
        many.encode({&unit, 1}, pieces);
    many.finish(pieces);
    require(whole == pieces, "an encoder does not care how the text is cut");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Text loaded;
    Buffer& buffer = loaded.buffer;
    DecodeReport report;
    buffer.loadFromByteBuffer(bytesOf(bytes).get(), &report);
    buffer.checkInvariants();
    require(report.invalidCount == 0 || report.firstInvalid < size,
            "the first invalid byte lies in the input");
    const std::u16string text = textOf(buffer);
    checkPieces(buffer.getEncoding(), text);
    checkAsFile(bytes, text, buffer.getEncoding());

    for (const int encoding : {int{ENCODING_UTF8}, int{ENCODING_UTF16}}) {
        // FF FE and two zeros are the mark of UTF-32; of two marks in a row both are taken for one.
        const bool isAmbiguous =
            text.starts_with(u'\uFEFF') || (encoding == ENCODING_UTF16 && text.starts_with(u'\0'));
        if (isAmbiguous || losesCharacters(buffer, encoding))
            continue;
        buffer.setEncoding(encoding);
        std::string out = saved(buffer);
        if (encoding == ENCODING_UTF8)
            out.insert(0, "\xEF\xBB\xBF");
        Text again;
        again.buffer.loadFromByteBuffer(bytesOf(out).get());
        // No break follows the last line, so a last line that is empty does not come back.
        const std::u16string back = textOf(again.buffer);
        require(back == text || back + u'\n' == text, "a saved text loads as the same text");
    }
    return 0;
}
