#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <span>
#include <thread>

namespace tavrin {

/// Reads a part of a regular file on a thread of its own, while another part is read and examined here.
/// Fresh memory costs more than the reading does, and two threads touch it in half the time.
class ReadAhead {
  public:
    /// The part begins `offset` bytes from the start of the file and is to fill `to`. Both outlive the
    /// object. Throws std::system_error when there is no thread to be had.
    ReadAhead(std::FILE* file, std::size_t offset, std::span<std::uint8_t> to);
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;
    /// Waits for the thread, which stops after the piece that it is at.
    ~ReadAhead();

    /// Waits until more than `known` bytes of the part have been read, and returns how many have. `known`: no
    /// more will come, because the part is full, the file ends, or can't be read further.
    [[nodiscard]] std::size_t waitBeyond(std::size_t known);

  private:
    void read(int file, std::size_t offset, std::span<std::uint8_t> to);
    /// False: nobody wants more.
    bool tell(std::size_t done, bool isEnd);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t done_ = 0;
    bool hasEnded_ = false;
    bool isUnwanted_ = false;
    std::thread thread_;
};

} // namespace tavrin
