#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <span>
#include <vector>

namespace tavrin {

/// A part of a regular file that several threads read piece by piece, each piece by whoever comes to it
/// first. Fresh memory costs more than the reading does, and is touched by all of them.
class SharedRead {
  public:
    /// The part begins `offset` bytes from the start of the file and is to fill `to`. Both outlive the
    /// object.
    SharedRead(std::FILE* file, std::size_t offset, std::span<std::uint8_t> to);
    SharedRead(const SharedRead&) = delete;
    SharedRead& operator=(const SharedRead&) = delete;

    /// Reads the first piece that nobody has begun to read. False: there is none.
    bool readNext();
    /// Sees to it that more than the first `known` bytes have been read, and returns how many have. `known`:
    /// no more will come, because the part is full, the file ends, or can't be read further.
    [[nodiscard]] std::size_t readBeyond(std::size_t known);

  private:
    /// Few enough bytes to be in a cache still when they are examined.
    static constexpr std::size_t pieceSize = std::size_t{512} << 10;

    [[nodiscard]] std::size_t available() const;

    const int file_;
    const std::size_t offset_;
    const std::span<std::uint8_t> to_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t begun_ = 0;     ///< pieces
    std::size_t whole_ = 0;     ///< pieces from the first on that have been read
    std::vector<bool> wasRead_; ///< of each piece
    std::size_t end_;           ///< bytes that there are, as far as is known
};

} // namespace tavrin
