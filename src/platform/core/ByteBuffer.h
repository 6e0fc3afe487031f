#pragma once

#include "platform/core/RefObject.h"
#include "platform/core/SmartPtr.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace tavrin {

/// A block of bytes on the heap, shared by reference count. Blocks are aligned for char16_t.
class ByteBuffer : public RefObject {
  public:
    /// A block of `size` bytes of unspecified content. Large blocks lie on huge pages where the system has
    /// them: first touching memory in small pages costs more than everything else done to a large file.
    /// Throws std::bad_alloc.
    static SmartPtr<ByteBuffer> allocate(std::size_t size);
    /// How many bytes a regular file still holds after the stream's position; 0 when that can't be known.
    [[nodiscard]] static std::size_t expectedLength(std::FILE* stream);
    /// Everything from the stream's position to its end. A read error ends the content there.
    static SmartPtr<ByteBuffer> loadFile(std::FILE* stream);

    /// Wraps a block. With `owned` true, `data` came from malloc and is freed with the buffer; otherwise the
    /// caller keeps it alive.
    ByteBuffer(void* data, std::size_t size, bool owned);
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;
    ~ByteBuffer() override;

    [[nodiscard]] std::uint8_t* data() noexcept { return data_; }
    [[nodiscard]] const std::uint8_t* data() const noexcept { return data_; }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }

    /// Shortens the content; the block stays as large as it is. REQUIRES: size <= size().
    void shrink(std::size_t size) noexcept { size_ = size; }
    /// Exchanges the contents of two buffers in constant time.
    void swap(ByteBuffer& other) noexcept;

  private:
    std::uint8_t* data_;
    std::size_t size_;
    bool owned_;
};

} // namespace tavrin
