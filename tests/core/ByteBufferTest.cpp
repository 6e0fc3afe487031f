#include "platform/core/ByteBuffer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>

namespace tavrin {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string patterned(std::size_t size) {
    std::string content(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        content[i] = static_cast<char>(i * 31 + i / 251);
    return content;
}

File fileWith(const std::string& content) {
    File file(std::tmpfile());
    std::fwrite(content.data(), 1, content.size(), file.get());
    std::rewind(file.get());
    return file;
}

std::string bytes(const ByteBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

constexpr std::size_t mebibyte = std::size_t{1} << 20;

TEST(ByteBuffer, allocatedBlocksOfEverySizeCanBeWrittenToTheLastByte) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, 2 * mebibyte - 1, 2 * mebibyte, 5 * mebibyte + 3}) {
        SmartPtr<ByteBuffer> buffer = ByteBuffer::allocate(size);
        ASSERT_EQ(buffer->size(), size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer->data()) % alignof(char16_t), 0u);
        std::memset(buffer->data(), 0x5A, size);
    }
}

TEST(ByteBuffer, impossibleSizesThrow) {
    EXPECT_THROW(ByteBuffer::allocate(static_cast<std::size_t>(-1)), std::bad_alloc);
    EXPECT_THROW(ByteBuffer::allocate(static_cast<std::size_t>(-1) / 2), std::bad_alloc);
}

TEST(ByteBuffer, loadsFilesOfEverySize) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{4096}, mebibyte / 16,
                                   mebibyte / 16 + 1, 3 * mebibyte + 7}) {
        const std::string content = patterned(size);
        const File file = fileWith(content);
        EXPECT_EQ(bytes(*ByteBuffer::loadFile(file.get())), content) << size;
    }
}

TEST(ByteBuffer, loadsFromTheStreamsPosition) {
    const File file = fileWith("0123456789");
    std::fgetc(file.get());
    std::fseek(file.get(), 4, SEEK_SET);
    EXPECT_EQ(bytes(*ByteBuffer::loadFile(file.get())), "456789");
    EXPECT_EQ(ByteBuffer::loadFile(file.get())->size(), 0u) << "the stream stands at its end";
}

TEST(ByteBuffer, loadsPipesWhoseLengthNobodyKnows) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{10}, mebibyte / 16, mebibyte / 8, mebibyte + 5}) {
        const std::string content = patterned(size);
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe(ends.data()), 0);
        std::thread writer([&] {
            const File out(fdopen(ends[1], "wb"));
            std::fwrite(content.data(), 1, content.size(), out.get());
        });
        const File in(fdopen(ends[0], "rb"));
        EXPECT_EQ(bytes(*ByteBuffer::loadFile(in.get())), content) << size;
        writer.join();
    }
}

TEST(ByteBuffer, unreadableStreamsGiveNothing) {
    const File folder(std::fopen("/", "rb"));
    if (!folder)
        GTEST_SKIP() << "this system does not open folders";
    EXPECT_EQ(ByteBuffer::loadFile(folder.get())->size(), 0u);
}

TEST(ByteBuffer, swapExchangesContentAndOwnership) {
    char local[] = "local";
    SmartPtr<ByteBuffer> wrapped(new ByteBuffer(local, 5, false));
    auto* block = static_cast<char*>(std::malloc(3));
    std::memcpy(block, "abc", 3);
    SmartPtr<ByteBuffer> owner(new ByteBuffer(block, 3, true));
    owner->swap(*wrapped);
    EXPECT_EQ(bytes(*wrapped), "abc");
    EXPECT_EQ(bytes(*owner), "local");
    owner->shrink(2);
    EXPECT_EQ(bytes(*owner), "lo");
    // Leaving the scope must free the block and not the array: the sanitizers watch.
}

} // namespace
} // namespace tavrin
