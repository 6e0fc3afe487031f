#include "platform/core/SharedRead.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <thread>

namespace tavrin {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Two threads fill the part with what the file holds from the offset on; the file may be shorter.
TEST(SharedRead, givesTheBytesInOrder) {
    constexpr std::size_t size = 5'000'001;
    const std::unique_ptr<std::FILE, CloseFile> file(std::tmpfile());
    ASSERT_TRUE(file);
    std::string written(size, ' ');
    for (std::size_t i = 0; i < size; ++i)
        written[i] = static_cast<char>(i * i >> 8);
    ASSERT_EQ(std::fwrite(written.data(), 1, size, file.get()), size);
    ASSERT_EQ(std::fflush(file.get()), 0);
    struct Case {
        std::size_t offset, length, there;
    };
    for (const auto& [offset, length, there] :
         {Case{0, size, size}, Case{3, 1 << 20, 1 << 20}, Case{1'000'000, size, size - 1'000'000},
          Case{size - 1, 600'000, 1}, Case{size, 2'000'000, 0}, Case{0, 0, 0}}) {
        std::string room(length, 'x');
        SharedRead read(file.get(), offset, {reinterpret_cast<std::uint8_t*>(room.data()), length});
        std::thread other([&] {
            while (read.readNext()) {
            }
        });
        std::size_t known = 0;
        for (std::size_t more = read.readBeyond(0); more > known; more = read.readBeyond(known)) {
            EXPECT_EQ(std::memcmp(room.data() + known, written.data() + offset + known, more - known), 0);
            known = more;
        }
        EXPECT_EQ(known, there);
        EXPECT_FALSE(read.readNext());
        other.join();
    }
}

} // namespace
} // namespace tavrin
