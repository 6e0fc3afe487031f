#pragma once

#include "buffer/LineStore.h"
#include "buffer/LoadHelper.h"
#include "buffer/LoadedText.h"
#include "platform/core/ByteBuffer.h"
#include "platform/core/Encoding.h"
#include "platform/core/EncodingDetection.h"
#include "platform/core/SharedRead.h"
#include "platform/core/SmartPtr.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <span>

namespace tavrin {

/// Makes bytes that arrive piece by piece a text for a Buffer: all of a load that needs neither parser nor
/// view, so it may run on any thread, one at a time. UTF-8 is checked and divided into lines as it comes,
/// while it is in the processor's caches; other encodings when everything is there. Of large texts another
/// thread finds out meanwhile, and behind the load, what the parser will ask first, where the parser has a
/// LineScan.
class TextLoader {
  public:
    /// Hears how many bytes were examined, at least every few milliseconds; false stops the work.
    using Progress = std::function<bool(std::size_t examined)>;

    /// `expected`: as many bytes as will probably come. Throws std::bad_alloc, as all operations do.
    explicit TextLoader(std::size_t expected, const LineScan* scan = nullptr);
    /// All of `bytes` are there. Nobody may change them any more.
    explicit TextLoader(SmartPtr<ByteBuffer> bytes, const LineScan* scan = nullptr);

    /// Reads everything from the stream's position to its end, a large file by two threads. A read error ends
    /// the text there.
    [[nodiscard]] static LoadedText readFile(std::FILE* stream, const LineScan* scan = nullptr);

    /// Where the next bytes go; never empty.
    [[nodiscard]] std::span<std::uint8_t> room();
    /// The first `count` bytes of room() have been written.
    void add(std::size_t count);
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return {bytes_->data(), size_}; }
    /// Bytes from the start that were looked at.
    [[nodiscard]] std::size_t examined() const { return road_ == Road::Whole ? 0 : checked_; }

    /// The text, when nothing more comes. Nothing when `progress` stopped the work; the object is used up.
    [[nodiscard]] std::optional<LoadedText> finish(const Progress& progress = {});

  private:
    enum class Road {
        Unknown,
        Pieces, ///< UTF-8, which is examined as it arrives
        Whole,  ///< what can be told, or read, only at the end
    };

    void addFrom(std::FILE* stream);
    void addShared(std::FILE* stream, std::size_t length);
    void startHelper();
    void examine(std::size_t end);
    void handOn(const TextSource& source);
    void takeBack();
    [[nodiscard]] TextSource utf8Source(std::size_t end) const;
    [[nodiscard]] std::optional<LoadedText> finishWhole(const Progress& progress);
    [[nodiscard]] std::optional<LoadedText> divide(const TextSource& source, const ReadForm& form,
                                                   const Progress& progress);

    SmartPtr<ByteBuffer> bytes_;
    std::size_t size_ = 0; ///< of what has arrived
    Road road_ = Road::Unknown;
    DetectedEncoding encoding_;
    DecodeReport report_;
    std::size_t checked_ = 0; ///< whole characters up to here were looked at
    LineStore::Pages pages_;
    const LineScan* scan_;
    int scannedLines_ = 0;
    bool mayHaveHelper_ = true;
    std::optional<SharedRead> file_;
    std::optional<LoadHelper> helper_; ///< has the pages that were handed on
};

} // namespace tavrin
