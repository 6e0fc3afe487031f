#include "platform/core/ByteBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#if defined(__unix__) || defined(__APPLE__)
#include <sys/stat.h>
#endif
#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tavrin {

namespace {

constexpr std::size_t hugePage = std::size_t{2} << 20;
/// No block is larger: distances between its bytes, also when rounded up to whole pages, fit in ptrdiff_t.
constexpr std::size_t largestBlock = std::numeric_limits<std::ptrdiff_t>::max() - hugePage;
/// First block for a stream whose length nobody knows.
constexpr std::size_t unknownLength = std::size_t{64} << 10;

struct FreeBlock {
    void operator()(void* block) const noexcept { std::free(block); }
};
using Block = std::unique_ptr<void, FreeBlock>;

Block allocateSmall(std::size_t size) {
    return Block(std::malloc(std::max<std::size_t>(size, 1)));
}

Block allocateLarge(std::size_t size) {
#if defined(__linux__)
    const std::size_t whole = (size + hugePage - 1) / hugePage * hugePage;
    Block block(std::aligned_alloc(hugePage, whole));
    // Only advice: a kernel without huge pages refuses, and the block is as good as any other.
    if (block)
        static_cast<void>(madvise(block.get(), whole, MADV_HUGEPAGE));
    return block;
#else
    return allocateSmall(size);
#endif
}

} // namespace

SmartPtr<ByteBuffer> ByteBuffer::allocate(std::size_t size) {
    if (size > largestBlock)
        throw std::bad_alloc();
    Block block = size >= hugePage ? allocateLarge(size) : allocateSmall(size);
    if (!block)
        throw std::bad_alloc();
    SmartPtr<ByteBuffer> buffer(new ByteBuffer(block.get(), size, true));
    static_cast<void>(block.release());
    return buffer;
}

std::size_t ByteBuffer::expectedLength(std::FILE* stream) {
#if defined(__unix__) || defined(__APPLE__)
    struct stat status {};
    if (fstat(fileno(stream), &status) != 0 || !S_ISREG(status.st_mode))
        return 0;
    const off_t position = ftello(stream);
    if (position < 0 || position >= status.st_size)
        return 0;
    return static_cast<std::size_t>(status.st_size - position);
#else
    static_cast<void>(stream);
    return 0;
#endif
}

SmartPtr<ByteBuffer> ByteBuffer::loadFile(std::FILE* stream) {
    const std::size_t expected = expectedLength(stream);
    SmartPtr<ByteBuffer> buffer = allocate(expected != 0 ? expected : unknownLength);
    std::size_t length = 0;
    for (;;) {
        length += std::fread(buffer->data() + length, 1, buffer->size() - length, stream);
        if (length < buffer->size())
            break;
        // The block is full. A file of the expected length ends here, and one byte more tells without a
        // larger block; a pipe, or a file that grew meanwhile, goes on.
        const int next = std::fgetc(stream);
        if (next == EOF)
            break;
        SmartPtr<ByteBuffer> larger = allocate(std::max(buffer->size() * 2, unknownLength));
        std::memcpy(larger->data(), buffer->data(), length);
        larger->data()[length++] = static_cast<std::uint8_t>(next);
        buffer = std::move(larger);
    }
    buffer->shrink(length);
    return buffer;
}

ByteBuffer::ByteBuffer(void* data, std::size_t size, bool owned)
    : data_(static_cast<std::uint8_t*>(data)), size_(size), owned_(owned) {}

ByteBuffer::~ByteBuffer() {
    if (owned_)
        std::free(data_);
}

void ByteBuffer::swap(ByteBuffer& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(owned_, other.owned_);
}

} // namespace tavrin
