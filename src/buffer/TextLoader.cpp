#include "buffer/TextLoader.h"

#include "platform/core/ReadAhead.h"
#include "platform/core/Utf8.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <utility>

namespace tavrin {

namespace {

using Form = DetectedEncoding::Form;

/// Bytes after which the encoding can be told as from the whole text.
constexpr std::size_t enoughToDetect = 4096;
/// Bytes of a text that is there that are looked at in one go: few enough to be in a cache the second time.
constexpr std::size_t stepSize = std::size_t{512} << 10;
/// Files of this size are worth a second thread.
constexpr std::size_t sharedWork = std::size_t{16} << 20;

/// Where whole characters end: the last bytes may be the beginning of one.
std::size_t wholeCharacters(std::span<const std::uint8_t> bytes) {
    for (std::size_t back = 1; back <= std::min<std::size_t>(3, bytes.size()); ++back) {
        const std::uint8_t byte = bytes[bytes.size() - back];
        const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        if (length > back)
            return bytes.size() - back;
        if (byte < 0x80 || byte >= 0xC0)
            break;
    }
    return bytes.size();
}

} // namespace

// One more than needed, so that the end shows without another block.
TextLoader::TextLoader(std::size_t expected) : bytes_(ByteBuffer::allocate(expected + 1)) {}

TextLoader::TextLoader(SmartPtr<ByteBuffer> bytes) : bytes_(std::move(bytes)), size_(bytes_->size()) {}

LoadedText TextLoader::readFile(std::FILE* stream) {
    const std::size_t expected = ByteBuffer::expectedLength(stream);
    TextLoader loader(expected);
    if (expected >= sharedWork) {
        try {
            loader.addFromTwoThreads(stream, expected);
        } catch (const std::system_error&) {
            // There is no thread to be had.
        }
    }
    loader.addFrom(stream, std::numeric_limits<std::size_t>::max());
    return *loader.finish();
}

/// Reads `length` bytes, or less when the file has shrunk.
void TextLoader::addFromTwoThreads(std::FILE* stream, std::size_t length) {
    const auto start = static_cast<std::size_t>(std::ftell(stream));
    const std::size_t half = length / 2;
    ReadAhead secondHalf(stream, start + half, room().subspan(half, length - half));
    addFrom(stream, half);
    if (size_ < half)
        return;
    for (std::size_t done = secondHalf.waitBeyond(0); half + done > size_; done = secondHalf.waitBeyond(done))
        while (size_ < half + done)
            add(std::min(stepSize, half + done - size_));
    std::fseek(stream, static_cast<long>(start + size_), SEEK_SET);
}

void TextLoader::addFrom(std::FILE* stream, std::size_t end) {
    while (size_ < end) {
        const std::span<std::uint8_t> to = room();
        const std::size_t count =
            std::fread(to.data(), 1, std::min({to.size(), stepSize, end - size_}), stream);
        if (count == 0)
            return;
        add(count);
    }
}

std::span<std::uint8_t> TextLoader::room() {
    if (size_ == bytes_->size()) {
        SmartPtr<ByteBuffer> larger = ByteBuffer::allocate(2 * size_ + enoughToDetect);
        std::copy_n(bytes_->data(), size_, larger->data());
        bytes_ = std::move(larger);
    }
    return {bytes_->data() + size_, bytes_->size() - size_};
}

void TextLoader::add(std::size_t count) {
    size_ += count;
    if (size_ >= enoughToDetect)
        examine(wholeCharacters({bytes_->data(), size_}));
}

/// Looks at the bytes up to `end`, behind which there may be more.
void TextLoader::examine(std::size_t end) {
    if (road_ == Road::Unknown) {
        encoding_ = detectEncoding({bytes_->data(), size_});
        const bool isUtf8 = encoding_.form == Form::Utf8 || encoding_.form == Form::Undeclared;
        road_ = isUtf8 ? Road::Pieces : Road::Whole;
        checked_ = encoding_.markLength;
    }
    if (road_ == Road::Whole || end <= checked_)
        return;
    const bool mayBeOther = encoding_.form == Form::Undeclared;
    DecodeReport found;
    checkUtf8({bytes_->data() + checked_, end - checked_}, mayBeOther ? OnInvalid::Stop : OnInvalid::Replace,
              found);
    if (found.invalidCount > 0 && mayBeOther) {
        road_ = Road::Whole;
        return;
    }
    if (found.invalidCount > 0 && report_.invalidCount == 0)
        report_.firstInvalid = checked_ + found.firstInvalid;
    report_.invalidCount += found.invalidCount;
    checked_ = end;
    pages_.makeWhole(utf8Source(checked_));
}

TextSource TextLoader::utf8Source(std::size_t end) const {
    return {bytes_, encoding_.markLength, end, TextSource::Form::Utf8, report_.invalidCount == 0};
}

std::optional<LoadedText> TextLoader::finish(const Progress& progress) {
    bytes_->shrink(size_);
    do {
        const std::size_t end = std::min(checked_ + stepSize, size_);
        examine(end == size_ ? end : wholeCharacters({bytes_->data(), end}));
        if (progress && !progress(checked_))
            return {};
    } while (road_ == Road::Pieces && checked_ < size_);
    if (road_ == Road::Whole)
        return finishWhole(progress);
    report_.byteOrderMark = encoding_.markLength > 0;
    return divide(utf8Source(size_), {ReadForm::Kind::Utf8, ENCODING_UTF8, encoding_.markLength, report_},
                  progress);
}

std::optional<LoadedText> TextLoader::finishWhole(const Progress& progress) {
    using Kind = ReadForm::Kind;
    pages_ = {};
    ReadForm form = examineXmlText({bytes_->data(), size_});
    if (form.kind == Kind::Other) {
        form.encoding = multibyteXmlToUnicode(bytes_.get(), false, &form.report);
        return divide({bytes_, 0, bytes_->size(), TextSource::Form::Utf16, true}, form, progress);
    }
    const auto as = form.kind == Kind::Utf8     ? TextSource::Form::Utf8
                    : form.kind == Kind::Latin1 ? TextSource::Form::Latin1
                                                : TextSource::Form::Utf16;
    return divide({bytes_, form.markLength, size_, as, form.report.invalidCount == 0}, form, progress);
}

/// Finds the lines that were not found yet.
std::optional<LoadedText> TextLoader::divide(const TextSource& source, const ReadForm& form,
                                             const Progress& progress) {
    for (std::size_t end = pages_.end(); end < source.size();) {
        end = std::min(end + stepSize, source.size());
        pages_.make(source, end);
        if (progress && !progress(end))
            return {};
    }
    LoadedText text;
    text.lines_->load(std::make_unique<TextSource>(source), std::move(pages_));
    text.report_ = form.report;
    text.encoding_ = form.encoding;
    text.keepsBytes_ = form.kind != ReadForm::Kind::Other;
    return text;
}

} // namespace tavrin
