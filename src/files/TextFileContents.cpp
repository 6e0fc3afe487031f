#include "files/TextFileContents.h"

#include "buffer/Buffer.h"
#include "buffer/StoredLineWalk.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

std::string_view asChars(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Collects bytes into pieces of a size that sinks like: the fewer system calls and the fewer of them that
/// begin inside a page, the cheaper. Large loaded bytes are handed on from where they lie. Where a line that
/// ends with CR meets an empty one that ends with LF, the latter ends with CR LF: else the two would be read
/// as one break.
class PieceWriter {
  public:
    PieceWriter(int encoding, const ByteSink& sink) : encoder_(encoding), sink_(sink) {}

    void text(std::u16string_view text) {
        if (text.empty())
            return;
        keepApart(text.front() == u'\n');
        encoder_.encode(text, bytes_);
        endsWithReturn_ = text.back() == u'\r';
    }
    /// Bytes of stored lines; the flags tell of the characters at their ends. False when the sink takes no
    /// more.
    [[nodiscard]] bool bytes(std::string_view bytes, bool beginsWithFeed, bool endsWithReturn) {
        startBytes(beginsWithFeed, endsWithReturn);
        bytes_ += bytes;
        return passOn();
    }
    /// The same for bytes that lie where they are until the text is written.
    [[nodiscard]] bool loadedBytes(std::string_view bytes, bool beginsWithFeed, bool endsWithReturn) {
        startBytes(beginsWithFeed, endsWithReturn);
        if (bytes.size() < copiedSize)
            bytes_ += bytes;
        else
            loaded_.push_back({bytes_.size(), bytes});
        return passOn();
    }
    [[nodiscard]] bool passOn() {
        return (bytes_.size() < pieceSize && loaded_.size() < loadedAtOnce) || flush();
    }
    [[nodiscard]] bool finish() {
        encoder_.finish(bytes_);
        return flush();
    }

  private:
    void startBytes(bool beginsWithFeed, bool endsWithReturn) {
        keepApart(beginsWithFeed);
        endsWithReturn_ = endsWithReturn;
        encoder_.finish(bytes_); // stored lines are read from the state at the start of a text
    }
    void keepApart(bool beginsWithFeed) {
        if (endsWithReturn_ && beginsWithFeed)
            encoder_.encode(u"\r", bytes_);
    }
    [[nodiscard]] bool flush() {
        if (bytes_.empty() && loaded_.empty())
            return true;
        parts_.clear();
        const std::string_view bytes = bytes_;
        std::size_t done = 0;
        for (const Loaded& loaded : loaded_) {
            addPart(bytes.substr(done, loaded.at - done));
            addPart(loaded.bytes);
            done = loaded.at;
        }
        addPart(bytes.substr(done));
        const bool goesOn = sink_(ByteSink::Parts(parts_));
        bytes_.clear();
        loaded_.clear();
        return goesOn;
    }

    void addPart(std::string_view part) {
        if (!part.empty())
            parts_.push_back(part);
    }

    /// Bytes that come before bytes_[at].
    struct Loaded {
        std::size_t at;
        std::string_view bytes;
    };
    static constexpr std::size_t loadedAtOnce = 31;
    static constexpr std::size_t copiedSize = 1 << 14; ///< below, a part of its own costs more than a copy

    TextEncoder encoder_;
    const ByteSink& sink_;
    std::string bytes_;
    std::vector<Loaded> loaded_;
    std::vector<std::string_view> parts_;
    bool endsWithReturn_ = false;
};

/// Writes one text.
class TextWriter {
  public:
    TextWriter(const Buffer& buffer, const ByteSink& sink)
        : buffer_(buffer),
          form_(buffer.getForm()),
          keepsBytes_(form_.encoding == buffer.getLoadedEncoding()),
          keepsEnds_(endsAreTheirOwn(buffer)),
          out_(form_.encoding, sink) {}

    bool write() {
        const bool hasMark = form_.hasMark && mayBeginWithMark(form_.encoding);
        if (hasMark)
            out_.text(byteOrderMark);
        if (buffer_.getLineCount() == 0)
            return (!keepsBytes_ || out_.loadedBytes(asChars(buffer_.getAllLoadedBytes()), false, false)) &&
                   out_.finish();
        // A mark that no line shows belongs to the bytes of the first line.
        const bool keepsMarks = form_.hasMark == buffer_.getLoadedForm().hasMark;
        const bool hidesMark = keepsBytes_ && buffer_.hasSecondMark();
        if (hidesMark && keepsMarks && !beginsAsLoaded())
            out_.text(byteOrderMark);
        for (int line = 0; line < buffer_.getLineCount();) {
            const bool mayKeep = keepsBytes_ && (line > 0 || !hidesMark || keepsMarks);
            if (mayKeep && keepsEnds_ && (line > 0 || !hidesMark))
                if (const auto stored = buffer_.getStoredLines(line); stored && stored->isPatched) {
                    if (!patchedLines(*stored, line))
                        return false;
                    line = stored->end;
                    continue;
                }
            const auto lines = mayKeep ? buffer_.getLoadedLines(line) : Buffer::LoadedLines{line, line, {}};
            if (!(lines.end > line ? loadedLines(lines) : oneLine(line)))
                return false;
            line = std::max(lines.end, line + 1);
        }
        return out_.finish();
    }

  private:
    static constexpr std::u16string_view byteOrderMark = u"\uFEFF";

    static bool endsAreTheirOwn(const Buffer& buffer) {
        const LineEnd forced = buffer.getForm().lineEnds;
        for (const LineEnd end : {LineEnd::CrLf, LineEnd::Lf, LineEnd::Cr})
            if (forced != LineEnd::None && end != forced &&
                buffer.getLineEndCounts()[static_cast<std::size_t>(end)] > 0)
                return false;
        return true;
    }
    [[nodiscard]] bool beginsAsLoaded() const { return keepsEnds_ && buffer_.getLoadedLines(0).end > 0; }

    bool loadedLines(const Buffer::LoadedLines& lines) {
        const int last = lines.end - 1;
        if (!keepsEnds_)
            return buffer_.forEachLoadedLine(lines, [this](int line, auto text) {
                return text ? oneLine(line, *text) : encodedLine(line);
            });
        const bool isBreakFirst =
            buffer_.getLineLength(lines.first) == 0 && buffer_.getLineEnd(lines.first) == LineEnd::Lf;
        const bool endsWithReturn = lines.endsWithBreak && buffer_.getLineEnd(last) == LineEnd::Cr;
        if (!out_.loadedBytes(asChars(lines.bytes), isBreakFirst, endsWithReturn))
            return false;
        if (!lines.endsWithBreak) // which it may need now
            out_.text(breakOf(buffer_.getLineEnd(last)));
        return true;
    }
    /// The lines of the page from `line` on, which are in the form of the text already.
    bool patchedLines(const LineStore::StoredLines& stored, int line) {
        StoredLineWalk<char> walk(stored.bytes, stored.hasReturns, stored.patchedEnds);
        walk.goDownToLine(line - stored.first);
        const std::string_view bytes = stored.bytes.substr(walk.begin());
        const bool endsWithReturn = bytes.ends_with('\r');
        if (!out_.bytes(bytes, bytes.starts_with('\n'), endsWithReturn))
            return false;
        if (!endsWithReturn && !bytes.ends_with('\n'))
            out_.text(breakOf(buffer_.getLineEnd(stored.end - 1)));
        return true;
    }
    /// A line that is not as it was loaded, or has another end now.
    bool oneLine(int line) {
        const auto text = keepsBytes_ ? buffer_.getLoadedBytes(line) : std::nullopt;
        return text ? oneLine(line, *text) : encodedLine(line);
    }
    bool oneLine(int line, std::span<const std::uint8_t> text) {
        const bool beginsWithFeed = buffer_.getLineText(line).starts_with(u'\n');
        if (!text.empty() && !out_.bytes(asChars(text), beginsWithFeed, false))
            return false;
        out_.text(breakOf(buffer_.getLineEnd(line)));
        return out_.passOn();
    }
    bool encodedLine(int line) {
        out_.text(buffer_.getLineText(line));
        out_.text(breakOf(buffer_.getLineEnd(line)));
        return out_.passOn();
    }

    const Buffer& buffer_;
    const TextForm form_;
    const bool keepsBytes_;
    const bool keepsEnds_; ///< no line ends otherwise than it was loaded because of the form
    PieceWriter out_;
};

} // namespace

ByteSource textFileContents(const Buffer& buffer) {
    return [&buffer](const ByteSink& sink) { return TextWriter(buffer, sink).write(); };
}

} // namespace tavrin
