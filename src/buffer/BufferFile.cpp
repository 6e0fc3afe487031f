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
constexpr std::size_t unitSize = sizeof(char16_t);

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
    replaceLines(lines, TextForm{form_.encoding}.in(encoding), {});
}

void Buffer::loadBytes(SmartPtr<ByteBuffer> bytes, DecodeReport* report) {
    LoadedText text = *TextLoader(std::move(bytes), parser_->lineScan()).finish();
    if (report)
        *report = text.report();
    adopt(std::move(text));
}

void Buffer::adopt(LoadedText text) {
    if (text.scan_ != parser_->lineScan())
        text.forgetScanned();
    replaceLines(*text.lines_, {text.encoding_, text.form_.hasMark},
                 {text.form_, text.report_, std::move(text.original_)}, text.scannedLines_);
}

void Buffer::loadTextLines(SmartPtr<ByteBuffer> text) {
    LineStore lines;
    lines.load(std::make_unique<TextSource>(std::move(text), 0, TextSource::Form::Utf16, true));
    replaceLines(lines, {form_.encoding}, {});
}

/// What the lines are, with what belongs to them.
void Buffer::swapText(Buffer& other) noexcept {
    lines_.swap(other.lines_);
    std::swap(origin_, other.origin_);
    std::swap(form_, other.form_);
    std::swap(usualLineEnd_, other.usualLineEnd_);
    for (Buffer* const buffer : {this, &other}) {
        ++buffer->generation_;
        buffer->setLineFlags(0, buffer->getLineCount(), 0, ~0);
    }
}

void Buffer::exchangeText(Buffer& other) {
    lines_.commit();
    const TextForm form = form_;
    const TextForm otherForm = other.form_;
    swapText(other);
    try {
        parser_->onBufferLoaded(); // may read a declaration
        other.parser_->onBufferLoaded();
    } catch (...) {
        swapText(other);
        form_ = form;
        other.form_ = otherForm;
        throw;
    }
    if (transactions_ > 0)
        exchanged_ = exchanged_ == &other ? nullptr : &other;
}

/// Of the first `scanned` lines the flags and states are known.
void Buffer::replaceLines(LineStore& lines, const TextForm& form, Origin origin, int scanned) {
    lines_.commit();
    lines_.swap(lines);
    ++generation_;
    const TextForm formBefore = std::exchange(form_, form);
    std::swap(origin_, origin);
    try {
        parser_->onLinesScanned(scanned);
        parser_->onBufferLoaded(); // reads the declaration
    } catch (...) {
        lines_.swap(lines);
        form_ = formBefore;
        std::swap(origin_, origin);
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
    LoadedText text = TextLoader::readFile(stream, parser_->lineScan());
    if (report)
        *report = text.report();
    adopt(std::move(text));
    return true;
}

// The text as it was loaded

LineEnd Buffer::getLineEnd(int line) const {
    const LineEnd end = lines_.line(line).lineEnd;
    const bool isLast = line + 1 == getLineCount();
    if (isLast ? end == LineEnd::None : getContinuesPrevious(line + 1))
        return LineEnd::None;
    if (form_.lineEnds != LineEnd::None)
        return form_.lineEnds;
    return end == LineEnd::None ? usualLineEnd_ : end;
}

std::optional<LineEnd> Buffer::getCommonLineEnd() const {
    if (form_.lineEnds != LineEnd::None)
        return form_.lineEnds;
    std::optional<LineEnd> common;
    for (const LineEnd end : {LineEnd::CrLf, LineEnd::Lf, LineEnd::Cr}) {
        if (lines_.lineEnds()[static_cast<std::size_t>(end)] == 0)
            continue;
        if (common)
            return {};
        common = end;
    }
    return common.value_or(usualLineEnd_);
}

Buffer::LoadedLines Buffer::getLoadedLines(int line) const {
    LoadedLines result{line, line, {}};
    const TextSource* const source = lines_.source();
    if (origin_.form.encoding == 0 || !source)
        return result;
    // Where a long line was cut inside a pair, the bytes of the pair belong to both lines.
    const bool cutsPairs = source->form() == TextSource::Form::Utf8;
    const auto textOf = [this](int l) { return getLineText(l); };
    if (cutsPairs && getContinuesPrevious(line) && !textOf(line).empty() &&
        isLowSurrogate(textOf(line).front()))
        return result;
    std::size_t begin = 0;
    std::size_t after = 0;
    int end = line;
    while (end < getLineCount()) {
        const LineStore::LoadedRun run = lines_.loadedRun(end);
        if (run.end == end || (end > line && run.begin != after))
            break;
        if (end == line) {
            begin = run.begin;
            if (origin_.original && !origin_.original->byteAt(begin / unitSize))
                return result;
        }
        after = run.after;
        end = run.end;
    }
    if (end > line && cutsPairs && !textOf(end - 1).empty() && isHighSurrogate(textOf(end - 1).back())) {
        TextSource::Line last;
        lines_.loadedLine(--end, last);
        after = last.begin;
    }
    if (origin_.original) { // up to where the bytes of a line begin
        const bool isWhole = after < source->size() || end == getLineCount() ||
                             origin_.original->size() % breakSize(origin_.form.encoding) == 0;
        if (!isWhole && end > line) // half a character ends the bytes, and a line follows now
            after = lines_.loadedRun(--end).begin;
        while (end > line && origin_.original->anchorBefore(after / unitSize).unit != after / unitSize) {
            const std::size_t anchor = origin_.original->anchorBefore(after / unitSize).unit * unitSize;
            while (end > line && after > anchor)
                after = lines_.loadedRun(--end).begin;
        }
    }
    if (end == line)
        return result;
    result.end = end;
    result.offset = begin;
    result.bytes = origin_.original ? origin_.original->bytes(*origin_.original->byteAt(begin / unitSize),
                                                              *origin_.original->byteAt(after / unitSize))
                                    : source->bytes(begin, after);
    result.endsWithBreak = lines_.line(end - 1).lineEnd != LineEnd::None;
    return result;
}

bool Buffer::forEachLoadedLine(const LoadedLines& lines, const LoadedLineVisitor& visit) const {
    TextSource::Place place = lines_.source()->placeAt(lines.offset, false);
    TextSource::Line read;
    for (int line = lines.first; line < lines.end; ++line) {
        lines_.source()->next(place, read);
        if (!visit(line, bytesOfLine(read)))
            return false;
    }
    return true;
}

std::optional<std::span<const std::uint8_t>> Buffer::getLoadedBytes(int line) const {
    TextSource::Line found;
    if (origin_.form.encoding == 0 || !lines_.source() || !lines_.loadedLine(line, found))
        return {};
    return bytesOfLine(found);
}

std::optional<std::span<const std::uint8_t>> Buffer::bytesOfLine(const TextSource::Line& line) const {
    if (line.startsInPair || line.endsInPair)
        return {};
    if (!origin_.original)
        return lines_.source()->bytes(line.begin, line.end);
    const std::size_t breaks = line.lineEnd == LineEnd::None ? 0 : line.lineEnd == LineEnd::CrLf ? 2 : 1;
    const auto begin = origin_.original->byteAt(line.begin / unitSize);
    const auto after = origin_.original->byteAt(line.end / unitSize + breaks);
    const std::size_t size = breakSize(origin_.form.encoding);
    if (!begin || !after || (*after - *begin) % size != 0)
        return {};
    return origin_.original->bytes(*begin, *after - breaks * size);
}

std::span<const std::uint8_t> Buffer::getAllLoadedBytes() const {
    if (origin_.original)
        return origin_.original->bytes(*origin_.original->byteAt(0), origin_.original->size());
    return origin_.form.encoding ? lines_.source()->bytes(0, lines_.source()->size())
                                 : std::span<const std::uint8_t>();
}

SmartPtr<ByteBuffer> Buffer::getLoadedFile() const {
    if (origin_.original)
        return origin_.original->block();
    return origin_.form.encoding ? lines_.source()->block() : SmartPtr<ByteBuffer>();
}

bool Buffer::hasSecondMark() const {
    return origin_.form.encoding != 0 && lines_.source()->beginsWithMark();
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
    if (withMark && form_.encoding == ENCODING_UTF16)
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
    TextEncoder encoder(form_.encoding);
    std::string bytes;
    std::u16string piece;
    if (form_.encoding == ENCODING_UTF16)
        encoder.encode({&byteOrderMark, 1}, bytes);
    for (int line = 0; line < getLineCount();) {
        const auto stored = form_.encoding == ENCODING_UTF8 ? lines_.storedLines(line) : std::nullopt;
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

std::u16string Buffer::getEncodingString() const {
    switch (form_.encoding) {
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
