#include "files/TextFileContents.h"

#include "buffer/Buffer.h"

#include <string>
#include <string_view>

namespace tavrin {

namespace {

constexpr std::size_t pieceSize = 1 << 18;

std::u16string_view breakOf(LineEnd end) {
    switch (end) {
    case LineEnd::CrLf:
        return u"\r\n";
    case LineEnd::Lf:
        return u"\n";
    case LineEnd::Cr:
        return u"\r";
    case LineEnd::None:
        break;
    }
    return {};
}

/// Collects bytes into pieces of a size that sinks like. Where a line that ends with CR meets an empty one
/// that ends with LF, the latter ends with CR LF: else the two would be read as one break.
class PieceWriter {
  public:
    PieceWriter(int encoding, const ByteSink& sink)
        : encoder_(encoding), unitSize_(encoding == ENCODING_UTF16 ? 2 : 1), sink_(sink) {}

    void text(std::u16string_view text) {
        if (text.empty())
            return;
        keepApart(text.front() == u'\n');
        encoder_.encode(text, bytes_);
        endsWithReturn_ = text.back() == u'\r';
    }
    /// Bytes of loaded lines. False when the sink takes no more.
    [[nodiscard]] bool bytes(std::string_view bytes) {
        keepApart(unitAt(bytes, 0) == '\n');
        endsWithReturn_ = bytes.size() >= unitSize_ && unitAt(bytes, bytes.size() - unitSize_) == '\r';
        return flush() && (bytes.empty() || sink_(bytes));
    }
    [[nodiscard]] bool passOn() { return bytes_.size() < pieceSize || flush(); }
    [[nodiscard]] bool finish() {
        encoder_.finish(bytes_);
        return flush();
    }

  private:
    /// The character below 0x80 at an offset in loaded bytes; zero for others.
    [[nodiscard]] char unitAt(std::string_view bytes, std::size_t at) const {
        const bool isWide = unitSize_ == 2 && at + 1 < bytes.size() && bytes[at + 1] != 0;
        return at < bytes.size() && !isWide ? bytes[at] : '\0';
    }
    void keepApart(bool beginsWithFeed) {
        if (endsWithReturn_ && beginsWithFeed)
            encoder_.encode(u"\r", bytes_);
    }
    [[nodiscard]] bool flush() {
        const bool goesOn = bytes_.empty() || sink_(bytes_);
        bytes_.clear();
        return goesOn;
    }

    TextEncoder encoder_;
    std::size_t unitSize_;
    const ByteSink& sink_;
    std::string bytes_;
    bool endsWithReturn_ = false;
};

/// Whether the bytes of a run of loaded lines stop short of the break that now has to follow it.
bool lacksBreak(const Buffer& buffer, const Buffer::LoadedLines& lines) {
    const bool isLast = lines.end == buffer.getLineCount();
    if (isLast || buffer.getContinuesPrevious(lines.end))
        return false;
    const auto text = buffer.getLoadedBytes(lines.end - 1);
    return text && text->data() + text->size() == lines.bytes.data() + lines.bytes.size();
}

bool hasMarks(int encoding) {
    return encoding == ENCODING_UTF8 || encoding == ENCODING_UTF16;
}

bool writeText(const Buffer& buffer, const TextFileForm& form, const ByteSink& sink) {
    PieceWriter out(form.encoding, sink);
    if (form.hasMark && hasMarks(form.encoding))
        out.text(u"\uFEFF");
    const bool keepsBytes = form.encoding == buffer.getLoadedEncoding();
    for (int line = 0; line < buffer.getLineCount();) {
        const auto lines = keepsBytes ? buffer.getLoadedLines(line) : Buffer::LoadedLines{line, line, {}};
        if (lines.end > line) {
            if (!out.bytes({reinterpret_cast<const char*>(lines.bytes.data()), lines.bytes.size()}))
                return false;
            if (lacksBreak(buffer, lines))
                out.text(breakOf(buffer.getLineEnd(lines.end - 1)));
            line = lines.end;
            continue;
        }
        out.text(buffer.getLineText(line));
        out.text(breakOf(buffer.getLineEnd(line)));
        ++line;
        if (!out.passOn())
            return false;
    }
    return out.finish();
}

} // namespace

ByteSource textFileContents(const Buffer& buffer, const TextFileForm& form) {
    return [&buffer, form](const ByteSink& sink) { return writeText(buffer, form, sink); };
}

} // namespace tavrin
