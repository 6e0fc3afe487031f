// Loading and saving.

#include "buffer/Buffer.h"
#include "buffer/BufferParser.h"
#include "buffer/TextLoader.h"
#include "platform/core/FilePath.h"
#include "platform/core/TextScan.h"
#include "platform/core/Utf8.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

namespace tavrin {

namespace {

constexpr char16_t byteOrderMark = u'\uFEFF';
constexpr std::u16string_view lineBreak = u"\r\n";

/// Code units handed on at once while saving.
constexpr std::size_t pieceLength = std::size_t{1} << 16;

struct CloseFile {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

} // namespace

void Buffer::loadText(const char16_t* text, std::size_t length) {
    SmartPtr<ByteBuffer> block = ByteBuffer::allocate(length * sizeof(char16_t));
    std::copy_n(text, length, reinterpret_cast<char16_t*>(block->data()));
    loadTextLines(std::move(block));
}

void Buffer::loadFromByteBuffer(ByteBuffer* bytes, DecodeReport* report) {
    const int encoding = multibyteXmlToUnicode(bytes, false, report);
    LineStore lines;
    lines.load(std::make_unique<TextSource>(SmartPtr<ByteBuffer>(bytes), 0, TextSource::Form::Utf16, true));
    replaceLines(lines, encoding, 0);
}

void Buffer::loadBytes(SmartPtr<ByteBuffer> bytes, DecodeReport* report) {
    LoadedText text = *TextLoader(std::move(bytes)).finish();
    if (report)
        *report = text.report();
    adopt(std::move(text));
}

void Buffer::adopt(LoadedText text) {
    replaceLines(*text.lines_, text.encoding_, text.keepsBytes_ ? text.encoding_ : 0);
}

void Buffer::loadTextLines(SmartPtr<ByteBuffer> text) {
    LineStore lines;
    lines.load(std::make_unique<TextSource>(std::move(text), 0, TextSource::Form::Utf16, true));
    replaceLines(lines, encoding_, 0);
}

/// What the lines are, with what belongs to them.
void Buffer::swapText(Buffer& other) noexcept {
    lines_.swap(other.lines_);
    std::swap(encoding_, other.encoding_);
    std::swap(usualLineEnd_, other.usualLineEnd_);
    std::swap(loadedEncoding_, other.loadedEncoding_);
    for (Buffer* const buffer : {this, &other}) {
        ++buffer->generation_;
        buffer->setLineFlags(0, buffer->getLineCount(), 0, ~0);
    }
}

void Buffer::exchangeText(Buffer& other) {
    lines_.commit();
    swapText(other);
    try {
        parser_->onBufferLoaded();
        other.parser_->onBufferLoaded();
    } catch (...) {
        swapText(other);
        throw;
    }
    if (transactions_ > 0)
        exchanged_ = exchanged_ == &other ? nullptr : &other;
}

void Buffer::replaceLines(LineStore& lines, int encoding, int loadedEncoding) {
    lines_.commit();
    lines_.swap(lines);
    ++generation_;
    const int encodingBefore = std::exchange(encoding_, encoding);
    const int loadedEncodingBefore = std::exchange(loadedEncoding_, loadedEncoding);
    try {
        parser_->onBufferLoaded(); // reads the declaration
    } catch (...) {
        lines_.swap(lines);
        encoding_ = encodingBefore;
        loadedEncoding_ = loadedEncodingBefore;
        parser_->onLinesRestored();
        throw;
    }
    const auto& ends = lines_.lineEnds();
    usualLineEnd_ = LineEnd::CrLf;
    for (const LineEnd end : {LineEnd::Lf, LineEnd::Cr})
        if (ends[static_cast<std::size_t>(end)] > ends[static_cast<std::size_t>(usualLineEnd_)])
            usualLineEnd_ = end;
}

bool Buffer::loadFile(const char16_t* path, DecodeReport* report) {
    std::FILE* stream = openFile(path, "rb");
    if (!stream)
        return false;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> closing(stream, std::fclose);
    LoadedText text = TextLoader::readFile(stream);
    if (report)
        *report = text.report();
    adopt(std::move(text));
    return true;
}

// The text as it was loaded

LineEnd Buffer::getLineEnd(int line) const {
    const LineEnd end = lines_.line(line).lineEnd;
    if (line + 1 == getLineCount())
        return end;
    if (getContinuesPrevious(line + 1))
        return LineEnd::None;
    return end == LineEnd::None ? usualLineEnd_ : end;
}

Buffer::LoadedLines Buffer::getLoadedLines(int line) const {
    LoadedLines result{line, line, {}};
    const TextSource* const source = lines_.source();
    if (loadedEncoding_ == 0 || !source)
        return result;
    // Where a long line was cut inside a pair, the bytes of the pair belong to both lines.
    const bool cutsPairs = source->form() == TextSource::Form::Utf8;
    const auto textOf = [this](int l) { return getLineText(l); };
    if (cutsPairs && getContinuesPrevious(line) && !textOf(line).empty() &&
        isLowSurrogate(textOf(line).front()))
        return result;
    std::size_t begin = 0;
    std::size_t after = 0;
    while (result.end < getLineCount()) {
        const LineStore::LoadedRun run = lines_.loadedRun(result.end);
        if (run.end == result.end || (result.end > line && run.begin != after))
            break;
        if (result.end == line)
            begin = run.begin;
        after = run.after;
        result.end = run.end;
    }
    if (result.end > line && cutsPairs && !textOf(result.end - 1).empty() &&
        isHighSurrogate(textOf(result.end - 1).back())) {
        TextSource::Line last;
        lines_.loadedLine(--result.end, last);
        after = last.begin;
    }
    result.bytes = result.end > line ? source->bytes(begin, after) : std::span<const std::uint8_t>();
    return result;
}

std::optional<std::span<const std::uint8_t>> Buffer::getLoadedBytes(int line) const {
    TextSource::Line found;
    if (loadedEncoding_ == 0 || !lines_.source() || !lines_.loadedLine(line, found) || found.startsInPair ||
        found.endsInPair)
        return {};
    return lines_.source()->bytes(found.begin, found.end);
}

// Saving

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
        appendSaved(line, piece);
        if (piece.size() >= pieceLength) {
            if (!sink(piece))
                return false;
            piece.clear();
        }
    }
    return piece.empty() || sink(piece);
}

/// The break before the line, unless it is the first or continues the one above, and the line.
void Buffer::appendSaved(int line, std::u16string& out) const {
    const BufferLine& l = lines_.line(line);
    if (line > 0 && !l.continuesPrevious)
        out += lineBreak;
    out += l.text();
}

bool Buffer::writeBytes(const std::function<bool(std::string_view)>& sink) const {
    TextEncoder encoder(encoding_);
    std::string bytes;
    std::u16string piece;
    if (encoding_ == ENCODING_UTF16)
        encoder.encode({&byteOrderMark, 1}, bytes);
    for (int line = 0; line < getLineCount();) {
        const auto stored = encoding_ == ENCODING_UTF8 ? lines_.storedLines(line) : std::nullopt;
        if (stored && stored->isUtf8 && !stored->hasCuts && stored->first == line) { // bytes stay bytes
            encoder.encode(line > 0 ? lineBreak : lineBreak.substr(0, 0), bytes);
            appendStored(*stored, bytes);
            line = stored->end;
        } else {
            const int end = lines_.chunkAt(line).end; // where stored lines may begin
            piece.clear();
            for (; line < end; ++line)
                appendSaved(line, piece);
            encoder.encode(piece, bytes);
        }
        if (bytes.size() >= pieceLength) {
            if (!sink(bytes))
                return false;
            bytes.clear();
        }
    }
    encoder.finish(bytes);
    return bytes.empty() || sink(bytes);
}

/// Lines and the breaks between them, as they are saved; no break follows the last one.
void Buffer::appendStored(const LineStore::StoredLines& lines, std::string& out) {
    std::string_view rest = lines.bytes;
    if (lines.hasCrLf) {
        out += rest.ends_with("\r\n") ? rest.substr(0, rest.size() - 2) : rest;
        return;
    }
    for (int line = lines.first; line < lines.end; ++line) {
        const std::string_view text = rest.substr(0, scan::scanByteLine(rest).length);
        if (line > lines.first)
            out += "\r\n";
        out += text;
        rest.remove_prefix(text.size());
        rest.remove_prefix(rest.starts_with("\r\n") ? 2 : rest.empty() ? 0 : 1);
    }
}

bool Buffer::saveToFile(const char16_t* path) const {
    const OpenFile stream(openFile(path, "wb+"));
    if (!stream)
        return false;
    writeBytes([&](std::string_view bytes) {
        std::fwrite(bytes.data(), 1, bytes.size(), stream.get());
        return true;
    });
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
