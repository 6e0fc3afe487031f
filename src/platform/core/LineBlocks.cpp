#include "platform/core/LineBlocks.h"

#include <bit>

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)
#include <immintrin.h>
#endif

namespace tavrin::scan {

void portable::lineBlocks(const char* bytes, std::span<LineBlock> blocks) {
    for (LineBlock& block : blocks) {
        block = {};
        for (std::size_t i = 0; i < blockSize; ++i) {
            const auto byte = static_cast<unsigned char>(*bytes++);
            if (byte >= ' ' && byte < 0x80)
                continue; // nearly all are of these
            const std::uint64_t bit = std::uint64_t{1} << i;
            block.feeds |= byte == '\n' ? bit : 0;
            block.returns |= byte == '\r' ? bit : 0;
            block.tabs |= byte == '\t' ? bit : 0;
            block.high |= byte >= 0x80 ? bit : 0;
            block.trailing |= byte >= 0x80 && byte < 0xC0 ? bit : 0;
            block.pairs |= byte >= 0xF0 ? bit : 0;
        }
        block.feedCount = static_cast<std::uint64_t>(std::popcount(block.feeds));
    }
}

#if defined(__SSE2__) && !defined(TAVRIN_PORTABLE)

namespace {

// Compared with signs: 0x80 is the least byte, and what is not below 0x80 is negative.
constexpr char firstLead = static_cast<char>(0xC0);
constexpr char beforePairs = static_cast<char>(0xEF);

struct Sse2Block {
    static constexpr std::size_t lanes = blockSize / sizeof(__m128i);
    __m128i bytes[lanes];

    explicit Sse2Block(const char* from) {
        for (std::size_t i = 0; i < lanes; ++i)
            bytes[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from) + i);
    }
    /// The bits of the bytes for which `test` sets the highest bit.
    template <class Test>
    [[nodiscard]] std::uint64_t where(Test test) const {
        std::uint64_t bits = 0;
        for (std::size_t i = 0; i < lanes; ++i)
            bits |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(test(bytes[i]))))
                    << (i * sizeof(__m128i));
        return bits;
    }
    [[nodiscard]] std::uint64_t equal(char c) const {
        return where([wanted = _mm_set1_epi8(c)](__m128i lane) { return _mm_cmpeq_epi8(lane, wanted); });
    }
};

} // namespace

void fallback::lineBlocks(const char* bytes, std::span<LineBlock> blocks) {
    for (LineBlock& block : blocks) {
        const Sse2Block lanes(bytes);
        bytes += blockSize;
        block = {};
        block.feeds = lanes.equal('\n');
        block.returns = lanes.equal('\r');
        block.tabs = lanes.equal('\t');
        block.high = lanes.where([](__m128i lane) { return lane; });
        if (block.high) {
            block.trailing =
                lanes.where([](__m128i lane) { return _mm_cmplt_epi8(lane, _mm_set1_epi8(firstLead)); });
            block.pairs = block.high & lanes.where([](__m128i lane) {
                return _mm_cmpgt_epi8(lane, _mm_set1_epi8(beforePairs));
            });
        }
        block.feedCount = static_cast<std::uint64_t>(std::popcount(block.feeds));
    }
}

namespace {

[[gnu::target("avx2")]] inline std::uint64_t join(__m256i low, __m256i high) {
    return static_cast<std::uint64_t>(static_cast<unsigned>(_mm256_movemask_epi8(high))) << 32 |
           static_cast<unsigned>(_mm256_movemask_epi8(low));
}

[[gnu::target("avx2,popcnt")]] void avx2LineBlocks(const char* bytes, std::span<LineBlock> blocks) {
    const __m256i feed = _mm256_set1_epi8('\n');
    const __m256i carriageReturn = _mm256_set1_epi8('\r');
    const __m256i tab = _mm256_set1_epi8('\t');
    for (LineBlock& block : blocks) {
        const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
        const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes) + 1);
        bytes += blockSize;
        block.feeds = join(_mm256_cmpeq_epi8(low, feed), _mm256_cmpeq_epi8(high, feed));
        block.returns = join(_mm256_cmpeq_epi8(low, carriageReturn), _mm256_cmpeq_epi8(high, carriageReturn));
        block.tabs = join(_mm256_cmpeq_epi8(low, tab), _mm256_cmpeq_epi8(high, tab));
        block.high = join(low, high);
        block.trailing = block.pairs = 0;
        if (block.high) {
            const __m256i lead = _mm256_set1_epi8(firstLead);
            const __m256i pair = _mm256_set1_epi8(beforePairs);
            block.trailing = join(_mm256_cmpgt_epi8(lead, low), _mm256_cmpgt_epi8(lead, high));
            block.pairs = block.high & join(_mm256_cmpgt_epi8(low, pair), _mm256_cmpgt_epi8(high, pair));
        }
        block.feedCount = static_cast<std::uint64_t>(__builtin_popcountll(block.feeds));
    }
}

} // namespace

void lineBlocks(const char* bytes, std::span<LineBlock> blocks) {
    static const auto best = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt")
                                 ? avx2LineBlocks
                                 : fallback::lineBlocks;
    best(bytes, blocks);
}

#else

void fallback::lineBlocks(const char* bytes, std::span<LineBlock> blocks) {
    portable::lineBlocks(bytes, blocks);
}

void lineBlocks(const char* bytes, std::span<LineBlock> blocks) {
    portable::lineBlocks(bytes, blocks);
}

#endif

} // namespace tavrin::scan
