// Loading and saving.

#include "buffer/Buffer.h"
#include "buffer/BufferParser.h"
#include "platform/core/FilePath.h"
#include "platform/core/TextScan.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tavrin {

namespace {

constexpr char16_t byteOrderMark = u'\uFEFF';
constexpr std::u16string_view lineBreak = u"\r\n";

/// Code units handed on at once while saving.
constexpr std::size_t pieceLength = std::size_t{1} << 16;

} // namespace

void Buffer::loadText(const char16_t* text, std::size_t length) {
    SmartPtr<ByteBuffer> block = ByteBuffer::allocate(length * sizeof(char16_t));
    std::copy_n(text, length, reinterpret_cast<char16_t*>(block->data()));
    reset();
    block_ = std::move(block);
    loadTextLines({reinterpret_cast<const char16_t*>(block_->data()), length});
}

void Buffer::loadFromByteBuffer(ByteBuffer* bytes, DecodeReport* report) {
    encoding_ = multibyteXmlToUnicode(bytes, false, report);
    reset();
    block_ = bytes;
    loadTextLines({reinterpret_cast<const char16_t*>(bytes->data()), bytes->size() / sizeof(char16_t)});
}

// A carriage return, a line feed and the two together end a line each. What is longer than
// maxLoadedLineLength goes on in another buffer line. Only a mark at the very start of the text is dropped;
// one elsewhere is a character at which no line is cut.
void Buffer::loadTextLines(std::u16string_view text) {
    LineStore::Builder builder(lines_);
    constexpr std::size_t limit = maxLoadedLineLength;
    std::size_t start = 0; // of the current line
    std::size_t at = 0;    // where the walk stands
    std::size_t tabs = 0;  // in [start, at)
    bool continues = false;
    bool afterReturn = false;

    const auto endLine = [&](std::size_t end, std::size_t next, bool nextContinues) {
        builder.append(text.data() + start, end - start, tabs, continues);
        start = at = next;
        tabs = 0;
        continues = nextContinues;
    };

    while (at < text.size()) {
        const std::size_t used = at - start;
        const std::size_t room =
            used < limit ? limit - used : 1; // beyond the limit: cut at the next character
        const scan::LineScan found = scan::scanLine(text.substr(at, room));
        at += found.length;
        tabs += found.tabs;
        if (found.length > 0)
            afterReturn = false;
        if (at - start >= limit && found.length > 0) {
            endLine(at, at, true);
            continue;
        }
        if (at == text.size())
            break;
        switch (text[at]) {
        case u'\n':
            if (afterReturn) { // the second half of a break
                ++start;
                ++at;
                continues = false;
            } else {
                endLine(at, at + 1, false);
            }
            afterReturn = false;
            break;
        case u'\r':
            endLine(at, at + 1, false);
            afterReturn = true;
            break;
        default: // U+FEFF
            if (at == 0)
                start = 1;
            ++at;
            break;
        }
    }
    if (start < text.size())
        endLine(text.size(), text.size(), false);
    builder.finish();
    parser_->onBufferLoaded();
}

bool Buffer::loadFile(const char16_t* path, DecodeReport* report) {
    std::FILE* stream = openFile(path, "rb");
    if (!stream)
        return false;
    const SmartPtr<ByteBuffer> bytes = ByteBuffer::loadFile(stream);
    std::fclose(stream);
    loadFromByteBuffer(bytes.get(), report);
    return true;
}

SmartPtr<ByteBuffer> Buffer::getString() const {
    return getBytes(false, true);
}

SmartPtr<ByteBuffer> Buffer::getBytes(bool withMark, bool withZero) const {
    const std::size_t room = static_cast<std::size_t>(getLength()) + 2;
    SmartPtr<ByteBuffer> bytes = ByteBuffer::allocate(room * sizeof(char16_t));
    auto* const begin = reinterpret_cast<char16_t*>(bytes->data());
    char16_t* end = begin;
    if (withMark && encoding_ == ENCODING_UTF16)
        *end++ = byteOrderMark;
    forEachPiece([&](std::u16string_view piece) {
        end = std::copy(piece.begin(), piece.end(), end);
        return true;
    });
    if (withZero)
        *end++ = 0;
    bytes->shrink(static_cast<std::size_t>(end - begin) * sizeof(char16_t));
    return bytes;
}

bool Buffer::forEachPiece(const std::function<bool(std::u16string_view)>& sink) const {
    std::u16string piece;
    for (int line = 0; line < getLineCount(); ++line) {
        const BufferLine& l = lines_.line(line);
        if (line > 0 && !l.continuesPrevious)
            piece += lineBreak;
        piece += l.text();
        if (piece.size() >= pieceLength) {
            if (!sink(piece))
                return false;
            piece.clear();
        }
    }
    return piece.empty() || sink(piece);
}

bool Buffer::writeBytes(const std::function<bool(std::string_view)>& sink) const {
    TextEncoder encoder(encoding_);
    std::string bytes;
    if (encoding_ == ENCODING_UTF16)
        encoder.encode({&byteOrderMark, 1}, bytes);
    const bool all = forEachPiece([&](std::u16string_view piece) {
        encoder.encode(piece, bytes);
        const bool taken = sink(bytes);
        bytes.clear();
        return taken;
    });
    if (!all)
        return false;
    encoder.finish(bytes);
    return bytes.empty() || sink(bytes);
}

bool Buffer::saveToFile(const char16_t* path) const {
    std::FILE* stream = openFile(path, "wb+");
    if (!stream)
        return false;
    writeBytes([&](std::string_view bytes) {
        std::fwrite(bytes.data(), 1, bytes.size(), stream);
        return true;
    });
    std::fclose(stream);
    return true;
}

EncodeReport Buffer::checkEncoding(int encoding, int& line, int& col) const {
    TextEncoder encoder(encoding);
    std::string bytes;
    std::size_t length = 0;
    bool placed = false;
    for (int l = 0; l < getLineCount(); ++l) {
        const std::u16string_view text = getLineText(l);
        const bool breaks = l + 1 < getLineCount() && !getContinuesPrevious(l + 1);
        const auto place = [&] { // a pair that a cut divides is known only with the next line
            const std::size_t first = encoder.report().firstLost;
            line = first < length ? l - 1 : l;
            col = static_cast<int>(first < length
                                       ? static_cast<std::size_t>(getLineLength(l - 1)) - (length - first)
                                       : first - length);
            placed = true;
        };
        encoder.encode(text, bytes);
        if (breaks)
            encoder.encode(u"\n", bytes);
        bytes.clear();
        if (!placed && encoder.report().lostCount > 0)
            place();
        length += text.size() + (breaks ? 1 : 0);
    }
    encoder.finish(bytes);
    if (!placed && encoder.report().lostCount > 0) { // a high surrogate ends the text
        line = getLineCount() - 1;
        col = getLineLength(line) - 1;
    }
    return encoder.report();
}

std::u16string Buffer::getEncodingString() const {
    switch (encoding_) {
    case ENCODING_UTF8:
        return u"utf-8";
    case ENCODING_UTF16:
        return u"utf-16";
    case ENCODING_LATIN1:
        return u"iso-8859-1";
    case ENCODING_LATIN2:
        return u"iso-8859-2";
    default:
        return {};
    }
}

} // namespace tavrin
