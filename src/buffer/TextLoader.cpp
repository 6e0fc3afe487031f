#include "buffer/TextLoader.h"

#include "platform/core/Utf8.h"

#include <algorithm>
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
constexpr std::size_t sharedWork = std::size_t{4} << 20;

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
TextLoader::TextLoader(std::size_t expected, const LineScan* scan)
    : bytes_(ByteBuffer::allocate(expected + 1)), scan_(scan) {}

TextLoader::TextLoader(SmartPtr<ByteBuffer> bytes, const LineScan* scan)
    : bytes_(std::move(bytes)), size_(bytes_->size()), scan_(scan) {}

LoadedText TextLoader::readFile(std::FILE* stream, const LineScan* scan) {
    const std::size_t expected = ByteBuffer::expectedLength(stream);
    TextLoader loader(expected, scan);
    if (expected >= sharedWork)
        loader.addShared(stream, expected);
    loader.addFrom(stream);
    return *loader.finish();
}

/// Reads `length` bytes, or less when the file has shrunk.
void TextLoader::addShared(std::FILE* stream, std::size_t length) {
    const auto start = static_cast<std::size_t>(std::ftell(stream));
    file_.emplace(stream, start, room().first(length));
    startHelper();
    for (std::size_t there = file_->readBeyond(0); there > size_; there = file_->readBeyond(there))
        while (size_ < there)
            add(std::min(stepSize, there - size_));
    std::fseek(stream, static_cast<long>(start + size_), SEEK_SET);
}

void TextLoader::addFrom(std::FILE* stream) {
    for (;;) {
        const std::span<std::uint8_t> to = room();
        const std::size_t count = std::fread(to.data(), 1, std::min(to.size(), stepSize), stream);
        if (count == 0)
            return;
        add(count);
    }
}

void TextLoader::startHelper() {
    try {
        helper_.emplace(file_ ? &*file_ : nullptr, scan_);
    } catch (const std::system_error&) {
        mayHaveHelper_ = false; // there is no thread to be had
    }
}

std::span<std::uint8_t> TextLoader::room() {
    if (size_ == bytes_->size()) {
        takeBack(); // the bytes will move
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
    const TextSource source = utf8Source(checked_);
    pages_.makeWhole(source);
    handOn(source);
}

/// Gives the pages that were made to the other thread, when there is one or is work for one.
void TextLoader::handOn(const TextSource& source) {
    if (!pages_.hasMade())
        return;
    if (!helper_ && scan_ && mayHaveHelper_ && bytes_->size() >= sharedWork)
        startHelper();
    if (helper_)
        helper_->give(pages_.takeMade(), source);
}

/// The pages are this thread's again, and those made from now on stay so.
void TextLoader::takeBack() {
    if (!helper_)
        return;
    mayHaveHelper_ = false;
    LoadHelper::Result result = helper_->finish();
    helper_.reset();
    scannedLines_ = result.scannedLines;
    result.pages.append(pages_.takeMade());
    pages_.append(std::move(result.pages));
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
    helper_.reset();
    pages_ = {};
    scannedLines_ = 0;
    ReadForm form = examineXmlText({bytes_->data(), size_});
    if (form.kind == Kind::Other) {
        ConvertedText converted = convertXmlText({bytes_->data(), size_});
        form.encoding = converted.encoding;
        form.report = converted.report;
        auto text = divide({converted.text, 0, converted.text->size(), TextSource::Form::Utf16, true}, form,
                           progress);
        if (text) {
            text->form_.encoding = converted.layout;
            text->original_ = std::make_unique<OriginalBytes>(bytes_, std::move(converted.anchors));
        }
        return text;
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
        handOn(source);
        if (progress && !progress(end))
            return {};
    }
    takeBack();
    LoadedText text;
    text.lines_->load(std::make_unique<TextSource>(source), std::move(pages_));
    text.report_ = form.report;
    text.encoding_ = form.encoding;
    text.form_ = {form.encoding, form.report.byteOrderMark};
    text.scan_ = scan_;
    text.scannedLines_ = scannedLines_;
    if (scan_ && size_ >= sharedWork)
        text.lines_->noteAhead(*scan_);
    return text;
}

} // namespace tavrin
