// What the machine can do, in GB/s, for the distance of the rows to it: limits FILE

#include "Samples.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace tavrin::bench;

constexpr std::size_t blockSize = std::size_t{64} << 20;
constexpr std::size_t hugePage = std::size_t{2} << 20;
constexpr int rounds = 5;

template <class Action>
void report(const char* row, std::size_t bytes, Action&& action) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i)
        times.push_back(milliseconds(action));
    std::printf("limit\t%s\t%f\n", row, static_cast<double>(bytes) / 1e6 / median(times));
}

/// Writes to each page of memory that no process had before.
void touchFresh(int advice) {
    void* mapped =
        mmap(nullptr, blockSize + hugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        std::abort();
    const auto address = reinterpret_cast<std::uintptr_t>(mapped);
    auto* aligned = static_cast<char*>(mapped) + (hugePage - address % hugePage) % hugePage;
    madvise(aligned, blockSize, advice);
    for (std::size_t at = 0; at < blockSize; at += 4096)
        static_cast<volatile char*>(aligned)[at] = 1;
    munmap(mapped, blockSize + hugePage);
}

} // namespace

int main(int argc, char** argv) {
    const int file = argc == 2 ? open(argv[1], O_RDONLY | O_CLOEXEC) : -1;
    struct stat status {};
    if (file < 0 || fstat(file, &status) != 0) {
        std::fprintf(stderr, "usage: limits FILE\n");
        return 2;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    std::vector<char> text(size);
    std::vector<char> copy(size);

    const auto readAll = [&] {
        for (std::size_t at = 0; at < size;) {
            const ssize_t got = pread(file, text.data() + at, size - at, static_cast<off_t>(at));
            if (got <= 0)
                std::abort();
            at += static_cast<std::size_t>(got);
        }
    };
    readAll();
    report("cached file read", size, readAll);
    report("copy of warm memory", size, [&] { std::memcpy(copy.data(), text.data(), size); });
    report("every line feed by memchr", size, [&] {
        std::size_t lines = 0;
        const char* end = text.data() + size;
        for (const char* at = text.data(); (at = static_cast<const char*>(std::memchr(at, '\n', end - at)));
             ++at)
            ++lines;
        copy[0] = static_cast<char>(lines); // keeps the walk
    });
    report("first touch of memory, 4 KiB pages", blockSize, [] { touchFresh(MADV_NOHUGEPAGE); });
    report("first touch of memory, huge pages", blockSize, [] { touchFresh(MADV_HUGEPAGE); });
    close(file);
    return 0;
}
